#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zn_error.h>
#include <zn_setcfg.h>

#include <iterator>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "emulation.h"
#include "next_definition.h"
#include "output_capture.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "unprivileged.h"
#include "xml_outline.h"

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using Call = std::pair<int, bool>;  // the length, and whether the call is the last one

/// Calls that the library has made to expat.
struct ExpatCalls {
  bool creationFails = false;
  int created = 0, freed = 0;
  std::string encoding, separator;
  std::vector<Call> parsed;
} expatCalls;

}  // namespace

// These functions replace those of expat, and call them.
extern "C" {

XML_Parser XML_ParserCreate_MM(const XML_Char* encoding, const XML_Memory_Handling_Suite* suite,
                               const XML_Char* separator) {
  ++expatCalls.created;
  expatCalls.encoding = textOf(encoding);
  expatCalls.separator = textOf(separator);
  if (expatCalls.creationFails) return nullptr;
  return nextDefinition<decltype(&XML_ParserCreate_MM)>("XML_ParserCreate_MM")(encoding, suite,
                                                                               separator);
}

void XML_ParserFree(XML_Parser parser) {
  ++expatCalls.freed;
  nextDefinition<decltype(&XML_ParserFree)>("XML_ParserFree")(parser);
}

XML_Status XML_Parse(XML_Parser parser, const char* text, int length, int isFinal) {
  expatCalls.parsed.emplace_back(length, isFinal != 0);
  return nextDefinition<decltype(&XML_Parse)>("XML_Parse")(parser, text, length, isFinal);
}
}

