/// Texts of any length and content, on a stack that is too small for recursion. Tests every
/// function with a text argument, except for prompts and for patterns that need the engine for
/// regular expressions.
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/wait.h>
#include <tokenizer.h>
#include <zn_datetime.h>
#include <zn_dir.h>
#include <zn_error.h>
#include <zn_file.h>
#include <zn_ip.h>
#include <zn_output.h>
#include <zn_process.h>
#include <zn_readfile.h>
#include <zn_seqfile.h>
#include <zn_setcfg.h>
#include <zn_shell.h>
#include <zn_str.h>
#include <zn_writefile.h>
#include <zn_xmlparser.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "captured_stream.h"
#include "default_date_format.h"
#include "long_run.h"
#include "reference_names.h"
#include "sanitizers.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "whitespace.h"
#include "xml_outline.h"

namespace {

using namespace std::string_literals;
using Tokens = std::vector<std::string>;

constexpr std::size_t kMiB = 1024 * 1024;

// AddressSanitizer surrounds each variable with red zones. The frames of the engine, which runs on
// names of up to 255 bytes, are several times as large there.
constexpr std::size_t kStackBytes = kHasAddressSanitizer ? 4 * kMiB : kMiB / 4;

/// Returns the length of most texts. Even in a daily run any recursion would overflow the stack.
std::size_t longText() { return isLongRun() ? 64 * kMiB : kMiB / 4; }

/// Returns the length of texts that are split into a token, a string of 32 bytes, for each byte.
std::size_t manyTokens() { return isLongRun() ? 16 * kMiB : kMiB / 4; }

struct TextClass {
  const char* what;
  std::string unit;  // the text repeats it
  bool isNumber = false;
};

const TextClass kClasses[] = {
    {"letters", "a"},
    {"capitals", "E"},
    {"exponents", "e"},
    {"digits", "7", true},
    {"zeros", "0", true},
    {"spaces", " "},
    {"tabs", "\t"},
    {"line feeds", "\n"},
    {"carriage returns", "\r"},
    {"NULs", "\0"s},
    {"a byte above 0x7F", "\xFF"},
    {"a continuation byte", "\x80"},
    {"characters of two bytes", "\xC3\xA4"},
    {"dots", "."},
    {"commas", ","},
    {"semicolons", ";"},
    {"colons", ":"},
    {"hyphens", "-"},
    {"pluses", "+"},
    {"slashes", "/"},
    {"backslashes", "\\"},
    {"apostrophes", "'"},
    {"quotes", "\""},
    {"backquotes", "`"},
    {"tildes", "~"},
    {"brackets", "["},
    {"closing brackets", "]"},
    {"parentheses", "("},
    {"carets", "^"},
    {"dollars", "$"},
    {"asterisks", "*"},
    {"tags", "<"},
    {"ampersands", "&"},
    {"numbers and commas", "1,", true},
    {"numbers and dots", "1."},
    {"numbers and hyphens", "1-"},
    {"letters and dots", "a."},
    {"letters and slashes", "a/"},
    {"letters and spaces", "a "},
    {"letters and line feeds", "a\n"},
    {"NULs and letters", "\0a"s},
    {"numbers with exponents", "1e+"},
};

/// Returns `unit` repeated to a length of at least `length` bytes.
std::string repeated(const std::string& unit, std::size_t length) {
  const std::size_t size = (length + unit.size() - 1) / unit.size() * unit.size();
  std::string text = unit;
  while (text.size() < size) text.append(text, 0, size - text.size());
  return text;
}

void* callFunction(void* function) {
  (*static_cast<const std::function<void()>*>(function))();
  return nullptr;
}

/// Lets the allocator keep freed memory, since most of the time would go into fresh pages.
void keepMemory() {
#ifdef M_ARENA_MAX
  mallopt(M_ARENA_MAX, 1);
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
#endif
}

void onSmallStack(std::function<void()> run) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackBytes), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, callFunction, &run), 0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

