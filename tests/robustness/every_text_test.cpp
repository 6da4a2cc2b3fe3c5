/// Compares the forms that regular expressions define with the engine for regular expressions.
/// Tries all texts up to a fixed length, and longer texts while there is time.
#include <gtest/gtest.h>
#include <tokenizer.h>
#include <zn_datetime.h>
#include <zn_dir.h>
#include <zn_file.h>
#include <zn_ip.h>
#include <zn_seqfile.h>
#include <zn_str.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

#include "long_run.h"
#include "reference_dates.h"
#include "reference_engine.h"
#include "reference_name_parts.h"
#include "reference_names.h"
#include "reference_splits.h"
#include "samples.h"
#include "temporary_files.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using namespace std::string_literals;
using Clock = std::chrono::steady_clock;

std::chrono::milliseconds timeForForm() {
  return std::chrono::milliseconds(isLongRun() ? 60000 : 100);
}

struct Texts {
  const char* what;
  std::string alphabet;
  std::size_t leastLength;  ///< the length up to which all texts are tried, however long it takes
};

/// Calls `agrees` with every text, length by length: with those of up to `leastLength` characters
/// in any case, with longer ones while there is time. Prints the length that was finished last.
template <class Agrees>
void forEveryTextInTime(const Texts& wanted, Agrees agrees) {
  constexpr std::size_t textsBetweenLooks = 256;
  const Clock::time_point end = Clock::now() + timeForForm();
  std::size_t finished = 0;
  std::size_t texts = 0;
  for (std::size_t length = 0; length <= wanted.leastLength || Clock::now() < end; ++length) {
    TextCounter counter(wanted.alphabet, length);
    std::size_t tried = 0;
    bool isCutShort = false;
    do {
      agrees(counter.text());
      if (testing::Test::HasFatalFailure()) return;
      ++tried;
      isCutShort =
          length > wanted.leastLength && tried % textsBetweenLooks == 0 && Clock::now() >= end;
    } while (!isCutShort && counter.next());
    if (isCutShort) break;
    finished = length;
    texts += tried;
  }
  std::cout << wanted.what << ": all " << texts << " texts of up to " << finished
            << " characters from " << testing::PrintToString(wanted.alphabet) << '\n';
  EXPECT_GE(finished, wanted.leastLength) << wanted.what;
  const std::string what = wanted.what;
  testing::Test::RecordProperty(what + ".alphabet", testing::PrintToString(wanted.alphabet));
  testing::Test::RecordProperty(what + ".length", std::to_string(finished));
  testing::Test::RecordProperty(what + ".texts", std::to_string(texts));
}

bool matches(const std::string& text, const reference::Engine& pattern) {
  return std::regex_match(text, pattern);
}

// ---- Values

TEST(EveryText, StringToBool) {
  const reference::Engine isBool = reference::engine(definitions::isBool);
  forEveryTextInTime({"isBool", "yesturon.1YESTURON \n\0\xFF"s, 4}, [&](const std::string& text) {
    ASSERT_EQ(zn_lib::stringToBool(text), matches(text, isBool)) << text;
  });
}

TEST(EveryText, IsNumber) {
  const reference::Engine validNumber = reference::engine(definitions::validNumber);
  const auto agrees = [&](const std::string& text) {
    ASSERT_EQ(zn_lib::isNumber(text), matches(text, validNumber)) << text;
  };
  forEveryTextInTime({"validNumber", "9-+.,e", 6}, agrees);
  forEveryTextInTime({"validNumber, other bytes", "09-+.,eE x\n\0\xB2"s, 4}, agrees);
}

TEST(EveryText, RemoveQuotes) {
  const reference::Engine quote = reference::engine(definitions::quote);
  forEveryTextInTime({"quote", "`'\"a \\\n\0\xB4"s, 5}, [&](const std::string& text) {
    ASSERT_EQ(zn_lib::removeQuotes(text), std::regex_replace(text, quote, "")) << text;
  });
}

TEST(EveryText, ValidFormat) {
  const reference::Engine ipv4 = reference::engine(definitions::ipv4);
  const zn_lib::IPv4 address;
  const auto agrees = [&](const std::string& text) {
    ASSERT_EQ(address.validFormat(text), matches(text, ipv4)) << text;
  };
  forEveryTextInTime({"ipv4", "5.", 15}, agrees);
  forEveryTextInTime({"ipv4, other bytes", "05.69 \n\0"s, 5}, agrees);
}

// ---- Dates