namespace {

class ReadXml : public InTemporaryDirectory {
 protected:
  ReadXml() { expatCalls = ExpatCalls(); }
};

/// Returns what is read from a file with the contents `xml`. The calls to expat are in
/// `expatCalls`.
template <class Event>
auto read(const std::string& xml) {
  writeFile("a.xml", xml);
  zn_lib::ReadXml<Event> reader;
  std::string name = "a.xml";
  reader.setFileName(name);
  expatCalls = ExpatCalls();
  EXPECT_TRUE(reader.parseFile());
  EXPECT_EQ(expatCalls.created, 1);
  EXPECT_EQ(expatCalls.freed, 1) << "the parser is freed with each call";
  return reader.event->data;
}

TEST_F(ReadXml, HeaderExample) {
  writeFile("errors.xml", "<E>" + errorXml("1", "one") + "</E>");
  Catalog catalog;
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  std::string name = "errors.xml";
  reader.setFileName(name);
  if (reader.parseFile()) reader.event->exportData(catalog);
  EXPECT_EQ(catalog, (Catalog{{1, "one"}}));
}

TEST_F(ReadXml, IsAFileWithAnEventHandler) {
  using Reader = zn_lib::ReadXml<zn_lib::ErrorEvent>;
  using Handler = zn_lib::XmlEvent<Catalog>;
  static_assert(std::is_base_of_v<zn_lib::ReadFile, Reader>);
  static_assert(std::has_virtual_destructor_v<Reader>);
  static_assert(!std::is_copy_constructible_v<Reader> && !std::is_copy_assignable_v<Reader>);
  static_assert(std::is_base_of_v<XMLEvtHandler, Handler>);
  static_assert(std::is_base_of_v<Handler, zn_lib::ErrorEvent>);
  static_assert(std::is_base_of_v<zn_lib::XmlEvent<zn_lib::config_map>, zn_lib::ConfigEvent>);

  const Reader reader;
  EXPECT_NE(reader.event, nullptr);
  EXPECT_EQ(reader.nameParts.path + reader.nameParts.name + reader.nameParts.extension, "");
  const zn_lib::ErrorEvent event;
  const auto* const data = reinterpret_cast<const char*>(&event.data);
  EXPECT_LT(data, reinterpret_cast<const char*>(&event.element));
  EXPECT_LT(&event.element, &event.lastElement);
  EXPECT_LT(reinterpret_cast<const char*>(&event.lastElement),
            reinterpret_cast<const char*>(&event.tag));
  EXPECT_LT(reinterpret_cast<const char*>(&event.tag), reinterpret_cast<const char*>(&event.id));
  EXPECT_LT(reinterpret_cast<const char*>(&event.id),
            reinterpret_cast<const char*>(&event.message));
}

TEST_F(ReadXml, RequestsUtf8WithoutNamespaces) {
  read<zn_lib::ErrorEvent>("<E/>");
  EXPECT_EQ(expatCalls.encoding, "UTF-8");
  EXPECT_EQ(expatCalls.separator, "-");
  EXPECT_EQ(read<zn_lib::ConfigEvent>("<C xmlns:p='urn:p'><p:k a='t'>v</p:k></C>").count("p:k"),
            1u);
  EXPECT_EQ(expatCalls.encoding, "UTF-8");
  EXPECT_EQ(expatCalls.separator, "-");
}

TEST_F(ReadXml, ReadsInBlocks) {
  const struct {
    std::size_t size;
    std::vector<Call> calls;
  } cases[] = {
      {7, {{7, true}}},
      {8191, {{8191, true}}},
      {8192, {{8192, false}, {0, true}}},
      {8193, {{8192, false}, {1, true}}},
      {16384, {{8192, false}, {8192, false}, {0, true}}},
      {20000, {{8192, false}, {8192, false}, {3616, true}}},
  };
  for (const auto& c : cases) {
    const std::string xml = "<C>" + std::string(c.size - 7, ' ') + "</C>";
    read<zn_lib::ErrorEvent>(xml);
    EXPECT_EQ(expatCalls.parsed, c.calls) << c.size;
    read<zn_lib::ConfigEvent>(xml);
    EXPECT_EQ(expatCalls.parsed, c.calls) << c.size;
  }
  read<zn_lib::ErrorEvent>("");
  EXPECT_THAT(expatCalls.parsed, ElementsAre(Call(0, true))) << "an empty file";
}

TEST_F(ReadXml, StopsAtTheFirstBlockThatFails) {
  const std::string block(8192, ' ');
  read<zn_lib::ErrorEvent>("<C>" + block + "<" + block + block + block);
  EXPECT_THAT(expatCalls.parsed, ElementsAre(Call(8192, false), Call(8192, false)));
  read<zn_lib::ErrorEvent>("x" + block + block);
  EXPECT_THAT(expatCalls.parsed, ElementsAre(Call(8192, false)));
}

TEST_F(ReadXml, TextIsCutBetweenBlocks) {
  for (std::size_t place = 8100; place < 8300; ++place) {
    const std::string head = "<C><k a='t'>";
    const std::string text(place - head.size(), 'x');
    // Each piece loses its leading whitespace, so the space is lost if a block begins with it.
    const std::string value = place == 8192 ? text + "y" : text + " y";
    ASSERT_EQ(read<zn_lib::ConfigEvent>(head + text + " y</k></C>").at("k").value, value) << place;

    const std::string before = "<E><ERROR><ID>";
    const std::string id = "<E>" + std::string(place - before.size() - 1, ' ') + "<ERROR><ID>";
    Catalog catalog = read<zn_lib::ErrorEvent>(id + "42</ID><MESSAGE>m</MESSAGE></ERROR></E>");
    ASSERT_EQ(catalog, (Catalog{{id.size() == 8191 ? 2 : 42, "m"}})) << "the last piece only";
    const std::string message = id + "1</ID><MESSAGE>";
    catalog = read<zn_lib::ErrorEvent>(message + "ab</MESSAGE></ERROR></E>");
    ASSERT_EQ(catalog, (Catalog{{1, message.size() == 8191 ? "b" : "ab"}}))
        << "the last piece only";
  }
}

TEST_F(ReadXml, HandlesElementsAndTextOnly) {
  const std::string xml =
      "<?xml version='1.0' standalone='no'?><!DOCTYPE C SYSTEM 'missing.dtd' [<!ENTITY e 'E'>]>"
      "<?target data?><C><!-- note --><k a='t'>v<!-- note -->w<?target data?>"
      "<![CDATA[ <x> ]]>&e;</k></C>";
  const zn_lib::config_map settings = read<zn_lib::ConfigEvent>(xml);
  EXPECT_EQ(settings.size(), 1u);
  EXPECT_EQ(settings.at("k").value, "vw<x> E");
}

TEST_F(ReadXml, DoesNotTouchTheStreamOrTheFlag) {
  writeFile("a.xml", "<E/>");
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  std::string name = "a.xml";
  reader.setFileName(name);
  reader.binary = true;
  EXPECT_TRUE(reader.parseFile());
  EXPECT_TRUE(reader.binary);
  EXPECT_FALSE(reader.file.is_open());
  EXPECT_TRUE(reader.file.good());
  EXPECT_TRUE(reader.fileOpen());
  EXPECT_TRUE(reader.parseFile()) << "the stream may be open";
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader.file), {}), "<E/>");
}