/// Calls `visit` with a text of each class, and the class. `visit` compares texts by EXPECT_TRUE,
/// since EXPECT_EQ would print them.
template <class Visit>
void forEveryClass(std::size_t length, Visit visit) {
  if (isLongRun()) keepMemory();
  testing::Test::RecordProperty("texts", std::to_string(std::size(kClasses)));
  for (const TextClass& c : kClasses) {
    onSmallStack([&] {
      SCOPED_TRACE(c.what);
      visit(repeated(c.unit, length), c);
    });
  }
}

std::string upToNul(const std::string& text) { return text.c_str(); }

std::string without(const std::string& text, const std::string& bytes) {
  std::array<bool, 256> isDropped{};
  for (const char c : bytes) isDropped[static_cast<unsigned char>(c)] = true;
  std::string kept = text;
  kept.erase(std::remove_if(kept.begin(), kept.end(),
                            [&](char c) { return isDropped[static_cast<unsigned char>(c)]; }),
             kept.end());
  return kept;
}

// ---- Strings

TEST(AnyLength, Trimming) {
  forEveryClass(longText(), [](const std::string& text, const TextClass& c) {
    const bool isWhitespace = withoutLeadingWhitespace(c.unit.substr(0, 1)).empty();
    const std::size_t kept = text.find_last_not_of(kWhitespace) + 1;
    EXPECT_TRUE(zn_lib::leftTrim(text) == (isWhitespace ? "" : text));
    EXPECT_TRUE(zn_lib::rightTrim(text) == text.substr(0, kept));
    EXPECT_TRUE(zn_lib::allTrim(text) == text.substr(0, kept));
    EXPECT_TRUE(zn_lib::leftTrim(text + "x") == (isWhitespace ? "x" : text + "x"));
    EXPECT_TRUE(zn_lib::rightTrim("x" + text) == ("x" + text).substr(0, kept + 1));
    EXPECT_TRUE(zn_lib::allTrim(text + "x" + text).size() ==
                (isWhitespace ? 1 : text.size() + 1 + kept));
  });
}

TEST(AnyLength, Case) {
  forEveryClass(longText(), [](const std::string& text, const TextClass& c) {
    std::string upper = c.unit;
    std::string lower = c.unit;
    std::replace(upper.begin(), upper.end(), 'a', 'A');
    std::replace(upper.begin(), upper.end(), 'e', 'E');
    std::replace(lower.begin(), lower.end(), 'E', 'e');
    EXPECT_TRUE(zn_lib::stringToUpper(text) == repeated(upper, text.size()));
    EXPECT_TRUE(zn_lib::stringToLower(text) == repeated(lower, text.size()));
  });
}

TEST(AnyLength, PaddingAndQuoting) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    const std::string printed = upToNul(text);
    const int width = static_cast<int>(printed.size()) + 2;
    EXPECT_TRUE(zn_lib::rightPad(text, 0, '#') == printed);
    EXPECT_TRUE(zn_lib::rightPad(text, width, '#') == "##" + printed);
    EXPECT_TRUE(zn_lib::leftPad(text, 0, '#') == printed);
    EXPECT_TRUE(zn_lib::leftPad(text, width, '#') == printed + "##");
    EXPECT_TRUE(zn_lib::inQuotes(text, '\'') == "'" + printed + "'");
  });
}

TEST(AnyLength, ReadingValues) {
  forEveryClass(longText(), [](const std::string& text, const TextClass& c) {
    EXPECT_FALSE(zn_lib::stringToBool(text));
    EXPECT_EQ(zn_lib::isNumber(text), c.isNumber);
    EXPECT_EQ(zn_lib::isNumber("-" + text), c.isNumber);
    EXPECT_EQ(zn_lib::isNumber("." + text), c.unit == "7" || c.unit == "0");
    EXPECT_EQ(zn_lib::isNumber("1e+" + text), c.unit == "7" || c.unit == "0");
    EXPECT_FALSE(zn_lib::isNumber(text + "x"));
    const double value = zn_lib::stringToDouble(text);
    if (c.unit == "0") {
      EXPECT_EQ(value, 0.0);
    } else if (c.unit == "1e+") {
      EXPECT_EQ(value, 10.0);
    } else if (c.unit.front() == '1') {
      // In a locale with a decimal comma the rest is a fraction.
      EXPECT_TRUE(value >= 1.0 && value < 1.2) << value;
    } else {
      EXPECT_TRUE(std::isnan(value)) << value << ": no number, or out of range";
    }
  });
}

