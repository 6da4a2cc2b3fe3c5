/// Exchange of settings files and error catalogs with another program, xmllint (Debian:
/// libxml2-utils).
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <zn_error.h>
#include <zn_setcfg.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "stored_xml.h"
#include "temporary_files.h"

namespace {

using namespace std::string_literals;

class XmlExchange : public InTemporaryDirectory {};

struct Answer {
  int status;
  std::string out;
};

/// Runs xmllint, whose messages go to the file "messages".
Answer xmllint(const std::string& arguments) {
  std::FILE* const pipe = popen(("xmllint --nonet " + arguments + " 2>messages").c_str(), "r");
  if (pipe == nullptr) return {-1, ""};
  std::string out;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) out += static_cast<char>(c);
  const int status = pclose(pipe);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

/// Returns the value of an XPath expression in `file`.
std::string evaluated(const std::string& file, const std::string& expression) {
  const Answer answer = xmllint("--xpath \"string(" + expression + ")\" " + file);
  EXPECT_EQ(answer.status, 0) << expression << ": is xmllint installed? " << readFile("messages");
  // xmllint adds a line feed.
  return answer.out.substr(0, answer.out.empty() ? 0 : answer.out.size() - 1);
}

int counted(const std::string& file, const std::string& nodes) {
  const std::string count = evaluated(file, "count(" + nodes + ")");
  return count.empty() ? -1 : std::stoi(count);
}

using Entries = std::vector<std::vector<std::string>>;

/// Returns key, type, description and value of each entry in the file of a store, in its order.
Entries entriesIn(const std::string& file) {
  Entries entries;
  const int count = counted(file, "/CONFIGURATION/*");
  EXPECT_EQ(counted(file, "//*"), count + 1) << "nothing below the entries";
  for (int i = 1; i <= count; ++i) {
    const std::string entry = "/CONFIGURATION/*[" + std::to_string(i) + "]";
    EXPECT_EQ(counted(file, entry + "/@*"), 2);
    entries.push_back({evaluated(file, "name(" + entry + ")"),
                       evaluated(file, entry + "/@data_type"),
                       evaluated(file, entry + "/@describe"), evaluated(file, entry)});
  }
  return entries;
}

Entries entriesOf(const zn_lib::Configuration& store) {
  Entries entries;
  for (const auto& [key, element] : store.elements) {
    entries.push_back({key, element.type, element.describe, element.value});
  }
  return entries;
}

/// Adds entries of all kinds that are written without loss.
void fill(zn_lib::Configuration& store) {
  store.set("colour", "blue");
  store.set("b", "NUMBER", "-1.5e3", "a number");
  store.set("B", "", "", "");
  store.set("_under-score.1", "TEXT", " spaces around ", " of both ");
  store.set("\xC3\xBC", "\xE2\x82\xAC", "\xC3\xA4\xF0\x9F\x98\x80", "\xC3\x9F");
  store.set("marks", "TEXT", "'\"> ]] ;#%", "\"> #;");
  store.set("lines", "TEXT", "one\n  two\n\tthree\n", "");
  store.set("xml", "TEXT", std::string(100000, 'x'), "long");
}

TEST_F(XmlExchange, SavedStoresAreReadByXmllint) {
  zn_lib::Configuration store("TOOL", "tool");
  fill(store);
  ASSERT_TRUE(store.save());
  ASSERT_EQ(store.elements.size(), 9u) << "the entries and the stamp";
  EXPECT_EQ(xmllint("--noout tool.cfg").status, 0) << readFile("messages");
  EXPECT_EQ(entriesIn("tool.cfg"), entriesOf(store));
  EXPECT_EQ(evaluated("tool.cfg", "name(/*)"), "CONFIGURATION");
  EXPECT_EQ(evaluated("tool.cfg", "/CONFIGURATION/@type"), "TOOL");
  EXPECT_EQ(counted("tool.cfg", "/CONFIGURATION/@*"), 1);
  EXPECT_EQ(evaluated("tool.cfg", "/CONFIGURATION/UPDATE"), store.get("UPDATE").value);
}

TEST_F(XmlExchange, EmptyStoresAndBackupsAreReadByXmllint) {
  zn_lib::Configuration store;
  ASSERT_TRUE(store.save());
  const Entries first = entriesOf(store);
  EXPECT_EQ(entriesIn("config.xml"), first);
  store.set("added", "1");
  ASSERT_TRUE(store.save());
  EXPECT_EQ(entriesIn("config.xml"), entriesOf(store));
  EXPECT_EQ(entriesIn("config.xml~"), first);
}

TEST_F(XmlExchange, TextThatEndsALoadIsRejectedByXmllint) {
  const struct {
    const char* what;
    std::string key, type, describe, value;
  } cases[] = {
      {"a tag", "k", "t", "d", "a<b"},
      {"an ampersand", "k", "t", "d", "a & b"},
      {"an apostrophe in the type", "k", "it's", "d", "v"},
      {"an apostrophe in the description", "k", "t", "it's", "v"},
      {"a space in the key", "my key", "t", "d", "v"},
      {"a key that is no name", "k!", "t", "d", "v"},
      {"no key", "", "t", "d", "v"},
      {"no UTF-8", "k", "t", "d", "\xFF"},
  };
  for (const auto& c : cases) {
    {
      zn_lib::Configuration store;
      store.set("A", "first");
      store.set(c.key, c.type, c.value, c.describe);
    }
    EXPECT_EQ(xmllint("--noout config.xml").status, 1) << c.what;
    zn_lib::Configuration store;
    store.load();
    EXPECT_EQ(store.get("A").value, c.key.empty() ? "" : "first") << c.what;
    EXPECT_EQ(store.elements.count("zz"), 0u);
    std::filesystem::remove("config.xml");
  }
}

TEST_F(XmlExchange, StoresWrittenByXmllintAreLoaded) {
  zn_lib::Configuration store;
  fill(store);
  store.elements.erase("lines");  // its line breaks cannot be distinguished from indentation
  ASSERT_TRUE(store.save());
  zn_lib::Configuration expected;
  expected.load();
  for (const char* form : {"--format", "--c14n", "--encode UTF-8", "--noblanks"}) {
    const Answer answer = xmllint(form + " config.xml"s);
    ASSERT_EQ(answer.status, 0) << form;
    ASSERT_NE(answer.out, "") << form;
    writeFile("other.cfg", answer.out);
    zn_lib::Configuration other("", "other");
    EXPECT_TRUE(other.load());
    EXPECT_EQ(other.elements.size(), expected.elements.size()) << form;
    for (const auto& [key, element] : expected.elements) {
      EXPECT_EQ(other.get(key).type, element.type) << form << ' ' << key;
      EXPECT_EQ(other.get(key).describe, element.describe) << form << ' ' << key;
      // xmllint writes ">" as "&gt;", so the space after it is lost.
      EXPECT_EQ(other.get(key).value, key == "marks" ? "'\">]] ;#%" : element.value)
          << form << ' ' << key;
    }
  }
}

TEST_F(XmlExchange, CatalogsAreReadByXmllint) {
  const std::map<int, std::string> messages = {{-3, "below"},
                                               {1, "Text of error one"},
                                               {2, "\xC3\xBC\xE2\x82\xAC"},
                                               {30000, "a > b's \"c\""}};
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ERRORS>\n";
  for (const auto& [id, text] : messages) {
    xml += errorXml(std::to_string(id), text) + "\n";
  }
  writeFile("errors.xml", xml + "</ERRORS>\n");

  EXPECT_EQ(xmllint("--noout errors.xml").status, 0) << readFile("messages");
  Catalog catalog;
  ASSERT_TRUE(zn_lib::readErrorFile("errors.xml", catalog));
  ASSERT_EQ(catalog.size(), messages.size());
  ASSERT_EQ(counted("errors.xml", "//ERROR"), static_cast<int>(messages.size()));
  int i = 0;
  for (const auto& [id, text] : catalog) {
    const std::string error = "/ERRORS/ERROR[" + std::to_string(++i) + "]";
    EXPECT_EQ(evaluated("errors.xml", error + "/ID"), std::to_string(id));
    EXPECT_EQ(evaluated("errors.xml", error + "/MESSAGE"), text);
    EXPECT_EQ(messages.at(id), text);
  }
}

}  // namespace