TEST(EveryText, ParseISOdate) {
  const reference::Engine isoDateTime = reference::engine(definitions::isoDateTime);
  const auto agrees = [&](const std::string& text) {
    zn_lib::date_time_record record = {};
    zn_lib::parseISOdate(text, record);
    ASSERT_EQ(reference::fieldsOf(record), reference::fieldsByPattern(text, isoDateTime)) << text;
  };
  forEveryTextInTime({"isoDateTime", "02-T: \tx\n\0\xB2"s, 4}, agrees);
  // Few texts of this alphabet begin with a year.
  forEveryTextInTime({"isoDateTime after a year", "2-T: \n", 6},
                     [&](const std::string& text) { agrees("2024" + text); });
}

// ---- File names

TEST(EveryText, SplitFileName) {
  const auto agrees = [](const std::string& text) {
    const reference::DefinedParts defined = reference::splitByDefinitions(text);
    std::string name = text;
    const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
    ASSERT_TRUE(reference::isSame(parts, defined.parts)) << text;
    ASSERT_EQ(name, reference::withSlashes(text));
    name = text;
    ASSERT_EQ(zn_lib::stripExtension(name), defined.stem) << text;
  };
  forEveryTextInTime({"lastExt and fileSplit", "a./", 9}, agrees);
  forEveryTextInTime({"lastExt and fileSplit, other bytes", "a./\\~- \n\r\0\xFF"s, 4}, agrees);
}

class EveryName : public InTemporaryDirectory {};

// In an empty directory the name alone determines the base, because the listing has only "." and
// "..", which these bases do not match.
TEST_F(EveryName, SequentialFile) {
  const reference::Engine fileseq = reference::engine(definitions::fileseq);
  const auto agrees = [&](const std::string& text) {
    const std::string base = "a" + text;
    std::smatch match;
    const std::string stem = std::regex_match(base, match, fileseq) ? match.str(1) : base;
    std::string name = base;
    zn_lib::sequentialFile(name);
    ASSERT_EQ(name, stem + "-1.") << base;
    const std::string number = reference::beforeNumber(base);
    ASSERT_EQ(number.empty() ? base : number, stem) << base;
  };
  forEveryTextInTime({"fileseq", "a-1", 7}, agrees);
  forEveryTextInTime({"fileseq, other bytes", "a-09,~ \xB2", 4}, agrees);
}

// ---- Tokens

TEST(EveryText, Split) {
  const reference::Engine separators = reference::engine("[-,; ]");
  forEveryTextInTime({"texts to split", "-,; a\n\0\xFF"s, 5}, [&](const std::string& text) {
    ASSERT_EQ(zn_lib::Tokenizer(text, "-,; ").tokens, reference::split(text, separators)) << text;
  });
}

TEST(EveryText, SetsOfDelimiters) {
  const std::string text = everyByte() + "ab--]]^^[[\\\\";
  forEveryTextInTime({"sets of delimiters", "-^\\][:=.ad9,\0\xFF"s, 3},
                     [&](const std::string& set) { reference::expectSplit(text, set); });
}

TEST(EveryText, SplitMulti) {
  const reference::Engine aba = reference::engine("aba");
  zn_lib::Tokenizer tokenizer;
  forEveryTextInTime({"texts to split at a text", "ab", 13}, [&](const std::string& text) {
    tokenizer.splitMulti(text, "aba");
    ASSERT_EQ(tokenizer.tokens, reference::split(text, aba)) << text;
  });
}

TEST(EveryText, PatternsToSplitAt) {
  // The text is short, since nested repetitions take the engine exponential time.
  const std::string text =
      "aab-^$.|,\n\xFF"
      "a";
  forEveryTextInTime(
      {"patterns to split at", "a-,^$.*+?|()\\\n\xFF", 3},
      [&](const std::string& pattern) { reference::expectSplitMulti(text, pattern); });
}

// ---- Filters

TEST_F(EveryName, FiltersOfListDir) {
  for (const char* name : {"a", "aa", "ab", "a.b", "ba", "b", "a+b", "a$", "^a", "a\\b"}) {
    writeFile(name, "");
  }
  std::vector<std::string> all;
  ASSERT_TRUE(zn_lib::listDir("", "", false, all));
  forEveryTextInTime({"filters", "ab.^$\\+*(|)", 4}, [&](const std::string& filter) {
    std::vector<std::string> expected;
    bool isPattern = true;
    try {
      const reference::Engine pattern = reference::engine(filter);
      for (const std::string& name : all) {
        if (reference::contains(name, pattern)) expected.push_back(name);
      }
    } catch (const std::regex_error&) {
      isPattern = false;
    }
    std::vector<std::string> entries;
    ASSERT_EQ(zn_lib::listDir("", filter, false, entries), isPattern) << filter;
    ASSERT_EQ(entries, expected) << filter;
  });
}

}  // namespace