TEST(AnyLength, Rewriting) {
  forEveryClass(longText(), [](const std::string& text, const TextClass& c) {
    const int first = static_cast<signed char>(c.unit.front());
    std::string replaced = c.unit;
    replaced.front() = '#';
    EXPECT_TRUE(zn_lib::replaceChar(text, first, '#') == repeated(replaced, text.size()));
    EXPECT_TRUE(zn_lib::removeChar(text, first) == without(text, c.unit.substr(0, 1)));
    EXPECT_TRUE(zn_lib::removeQuotes(text) == without(text, "`'\""));
    EXPECT_TRUE(zn_lib::replicateString(text, 2) == text + text);
    EXPECT_TRUE(zn_lib::replicateChar(first, static_cast<int>(text.size())) ==
                std::string(text.size(), c.unit.front()));
  });
}

TEST(AnyLength, Searching) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    const std::string tail = text.substr(text.size() / 2) + "#";
    const std::string headAndTail = "#" + tail;
    EXPECT_TRUE(zn_lib::replaceString(text, text, "x") == "x");
    EXPECT_TRUE(zn_lib::replaceString("x", "x", text) == text);
    EXPECT_TRUE(zn_lib::replaceString(text, tail, "x") == text);
    EXPECT_TRUE(zn_lib::replaceString(text + "#", tail, "x") ==
                text.substr(0, text.size() / 2) + "x");
    EXPECT_FALSE(zn_lib::findStrings(text, {tail, headAndTail, text + "#"}));
    EXPECT_TRUE(zn_lib::findStrings(text + "#", {headAndTail, tail}));
  });
}

// ---- Tokens

/// Reference model of a split. Returns at most `most` pieces of `text` between `delimiters`.
Tokens piecesOf(const std::string& text, const std::string& delimiters, std::size_t most) {
  Tokens pieces;
  std::size_t start = 0;
  while (pieces.size() < most) {
    const std::size_t end = text.find_first_of(delimiters, start);
    if (end == std::string::npos) {
      if (start < text.size() || pieces.empty()) pieces.push_back(text.substr(start));
      break;
    }
    pieces.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return pieces;
}

/// Returns whether `text` has no operator of patterns or of bracket expressions.
bool isPlain(const std::string& text) {
  return text.find_first_of("^$\\.*+?()[]{}|-\0"s) == std::string::npos;
}

TEST(AnyLength, Splitting) {
  constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
  forEveryClass(manyTokens(), [](const std::string& text, const TextClass&) {
    for (const char* delimiters : {",", "-/.,:; ", "\n\r", "17a"}) {
      EXPECT_TRUE(zn_lib::Tokenizer(text, delimiters).tokens == piecesOf(text, delimiters, all))
          << delimiters;
    }
  });
}

TEST(AnyLength, SplittingAtText) {
  forEveryClass(manyTokens(), [](const std::string& text, const TextClass& c) {
    zn_lib::Tokenizer tokenizer;
    EXPECT_EQ(tokenizer.splitMulti(text, "#"), 1u);
    EXPECT_TRUE(tokenizer.getToken(0) == text);
    EXPECT_EQ(tokenizer.splitMulti(text + ", " + text, ", "), 2u);
    EXPECT_TRUE(tokenizer.getToken(1) == text);
    if (!isPlain(text)) return;
    EXPECT_EQ(tokenizer.splitMulti(text, c.unit), text.size() / c.unit.size());
    EXPECT_EQ(tokenizer.splitMulti(text + "#" + text, text), 2u);
    EXPECT_TRUE(tokenizer.tokens == (Tokens{"", "#"}));
    EXPECT_EQ(tokenizer.split("#", text), 1u);
    EXPECT_EQ(tokenizer.split("#" + c.unit, text), c.unit.size())
        << "the tokens after the first are empty";
  });
}

TEST(AnyLength, Tokens) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    const zn_lib::vector_key isBefore;
    EXPECT_TRUE(isBefore(text, text + "x"));
    EXPECT_FALSE(isBefore(text, text));
    zn_lib::Tokenizer tokenizer;
    tokenizer.tokens = {text + "x", text};
    EXPECT_TRUE(tokenizer.sortTokens());
    EXPECT_TRUE(tokenizer.getToken(0) == text);
    const zn_lib::String token(text);
    std::ostringstream out;
    out << token;
    EXPECT_TRUE(out.str() == upToNul(text));
  });
}

