/// Malformed and malicious settings files and error catalogs. Reading them ends, and keeps the
/// settings and messages before the error.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_error.h>
#include <zn_setcfg.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "emulation.h"
#include "long_run.h"
#include "output_capture.h"
#include "samples.h"
#include "sanitizers.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "whitespace.h"

namespace {

using namespace std::string_literals;
using Fields = std::map<std::string, std::string>;  // value|type|description by key

class HostileXml : public InTemporaryDirectory {};

/// Returns the settings that are read from a file with the contents `xml`.
Fields settingsOf(const std::string& xml) {
  writeFile("config.xml", xml);
  zn_lib::Configuration store;
  EXPECT_TRUE(store.load());
  EXPECT_FALSE(store.changed);
  return fieldsOf(store.elements);
}

Catalog catalogOf(const std::string& xml) {
  writeFile("errors.xml", xml);
  Catalog catalog;
  EXPECT_TRUE(zn_lib::readErrorFile("errors.xml", catalog));
  return catalog;
}

TEST_F(HostileXml, EntityBombsEndTheParse) {
  const std::string before = entityBomb("r") + "<r><k a='t'>v</k>";
  const std::string after = "<n a='t'>lost</n></r>";

  Fields fields = settingsOf(before + "<m a='u'>w&i;</m>" + after);
  EXPECT_EQ(fields["k"], "v|t|");
  EXPECT_EQ(fields["m"].substr(0, 3), "wxx") << "the text before the error";
  EXPECT_LT(fields["m"].size(), 100u << 20);
  EXPECT_EQ(fields.size(), 2u);

  fields = settingsOf(before + "<m a='&i;'>w</m>" + after);
  EXPECT_EQ(fields, (Fields{{"k", "v|t|"}})) << "in an attribute";

  std::string many;
  for (int i = 0; i < 5000; ++i) many += "&a;";
  fields = settingsOf("<!DOCTYPE r [<!ENTITY a '" + std::string(100000, 'x') +
                      "'>]><r><k a='t'>v</k><m a='u'>" + many + "</m>" + after);
  EXPECT_EQ(fields["k"], "v|t|");
  EXPECT_EQ(fields.count("n"), 0u) << "one long entity, many references";
}

TEST_F(HostileXml, SomeEntitiesAreNotExpanded) {
  writeFile("secret", "secret");
  const struct {
    const char* what;
    std::string declarations, reference;
    Fields fields;
  } cases[] = {
      {"a loop", "<!ENTITY a '&b;'><!ENTITY b '&a;'>", "&a;", {{"k", "v|t|"}, {"m", "x|u|"}}},
      {"not declared", "", "&a;", {{"k", "v|t|"}, {"m", "x|u|"}}},
      {"a file",
       "<!ENTITY a SYSTEM 'secret'>",
       "&a;",
       {{"k", "v|t|"}, {"m", "xy|u|"}, {"n", "z|t|"}}},
      {"a file in the declarations",
       "<!ENTITY % p SYSTEM 'secret'>%p;",
       "",
       {{"k", "v|t|"}, {"m", "xy|u|"}, {"n", "z|t|"}}},
      {"a character that XML forbids", "", "&#0;", {{"k", "v|t|"}, {"m", "x|u|"}}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(settingsOf("<!DOCTYPE r [" + c.declarations + "]><r><k a='t'>v</k><m a='u'>x" +
                         c.reference + "y</m><n a='t'>z</n></r>"),
              c.fields)
        << c.what;
  }
}

TEST_F(HostileXml, AMillionOpenTags) {
  std::string deep = "<r><k a='t'>v</k>";
  for (int i = 0; i < 1000000; ++i) deep += "<d a='t'>";
  EXPECT_EQ(settingsOf(deep), (Fields{{"d", "|t|"}, {"k", "v|t|"}}));
}

TEST_F(HostileXml, LongTokens) {
  const std::string text(2 * kLongText, 'v');
  const std::string token(256 * 1024, 'x');
  EXPECT_EQ(settingsOf("<r><k a='t'>" + text + "</k></r>")["k"].size(), text.size() + 3);
  EXPECT_EQ(settingsOf("<r><k a='t'><![CDATA[" + text + "]]></k></r>")["k"].size(),
            text.size() + 3);
  EXPECT_EQ(settingsOf("<r><k a='" + token + "' b='" + token + "'>v</k></r>")["k"],
            "v|" + token + "|" + token);
  EXPECT_EQ(settingsOf("<r><" + token + " a='t'>v</" + token + "></r>")[token], "v|t|");
  EXPECT_EQ(settingsOf("<r><!--" + token + "--><k a='t'>v</k></r>")["k"], "v|t|");
  EXPECT_EQ(settingsOf("<r><k a='t'>v</k><l a='" + token), (Fields{{"k", "v|t|"}}));
}

// ---- Time and memory

// AddressSanitizer delays the reuse of freed memory and checks each access.
constexpr double kOverhead = kHasAddressSanitizer ? 8.0 : 1.0;

constexpr std::size_t kMegabyte = 1000 * 1000;

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double megabytesOf(const rusage& usage) {
  return static_cast<double>(usage.ru_maxrss) * 1024 / kMegabyte;
}

/// Runs `test` in a child. Expects that it takes less processor time and memory than given.
void expectWithin(double seconds, double megabytes, const std::function<void()>& test) {
  // Memory that this process keeps for reuse would not count for the child.
  malloc_trim(0);
  rusage kept{};
  if (kHasAddressSanitizer) getrusage(RUSAGE_SELF, &kept);  // the sanitizer does not trim
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    test();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  rusage usage{};
  ASSERT_EQ(wait4(child, &status, 0, &usage), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_LT(secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime), seconds * kOverhead);
  EXPECT_LT(megabytesOf(usage), megabytes * kOverhead + megabytesOf(kept));
}

TEST_F(HostileXml, LongTokensStayWithinTheirLimits) {
  SKIP_UNDER_EMULATOR("the memory of the emulator would count");
  const std::size_t textBytes = (isLongRun() ? 100 : 4) * kMegabyte;
  // Without its security updates expat scans unfinished markup again with each block.
  const std::size_t markupBytes = isLongRun() ? 4 * kMegabyte : 256 * 1024;
  const struct {
    const char* what;
    std::string before;
    std::size_t bytes;
    std::string after;
    bool isKept;
  } cases[] = {
      {"text", "<r><k a='t'>", textBytes, "</k><n a='t'>v</n></r>", true},
      {"CDATA", "<r><k a='t'><![CDATA[", textBytes, "]]></k><n a='t'>v</n></r>", true},
      {"an attribute", "<r><k a='t' b='", markupBytes, "'></k><n a='t'>v</n></r>", true},
      {"a tag's name", "<r><k", markupBytes, " a='t'/><n a='t'>v</n></r>", true},
      {"a comment", "<r><!--", markupBytes, "--><k a='t'/><n a='t'>v</n></r>", false},
      {"an unfinished tag", "<r><n a='t'>v</n><k", markupBytes, "", false},
      {"an unfinished comment", "<r><n a='t'>v</n><!--", markupBytes, "", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const double inMegabytes = static_cast<double>(c.bytes) / kMegabyte;
    expectWithin(3.0 + 0.05 * inMegabytes, 40.0 + 6.0 * inMegabytes, [&] {
      const Fields fields = settingsOf(c.before + std::string(c.bytes, 'x') + c.after);
      ASSERT_EQ(fields.count("n"), 1u);
      EXPECT_EQ(fields.at("n"), "v|t|");
      std::size_t bytes = 0;
      for (const auto& [key, text] : fields) {
        const std::string all = key + text;
        bytes += static_cast<std::size_t>(std::count(all.begin(), all.end(), 'x'));
      }
      EXPECT_EQ(bytes, c.isKept ? c.bytes : 0);
    });
  }
}

TEST_F(HostileXml, EntityBombsAndDepthStayWithinTheirLimits) {
  expectWithin(5.0, 400.0, [] {
    settingsOf(entityBomb("r") + "<r><m a='u'>w&i;</m></r>");
    settingsOf(entityBomb("r") + "<r><m a='&i;'>w</m></r>");
  });
  expectWithin(10.0, 400.0, [] {
    std::string deep = "<r><k a='t'>v</k>";
    for (int i = 0; i < 1000000; ++i) deep += "<d a='t'>";
    EXPECT_EQ(settingsOf(deep).size(), 2u);
  });
}

// ---- Truncation

/// A document in the pieces that the parser reports.
using Tokens = std::vector<std::string>;

std::string documentOf(const Tokens& tokens) {
  std::string document;
  for (const std::string& token : tokens) document += token;
  return document;
}

/// Returns the tokens in the first `length` bytes of the document. Markup that is cut is left out,
/// and text that is cut keeps its complete characters.
Tokens truncated(const Tokens& tokens, std::size_t length) {
  Tokens whole;
  for (const std::string& token : tokens) {
    if (token.size() > length) {
      const bool isMarkup = token.front() == '<' || token.front() == '&';
      std::string text = isMarkup ? "" : token.substr(0, length);
      const bool isBeforeACharacter = (token[length] & 0xC0) != 0x80;
      while (!isBeforeACharacter && !text.empty() && (text.back() & 0xC0) == 0x80) text.pop_back();
      if (!isBeforeACharacter && !text.empty()) text.pop_back();
      if (!text.empty()) whole.push_back(text);
      break;
    }
    whole.push_back(token);
    length -= token.size();
  }
  return whole;
}

/// Returns the settings in `tokens`, whose keys have three letters.
Fields settingsIn(const Tokens& tokens) {
  Fields values;
  std::string key;
  for (const std::string& token : tokens) {
    if (token.substr(0, 2) == "</") {
      key.clear();
    } else if (token.front() == '<' && token.find(" describe") != std::string::npos) {
      key = token.substr(1, 3);
      values[key];
    } else if (token.front() != '<' && !key.empty()) {
      values[key] += token == "&amp;" ? "&" : withoutLeadingWhitespace(token);
    }
  }
  for (auto& [name, value] : values) value += "|t|d";
  return values;
}

TEST_F(HostileXml, SettingsCutAtAnyByte) {
  const Tokens tokens = {"<?xml version='1.0' encoding='UTF-8'?>",
                         "<CONFIGURATION type='T'>",
                         "\n",
                         "<one data_type='t' describe='d'>",
                         "first",
                         "</one>",
                         "\n",
                         "<two data_type='t' describe='d'>",
                         " \xC3\xBC\xE2\x82\xAC",
                         "&amp;",
                         "  b",
                         "\n",
                         "  c ",
                         "</two>",
                         "\n",
                         "</CONFIGURATION>",
                         "\n"};
  const std::string document = documentOf(tokens);
  for (std::size_t length = 0; length <= document.size(); ++length) {
    ASSERT_EQ(settingsOf(document.substr(0, length)), settingsIn(truncated(tokens, length)))
        << length;
  }
}

TEST_F(HostileXml, CatalogsCutAtAnyByte) {
  const Tokens tokens = {"<?xml version='1.0' encoding='UTF-8'?>",
                         "<E>",
                         "\n",
                         "<ERROR>",
                         "<ID>",
                         "12",
                         "</ID>",
                         "<MESSAGE>",
                         " one \xC3\xBC",
                         "</MESSAGE>",
                         "</ERROR>",
                         "\n",
                         "<ERROR>",
                         "<ID>",
                         "-3",
                         "</ID>",
                         "<MESSAGE>",
                         "two",
                         "&amp;",
                         " three",
                         "</MESSAGE>",
                         "</ERROR>",
                         "</E>"};
  const std::string document = documentOf(tokens);
  for (std::size_t length = 0; length <= document.size(); ++length) {
    Catalog expected;
    const Tokens left = truncated(tokens, length);
    const auto errors = std::count(left.begin(), left.end(), "</ERROR>");
    if (errors > 0) expected[12] = "one \xC3\xBC";
    if (errors > 1) expected[-3] = "three";
    ASSERT_EQ(catalogOf(document.substr(0, length)), expected) << length;
  }
}

// The following documents are longer than a block, so that a block ends within them.

constexpr std::size_t kBlockBytes = 8192;

/// Returns the lengths at which a document of `size` bytes is cut: all of them, or in a daily run
/// every thirteenth and the last one.
std::vector<std::size_t> lengthsUpTo(std::size_t size) {
  std::vector<std::size_t> lengths;
  for (std::size_t length = 0; length < size; length += isLongRun() ? 1 : 13) {
    lengths.push_back(length);
  }
  lengths.push_back(size);
  return lengths;
}

/// Returns the token that contains the byte at `offset`.
std::string tokenAt(const Tokens& tokens, std::size_t offset) {
  for (const std::string& token : tokens) {
    if (offset < token.size()) return token;
    offset -= token.size();
  }
  return "";
}

/// Returns a key of three letters.
std::string keyOf(int number) {
  return "k"s + static_cast<char>('a' + number / 26) + static_cast<char>('a' + number % 26);
}

TEST_F(HostileXml, LongSettingsCutAtAnyByte) {
  Tokens tokens = {"<?xml version='1.0' encoding='UTF-8'?>", "<CONFIGURATION type='T'>", "\n"};
  for (int i = 0; i < 150; ++i) {
    const std::string key = keyOf(i);
    const Tokens entry = {"<" + key + " data_type='t' describe='d'>",
                          " \xC3\xBC" + std::string(static_cast<std::size_t>(i % 19), 'v'),
                          "&amp;",
                          "  \xE2\x82\xAC" + std::to_string(i) + " \xF0\x9F\x98\x80 ",
                          "\n",
                          "  c ",
                          "</" + key + ">",
                          "\n"};
    tokens.insert(tokens.end(), entry.begin(), entry.end());
  }
  tokens.insert(tokens.end(), {"</CONFIGURATION>", "\n"});
  const std::string document = documentOf(tokens);
  ASSERT_GT(document.size(), 10000u);
  ASSERT_EQ(tokenAt(tokens, kBlockBytes).front(), '<')
      << "text at the end of a block would be split";
  for (const std::size_t length : lengthsUpTo(document.size())) {
    ASSERT_EQ(settingsOf(document.substr(0, length)), settingsIn(truncated(tokens, length)))
        << length;
  }
}

TEST_F(HostileXml, LongCatalogsCutAtAnyByte) {
  Tokens tokens = {"<?xml version='1.0' encoding='UTF-8'?>", "<E>", "\n"};
  Catalog all;
  for (int i = 0; i < 150; ++i) {
    const std::string message = "message \xC3\xBC " + std::to_string(i);
    const Tokens entry = {"<ERROR>", "<ID>",  std::to_string(i), "</ID>",    "<MESSAGE>", " first",
                          "&amp;",   message, "</MESSAGE>",      "</ERROR>", "\n"};
    tokens.insert(tokens.end(), entry.begin(), entry.end());
    all[i] = message;
  }
  tokens.push_back("</E>");
  const std::string document = documentOf(tokens);
  ASSERT_GT(document.size(), 10000u);
  ASSERT_EQ(tokenAt(tokens, kBlockBytes).front(), '<')
      << "text at the end of a block would be split";
  for (const std::size_t length : lengthsUpTo(document.size())) {
    const Tokens left = truncated(tokens, length);
    const auto errors = std::count(left.begin(), left.end(), "</ERROR>");
    const Catalog expected(all.begin(), std::next(all.begin(), errors));
    ASSERT_EQ(catalogOf(document.substr(0, length)), expected) << length;
  }
}

// ---- Bytes that XML forbids

TEST_F(HostileXml, InvalidBytesEndTheParse) {
  const struct {
    const char* what;
    std::string bytes;
  } cases[] = {
      {"a byte that UTF-8 never has", "\xFF"},
      {"a lone continuation byte", "\x80"},
      {"a lone lead byte", "\xC3"},
      {"a sequence cut short", "\xE2\x82"},
      {"an overlong sequence of two bytes", "\xC0\x80"},
      {"an overlong sequence of three bytes", "\xE0\x80\x80"},
      {"half a surrogate pair", "\xED\xA0\x80"},
      {"a code point above U+10FFFF", "\xF4\x90\x80\x80"},
      {"a sequence of five bytes", "\xF8\x88\x80\x80\x80"},
      {"U+FFFF", "\xEF\xBF\xBF"},
      {"a control character", "\x01"},
      {"a NUL", "\0"s},
      {"a tag in the text", "<"},
      {"an ampersand", "& "},
  };
  const std::string after = "<z a='t'>lost</z></r>";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const Fields before = {{"k", "v|t|"}};
    EXPECT_EQ(settingsOf("<r><k a='t'>v</k><m a='u'>so far" + c.bytes + "w</m>" + after),
              (Fields{{"k", "v|t|"}, {"m", "so far|u|"}}));
    EXPECT_EQ(settingsOf("<r><k a='t'>v</k><m" + c.bytes + " a='u'>w</m>" + after), before);
    EXPECT_EQ(settingsOf("<r><k a='t'>v</k><m a='u" + c.bytes + "'>w</m>" + after), before);
    EXPECT_EQ(catalogOf("<E>" + errorXml("1", "a") + "<ERROR><ID>2</ID><MESSAGE>b" + c.bytes +
                        "c</MESSAGE></ERROR></E>"),
              (Catalog{{1, "a"}}));
  }
}

TEST_F(HostileXml, OtherEncodings) {
  const std::string xml = "<r><k a='t'>v</k></r>";
  EXPECT_EQ(settingsOf("\xEF\xBB\xBF" + xml), (Fields{{"k", "v|t|"}})) << "a byte order mark";
  EXPECT_EQ(settingsOf("<?xml version='1.0' encoding='ISO-8859-1'?><r><k a='t'>\xC3\xA4</k></r>"),
            (Fields{{"k", "\xC3\xA4|t|"}}))
      << "the declared encoding is ignored";
}

TEST_F(HostileXml, RandomDocumentsAreReadUpToTheError) {
  std::mt19937 random(43);
  const std::string pieces[] = {"<k a='t' b='d'>",
                                "</k>",
                                "v",
                                "&amp;",
                                "<![CDATA[",
                                "]]>",
                                "<!--",
                                "-->",
                                "'",
                                "\"",
                                "\xC3",
                                "\n"};
  std::uniform_int_distribution<std::size_t> pick(0, std::size(pieces) - 1);
  const Written text = written([&] {
    for (int i = 0; i < 800; ++i) {
      std::string xml = "<CONFIGURATION><first a='t'>v</first>";
      for (int length = i % 12; length >= 0; --length) xml += pieces[pick(random)];
      const Fields fields = settingsOf(xml);
      ASSERT_EQ(fields.count("first"), 1u) << xml;
      ASSERT_EQ(fields.at("first"), "v|t|") << xml;
      ASSERT_LE(fields.size(), 2u) << xml;
      ASSERT_EQ(catalogOf(xml), Catalog()) << xml;
    }
  });
  EXPECT_EQ(text.out + text.err, "");
}

}  // namespace
