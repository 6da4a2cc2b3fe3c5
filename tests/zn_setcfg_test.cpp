#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <zn_datetime.h>
#include <zn_output.h>
#include <zn_setcfg.h>
#include <zn_str.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "child_status.h"
#include "emulation.h"
#include "output_capture.h"
#include "resource_limits.h"
#include "samples.h"
#include "split_document.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "tracee.h"

namespace {

/// The number of bytes that one system call writes at most.
std::size_t longestWrite = static_cast<std::size_t>(-1);

}  // namespace

// Replaces the function of the C library.
extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  return syscall(SYS_write, descriptor, bytes, std::min(size, longestWrite));
}

namespace {

using namespace std::string_literals;
using zn_lib::Configuration;

class Settings : public InTemporaryDirectory {
 protected:
  Settings() { zn_lib::setUseTime(false); }
};

/// Returns the settings that are read from a file with the contents `xml`.
zn_lib::config_map loaded(const std::string& xml) {
  writeFile("config.xml", xml);
  Configuration store;
  EXPECT_TRUE(store.load());
  return store.elements;
}

std::size_t entriesHere() { return namesIn(".").size(); }

TEST_F(Settings, HeaderExamples) {
  {
    Configuration settings("TOOL", "tool");
    settings.load();
    settings.set("colour", "blue");
    EXPECT_EQ(settings.get("colour").value, "blue");
    settings.set("UPDATE", "DATE", "2024-03-05 14:07:09", "Date of update in ISO9601");
  }
  EXPECT_EQ(
      readFile("tool.cfg"),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<CONFIGURATION type='TOOL'>\n"
      "<UPDATE data_type='DATE' describe='Date of update in ISO9601'>2024-03-05 14:07:09</UPDATE>\n"
      "<colour data_type='TEXT' describe='colour'>blue</colour>\n"
      "</CONFIGURATION>\n");
}

TEST_F(Settings, AreInitiallyEmpty) {
  const zn_lib::ConfigElement element;
  EXPECT_EQ(fieldsOf(element), "|TEXT|");
  Configuration store;
  EXPECT_EQ(store.path + "," + store.name + "," + store.extension + "," + store.type,
            ",config,xml,SYSTEM");
  EXPECT_FALSE(store.changed);
  EXPECT_TRUE(store.backup);
  EXPECT_TRUE(store.elements.empty());
  EXPECT_EQ(store.getConfigurationFile(), "config.xml");
  Configuration named("TYPE", "name");
  EXPECT_EQ(named.path + "," + named.name + "," + named.extension + "," + named.type,
            ",name,cfg,TYPE");
  EXPECT_FALSE(named.changed);
}

TEST_F(Settings, MembersAreInOrder) {
  const auto at = [](const auto& member) { return reinterpret_cast<const char*>(&member); };
  const Configuration store;
  EXPECT_LT(at(store.elements), at(store.path));
  EXPECT_LT(at(store.path), at(store.name));
  EXPECT_LT(at(store.name), at(store.extension));
  EXPECT_LT(at(store.extension), at(store.type));
  EXPECT_LT(at(store.type), at(store.changed));
  EXPECT_LT(at(store.changed), at(store.backup));
  const zn_lib::ConfigElement element;
  EXPECT_LT(at(element.value), at(element.type));
  EXPECT_LT(at(element.type), at(element.describe));
  static_assert(!std::is_polymorphic_v<zn_lib::ConfigElement>);
  static_assert(std::has_virtual_destructor_v<Configuration>);
}

TEST_F(Settings, LoadIsVirtual) {
  class Preset : public Configuration {
   public:
    bool load() override {
      set("preset", "1");
      return Configuration::load();
    }
  };
  const std::unique_ptr<Configuration> store = std::make_unique<Preset>();
  EXPECT_TRUE(store->load());
  EXPECT_EQ(store->get("preset").value, "1");
}

TEST_F(Settings, FileName) {
  const Home home("/home/ada");
  Configuration store;
  store.path = "~/conf";
  EXPECT_EQ(store.getConfigurationFile(), "/home/ada/conf/config.xml");
  store.extension = "";
  EXPECT_EQ(store.getConfigurationFile(), "/home/ada/conf/config");
  store.name = "";
  EXPECT_EQ(store.getConfigurationFile(), "");
  EXPECT_FALSE(store.load());
  EXPECT_FALSE(store.save());
}

// ---- In memory

TEST_F(Settings, KeysAreTrimmedAndKeepTheirCase) {
  Configuration store("T", "");
  std::string key = " \tMy key\n";
  store.adjustKey(key);
  EXPECT_EQ(key, "My key");
  store.set("  key ", "v");
  EXPECT_EQ(store.get("key").value, "v");
  EXPECT_EQ(store.get(" key\n").value, "v");
  EXPECT_EQ(fieldsOf(store.get("KEY")), "|TEXT|");
  EXPECT_EQ(store.elements.size(), 1u) << "get never inserts";
  store.set("", "empty");
  EXPECT_EQ(store.get("").value, "empty");
}

TEST_F(Settings, SetWithAValue) {
  Configuration store("T", "");
  store.set("new", "v");
  EXPECT_TRUE(store.changed);
  EXPECT_EQ(fieldsOf(store.get("new")), "v|TEXT|new");
  store.set("new", "NUMBER", "1", "a number");
  store.set("new", "2");
  EXPECT_EQ(fieldsOf(store.get("new")), "2|NUMBER|a number");
  store.set(" new ", "3");
  EXPECT_EQ(fieldsOf(store.get("new")), "3|TEXT| new ") << "the key is looked up untrimmed";
  store.elements[" odd "];
  store.set(" odd ", "4");
  EXPECT_EQ(fieldsOf(store.get("odd")), "4|TEXT|");
}

TEST_F(Settings, SetWithAnElement) {
  Configuration store("T", "");
  zn_lib::ConfigElement element;
  element.value = "v";
  element.type = "t";
  element.describe = "d";
  store.set(" key ", element);
  EXPECT_TRUE(store.changed);
  EXPECT_EQ(fieldsOf(store.get("key")), "v|t|d");
  store.set("\tkey\n", "t2", "v2", "d2");
  EXPECT_EQ(fieldsOf(store.get("key")), "v2|t2|d2");
  EXPECT_EQ(store.elements.size(), 1u);
  store.set("key", element);
  store.set("", element);
  store.set(" ", "t", "a space", "d");
  EXPECT_EQ(store.get("").value, "a space");
  EXPECT_EQ(store.elements.size(), 2u);
  store.set("copy", store.elements.at("key").value);
  EXPECT_EQ(store.get("copy").value, "v");
}

TEST(MapKey, IsByteWise) {
  static_assert(
      std::is_same_v<decltype(&zn_lib::map_key<std::string>::operator()),
                     bool (zn_lib::map_key<std::string>::*)(std::string, std::string) const>);
  const zn_lib::map_key<std::string> before;
  EXPECT_TRUE(before("B", "a"));
  EXPECT_TRUE(before("a", "ab"));
  EXPECT_TRUE(before("a", "\xC3"));
  EXPECT_FALSE(before("a", "a"));
}

// ---- Loading

TEST_F(Settings, LoadReadsElements) {
  const struct {
    const char* what;
    std::string xml, fields;
  } cases[] = {
      {"two attributes", "<C><k a='t' b='d'>v</k></C>", "v|t|d"},
      {"one attribute", "<C><k a='t'>v</k></C>", "v|t|"},
      {"more attributes", "<C><k a='t' b='d' c='x'>v</k></C>", "v|t|d"},
      {"no attribute", "<C><k>v</k></C>", "v|TEXT|"},
      {"no text", "<C><k a='t'/></C>", "|t|"},
      {"whitespace", "<C><k a='t'>  v w \n </k></C>", "v w |t|"},
      {"an entity", "<C><k a='t'>a &amp; b</k></C>", "a &b|t|"},
      {"a line break", "<C><k a='t'>a\n  b</k></C>", "ab|t|"},
      {"twice", "<C><k a='t' b='d'>v</k><k a='u'>w</k></C>", "w|u|d"},
      {"text after a child", "<C><k a='t'>v<x/>w</k></C>", "v|t|"},
      {"at any depth", "<C><x><k a='t'>v</k></x></C>", "v|t|"},
      {"malformed after it", "<C><k a='t'>v</k><", "v|t|"},
      {"a later element without text", "<C><k a='t'>v</k><k a='u'/></C>", "v|u|"},
      {"a later element without attributes", "<C><k a='t' b='d'>v</k><k>w</k></C>", "w|t|d"},
      {"within itself", "<C><k a='t'>v<k>w</k>x</k></C>", "w|t|"},
      {"a CDATA section", "<C><k a='t'>v<![CDATA[ <w> ]]></k></C>", "v<w> |t|"},
      {"a space as a reference", "<C><k a='t'>v&#32;w</k></C>", "vw|t|"},
      {"a comment", "<C><k a='t'>v <!-- -->  w</k></C>", "v w|t|"},
      {"whitespace only", "<C><k> \n </k></C>", "|TEXT|"},
      {"any attributes", "<C><k describe='t' data_type='d'>v</k></C>", "v|t|d"},
      {"in the usual root", "<CONFIGURATION type='x'>y<k a='t'>v</k>z</CONFIGURATION>", "v|t|"},
      {"a quote", "<C><k a='t' b=\"it's\">v</k></C>", "v|t|it's"},
  };
  for (const auto& c : cases) {
    const zn_lib::config_map elements = loaded(c.xml);
    ASSERT_EQ(elements.count("k"), 1u) << c.what;
    EXPECT_EQ(fieldsOf(elements.at("k")), c.fields) << c.what;
  }
}

TEST_F(Settings, LoadSkipsElementsCalledConfiguration) {
  EXPECT_TRUE(loaded("<CONFIGURATION type='x'>text</CONFIGURATION>").empty());
  EXPECT_EQ(fieldsOf(loaded("<root type='x'>text</root>").at("root")), "text|x|");
  EXPECT_TRUE(
      loaded("<CONFIGURATION><CONFIGURATION type='x'>text</CONFIGURATION></CONFIGURATION>").empty())
      << "at any depth";
  const zn_lib::config_map elements = loaded("<C>\n<k a='t'>v</k>\n</C>");
  EXPECT_EQ(elements.size(), 2u) << "a line break in the root makes the root an entry";
  EXPECT_EQ(fieldsOf(elements.at("C")), "|TEXT|");
  EXPECT_EQ(loaded("<C><k a='t'>v</k>\n</C>").size(), 1u);
  EXPECT_TRUE(loaded("<C><k/></C>").empty()) << "neither text nor attributes";
  EXPECT_TRUE(loaded("").empty());
  EXPECT_TRUE(loaded("no XML").empty());
}

/// Returns a document of settings in an order that is not theirs. Each occurs twice, once without a
/// description.
std::string shuffledSettings(int count) {
  std::string xml = "<C>";
  for (int i = 0; i < 2 * count; ++i) {
    const std::string number = std::to_string(i * 7 % count);
    xml += "<k" + number + (i < count ? " a='t' b='d" : " a='") + number + "'>" +
           std::to_string(i) + " &amp;  more</k" + number + ">\n";
  }
  return xml + "</C>";
}

TEST_F(Settings, LoadReadsWhatTheHandlerReads) {
  const struct {
    const char* what;
    std::string xml;
  } cases[] = {
      {"nothing", ""},
      {"a second element with the same key", "<C><k a='t' b='d'>v</k><k a='u'>w</k></C>"},
      {"an element inside another", "<C><a x='1'>v<b y='2'>w</b>x</a></C>"},
      {"the same element inside itself", "<C><a x='1'>v<a>w</a>x</a></C>"},
      {"pieces of text", "<C><k a='t'> a &lt;  b<![CDATA[ c]]><!-- d --> e</k></C>"},
      {"three attributes", "<C><k a='1' b='2' c='3'/></C>"},
      {"an end that is missing", "<C><k a='t'>v</k><l a='t'>w"},
      {"text longer than any buffer", "<C><k a='t'>" + std::string(600000, 'v') + "</k></C>"},
      {"many settings", shuffledSettings(9999)},
      {"more text than is recorded at a time",
       "<C>" + zn_lib::replicateString("<k a='t'>" + std::string(1000, 'v') + "</k>", 12000)},
  };
  for (const auto& c : cases) {
    writeFile("config.xml", c.xml);
    zn_lib::ReadXml<zn_lib::ConfigEvent> reader;
    std::string name = "config.xml";
    reader.setFileName(name);
    ASSERT_TRUE(reader.parseFile()) << c.what;
    Configuration store;
    Configuration filled;
    zn_lib::config_map merged;
    for (const char* key : {"k", "k1", "zz"}) {
      filled.set(key, "T", "old", "older");
      merged[key] = filled.get(key);
    }
    reader.event->exportData(merged);
    store.load();
    filled.load();
    EXPECT_EQ(fieldsOf(store.elements), fieldsOf(reader.event->data)) << c.what;
    EXPECT_EQ(fieldsOf(filled.elements), fieldsOf(merged)) << c.what;
  }
}

TEST_F(Settings, LoadMerges) {
  writeFile("config.xml", "<CONFIGURATION type='OTHER'><a x='t' y='d'>new</a></CONFIGURATION>");
  Configuration store;
  store.set("a", "old");
  store.set("b", "kept");
  EXPECT_TRUE(store.load());
  EXPECT_FALSE(store.changed);
  EXPECT_EQ(fieldsOf(store.get("a")), "new|t|d");
  EXPECT_EQ(store.get("b").value, "kept");
  EXPECT_EQ(store.type, "SYSTEM");
}

TEST_F(Settings, LoadAndSaveMayUseDifferentNames) {
  const Home home(directory.c_str());
  // Loading expands and splits the name again.
  const struct {
    const char* what;
    std::string name, read;
  } cases[] = {
      {"a tilde in the base name", "a~", "a" + directory.string() + ".cfg"},
      {"a leading space", " b", "b.cfg"},
      {"a backslash", "d\\e", "d/e.cfg"},
      {"a line break", "f\ng", ""},
  };
  std::filesystem::create_directory("d");
  for (const auto& c : cases) {
    Configuration store("T", c.name);
    store.set("a", "1");
    EXPECT_TRUE(store.save()) << c.what;
    EXPECT_TRUE(isThere(c.name + ".cfg")) << c.what;
    store.elements.clear();
    EXPECT_TRUE(store.load()) << c.what;
    EXPECT_TRUE(store.elements.empty()) << c.what;
    if (c.read.empty()) continue;
    std::filesystem::create_directories(std::filesystem::absolute(c.read).parent_path());
    writeFile(c.read, "<C><k a='t'>read</k></C>");
    EXPECT_TRUE(store.load()) << c.what;
    EXPECT_EQ(store.get("k").value, "read") << c.what;
  }
}

TEST_F(Settings, LoadSucceedsWithoutAFile) {
  Configuration store;
  store.changed = true;
  EXPECT_TRUE(store.load());
  EXPECT_FALSE(store.changed);
  EXPECT_TRUE(store.elements.empty());
}

// ---- Saving

TEST_F(Settings, TheFirstSaveIsStamped) {
  Configuration store;
  const std::string before = zn_lib::getTodayAsISO();
  EXPECT_TRUE(store.save());
  EXPECT_FALSE(zn_lib::isUseTime()) << "restored";
  const std::string stamp = store.get("UPDATE").value;
  EXPECT_EQ(stamp.size(), 19u);
  EXPECT_GE(stamp, before);
  EXPECT_EQ(fieldsOf(store.get("UPDATE")), stamp + "|DATE|Date of update in ISO9601");
  EXPECT_FALSE(store.changed);
  EXPECT_EQ(readFile("config.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='SYSTEM'>\n"
            "<UPDATE data_type='DATE' describe='Date of update in ISO9601'>" +
                stamp + "</UPDATE>\n</CONFIGURATION>\n");
  store.set("UPDATE", "DATE", "kept", "");
  zn_lib::setUseTime(true);
  EXPECT_TRUE(store.save());
  EXPECT_TRUE(zn_lib::isUseTime());
  EXPECT_EQ(store.get("UPDATE").value, "kept");
}

TEST_F(Settings, SaveEscapesNothing) {
  Configuration store("T'<\0x"s, "tool");
  store.set("UPDATE", "", "", "");
  store.set("my key", "t\0x"s, "a<b&c\0x"s, "d'\0x"s);
  EXPECT_TRUE(store.save());
  EXPECT_EQ(readFile("tool.cfg"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='T'<'>\n"
            "<UPDATE data_type='' describe=''></UPDATE>\n"
            "<my key data_type='t' describe='d''>a<b&c</my key>\n</CONFIGURATION>\n");
}

TEST_F(Settings, SavedSettingsAreLoaded) {
  {
    Configuration store;
    store.set("plain", "TEXT", "value", "description");
    store.set("trailing", "TEXT", "value ", "");
    store.set("leading", "TEXT", " value", "");
    store.set("lines", "TEXT", "one\n  two", "");
    store.set("bytes", "TEXT", "\xC3\xA4", "\xE2\x82\xAC");
  }
  Configuration store;
  store.load();
  EXPECT_EQ(fieldsOf(store.get("plain")), "value|TEXT|description");
  EXPECT_EQ(store.get("trailing").value, "value ");
  EXPECT_EQ(store.get("leading").value, "value");
  EXPECT_EQ(store.get("lines").value, "onetwo");
  EXPECT_EQ(fieldsOf(store.get("bytes")), "\xC3\xA4|TEXT|\xE2\x82\xAC");
}

/// Returns the value of the setting "k" after each of three saves and loads, and "lost" once a load
/// ends before the last setting.
std::vector<std::string> afterEachSave(const std::string& value) {
  Configuration first("TYPE", "tool");
  first.set("k", value);
  first.set("z", "last");
  first.save();
  std::vector<std::string> values;
  for (int i = 0; i < 3; ++i) {
    Configuration store("TYPE", "tool");
    store.load();
    values.push_back(store.get("z").value == "last" ? store.get("k").value : "lost");
    store.save();
  }
  return values;
}

TEST_F(Settings, EncodedValuesAreLoadedUnchangedUnlessXmlDecodesThem) {
  using Values = std::vector<std::string>;
  for (const std::string value :
       {"a%26b%3Cc%20", "6126623c63", "YSZiPGM=", "YSZiPGM", "a=26b", "a\\x26b\\u003c", "a;b"}) {
    EXPECT_EQ(afterEachSave(value), Values(3, value)) << value;
  }
  EXPECT_EQ(afterEachSave("a&amp;b"), (Values{"a&b", "lost", "lost"}));
  EXPECT_EQ(afterEachSave("a&amp;amp;b"), (Values{"a&amp;b", "a&b", "lost"}));
  EXPECT_EQ(afterEachSave("<![CDATA[a<b]]>"), (Values{"a<b", "lost", "lost"}));
}

TEST_F(Settings, AKeyWithASpaceEndsTheNextLoad) {
  {
    Configuration store;
    store.set("a", "1");
    store.set("my key", "2");
    store.set("z", "3");
  }
  Configuration store;
  store.load();
  EXPECT_EQ(store.get("a").value, "1");
  EXPECT_EQ(store.elements.count("z"), 0u);
}

TEST_F(Settings, TheDestructorSavesChanges) {
  writeFile("config.xml", "<C><a x='t'>1</a></C>");
  {
    Configuration().load();
  }
  EXPECT_EQ(readFile("config.xml"), "<C><a x='t'>1</a></C>");
  EXPECT_EQ(entriesHere(), 1u) << "no backup either";
  {
    Configuration store;
    store.load();
    store.set("b", "2");
  }
  EXPECT_EQ(readFile("config.xml~"), "<C><a x='t'>1</a></C>");
  EXPECT_EQ(loaded(readFile("config.xml")).size(), 3u);
}

TEST_F(Settings, BackupIsThePreviousFile) {
  for (int run = 0; run < 4; ++run) {
    const std::string before = readFile("config.xml");
    Configuration store;
    store.load();
    store.set("run", std::to_string(run));
    EXPECT_TRUE(store.save());
    EXPECT_EQ(readFile("config.xml~"), before);
    EXPECT_EQ(entriesHere(), run == 0 ? 1u : 2u) << "nothing else is left";
  }
  Configuration store;
  store.backup = false;
  store.set("only", "1");
  EXPECT_TRUE(store.save());
  EXPECT_NE(readFile("config.xml"), readFile("config.xml~"));
  EXPECT_EQ(loaded(readFile("config.xml~")).at("run").value, "2");
}

TEST_F(Settings, TheFileIsTheSameHoweverItIsWritten) {
  const std::string longType(1000, 'T');
  Configuration store(longType, "store");
  store.set("a", "TEXT", "one", "first");
  store.set("UPDATE", "DATE", "now", "");
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<CONFIGURATION type='" +
      longType +
      "'>\n"
      "<UPDATE data_type='DATE' describe=''>now</UPDATE>\n"
      "<a data_type='TEXT' describe='first'>one</a>\n"
      "</CONFIGURATION>\n";
  ASSERT_TRUE(store.save());
  EXPECT_EQ(readFile("store.cfg"), text) << "beside the file";

  for (const std::size_t most : {std::size_t{1}, std::size_t{7}, std::size_t{1000}}) {
    writeFile("store.cfg", "");
    longestWrite = most;
    const bool isSaved = store.save();
    longestWrite = static_cast<std::size_t>(-1);
    EXPECT_TRUE(isSaved);
    EXPECT_EQ(readFile("store.cfg"), text) << most << " bytes a call";
  }

  store.backup = false;
  writeFile("store.cfg", "");
  ASSERT_TRUE(store.save());
  EXPECT_EQ(readFile("store.cfg"), text) << "in place";
}

TEST_F(Settings, SaveWithoutStandardInput) {
  const int status = statusOfChild([] {
    // The next file to be opened gets its number.
    close(STDIN_FILENO);
    Configuration store;
    store.set("a", "1");
    EXPECT_TRUE(store.save());
    EXPECT_EQ(entriesHere(), 1u);
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(loaded(readFile("config.xml")).at("a").value, "1");
}

TEST_F(Settings, ASaveThatFailsWithoutStandardInput) {
  const int status = statusOfChild([] {
    close(STDIN_FILENO);
    ASSERT_TRUE(limitFileSize(1));
    Configuration store;
    store.set("a", "1");
    EXPECT_TRUE(store.save());
    EXPECT_EQ(entriesHere(), 0u);
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1);
  });
  EXPECT_EQ(status, 0);
}

TEST_F(Settings, SaveFailsWithoutADirectory) {
  zn_lib::setVerbose(true);
  Configuration store;
  store.path = "missing";
  store.set("a", "1");
  const Written text = written([&] { EXPECT_FALSE(store.save()); });
  zn_lib::setVerbose(false);
  EXPECT_EQ(text.out + text.err, "");
  EXPECT_TRUE(store.changed) << "the destructor tries again";
  EXPECT_EQ(store.elements.count("UPDATE"), 0u);
  store.path = "";
}

TEST_F(Settings, AFailedSaveKeepsTheStamp) {
  Configuration store;
  store.path = "missing";
  store.set("UPDATE", "DATE", "2024-03-05 14:07:09", "earlier");
  EXPECT_FALSE(store.save());
  EXPECT_EQ(fieldsOf(store.get("UPDATE")), "2024-03-05 14:07:09|DATE|earlier");
  store.changed = false;
}

TEST_F(Settings, TheDestructorTriesAgainAfterAFailedSave) {
  {
    Configuration store;
    store.path = "later";
    store.set("a", "1");
    EXPECT_FALSE(store.save());
    EXPECT_TRUE(store.changed);
    std::filesystem::create_directory("later");
  }
  EXPECT_EQ(loaded(readFile("later/config.xml")).at("a").value, "1");
}

TEST_F(Settings, ADirectoryInPlaceOfTheFile) {
  std::filesystem::create_directories("config.xml/full");
  {
    Configuration store;
    store.backup = false;
    store.set("a", "1");
    EXPECT_FALSE(store.save());
    EXPECT_TRUE(store.changed);
    EXPECT_TRUE(store.load()) << "it reads as an empty file";
    EXPECT_EQ(store.elements.size(), 1u);
  }
  EXPECT_TRUE(std::filesystem::is_directory("config.xml/full"));
  Configuration store;
  EXPECT_TRUE(store.save()) << "it is moved to the backup like a file";
  EXPECT_TRUE(std::filesystem::is_directory("config.xml~/full"));
  EXPECT_TRUE(std::filesystem::is_regular_file("config.xml"));
}

TEST_F(Settings, ADirectoryInPlaceOfTheFileReplacesAnEarlierBackup) {
  std::filesystem::create_directories("config.xml/full");
  writeFile("config.xml~", "earlier");
  EXPECT_TRUE(Configuration().save());
  EXPECT_TRUE(std::filesystem::is_directory("config.xml~/full"));
  EXPECT_TRUE(std::filesystem::is_regular_file("config.xml"));
}

TEST_F(Settings, SaveSucceedsOnAFullDevice) {
  Configuration store("T", "full");
  store.path = "/dev";
  store.extension = "";
  store.backup = false;
  store.set("a", "1");
  const Written text = written([&] { EXPECT_TRUE(store.save()); });
  EXPECT_EQ(text.out + text.err, "");
  EXPECT_FALSE(store.changed);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST_F(Settings, EntriesAreWrittenInTheOrderOfTheirKeys) {
  Configuration store;
  for (const char* key : {"b", "a", "\xC3\xA4", "B", "ab", "UPDATE", "A"})
    store.set(key, "", "", "");
  ASSERT_TRUE(store.save());
  std::string keys;
  const std::string xml = readFile("config.xml");
  for (std::size_t at = xml.find("\n<", xml.find("\n<") + 1); at != std::string::npos;
       at = xml.find("\n<", at + 1)) {
    if (xml[at + 2] != '/') keys += xml.substr(at + 2, xml.find(' ', at) - at - 2) + ",";
  }
  EXPECT_EQ(keys, "A,B,UPDATE,a,ab,b,\xC3\xA4,");
}

TEST_F(Settings, TheFileHasTheModeOfANewFile) {
  const mode_t before = umask(0027);
  for (const bool backup : {true, false}) {
    Configuration store("T", backup ? "with" : "without");
    store.backup = backup;
    EXPECT_TRUE(store.save());
    struct stat status;
    ASSERT_EQ(stat(store.getConfigurationFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode_t{0640});
  }
  umask(before);
}

TEST_F(Settings, ALinkIsMovedToTheBackup) {
  writeFile("real", "text");
  std::filesystem::create_symlink("real", "config.xml");
  Configuration store;
  EXPECT_TRUE(store.save());
  EXPECT_EQ(readFile("real"), "text");
  EXPECT_TRUE(std::filesystem::is_symlink("config.xml~"));
  EXPECT_TRUE(std::filesystem::is_regular_file("config.xml"));
  EXPECT_FALSE(std::filesystem::is_symlink("config.xml"));
}

TEST_F(Settings, ADirectoryInPlaceOfTheBackup) {
  writeFile("config.xml", "old");
  std::filesystem::create_directories("config.xml~");
  Configuration().save();
  EXPECT_EQ(readFile("config.xml~"), "old") << "an empty directory is replaced";
  std::filesystem::remove("config.xml~");
  std::filesystem::create_directories("config.xml~/full");
  Configuration().save();
  EXPECT_NE(readFile("config.xml"), "old");
  EXPECT_EQ(entriesHere(), 2u);
}

TEST_F(Settings, LongNamesAreWrittenInPlace) {
  // No longer name is possible beside a name of the greatest length.
  Configuration store("T", std::string(250, 'n'));
  store.set("a", "1");
  EXPECT_TRUE(store.save());
  store.set("a", "2");
  EXPECT_TRUE(store.save());
  EXPECT_EQ(entriesHere(), 2u);
}

// ---- Nothing is lost

/// Saves a store of `count` settings, besides the stamp.
void makeStore(int count) {
  Configuration store;
  for (int i = 0; i < count; ++i)
    store.set("k" + std::to_string(i), "TEXT", "value " + std::to_string(i), "");
  ASSERT_TRUE(store.save());
}

void changeStore() {
  Configuration store;
  store.load();
  store.set("changed", "yes");
  store.save();
}

TEST_F(Settings, ASaveKilledAtAnySystemCallLosesNothing) {
  SKIP_UNDER_EMULATOR("it has no ptrace");
  int all = 0;
  for (const int count : {0, 1, 1000}) {
    int kills = 0;
    for (bool wasKilled = true; wasKilled; ++kills) {
      for (const auto& entry : std::filesystem::directory_iterator("."))
        std::filesystem::remove(entry);
      makeStore(count);
      changeStore();
      Configuration before;
      before.load();
      wasKilled = isKilledAtCall(kills + 1, changeStore);
      changeStore();
      Configuration after;
      after.load();
      for (const auto& [key, element] : before.elements) {
        ASSERT_EQ(fieldsOf(after.get(key)), fieldsOf(element))
            << key << " after a kill at call " << kills + 1;
      }
    }
    EXPECT_GT(kills, 15) << "a load and a save make more system calls";
    all += kills;
  }
  RecordProperty("kills", all);
}

TEST_F(Settings, IncompleteSavesKeepFileAndBackup) {
  makeStore(1000);
  changeStore();
  const std::string file = readFile("config.xml");
  const std::string backup = readFile("config.xml~");
  constexpr int saves = 20;
  int all = 0;
  for (const rlim_t limit : {rlim_t{0}, rlim_t{1}, rlim_t{4096}, rlim_t{file.size() - 1}}) {
    const int status = statusOfChild([limit] {
      ASSERT_TRUE(limitFileSize(limit));
      for (int i = 0; i < saves; ++i) {
        Configuration store;
        store.load();
        store.set("changed", "yes");
        EXPECT_TRUE(store.save());
        EXPECT_FALSE(store.changed);
      }
    });
    EXPECT_EQ(status, 0) << limit;
    EXPECT_EQ(readFile("config.xml"), file) << limit;
    EXPECT_EQ(readFile("config.xml~"), backup) << limit;
    EXPECT_EQ(entriesHere(), 2u) << limit;
    all += saves;
  }
  RecordProperty("incomplete_saves", all);
}

// ---- Listing

TEST_F(Settings, ListPrintsATable) {
  Configuration store;
  const auto list = [&] { store.listConfiguration(); };
  EXPECT_EQ(written(list).out, "\n[ SYSTEM ]\nDescriptionValue\n----------------\n\n");
  store.set("b", "TEXT", "1", "short");
  store.set("a", "TEXT", "2\0x"s, "the longest of all");
  EXPECT_EQ(written(list).out,
            "\n[ SYSTEM ]\n"
            "Description        Value\n"
            "-----------        -----\n"
            "the longest of all 2\n"
            "short              1\n"
            "\n");
  store.changed = false;
}

// ---- The handler

TEST(ConfigEvent, IgnoresEmptyText) {
  zn_lib::ConfigEvent event;
  const XML_Char* attributes[] = {nullptr};
  event.OnStartElement("key", attributes);
  event.OnCharacterData("text", 0);
  EXPECT_EQ(event.data.size(), 0u);
}

TEST(ConfigEvent, ExportsWhatItRead) {
  zn_lib::ConfigEvent event;
  const XML_Char* const attributes[] = {"x", "type", "y", "description", nullptr};
  event.OnStartElement("key", const_cast<const XML_Char**>(attributes));
  EXPECT_EQ(event.element, "key");
  event.OnCharacterData(" one", 4);
  EXPECT_EQ(event.lastElement, "key");
  event.OnCharacterData(" two", 4);
  event.OnCharacterData("ignored", 0);
  event.OnEndElement("key");
  EXPECT_EQ(event.element, "");
  event.OnCharacterData("between", 7);
  zn_lib::config_map target;
  target["key"].value = "old";
  target["other"].value = "kept";
  event.exportData(target);
  EXPECT_EQ(target.size(), 2u);
  EXPECT_EQ(fieldsOf(target.at("key")), "onetwo|type|description");
  EXPECT_EQ(target.at("other").value, "kept");
}

/// Starts the element `key` with a type.
void start(zn_lib::ConfigEvent& event, const char* key) {
  const XML_Char* const attributes[] = {"data_type", "t", nullptr};
  event.OnStartElement(key, const_cast<const XML_Char**>(attributes));
}

void addText(zn_lib::ConfigEvent& event, const char* text) {
  event.OnCharacterData(text, static_cast<int>(std::strlen(text)));
}

TEST(ConfigEvent, IsAValue) {
  zn_lib::ConfigEvent a;
  start(a, "k");
  zn_lib::ConfigEvent b = a;
  addText(b, "v");
  EXPECT_EQ(a.data.at("k").value, "") << "a copy writes into its own map";
  EXPECT_EQ(b.data.at("k").value, "v");
  a = b;
  addText(a, "w");
  EXPECT_EQ(a.data.at("k").value, "vw");
  EXPECT_EQ(b.data.at("k").value, "v");

  auto original = std::make_unique<zn_lib::ConfigEvent>(b);
  zn_lib::ConfigEvent copy = *original;
  original.reset();
  addText(copy, "x");
  EXPECT_EQ(copy.data.at("k").value, "vx") << "the original is gone";
  zn_lib::ConfigEvent moved = std::move(copy);
  addText(moved, "y");
  EXPECT_EQ(moved.data.at("k").value, "vxy");
  static_assert(sizeof(zn_lib::ConfigEvent) == sizeof(zn_lib::XmlEvent<zn_lib::config_map>));
  static_assert(sizeof(zn_lib::ConfigEvent) ==
                sizeof(XMLEvtHandler) + sizeof(zn_lib::config_map) + 2 * sizeof(std::string));
}

TEST(ConfigEvent, MembersMayBeChangedBetweenEvents) {
  const struct {
    const char* what;
    std::function<void(zn_lib::ConfigEvent&)> change;
    std::string key, value;
  } cases[] = {
      {"nothing", [](auto&) {}, "k", "onetwo"},
      {"data cleared", [](auto& event) { event.data.clear(); }, "k", "two"},
      {"the entry erased", [](auto& event) { event.data.erase("k"); }, "k", "two"},
      {"data swapped",
       [](auto& event) {
         zn_lib::config_map other;
         other["k"].value = "other";
         event.data.swap(other);
       },
       "k", "othertwo"},
      {"a later entry", [](auto& event) { event.data["z"]; }, "k", "onetwo"},
      {"the element set", [](auto& event) { event.element = "other"; }, "other", "two"},
      {"the last element cleared", [](auto& event) { event.lastElement = ""; }, "k", "two"},
      {"the last element set", [](auto& event) { event.element = event.lastElement = "other"; },
       "other", "two"},
  };
  for (const auto& c : cases) {
    zn_lib::ConfigEvent event;
    start(event, "k");
    addText(event, "one");
    c.change(event);
    addText(event, "two");
    EXPECT_EQ(event.data[c.key].value, c.value) << c.what;
  }
  zn_lib::ConfigEvent event;
  start(event, "k");
  event.element.clear();
  addText(event, "between elements");
  EXPECT_EQ(event.data.at("k").value, "");
}

std::string withoutWhitespace(const std::string& text) {
  std::string kept;
  for (const char c : text) {
    if (c != ' ' && c != '\n') kept += c;
  }
  return kept;
}

// A piece loses its leading whitespace. Nothing else depends on the size of the pieces.
TEST(ConfigEvent, ReadsTheSameFromPiecesOfAnySize) {
  SplitDocument expected = splitDocument();
  for (auto& [key, setting] : expected.settings) setting = withoutWhitespace(setting);
  for (std::size_t size = 1; size <= 8192; size += size < 512 ? 1 : 13) {
    zn_lib::ConfigEvent event;
    XMLParser parser(&event);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    parser.EnableElementHandler(true);
    parser.EnableCharacterDataHandler(true);
    ASSERT_TRUE(parseInPieces(parser, expected.document, size)) << size;
    std::map<std::string, std::string> settings;
    for (const auto& [key, element] : event.data) {
      settings[key] =
          withoutWhitespace(element.value) + "|" + element.type + "|" + element.describe;
    }
    ASSERT_EQ(settings, expected.settings) << size;
  }
}

TEST(ConfigEvent, DropsWhitespaceInFrontOfEachPiece) {
  const std::string document = "<r><k a='t'>a b</k></r>";
  const std::size_t space = document.find(" b");
  for (const auto& [size, value] :
       {std::pair{document.size(), "a b"}, {space, "ab"}, {space + 1, "a b"}}) {
    zn_lib::ConfigEvent event;
    XMLParser parser(&event);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    parser.EnableElementHandler(true);
    parser.EnableCharacterDataHandler(true);
    ASSERT_TRUE(parseInPieces(parser, document, size));
    EXPECT_EQ(event.data["k"].value, value) << size;
  }
}

TEST_F(Settings, DocumentsOfAnySize) {
  const std::string text(kLongText, 'v');
  EXPECT_EQ(loaded("<C><k a='t'>" + text + "</k></C>").at("k").value, text);
  std::string many = "<C>";
  for (int i = 0; i < 100000; ++i)
    many += "<k" + std::to_string(i) + " a='t'>v</k" + std::to_string(i) + ">";
  EXPECT_EQ(loaded(many).size(), 100000u) << "although the end tag is missing";
}

}  // namespace