// ---- Names

class Named : public zn_lib::FileName {};

class AnyLengthOfName : public InTemporaryDirectory {
 protected:
  static constexpr const char* kHome = "/home/ada";
  const Home home{kHome};
};

TEST_F(AnyLengthOfName, Splitting) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    const std::string slashed = reference::withSlashes(text);
    const reference::Parts parts = reference::split(text);
    std::string name = text;
    EXPECT_TRUE(reference::isSame(zn_lib::splitFileName(name), parts));
    EXPECT_TRUE(name == slashed);
    name = text;
    EXPECT_TRUE(zn_lib::stripExtension(name) == reference::stripExtension(text));
    EXPECT_TRUE(name == slashed);

    Named file;
    name = text;
    file.setFileName(name);
    EXPECT_TRUE(name == slashed);
    EXPECT_TRUE(reference::isSame(file.nameParts, parts));
    EXPECT_TRUE(file.getFileName() == reference::withHome(reference::join(parts, kHome), kHome));
  });
}

// The engine runs on names with a line break up to this length.
TEST_F(AnyLengthOfName, SplittingNamesWithLineBreaks) {
  constexpr std::size_t longestName = 255;
  forEveryClass(longestName - 1, [](const std::string& text, const TextClass&) {
    for (const std::string& whole : {text + "\n", "\n" + text}) {
      std::string name = whole;
      EXPECT_TRUE(reference::isSame(zn_lib::splitFileName(name), {}));
      EXPECT_EQ(zn_lib::stripExtension(name), reference::withSlashes(whole));
    }
  });
}

TEST_F(AnyLengthOfName, Joining) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    std::string name = text;
    zn_lib::checkHomePath(name);
    EXPECT_TRUE(name == reference::withHome(text, kHome));
    name = text;
    zn_lib::addEndSlash(name);
    EXPECT_TRUE(name == (text.back() == '/' ? text : text + "/"));
    EXPECT_TRUE(zn_lib::createFileName(text, "n", "x") == reference::join({text, "n", "x"}, kHome));
    EXPECT_TRUE(zn_lib::createFileName("d", text, "x") == "d/" + text + ".x");
    EXPECT_TRUE(zn_lib::createFileName("", "n", text) == "n." + text);
  });
}

// No file has such a name, and whitespace or NULs alone are an empty name.
TEST_F(AnyLengthOfName, Files) {
  writeFile("file", "x");
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    EXPECT_FALSE(zn_lib::fileCopy(text, "target", true));
    EXPECT_TRUE(zn_lib::fileCopy("file", text, true)) << "attempted";
    EXPECT_FALSE(zn_lib::fileRename(text, "target", true));
    EXPECT_FALSE(zn_lib::fileRename("file", text, true));
    EXPECT_FALSE(zn_lib::createBackup(text));
    EXPECT_FALSE(zn_lib::hexDump(text, 16));
  });
  EXPECT_EQ(readFile("file"), "x");
  EXPECT_EQ(namesIn("."), std::set<std::string>{"file"});
}