/// A handler that counts its events and throws std::bad_alloc at an element called "bad".
class Failing final : public zn_lib::XmlEvent<Catalog> {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char**) override { count(name); }
  void OnEndElement(const XML_Char* name) override { count(name); }
  void OnCharacterData(const XML_Char*, int) override { count("text"); }
  int events = 0;

 private:
  void count(const std::string& name) {
    ++events;
    if (name == "bad") throw std::bad_alloc();
  }
};

TEST_F(ReadXml, RethrowsFromCallbacksAfterTheParse) {
  writeFile("good.xml", "<E><good>text</good></E>");
  writeFile("bad.xml", "<E><bad>text</bad></E>");
  zn_lib::ReadXml<Failing> reader;
  std::string name = "bad.xml";
  reader.setFileName(name);
  expatCalls = ExpatCalls();
  EXPECT_THROW(reader.parseFile(), std::bad_alloc);
  EXPECT_EQ(reader.event->events, 2) << "no event after the exception";
  EXPECT_EQ(expatCalls.parsed.back(), std::make_pair(22, true)) << "the parser reads to the end";
  EXPECT_EQ(expatCalls.freed, 1);
  name = "good.xml";
  reader.setFileName(name);
  EXPECT_TRUE(reader.parseFile());
  EXPECT_EQ(reader.event->events, 7);
}

TEST_F(ReadXml, AccumulatesWhatItReads) {
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  for (const std::string id : {"1", "2"}) {
    std::string name = id + ".xml";
    writeFile(name, "<E>" + errorXml(id, "m") + "</E>");
    reader.setFileName(name);
    EXPECT_TRUE(reader.parseFile());
  }
  EXPECT_EQ(reader.event->data, (Catalog{{1, "m"}, {2, "m"}}));
}

TEST_F(ReadXml, ReturnsFalseIfNothingCanBeOpened) {
  writeFile("secret.xml", "<E/>");
  ASSERT_EQ(chmod("secret.xml", 0), 0);
  ASSERT_EQ(chmod(".", 0755), 0);
  const Written text = written([] {
    EXPECT_EQ(withoutPrivileges([] {
                zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
                std::string name = "secret.xml";
                reader.setFileName(name);
                return reader.parseFile() ? 1 : 0;
              }),
              0);
  });
  EXPECT_EQ(text.out + text.err, "");
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  std::string name = "missing.xml";
  reader.setFileName(name);
  EXPECT_FALSE(reader.parseFile());
  EXPECT_EQ(expatCalls.created, expatCalls.freed);
  EXPECT_TRUE(expatCalls.parsed.empty());
  EXPECT_TRUE(reader.event->data.empty());
}

TEST(ReadXmlDeathTest, AssertsThatTheParserIsCreated) {
  testing::GTEST_FLAG(death_test_style) = kDeathTestStyle;
  expatCalls.creationFails = true;
  zn_lib::ReadXml<zn_lib::ErrorEvent> catalog;
  EXPECT_DEATH(catalog.parseFile(), HasSubstr("m_parser != NULL"));
  zn_lib::Configuration store;
  EXPECT_DEATH(store.load(), HasSubstr("m_parser != NULL"));
  expatCalls.creationFails = false;
}

}  // namespace