TEST_F(AnyLengthOfName, FileObjects) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    std::string name = text;
    zn_lib::ReadFile in;
    in.setFileName(name);
    EXPECT_FALSE(in.fileOpen());
    EXPECT_FALSE(in.cat());
    zn_lib::WriteFile out;
    out.setFileName(name);
    EXPECT_FALSE(out.fileOpen());
    zn_lib::ReadXml<zn_lib::ConfigEvent> settings;
    settings.setFileName(name);
    EXPECT_FALSE(settings.parseFile());
    Catalog catalog;
    EXPECT_TRUE(zn_lib::readErrorFile(text, catalog));
    EXPECT_TRUE(catalog.empty());
  });
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(AnyLengthOfName, Directories) {
  std::filesystem::create_directory("there");
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    EXPECT_FALSE(zn_lib::changeDir(text));
    EXPECT_FALSE(zn_lib::createDir(text));
    Tokens entries = {"before"};
    EXPECT_FALSE(zn_lib::listDir(text, "", false, entries));
    std::string source = text;
    std::string target = "copy";
    EXPECT_FALSE(zn_lib::copyDir(source, target));
    EXPECT_TRUE(source == reference::withHome(text, kHome));
    source = "there";
    target = text;
    EXPECT_FALSE(zn_lib::copyDir(source, target));
    EXPECT_TRUE(target == reference::withHome(text, kHome));
    if (isPlain(text)) {
      EXPECT_TRUE(zn_lib::listDir("", text, false, entries));
    }
    EXPECT_EQ(entries, Tokens{"before"});
  });
  EXPECT_FALSE(isThere("copy"));
}

/// Returns the name that `sequentialFile` makes in an empty directory whose last entry is `last`.
std::string firstOf(const std::string& text, const std::string& last) {
  if (reference::hasLineBreak(text)) return last + "-1.";
  const reference::Parts parts = reference::split(text);
  const std::string number = reference::beforeNumber(parts.name);
  const std::string base = number.empty() ? parts.name : number;
  const bool isListed = parts.path.empty();
  const bool isPattern = base.find_first_of("^$\\*+?()[]{}|\0"s) != std::string::npos;
  if (!isListed || isPattern) return reference::withSlashes(text);
  return base + "-1." + parts.extension;
}

TEST_F(AnyLengthOfName, SequentialFile) {
  Tokens dots;
  ASSERT_TRUE(zn_lib::listDir("", "", false, dots));
  ASSERT_EQ(dots.size(), 2u);
  forEveryClass(longText(), [&](const std::string& text, const TextClass&) {
    std::string name = text;
    zn_lib::sequentialFile(name);
    EXPECT_TRUE(name == firstOf(text, dots.back()));
  });
}

// ---- Dates and addresses

class AnyLengthOfDate : public WithDefaultDateFormat {};

TEST_F(AnyLengthOfDate, InvalidDates) {
  constexpr unsigned long long noDate = 148699584000000;
  forEveryClass(longText(), [&](const std::string& text, const TextClass&) {
    for (const std::string& whole : {text, "2024" + text, "2024-03-05T14:07:09" + text}) {
      zn_lib::date_time_record record = {};
      zn_lib::parseISOdate(whole, record);
      EXPECT_EQ(record.year, 0);
      EXPECT_EQ(record.hour, 12);
      EXPECT_TRUE(zn_lib::isValidISOdate(whole));
      EXPECT_EQ(zn_lib::dateToJulian(whole), noDate);
    }
    EXPECT_EQ(zn_lib::getMonthNumber(text), 12);
    EXPECT_EQ(zn_lib::getMonthNumber("sep" + text), 9);
  });
}

TEST_F(AnyLengthOfDate, DatesWithTheYearLast) {
  const std::string separators = "-/.,:; ";
  forEveryClass(manyTokens(), [&](const std::string& text, const TextClass&) {
    const Tokens fields = piecesOf(text, separators, 6);
    std::string iso;
    if (fields.size() == 6) {
      const bool isNumber = without(fields[1], "0123456789").empty();
      iso = fields[2] + "-" + (isNumber ? fields[1] : "12") + "-" + fields[0] + " " + fields[3] +
            ":" + fields[4] + ":" + fields[5];
    }
    EXPECT_TRUE(zn_lib::dateToISO(text) == iso);
    if (text.find_first_of(separators) == std::string::npos) {
      EXPECT_TRUE(zn_lib::dateToISO(text + "/May/" + text) == text + "-05-" + text);
    }
  });
}

/// Returns the outcome of `read` by name.
std::string outcomeOf(const std::function<void()>& read) {
  try {
    read();
  } catch (const std::invalid_argument&) {
    return "invalid";
  } catch (const std::out_of_range&) {
    return "out of range";
  }
  return "read";
}

TEST(AnyLength, Addresses) {
  forEveryClass(manyTokens(), [](const std::string& text, const TextClass&) {
    zn_lib::IPv4 v4;
    zn_lib::IPv6 v6;
    for (const std::string& whole : {text, "1.2.3.4" + text}) {
      EXPECT_FALSE(v4.validFormat(whole));
      EXPECT_FALSE(v4.set(whole));
    }
    EXPECT_EQ(v4.text(), "0.0.0.0");
    EXPECT_FALSE(v6.set(text));
    EXPECT_EQ(v6.text(), "::");
    const std::string expected = outcomeOf([&] {
      for (const std::string& part : piecesOf(text, ".", 4)) static_cast<void>(std::stoi(part));
    });
    EXPECT_EQ(outcomeOf([&] { v4.textToBlocks(text); }), expected);
  });
}

// ---- Output and programs

class AnyLengthOfOutput : public testing::Test {
 protected:
  AnyLengthOfOutput() { zn_lib::setVerbose(true); }
  ~AnyLengthOfOutput() override { zn_lib::setVerbose(false); }
};

TEST_F(AnyLengthOfOutput, IsWrittenUpToTheFirstNul) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    const std::string printed = upToNul(text);
    CapturedStream out(std::cout);
    CapturedStream err(std::cerr);
    zn_lib::display(text);
    EXPECT_TRUE(out.text() == printed);
    zn_lib::message(text);
    EXPECT_TRUE(out.text() == printed + "\n");
    zn_lib::debugMessage(text);
    EXPECT_TRUE(out.text() == "DEBUG: " + printed + "\n");
    zn_lib::processTitle(text);
    EXPECT_TRUE(out.text() == "[" + printed + "]\n");
    zn_lib::errorMessage(text);
    EXPECT_TRUE(err.text() == "ERROR: " + printed + "\n");
  });
}

TEST_F(AnyLengthOfOutput, ErrorCatalogs) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    const std::string printed = upToNul(text);
    const std::string line(70, '-');
    Catalog catalog = {{1, text}};
    CapturedStream out(std::cout);
    CapturedStream err(std::cerr);
    zn_lib::showErrorMessage(catalog, 1);
    EXPECT_TRUE(err.text() == "ERROR: #1\t" + printed + "\n");
    zn_lib::showErrorList(catalog);
    EXPECT_TRUE(out.text() == "Error list\n" + line + "\n1 " + printed + "\n" + line + "\n");
  });
}

// The system rejects arguments of this length. A child that cannot run its program succeeds.
TEST(AnyLength, Programs) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    EXPECT_EQ(zn_lib::childProcess(text, "", true), 0);
    EXPECT_EQ(zn_lib::childProcess("/bin/false", text, true), 0);
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1);
    EXPECT_EQ(errno, ECHILD) << "a child is left";
  });
}

// The system rejects commands of this length, too. C libraries differ in whether they report that
// the shell cannot start.
TEST(AnyLength, Commands) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    CapturedStream err(std::cerr);
    const bool isRun = zn_lib::execShell(text);
    EXPECT_EQ(err.text(), isRun ? "" : "Problem executing command\n");
  });
}

// ---- Settings and XML

TEST_F(AnyLengthOfName, Settings) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    const std::string trimmed = zn_lib::allTrim(text);
    zn_lib::Configuration store;
    store.set(text, "value");
    EXPECT_EQ(store.get(trimmed).value, "value");
    EXPECT_TRUE(store.get(text).describe == text);
    store.set("key", text, text, text);
    EXPECT_TRUE(store.get("key").type == text);
    std::string key = text;
    store.adjustKey(key);
    EXPECT_TRUE(key == trimmed);

    store.type = text;
    CapturedStream out(std::cout);
    store.listConfiguration();
    // The longest description determines the width of each of the four lines. NULs count.
    EXPECT_GE(out.text().size(), 4 * text.size());
    store.changed = false;
  });
}

/// Returns whether `text` stands for itself in XML.
bool isXmlText(const std::string& text) {
  return text.find_first_of("<&\xFF\x80\0"s) == std::string::npos;
}

TEST_F(AnyLengthOfName, SavedSettings) {
  forEveryClass(longText(), [](const std::string& text, const TextClass& c) {
    zn_lib::ConfigElement element;
    element.value = text;
    element.describe = c.unit == "'" ? "" : text;
    zn_lib::Configuration store("", "store");
    store.backup = false;
    store.set("UPDATE", element);
    EXPECT_TRUE(store.save());
    EXPECT_TRUE(readFile("store.cfg") == xmlOf("", {{"UPDATE", element}}));

    zn_lib::Configuration loaded("", "store");
    EXPECT_TRUE(loaded.load());
    // A piece begins with each block that is read, and loses its leading whitespace.
    EXPECT_TRUE(!isXmlText(text) ||
                without(loaded.get("UPDATE").value, kWhitespace) == without(text, kWhitespace));
  });
}

TEST_F(AnyLengthOfName, NamesOfStores) {
  forEveryClass(longText(), [](const std::string& text, const TextClass&) {
    zn_lib::Configuration named("TYPE", text);
    EXPECT_TRUE(named.getConfigurationFile() == text + ".cfg");
    zn_lib::Configuration inside("TYPE", "store");
    inside.path = text;
    EXPECT_TRUE(inside.getConfigurationFile() == reference::join({text, "store", "cfg"}, kHome));
    EXPECT_TRUE(named.load());
    EXPECT_TRUE(inside.load());
    EXPECT_TRUE(named.elements.empty() && inside.elements.empty());
    EXPECT_FALSE(named.save());
  });
}

TEST(AnyLength, Xml) {
  forEveryClass(longText(), [](const std::string& text, const TextClass& c) {
    XmlOutline handler;
    XMLParser parser(&handler);
    ASSERT_TRUE(parser.Create("UTF-8", nullptr));
    EXPECT_FALSE(parser.Parse(text.data(), text.size(), true)) << "no document";
    EXPECT_NE(parser.GetErrorCode(), XML_ERROR_NONE);
    ASSERT_TRUE(parser.Create("UTF-8", nullptr));
    EXPECT_FALSE(parser.Parse(text.c_str(), true)) << "no document";

    ASSERT_TRUE(parser.Create("UTF-8", nullptr));
    parser.EnableCharacterDataHandler(true);
    const std::string document = "<a>" + text + "</a>";
    EXPECT_EQ(parser.Parse(document.data(), document.size(), true), isXmlText(text));
    const std::string expected = zn_lib::replaceChar(text, '\r', '\n');
    EXPECT_TRUE(!isXmlText(text) || handler.text == expected);

    // With its security updates expat does not copy names of tens of MiB.
    if (parser.Create(text.c_str(), nullptr)) {
      EXPECT_EQ(parser.Parse("<a/>", true), c.unit.front() == '\0') << "an encoding";
    } else {
      EXPECT_EQ(XML_ParserCreate(text.c_str()), nullptr);
    }
    ASSERT_TRUE(parser.Create(nullptr, text.c_str())) << "a separator";
    EXPECT_TRUE(parser.Parse("<a/>", true));
  });
}

}  // namespace
