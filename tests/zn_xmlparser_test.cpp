#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <zn_xmlparser.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <locale>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "../src/udf/internal/expat.h"
#include "emulation.h"
#include "next_definition.h"
#include "output_capture.h"
#include "samples.h"
#include "split_document.h"
#include "xml_outline.h"

namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;

/// Calls that the library has made to expat.
struct ExpatCalls {
  bool creationFails = false;
  int freed = 0;
  std::string encoding, separator;
  bool hasSuite = false;
  XML_UnknownEncodingHandler encodingHandler = nullptr;
  void* encodingData = nullptr;
  bool onlyNotesParts = false;  // instead of parsing them
  std::vector<std::pair<int, bool>> parts;
} expatCalls;

}  // namespace

// These functions replace those of expat, and call them.
extern "C" {

XML_Parser XML_ParserCreate_MM(const XML_Char* encoding, const XML_Memory_Handling_Suite* suite,
                               const XML_Char* separator) {
  expatCalls.encoding = textOf(encoding);
  expatCalls.separator = textOf(separator);
  expatCalls.hasSuite = suite != nullptr;
  if (expatCalls.creationFails) return nullptr;
  return nextDefinition<decltype(&XML_ParserCreate_MM)>("XML_ParserCreate_MM")(encoding, suite,
                                                                               separator);
}

void XML_ParserFree(XML_Parser parser) {
  ++expatCalls.freed;
  nextDefinition<decltype(&XML_ParserFree)>("XML_ParserFree")(parser);
}

void XML_SetUnknownEncodingHandler(XML_Parser parser, XML_UnknownEncodingHandler handler,
                                   void* data) {
  expatCalls.encodingHandler = handler;
  expatCalls.encodingData = data;
  nextDefinition<decltype(&XML_SetUnknownEncodingHandler)>("XML_SetUnknownEncodingHandler")(
      parser, handler, data);
}

enum XML_Status XML_Parse(XML_Parser parser, const char* text, int length, int isFinal) {
  if (expatCalls.onlyNotesParts) {
    expatCalls.parts.emplace_back(length, isFinal != 0);
    return XML_STATUS_OK;
  }
  return nextDefinition<decltype(&XML_Parse)>("XML_Parse")(parser, text, length, isFinal);
}
}

namespace {

/// The example of the header.
class Counter : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char*, const XML_Char**) override { ++elements; }
  int elements = 0;
};

TEST(ZnXmlParser, HeaderExamples) {
  Counter counter;
  XMLParser parser(&counter);
  parser.Create(nullptr, nullptr);
  parser.EnableStartElementHandler(true);
  EXPECT_FALSE(parser.Parse("<a><b/><c></a>", true));
  EXPECT_EQ(counter.elements, 3);
  EXPECT_STREQ(parser.GetErrorString(), "mismatched tag");
}

/// Logs the name of each callback with its arguments, null as "-". Consecutive calls with text are
/// logged as one.
class Recorder : public XMLEvtHandler {
 public:
  void OnPostCreate() override { add("created"); }
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    std::string text = "start "s + name;
    for (; *attributes != nullptr; attributes += 2) {
      text += " "s + attributes[0] + "=" + attributes[1];
    }
    add(text);
  }
  void OnEndElement(const XML_Char* name) override { add("end "s + name); }
  void OnCharacterData(const XML_Char* text, int length) override { addText("text", text, length); }
  void OnProcessingInstruction(const XML_Char* target, const XML_Char* data) override {
    add("pi " + textOf(target) + " " + textOf(data));
  }
  void OnComment(const XML_Char* text) override { add("comment " + textOf(text)); }
  void OnStartCdataSection() override { add("start-cdata"); }
  void OnEndCdataSection() override { add("end-cdata"); }
  void OnDefault(const XML_Char* text, int length) override { addText("default", text, length); }
  bool OnUnknownEncoding(const XML_Char* name, XML_Encoding* encoding) override {
    add("encoding " + textOf(name));
    if (!knowsEncodings) return false;
    for (int byte = 0; byte < 256; ++byte) encoding->map[byte] = byte < 0x80 ? byte : 0x20AC;
    encoding->data = nullptr;
    encoding->convert = nullptr;
    encoding->release = nullptr;
    return true;
  }
  void OnStartNamespaceDecl(const XML_Char* prefix, const XML_Char* uri) override {
    add("start-ns " + textOf(prefix) + " " + textOf(uri));
  }
  void OnEndNamespaceDecl(const XML_Char* prefix) override { add("end-ns " + textOf(prefix)); }
  void OnXmlDecl(const XML_Char* version, const XML_Char* encoding, bool standalone) override {
    add("xml " + textOf(version) + " " + textOf(encoding) + (standalone ? " true" : " false"));
  }
  void OnStartDoctypeDecl(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId,
                          bool hasInternalSubset) override {
    add("start-doctype " + textOf(name) + " " + textOf(systemId) + " " + textOf(publicId) +
        (hasInternalSubset ? " true" : " false"));
  }
  void OnEndDoctypeDecl() override { add("end-doctype"); }

  std::string log;
  bool knowsEncodings = false;

 private:
  void add(const std::string& line) {
    log += line + "\n";
    openText.clear();
  }
  void addText(const std::string& kind, const XML_Char* text, int length) {
    ASSERT_GT(length, 0);
    if (openText == kind) {
      log.pop_back();
    } else {
      log += kind + " ";
    }
    log += std::string(text, static_cast<std::size_t>(length)) + "\n";
    openText = kind;
  }

  std::string openText;
};

using Switch = std::function<void(XMLParser&, bool)>;

Switch of(void (XMLParser::*enable)(bool)) {
  return [enable](XMLParser& parser, bool on) { (parser.*enable)(on); };
}

void enableAll(XMLParser& parser) {
  parser.EnableElementHandler(true);
  parser.EnableCharacterDataHandler(true);
  parser.EnableProcessingInstructionHandler(true);
  parser.EnableCommentHandler(true);
  parser.EnableCdataSectionHandler(true);
  parser.EnableDefaultHandler(true, true);
  parser.EnableUnknownEncodingHandler(true);
  parser.EnableNamespaceDeclHandler(true);
  parser.EnableXmlDeclHandler(true);
  parser.EnableDoctypeDeclHandler(true);
}

/// Returns the log of a document that is parsed as a whole, with the callbacks that `prepare`
/// enables. The line of `OnPostCreate` is left out.
std::string logOf(const std::string& document, const std::function<void(XMLParser&)>& prepare,
                  const char* separator = nullptr) {
  Recorder recorder;
  XMLParser parser(&recorder);
  EXPECT_TRUE(parser.Create(nullptr, separator));
  recorder.log.clear();
  prepare(parser);
  EXPECT_TRUE(parser.Parse(document.data(), document.size(), true)) << parser.GetErrorString();
  return recorder.log;
}

/// A document that reaches every callback.
const char kDocument[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n"
    "<!DOCTYPE r PUBLIC \"pub\" \"sys\" [<!ENTITY e \"E\">]>\n"
    "<?target some data?><!-- note -->\n"
    "<r a=\"1\" b=\"&lt;\" xmlns:p=\"urn:p\">t&e;<![CDATA[<c>]]><p:x p:k=\"v\"/></r>\n";

const char kDocumentLog[] =
    "xml 1.0 UTF-8 false\n"
    "default \n\n"
    "start-doctype r sys pub true\n"
    "default <!ENTITY e \"E\">\n"
    "end-doctype\n"
    "default \n\n"
    "pi target some data\n"
    "comment  note \n"
    "default \n\n"
    "start-ns p urn:p\n"
    "start r a=1 b=<\n"
    "text tE\n"
    "start-cdata\n"
    "text <c>\n"
    "end-cdata\n"
    "start urn:p|x urn:p|k=v\n"
    "end urn:p|x\n"
    "end r\n"
    "end-ns p\n"
    "default \n\n";

TEST(XMLParser, IsTwoPointers) {
  static_assert(std::is_standard_layout_v<XMLParser> && !std::is_polymorphic_v<XMLParser>, "");
  static_assert(offsetof(XMLParser, m_parser) == 0, "");
  static_assert(offsetof(XMLParser, m_handler) == sizeof(void*), "");
  static_assert(sizeof(XMLParser) == 2 * sizeof(void*), "");
  static_assert(!std::is_copy_constructible_v<XMLParser>, "");
  static_assert(!std::is_copy_assignable_v<XMLParser>, "");
  Recorder recorder;
  const XMLParser parser(&recorder);
  EXPECT_EQ(parser.m_parser, nullptr);
  EXPECT_EQ(parser.m_handler, &recorder);
  EXPECT_EQ(recorder.log, "");
}

TEST(XMLParser, QueriesHaveExpatsTypes) {
  const XMLParser parser(nullptr);
  static_assert(std::is_same_v<decltype(parser.GetErrorCode()), XML_Error>, "");
  static_assert(std::is_same_v<decltype(parser.GetErrorString()), const XML_LChar*>, "");
  static_assert(std::is_same_v<decltype(parser.GetCurrentByteIndex()), XML_Index>, "");
  static_assert(std::is_same_v<decltype(parser.GetCurrentLineNumber()), XML_Size>, "");
  static_assert(std::is_same_v<decltype(parser.GetCurrentColumnNumber()), XML_Size>, "");
  static_assert(std::is_same_v<decltype(parser.GetCurrentByteCount()), int>, "");
  static_assert(std::is_same_v<decltype(parser.GetInputContext(nullptr, nullptr)), const char*>,
                "");
  EXPECT_STREQ(XMLParser::GetExpatVersion(), XML_ExpatVersion());
  EXPECT_THAT(XMLParser::GetExpatVersion(), HasSubstr("expat_"));
  EXPECT_STREQ(XMLParser::GetErrorString(XML_ERROR_SYNTAX), "syntax error");
  EXPECT_EQ(XMLParser::GetErrorString(XML_ERROR_NONE), nullptr);
}

/// Returns the index of a virtual function, which a pointer to it contains as an offset in bytes.
template <class Member>
std::uintptr_t slotOf(Member member) {
  std::uintptr_t words[2];
  static_assert(sizeof member == sizeof words, "");
  std::memcpy(words, &member, sizeof words);
  return words[0] / sizeof(void*);
}

TEST(XMLEvtHandler, HasFifteenSlotsInOrder) {
  static_assert(sizeof(XMLEvtHandler) == sizeof(void*), "no data members");
  static_assert(std::is_polymorphic_v<XMLEvtHandler>, "");
  static_assert(!std::has_virtual_destructor_v<XMLEvtHandler>, "");
  const std::uintptr_t slots[] = {slotOf(&XMLEvtHandler::OnPostCreate),
                                  slotOf(&XMLEvtHandler::OnStartElement),
                                  slotOf(&XMLEvtHandler::OnEndElement),
                                  slotOf(&XMLEvtHandler::OnCharacterData),
                                  slotOf(&XMLEvtHandler::OnProcessingInstruction),
                                  slotOf(&XMLEvtHandler::OnComment),
                                  slotOf(&XMLEvtHandler::OnStartCdataSection),
                                  slotOf(&XMLEvtHandler::OnEndCdataSection),
                                  slotOf(&XMLEvtHandler::OnDefault),
                                  slotOf(&XMLEvtHandler::OnUnknownEncoding),
                                  slotOf(&XMLEvtHandler::OnStartNamespaceDecl),
                                  slotOf(&XMLEvtHandler::OnEndNamespaceDecl),
                                  slotOf(&XMLEvtHandler::OnXmlDecl),
                                  slotOf(&XMLEvtHandler::OnStartDoctypeDecl),
                                  slotOf(&XMLEvtHandler::OnEndDoctypeDecl)};
  EXPECT_THAT(slots, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14));
}

TEST(XMLEvtHandler, DoesNothing) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, "|"));
  enableAll(parser);
  EXPECT_TRUE(parser.Parse(kDocument, true));

  XML_Encoding encoding;
  std::memset(&encoding, 'x', sizeof encoding);
  const XML_Encoding before = encoding;
  EXPECT_FALSE(handler.OnUnknownEncoding("x", &encoding));
  EXPECT_EQ(std::memcmp(&encoding, &before, sizeof encoding), 0);
}

TEST(Create, PassesNonEmptyArgumentsOnly) {
  const struct {
    const char *encoding, *separator, *passedEncoding, *passedSeparator;
  } cases[] = {
      {nullptr, nullptr, "-", "-"}, {"", "", "-", "-"},       {"UTF-8", nullptr, "UTF-8", "-"},
      {"UTF-8", "", "UTF-8", "-"},  {nullptr, "|", "-", "|"}, {"", "|", "-", "|"},
      {"UTF-8", "|", "UTF-8", "|"},
  };
  for (const auto& c : cases) {
    Recorder recorder;
    XMLParser parser(&recorder);
    EXPECT_TRUE(parser.Create(c.encoding, c.separator));
    EXPECT_NE(parser.m_parser, nullptr);
    EXPECT_EQ(expatCalls.encoding, c.passedEncoding);
    EXPECT_EQ(expatCalls.separator, c.passedSeparator);
    EXPECT_FALSE(expatCalls.hasSuite);
    EXPECT_EQ(recorder.log, "created\n");
    EXPECT_TRUE(parser.Parse("<p:a xmlns:p='urn:p'>\xC3\xA9</p:a>", true));
    EXPECT_EQ(recorder.log, "created\n") << "no callback is enabled";
  }
}

TEST(Create, EncodingOverridesTheDeclaration) {
  const struct {
    const char *encoding, *document, *text;
  } cases[] = {
      {nullptr, "<a>\xC3\xA9</a>", "text \xC3\xA9\n"},
      {"", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "text \xC3\xA9\n"},
      {nullptr, "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "text \xC3\xA9\n"},
      {"ISO-8859-1", "<?xml version='1.0' encoding='UTF-8'?><a>\xE9</a>", "text \xC3\xA9\n"},
      {"UTF-8", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA9</a>", "text \xC3\xA9\n"},
      {"UTF-8", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", nullptr},
      {nullptr, "<a>\xE9</a>", nullptr},
  };
  for (const auto& c : cases) {
    Recorder recorder;
    XMLParser parser(&recorder);
    ASSERT_TRUE(parser.Create(c.encoding, nullptr));
    recorder.log.clear();
    parser.EnableCharacterDataHandler(true);
    EXPECT_EQ(parser.Parse(c.document, true), c.text != nullptr) << c.document;
    EXPECT_EQ(recorder.log, c.text == nullptr ? "" : c.text) << c.document;
  }
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  EXPECT_TRUE(parser.Create("no-such-encoding", nullptr));
  EXPECT_FALSE(parser.Parse("<a/>", true));
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_UNKNOWN_ENCODING);
}

TEST(Create, SeparatorEnablesNamespaces) {
  const auto elements = [](XMLParser& parser) {
    parser.EnableElementHandler(true);
    parser.EnableNamespaceDeclHandler(true);
  };
  const char document[] = "<p:a xmlns:p='urn:p' p:k='v' l='w'><b xmlns='urn:d'/></p:a>";
  EXPECT_EQ(logOf(document, elements, "|"),
            "start-ns p urn:p\nstart urn:p|a urn:p|k=v l=w\n"
            "start-ns - urn:d\nstart urn:d|b\nend urn:d|b\nend-ns -\nend urn:p|a\nend-ns p\n");
  EXPECT_EQ(logOf("<a xmlns='urn:d'><b xmlns=''/></a>", elements, "|"),
            "start-ns - urn:d\nstart urn:d|a\nstart-ns - -\nstart b\nend b\nend-ns -\n"
            "end urn:d|a\nend-ns -\n");
  EXPECT_EQ(logOf("<p:a xmlns:p='urn:p'/>", elements, "#second and further characters"),
            "start-ns p urn:p\nstart urn:p#a\nend urn:p#a\nend-ns p\n");
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ(logOf(document, elements, none),
              "start p:a xmlns:p=urn:p p:k=v l=w\nstart b xmlns=urn:d\nend b\nend p:a\n");
  }
}

TEST(Create, FailureLeavesNoParser) {
  Recorder recorder;
  XMLParser parser(&recorder);
  const Written text = written([&] {
    expatCalls.creationFails = true;
    EXPECT_FALSE(parser.Create("UTF-8", "|"));
    EXPECT_EQ(parser.m_parser, nullptr);

    expatCalls.creationFails = false;
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    expatCalls.creationFails = true;
    const int freed = expatCalls.freed;
    EXPECT_FALSE(parser.Create(nullptr, nullptr));
    EXPECT_EQ(parser.m_parser, nullptr);
    EXPECT_EQ(expatCalls.freed, freed + 1);
    expatCalls.creationFails = false;
  });
  EXPECT_EQ(text.out + text.err, "");

  EXPECT_EQ(recorder.log, "created\n") << "for the parser that was created";
  EXPECT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_TRUE(parser.Parse("<a/>", true));
}

TEST(Create, AgainDiscardsTheParserAndItsSwitches) {
  Recorder recorder;
  XMLParser parser(&recorder);
  ASSERT_TRUE(parser.Create(nullptr, "|"));
  enableAll(parser);
  EXPECT_FALSE(parser.Parse("<a></b>", true));
  EXPECT_NE(recorder.log, "created\n");

  recorder.log.clear();
  const int freed = expatCalls.freed;
  ASSERT_TRUE(parser.Create(nullptr, "|"));
  EXPECT_EQ(expatCalls.freed, freed + 1);
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_NONE);
  EXPECT_TRUE(parser.Parse(kDocument, true));
  EXPECT_EQ(recorder.log, "created\n");
}

/// Examines its parser in `OnPostCreate`, and may parse a document with it.
class PostCreateObserver : public Recorder {
 public:
  void OnPostCreate() override {
    Recorder::OnPostCreate();
    hadParser = parser->m_parser != nullptr;
    hadUserData = hadParser && XML_GetUserData(parser->m_parser) != nullptr;
    enableAll(*parser);
    if (parsesEarly) parsed = parser->Parse(kDocument, true);
  }
  XMLParser* parser = nullptr;
  bool parsesEarly = false, hadParser = false, hadUserData = true, parsed = false;
};

TEST(Create, CallsOnPostCreateBeforeItSetsTheUserData) {
  PostCreateObserver observer;
  XMLParser parser(&observer);
  observer.parser = &parser;
  ASSERT_TRUE(parser.Create(nullptr, "|"));
  EXPECT_TRUE(observer.hadParser);
  EXPECT_FALSE(observer.hadUserData);
  EXPECT_EQ(XML_GetUserData(parser.m_parser), static_cast<XMLEvtHandler*>(&observer));
  EXPECT_TRUE(parser.Parse(kDocument, true));
  EXPECT_EQ(observer.log, "created\n"s + kDocumentLog) << "switches set in OnPostCreate persist";
}

TEST(Create, NoCallbackReachesTheHandlerDuringOnPostCreate) {
  PostCreateObserver observer;
  XMLParser parser(&observer);
  observer.parser = &parser;
  observer.parsesEarly = true;
  ASSERT_TRUE(parser.Create(nullptr, "|"));
  EXPECT_TRUE(observer.parsed);
  EXPECT_EQ(observer.log, "created\n");
}

/// Runs a function in `OnPostCreate`.
class PostCreateRunner : public Recorder {
 public:
  explicit PostCreateRunner(std::function<void()> start) : start_(std::move(start)) {}
  void OnPostCreate() override {
    Recorder::OnPostCreate();
    start_();
  }

 private:
  std::function<void()> start_;
};

TEST(Create, AllowsQueriesInOnPostCreate) {
  XMLParser parser(nullptr);
  PostCreateRunner runner([&] {
    EXPECT_EQ(parser.GetCurrentByteIndex(), -1);
    EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_NONE);
    EXPECT_NE(parser.GetBuffer(100), nullptr);
    parser.EnableElementHandler(true);
  });
  parser.m_handler = &runner;
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_TRUE(parser.Parse("<a/>", true));
  EXPECT_EQ(runner.log, "created\nstart a\nend a\n");
}

TEST(Create, SucceedsIfOnPostCreateDestroysTheParser) {
  XMLParser parser(nullptr);
  PostCreateRunner runner([&] { parser.Destroy(); });
  parser.m_handler = &runner;
  EXPECT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_EQ(parser.m_parser, nullptr);
}

TEST(Create, PropagatesExceptionsOfOnPostCreate) {
  XMLParser parser(nullptr);
  PostCreateRunner runner([&] {
    parser.EnableElementHandler(true);
    throw std::runtime_error("no");
  });
  parser.m_handler = &runner;
  EXPECT_THROW(parser.Create(nullptr, nullptr), std::runtime_error);
  ASSERT_NE(parser.m_parser, nullptr);
  EXPECT_TRUE(parser.Parse("<a/>", true));
  EXPECT_EQ(runner.log, "created\n");
}

TEST(Destroy, FreesAtMostOnce) {
  Recorder recorder;
  const int freed = expatCalls.freed;
  {
    XMLParser parser(&recorder);
    parser.Destroy();
    EXPECT_EQ(parser.m_parser, nullptr);
    EXPECT_EQ(expatCalls.freed, freed) << "no parser was created";
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    parser.Destroy();
    EXPECT_EQ(parser.m_parser, nullptr);
    EXPECT_EQ(parser.m_handler, &recorder);
    parser.Destroy();
    EXPECT_EQ(expatCalls.freed, freed + 1);
    EXPECT_TRUE(parser.Create(nullptr, nullptr));
  }
  EXPECT_EQ(expatCalls.freed, freed + 2) << "the destructor frees it";
  {
    const XMLParser unused(&recorder);
  }
  EXPECT_EQ(expatCalls.freed, freed + 2);
  EXPECT_EQ(recorder.log, "created\ncreated\n") << "the handler is not destroyed";
}

TEST(Switches, TurnEachCallbackOnAndOff) {
  const struct {
    const char* name;
    Switch enable;
    const char* log;
  } cases[] = {
      {"StartElement", of(&XMLParser::EnableStartElementHandler),
       "start r a=1 b=<\nstart urn:p|x urn:p|k=v\n"},
      {"EndElement", of(&XMLParser::EnableEndElementHandler), "end urn:p|x\nend r\n"},
      {"Element", of(&XMLParser::EnableElementHandler),
       "start r a=1 b=<\nstart urn:p|x urn:p|k=v\nend urn:p|x\nend r\n"},
      {"CharacterData", of(&XMLParser::EnableCharacterDataHandler), "text tE<c>\n"},
      {"ProcessingInstruction", of(&XMLParser::EnableProcessingInstructionHandler),
       "pi target some data\n"},
      {"Comment", of(&XMLParser::EnableCommentHandler), "comment  note \n"},
      {"StartCdataSection", of(&XMLParser::EnableStartCdataSectionHandler), "start-cdata\n"},
      {"EndCdataSection", of(&XMLParser::EnableEndCdataSectionHandler), "end-cdata\n"},
      {"CdataSection", of(&XMLParser::EnableCdataSectionHandler), "start-cdata\nend-cdata\n"},
      {"StartNamespaceDecl", of(&XMLParser::EnableStartNamespaceDeclHandler), "start-ns p urn:p\n"},
      {"EndNamespaceDecl", of(&XMLParser::EnableEndNamespaceDeclHandler), "end-ns p\n"},
      {"NamespaceDecl", of(&XMLParser::EnableNamespaceDeclHandler), "start-ns p urn:p\nend-ns p\n"},
      {"XmlDecl", of(&XMLParser::EnableXmlDeclHandler), "xml 1.0 UTF-8 false\n"},
      {"StartDoctypeDecl", of(&XMLParser::EnableStartDoctypeDeclHandler),
       "start-doctype r sys pub true\n"},
      {"EndDoctypeDecl", of(&XMLParser::EnableEndDoctypeDeclHandler), "end-doctype\n"},
      {"DoctypeDecl", of(&XMLParser::EnableDoctypeDeclHandler),
       "start-doctype r sys pub true\nend-doctype\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(logOf(kDocument, [&](XMLParser& parser) { c.enable(parser, true); }, "|"), c.log);
    EXPECT_EQ(logOf(
                  kDocument,
                  [&](XMLParser& parser) {
                    c.enable(parser, true);
                    c.enable(parser, false);
                  },
                  "|"),
              "");
  }
}

TEST(Switches, AllTogetherReportTheWholeDocument) {
  EXPECT_EQ(logOf(kDocument, enableAll, "|"), kDocumentLog);
}

// The combined switch can be undone for each half.
TEST(Switches, CombinedSwitchesSetBothHalves) {
  const auto logWith = [](const Switch& both, const Switch& start, const Switch& end, bool first) {
    return logOf(
        kDocument,
        [&](XMLParser& parser) {
          both(parser, true);
          start(parser, first);
          end(parser, !first);
        },
        "|");
  };
  const struct {
    Switch both, start, end;
    const char *startLog, *endLog;
  } cases[] = {
      {of(&XMLParser::EnableCdataSectionHandler), of(&XMLParser::EnableStartCdataSectionHandler),
       of(&XMLParser::EnableEndCdataSectionHandler), "start-cdata\n", "end-cdata\n"},
      {of(&XMLParser::EnableNamespaceDeclHandler), of(&XMLParser::EnableStartNamespaceDeclHandler),
       of(&XMLParser::EnableEndNamespaceDeclHandler), "start-ns p urn:p\n", "end-ns p\n"},
      {of(&XMLParser::EnableDoctypeDeclHandler), of(&XMLParser::EnableStartDoctypeDeclHandler),
       of(&XMLParser::EnableEndDoctypeDeclHandler), "start-doctype r sys pub true\n",
       "end-doctype\n"},
      {of(&XMLParser::EnableElementHandler), of(&XMLParser::EnableStartElementHandler),
       of(&XMLParser::EnableEndElementHandler), "start r a=1 b=<\nstart urn:p|x urn:p|k=v\n",
       "end urn:p|x\nend r\n"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(logWith(c.both, c.start, c.end, true), c.startLog);
    EXPECT_EQ(logWith(c.both, c.start, c.end, false), c.endLog);
  }
}

TEST(Switches, DefaultExpandsEntitiesOrNot) {
  const char document[] = "<!DOCTYPE r [<!ENTITY e \"E\">]><r>a&e;z<!--n--></r>";
  const auto withDefault = [&](bool enable, bool expand, bool text) {
    return logOf(document, [=](XMLParser& parser) {
      parser.EnableDefaultHandler(enable, expand);
      parser.EnableCharacterDataHandler(text);
    });
  };
  const std::string doctype = "default <!DOCTYPE r [<!ENTITY e \"E\">]>";
  EXPECT_EQ(withDefault(true, false, false), doctype + "<r>a&e;z<!--n--></r>\n");
  EXPECT_EQ(withDefault(true, true, false), doctype + "<r>aEz<!--n--></r>\n");
  EXPECT_EQ(withDefault(true, false, true),
            doctype + "<r>\ntext a\ndefault &e;\ntext z\ndefault <!--n--></r>\n");
  EXPECT_EQ(withDefault(true, true, true), doctype + "<r>\ntext aEz\ndefault <!--n--></r>\n");
  EXPECT_EQ(withDefault(false, true, true), "text aEz\n");
  EXPECT_EQ(withDefault(false, false, true), "text az\n") << "the reference is dropped";
  EXPECT_EQ(logOf(document, [](XMLParser& parser) { parser.EnableCharacterDataHandler(true); }),
            "text aEz\n");
  for (const bool expand : {false, true}) {
    EXPECT_EQ(logOf(document,
                    [=](XMLParser& parser) {
                      parser.EnableDefaultHandler(true, expand);
                      parser.EnableDefaultHandler(false, expand);
                    }),
              "");
  }
}

/// Changes the switches of its parser in a callback.
class Switcher : public Recorder {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    Recorder::OnStartElement(name, attributes);
    parser->EnableStartElementHandler(false);
    parser->EnableCommentHandler(true);
  }
  XMLParser* parser = nullptr;
};

TEST(Switches, WorkFromWithinCallbacks) {
  Switcher switcher;
  XMLParser parser(&switcher);
  switcher.parser = &parser;
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  parser.EnableStartElementHandler(true);
  EXPECT_TRUE(parser.Parse("<!--before--><a><b/><!--after--><c/></a>", true));
  EXPECT_EQ(switcher.log, "created\nstart a\ncomment after\n");
}

TEST(OnXmlDecl, StandaloneIsFalseForNoOnly) {
  const struct {
    const char *declaration, *log;
  } cases[] = {
      {"<?xml version='1.0'?>", "xml 1.0 - true\n"},
      {"<?xml version='1.0' encoding='utf-8'?>", "xml 1.0 utf-8 true\n"},
      {"<?xml version='1.0' standalone='yes'?>", "xml 1.0 - true\n"},
      {"<?xml version='1.0' standalone='no'?>", "xml 1.0 - false\n"},
      {"<?xml version='1.0' encoding='utf-8' standalone='no'?>", "xml 1.0 utf-8 false\n"},
      {"", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(logOf(c.declaration + "<a/>"s,
                    [](XMLParser& parser) { parser.EnableXmlDeclHandler(true); }),
              c.log);
  }
}

TEST(OnStartDoctypeDecl, ReportsIdentifiersAndSubset) {
  const struct {
    const char *declaration, *log;
  } cases[] = {
      {"<!DOCTYPE a>", "start-doctype a - - false\nend-doctype\n"},
      {"<!DOCTYPE a []>", "start-doctype a - - true\nend-doctype\n"},
      {"<!DOCTYPE a [<!ELEMENT a ANY>]>", "start-doctype a - - true\nend-doctype\n"},
      {"<!DOCTYPE a SYSTEM 's'>", "start-doctype a s - false\nend-doctype\n"},
      {"<!DOCTYPE a SYSTEM 's' []>", "start-doctype a s - true\nend-doctype\n"},
      {"<!DOCTYPE a PUBLIC 'p' 's'>", "start-doctype a s p false\nend-doctype\n"},
      {"", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(logOf(c.declaration + "<a/>"s,
                    [](XMLParser& parser) { parser.EnableDoctypeDeclHandler(true); }),
              c.log);
  }
}

TEST(OnDefault, ReceivesReferencesToEntitiesOfAnExternalDtd) {
  const std::string document = "<!DOCTYPE a SYSTEM 's'><a>x&nbsp;y</a>";
  const auto enableText = [](XMLParser& parser) { parser.EnableCharacterDataHandler(true); };
  EXPECT_EQ(logOf(document, enableText), "text xy\n");
  const std::string log = logOf(document, [&](XMLParser& parser) {
    enableText(parser);
    parser.EnableDefaultHandler(true, true);
  });
  EXPECT_NE(log.find("text x\ndefault &nbsp;\ntext y\n"), std::string::npos) << log;
}

TEST(GetCurrentColumnNumber, CountsAByteOrderMark) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_FALSE(parser.Parse("\xEF\xBB\xBF<a></b>", true));
  EXPECT_EQ(parser.GetCurrentLineNumber(), 1u);
  EXPECT_EQ(parser.GetCurrentColumnNumber(), 6u);
}

const char kOddDocument[] = "<?xml version='1.0' encoding='x-odd'?><a>\xFE</a>";

TEST(UnknownEncoding, IsRegisteredWithoutTheHandler) {
  Recorder recorder;
  recorder.knowsEncodings = true;
  XMLParser parser(&recorder);
  for (const bool enable : {true, false}) {
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    int other = 0;
    expatCalls.encodingData = &other;
    parser.EnableUnknownEncodingHandler(enable);
    EXPECT_EQ(expatCalls.encodingHandler, enable ? &UnknownEncodingHandler : nullptr);
    EXPECT_EQ(expatCalls.encodingData, nullptr);
    recorder.log.clear();
    EXPECT_FALSE(parser.Parse(kOddDocument, true));
    EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_UNKNOWN_ENCODING);
    EXPECT_EQ(recorder.log, "");
  }
}

TEST(UnknownEncoding, ReachesAHandlerRegisteredAsData) {
  for (const bool known : {true, false}) {
    Recorder recorder;
    recorder.knowsEncodings = known;
    XMLParser parser(&recorder);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    parser.EnableCharacterDataHandler(true);
    XML_SetUnknownEncodingHandler(parser.m_parser, UnknownEncodingHandler, parser.m_handler);
    EXPECT_EQ(parser.Parse(kOddDocument, true), known);
    EXPECT_EQ(parser.GetErrorCode(), known ? XML_ERROR_NONE : XML_ERROR_UNKNOWN_ENCODING);
    EXPECT_EQ(recorder.log, "created\nencoding x-odd\n"s + (known ? "text \xE2\x82\xAC\n" : ""));
  }
}

TEST(Trampolines, HaveExpatsSignatures) {
  static_assert(std::is_same_v<decltype(&StartElementHandler), XML_StartElementHandler>, "");
  static_assert(std::is_same_v<decltype(&EndElementHandler), XML_EndElementHandler>, "");
  static_assert(std::is_same_v<decltype(&CharacterDataHandler), XML_CharacterDataHandler>, "");
  static_assert(
      std::is_same_v<decltype(&ProcessingInstructionHandler), XML_ProcessingInstructionHandler>,
      "");
  static_assert(std::is_same_v<decltype(&CommentHandler), XML_CommentHandler>, "");
  static_assert(std::is_same_v<decltype(&StartCdataSectionHandler), XML_StartCdataSectionHandler>,
                "");
  static_assert(std::is_same_v<decltype(&EndCdataSectionHandler), XML_EndCdataSectionHandler>, "");
  static_assert(std::is_same_v<decltype(&DefaultHandler), XML_DefaultHandler>, "");
  static_assert(std::is_same_v<decltype(&UnknownEncodingHandler), XML_UnknownEncodingHandler>, "");
  static_assert(std::is_same_v<decltype(&StartNamespaceDeclHandler), XML_StartNamespaceDeclHandler>,
                "");
  static_assert(std::is_same_v<decltype(&EndNamespaceDeclHandler), XML_EndNamespaceDeclHandler>,
                "");
  static_assert(std::is_same_v<decltype(&XmlDeclHandler), XML_XmlDeclHandler>, "");
  static_assert(std::is_same_v<decltype(&StartDoctypeDeclHandler), XML_StartDoctypeDeclHandler>,
                "");
  static_assert(std::is_same_v<decltype(&EndDoctypeDeclHandler), XML_EndDoctypeDeclHandler>, "");

  const XML_Char* attributes[] = {"k", "v", nullptr};
  XML_Encoding encoding;
  const auto callAll = [&](XMLEvtHandler* handler) {
    StartElementHandler(handler, "a", attributes);
    EndElementHandler(handler, "a");
    CharacterDataHandler(handler, "text", 2);
    ProcessingInstructionHandler(handler, "target", "data");
    CommentHandler(handler, "note");
    StartCdataSectionHandler(handler);
    EndCdataSectionHandler(handler);
    DefaultHandler(handler, "other", 3);
    const int status = UnknownEncodingHandler(handler, "x-odd", &encoding);
    StartNamespaceDeclHandler(handler, "p", "urn:p");
    EndNamespaceDeclHandler(handler, "p");
    for (const int standalone : {-1, 0, 1}) XmlDeclHandler(handler, "1.0", "UTF-8", standalone);
    for (const int subset : {0, 1, 2}) StartDoctypeDeclHandler(handler, "a", "s", "p", subset);
    EndDoctypeDeclHandler(handler);
    return status;
  };
  Recorder recorder;
  EXPECT_EQ(callAll(&recorder), XML_STATUS_ERROR);
  EXPECT_EQ(recorder.log,
            "start a k=v\nend a\ntext te\npi target data\ncomment note\nstart-cdata\nend-cdata\n"
            "default oth\nencoding x-odd\nstart-ns p urn:p\nend-ns p\n"
            "xml 1.0 UTF-8 true\nxml 1.0 UTF-8 false\nxml 1.0 UTF-8 true\n"
            "start-doctype a s p false\nstart-doctype a s p true\nstart-doctype a s p true\n"
            "end-doctype\n");
  recorder.knowsEncodings = true;
  EXPECT_EQ(callAll(&recorder), XML_STATUS_OK);
  EXPECT_EQ(callAll(nullptr), XML_STATUS_ERROR);
}

struct Counted {
  virtual void count() { ++calls; }
  long calls = 0;
};

class SecondBase : public Counted, public Recorder {};

TEST(Trampolines, FindAHandlerThatIsASecondBase) {
  SecondBase handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, "|"));
  enableAll(parser);
  EXPECT_TRUE(parser.Parse(kDocument, true));
  EXPECT_EQ(handler.log, "created\n"s + kDocumentLog);
  EXPECT_EQ(handler.calls, 0);
}

TEST(Parse, AcceptsChunksOfAnySize) {
  const std::string document = kDocument;
  for (std::size_t size = 1; size <= document.size(); ++size) {
    for (const bool emptyEnd : {false, true}) {
      for (const bool inExpatsBuffer : {false, true}) {
        Recorder recorder;
        XMLParser parser(&recorder);
        ASSERT_TRUE(parser.Create(nullptr, "|"));
        enableAll(parser);
        for (std::size_t begin = 0; begin < document.size(); begin += size) {
          const std::string chunk = document.substr(begin, size);
          const bool isFinal = !emptyEnd && begin + size >= document.size();
          if (inExpatsBuffer) {
            void* const buffer = parser.GetBuffer(chunk.size());
            ASSERT_NE(buffer, nullptr);
            std::memcpy(buffer, chunk.data(), chunk.size());
            ASSERT_TRUE(parser.Parse(chunk.size(), isFinal)) << parser.GetErrorString();
          } else {
            // AddressSanitizer notices if the parser reads past this copy, which has no NUL.
            const std::unique_ptr<char[]> exact(new char[chunk.size()]);
            std::memcpy(exact.get(), chunk.data(), chunk.size());
            ASSERT_TRUE(parser.Parse(exact.get(), chunk.size(), isFinal))
                << parser.GetErrorString();
          }
        }
        if (emptyEnd) {
          EXPECT_TRUE(parser.Parse("", 0, true)) << parser.GetErrorString();
        }
        EXPECT_EQ(recorder.log, "created\n"s + kDocumentLog) << "in chunks of " << size;
        EXPECT_FALSE(parser.Parse("<more/>", true)) << "the document has ended";
      }
    }
  }
}

TEST(Parse, ReadsExactlyTheLengthGiven) {
  Recorder recorder;
  XMLParser parser(&recorder);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_TRUE(parser.Parse("<a/><b/>", 4, true));
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_TRUE(parser.Parse("<a/>\0<b/>", true)) << "a text ends at its first NUL";
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_FALSE(parser.Parse("<a/>\0", 5, true)) << "a buffer does not";
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_INVALID_TOKEN);

  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  char* const buffer = static_cast<char*>(parser.GetBuffer(100));
  ASSERT_NE(buffer, nullptr);
  std::memcpy(buffer, "<a/><b/>", 8);
  EXPECT_TRUE(parser.Parse(std::size_t{4}, true)) << "a part of the buffer";
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_FALSE(parser.Parse(std::size_t{1}, true)) << "without a buffer";
  EXPECT_NE(parser.GetErrorCode(), XML_ERROR_NONE);
}

template <class Parser, class = void>
struct TakesLiteralZero : std::false_type {};
template <class Parser>
struct TakesLiteralZero<Parser, std::void_t<decltype(std::declval<Parser&>().Parse(0, true))>>
    : std::true_type {};
static_assert(!TakesLiteralZero<XMLParser>::value, "0 is a length and a null pointer");

TEST(Parse, AcceptsAnEmptyFinalPiece) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_TRUE(parser.Parse("<a/>", false));
  EXPECT_TRUE(parser.Parse("", true));
  EXPECT_EQ(parser.GetBuffer(1), nullptr) << "the document has ended";

  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  void* const buffer = parser.GetBuffer(4);
  ASSERT_NE(buffer, nullptr);
  std::memcpy(buffer, "<a/>", 4);
  EXPECT_TRUE(parser.Parse(std::size_t{4}, false));
  ASSERT_NE(parser.GetBuffer(1), nullptr);
  EXPECT_TRUE(parser.Parse(std::size_t{0}, true));
}

TEST(Parse, ReportsOpenElementsInTheFinalCallOnly) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  for (const char* document : {"<a>", "<a><b/>", "<a", "", " ", "<a/><!--"}) {
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    EXPECT_TRUE(parser.Parse(document, false)) << document;
    EXPECT_FALSE(parser.Parse("", true)) << document;
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    EXPECT_FALSE(parser.Parse(document, true)) << document;
  }
}

/// Returns the position of the error that expat alone finds. Versions differ for the empty
/// document.
XML_Index errorIndexOfExpat(const std::string& document) {
  XML_Parser parser = XML_ParserCreate(nullptr);
  EXPECT_EQ(XML_Parse(parser, document.data(), static_cast<int>(document.size()), true),
            XML_STATUS_ERROR);
  const XML_Index index = zn_lib::internal::expatByteIndex(parser);
  XML_ParserFree(parser);
  return index;
}

TEST(Parse, ErrorsPersist) {
  const struct {
    const char* document;
    XML_Error code;
    const char* text;
    XML_Size line, column;
  } cases[] = {
      {"<a>\n <b/>\n<c></a>", XML_ERROR_TAG_MISMATCH, "mismatched tag", 3, 5},
      {"", XML_ERROR_NO_ELEMENTS, "no element found", 1, 0},
      {"<a>", XML_ERROR_NO_ELEMENTS, "no element found", 1, 3},
      {"<a/>x", XML_ERROR_JUNK_AFTER_DOC_ELEMENT, "junk after document element", 1, 4},
      {"<a k='1' k='2'/>", XML_ERROR_DUPLICATE_ATTRIBUTE, "duplicate attribute", 1, 9},
      {"<a>&e;</a>", XML_ERROR_UNDEFINED_ENTITY, "undefined entity", 1, 3},
      {"<a>\xC3\xA9\n\xC3\xA9\xC3\xA9&e;</a>", XML_ERROR_UNDEFINED_ENTITY, "undefined entity", 2,
       2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.document);
    XMLEvtHandler handler;
    XMLParser parser(&handler);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    const Written text = written([&] { EXPECT_FALSE(parser.Parse(c.document, true)); });
    EXPECT_EQ(text.out + text.err, "");
    EXPECT_EQ(parser.GetErrorCode(), c.code);
    EXPECT_STREQ(parser.GetErrorString(), c.text);
    EXPECT_STREQ(XMLParser::GetErrorString(c.code), c.text);
    EXPECT_EQ(parser.GetCurrentByteIndex(), errorIndexOfExpat(c.document));
    EXPECT_EQ(parser.GetCurrentLineNumber(), c.line);
    EXPECT_EQ(parser.GetCurrentColumnNumber(), c.column);

    EXPECT_FALSE(parser.Parse("<a/>", true)) << "the error persists";
    EXPECT_EQ(parser.GetErrorCode(), c.code);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    EXPECT_TRUE(parser.Parse("<a/>", true)) << "until a new parser is created";
  }
}

/// Stops its parser at each start tag.
class Stopper : public Recorder {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    Recorder::OnStartElement(name, attributes);
    XML_StopParser(parser->m_parser, resumable ? XML_TRUE : XML_FALSE);
  }
  XMLParser* parser = nullptr;
  bool resumable = true;
};

TEST(Parse, SucceedsIfSuspended) {
  const std::string document = "<a><b/></a>";
  for (const bool inExpatsBuffer : {false, true}) {
    Stopper stopper;
    XMLParser parser(&stopper);
    stopper.parser = &parser;
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    parser.EnableStartElementHandler(true);
    if (inExpatsBuffer) {
      void* const buffer = parser.GetBuffer(document.size());
      ASSERT_NE(buffer, nullptr);
      std::memcpy(buffer, document.data(), document.size());
      EXPECT_TRUE(parser.Parse(document.size(), true));
    } else {
      EXPECT_TRUE(parser.Parse(document.data(), document.size(), true));
    }
    XML_ParsingStatus status;
    XML_GetParsingStatus(parser.m_parser, &status);
    EXPECT_EQ(status.parsing, XML_SUSPENDED);
    EXPECT_EQ(stopper.log, "created\nstart a\n");
    EXPECT_EQ(XML_ResumeParser(parser.m_parser), XML_STATUS_SUSPENDED);
    EXPECT_EQ(XML_ResumeParser(parser.m_parser), XML_STATUS_OK);
    EXPECT_EQ(stopper.log, "created\nstart a\nstart b\n");
  }
}

TEST(Parse, FailsIfAborted) {
  Stopper stopper;
  stopper.resumable = false;
  XMLParser parser(&stopper);
  stopper.parser = &parser;
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  parser.EnableStartElementHandler(true);
  EXPECT_FALSE(parser.Parse("<a><b/></a>", true));
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_ABORTED);
  EXPECT_EQ(stopper.log, "created\nstart a\n");
}

/// Logs the position of its parser at each start tag.
class PositionLogger : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char**) override {
    int offset = -1;
    int size = -1;
    const char* const context = parser->GetInputContext(&offset, &size);
    ASSERT_NE(context, nullptr);
    ASSERT_LE(offset + parser->GetCurrentByteCount(), size);
    EXPECT_EQ(parser->GetInputContext(nullptr, nullptr), context);
    log += name + " byte "s + std::to_string(parser->GetCurrentByteIndex()) + " at " +
           std::to_string(parser->GetCurrentLineNumber()) + ":" +
           std::to_string(parser->GetCurrentColumnNumber()) + " is " +
           std::string(context + offset, static_cast<std::size_t>(parser->GetCurrentByteCount())) +
           " of " + std::to_string(size) + "\n";
  }
  XMLParser* parser = nullptr;
  std::string log;
};

TEST(Queries, ReportThePositionInACallback) {
  PositionLogger logger;
  XMLParser parser(&logger);
  logger.parser = &parser;
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  parser.EnableStartElementHandler(true);
  EXPECT_TRUE(parser.Parse("<a>\n <b/>\n<c k='v'></c></a>", true));
  EXPECT_EQ(logger.log,
            "a byte 0 at 1:0 is <a> of 27\n"
            "b byte 5 at 2:1 is <b/> of 27\n"
            "c byte 10 at 3:0 is <c k='v'> of 27\n");
  EXPECT_EQ(parser.GetCurrentByteIndex(), 27);
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_NONE);
  EXPECT_EQ(parser.GetErrorString(), nullptr);
}

/// Logs the position and the length of each event.
class EventLogger : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char**) override { add(name); }
  void OnEndElement(const XML_Char* name) override { add("/"s + name); }
  void OnCharacterData(const XML_Char* text, int length) override {
    add(std::string(text, static_cast<std::size_t>(length)));
  }
  void OnComment(const XML_Char*) override { add("comment"); }
  void OnStartCdataSection() override { add("cdata"); }
  void OnEndCdataSection() override { add("/cdata"); }
  void OnStartDoctypeDecl(const XML_Char*, const XML_Char*, const XML_Char*, bool) override {
    add("doctype");
  }
  void OnEndDoctypeDecl() override { add("/doctype"); }
  XMLParser* parser = nullptr;
  std::string log;

 private:
  void add(const std::string& event) {
    log += event + " " + std::to_string(parser->GetCurrentByteIndex()) + "+" +
           std::to_string(parser->GetCurrentByteCount()) + ", ";
  }
};

TEST(Queries, ReportPositionAndLengthOfEachEvent) {
  const struct {
    const char* what;
    std::string document, log;
  } cases[] = {
      {"start and end tags", "<a><y></y></a>", "a 0+3, y 3+3, /y 6+4, /a 10+4, "},
      {"an empty-element tag", "<a><y/>t</a>", "a 0+3, y 3+4, /y 7+0, t 7+1, /a 8+4, "},
      {"a comment", "<a><!--c--></a>", "a 0+3, comment 3+8, /a 11+4, "},
      {"a CDATA section", "<a><![CDATA[x]]></a>",
       "a 0+3, cdata 3+9, x 12+1, /cdata 13+3, /a 16+4, "},
      {"references to characters", "<a>&amp;&#65;</a>", "a 0+3, & 3+5, A 8+5, /a 13+4, "},
      {"a declaration without a subset", "<!DOCTYPE a><a/>",
       "doctype 11+1, /doctype 11+1, a 12+4, /a 16+0, "},
      {"a declaration with a system identifier", "<!DOCTYPE a SYSTEM 's' ><a/>",
       "doctype 23+1, /doctype 23+1, a 24+4, /a 28+0, "},
      {"a declaration with a subset", "<!DOCTYPE a  [ ] ><a/>",
       "doctype 13+1, /doctype 17+1, a 18+4, /a 22+0, "},
      {"text of entities",
       "<!DOCTYPE a [<!ENTITY e '<b>1</b>&f;'><!ENTITY f '2<!--c-->'>]><a>&e;3</a>",
       "doctype 12+1, /doctype 62+1, a 63+3, b 66+3, 1 66+3, /b 66+3, 2 66+3, comment 66+3, 3 "
       "69+1, "
       "/a 70+4, "},
  };
  for (const auto& c : cases) {
    EventLogger logger;
    XMLParser parser(&logger);
    logger.parser = &parser;
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    enableAll(parser);
    EXPECT_TRUE(parser.Parse(c.document.data(), c.document.size(), true)) << c.what;
    EXPECT_EQ(logger.log, c.log) << c.what;
    EXPECT_EQ(parser.GetCurrentByteIndex(), static_cast<XML_Index>(c.document.size())) << c.what;
    EXPECT_EQ(parser.GetCurrentByteCount(), 0) << c.what;
  }
}

TEST(Queries, WorkBeforeTheFirstParse) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_NONE);
  EXPECT_EQ(parser.GetErrorString(), nullptr);
  EXPECT_EQ(parser.GetCurrentByteIndex(), -1);
  EXPECT_EQ(parser.GetCurrentLineNumber(), 1u);
  EXPECT_EQ(parser.GetCurrentColumnNumber(), 0u);
  EXPECT_EQ(parser.GetCurrentByteCount(), 0);
  int offset = -5;
  int size = -6;
  EXPECT_EQ(parser.GetInputContext(&offset, &size), nullptr);
  EXPECT_EQ(offset, -5);
  EXPECT_EQ(size, -6);
}

// The text around the names depends on the locale.
TEST(AssertionsDeathTest, NameTheOperationThatHasNoParser) {
  testing::GTEST_FLAG(death_test_style) = kDeathTestStyle;
  // GoogleTest passes a line number to its child, and cannot read one with digit grouping.
  const std::locale before = std::locale::global(std::locale::classic());
  const struct {
    const char* name;
    std::function<void(XMLParser&)> use;
  } cases[] = {
      {"Parse(const", [](XMLParser& p) { p.Parse("<a/>", 4, true); }},
      {"Parse(const", [](XMLParser& p) { p.Parse("<a/>", true); }},
      {"Parse(", [](XMLParser& p) { p.Parse(std::size_t{0}, true); }},
      {"Parse(", [](XMLParser& p) { p.Parse(SIZE_MAX, true); }},
      {"GetBuffer(", [](XMLParser& p) { p.GetBuffer(1); }},
      {"GetBuffer(", [](XMLParser& p) { p.GetBuffer(SIZE_MAX); }},
      {"EnableStartElementHandler(", [](XMLParser& p) { p.EnableStartElementHandler(true); }},
      {"EnableStartElementHandler(", [](XMLParser& p) { p.EnableStartElementHandler(false); }},
      {"EnableEndElementHandler(", [](XMLParser& p) { p.EnableEndElementHandler(true); }},
      {"EnableElementHandler(", [](XMLParser& p) { p.EnableElementHandler(true); }},
      {"EnableCharacterDataHandler(", [](XMLParser& p) { p.EnableCharacterDataHandler(true); }},
      {"EnableProcessingInstructionHandler(",
       [](XMLParser& p) { p.EnableProcessingInstructionHandler(true); }},
      {"EnableCommentHandler(", [](XMLParser& p) { p.EnableCommentHandler(true); }},
      {"EnableStartCdataSectionHandler(",
       [](XMLParser& p) { p.EnableStartCdataSectionHandler(true); }},
      {"EnableEndCdataSectionHandler(", [](XMLParser& p) { p.EnableEndCdataSectionHandler(true); }},
      {"EnableCdataSectionHandler(", [](XMLParser& p) { p.EnableCdataSectionHandler(true); }},
      {"EnableDefaultHandler(", [](XMLParser& p) { p.EnableDefaultHandler(true, true); }},
      {"EnableDefaultHandler(", [](XMLParser& p) { p.EnableDefaultHandler(true, false); }},
      {"EnableUnknownEncodingHandler(", [](XMLParser& p) { p.EnableUnknownEncodingHandler(true); }},
      {"EnableStartNamespaceDeclHandler(",
       [](XMLParser& p) { p.EnableStartNamespaceDeclHandler(true); }},
      {"EnableEndNamespaceDeclHandler(",
       [](XMLParser& p) { p.EnableEndNamespaceDeclHandler(true); }},
      {"EnableStartNamespaceDeclHandler(",
       [](XMLParser& p) { p.EnableNamespaceDeclHandler(true); }},
      {"EnableXmlDeclHandler(", [](XMLParser& p) { p.EnableXmlDeclHandler(true); }},
      {"EnableStartDoctypeDeclHandler(",
       [](XMLParser& p) { p.EnableStartDoctypeDeclHandler(true); }},
      {"EnableEndDoctypeDeclHandler(", [](XMLParser& p) { p.EnableEndDoctypeDeclHandler(true); }},
      {"EnableDoctypeDeclHandler(", [](XMLParser& p) { p.EnableDoctypeDeclHandler(true); }},
      {"GetErrorCode(", [](XMLParser& p) { p.GetErrorCode(); }},
      {"GetErrorCode(", [](XMLParser& p) { p.GetErrorString(); }},
      {"GetCurrentByteIndex(", [](XMLParser& p) { p.GetCurrentByteIndex(); }},
      {"GetCurrentLineNumber(", [](XMLParser& p) { p.GetCurrentLineNumber(); }},
      {"GetCurrentColumnNumber(", [](XMLParser& p) { p.GetCurrentColumnNumber(); }},
      {"GetCurrentByteCount(", [](XMLParser& p) { p.GetCurrentByteCount(); }},
      {"GetInputContext(", [](XMLParser& p) { p.GetInputContext(nullptr, nullptr); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    XMLEvtHandler handler;
    XMLParser parser(&handler);
    const auto message = AllOf(HasSubstr(" src/udf/zn_xmlparser.cpp:"),
                               HasSubstr("XMLParser::"s + c.name), HasSubstr("m_parser != NULL"));
    EXPECT_DEATH(c.use(parser), message);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    c.use(parser);
    parser.Destroy();
    EXPECT_DEATH(c.use(parser), message) << "after Destroy";
  }
  std::locale::global(before);
}

TEST(GetBuffer, RejectsLengthsThatExpatCannotCount) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  ASSERT_NE(parser.GetBuffer(1), nullptr);
  for (const std::uint64_t wide :
       {std::uint64_t{INT_MAX} + 1, std::uint64_t{UINT_MAX}, std::uint64_t{UINT_MAX} + 1,
        std::uint64_t{UINT_MAX} + 5, std::uint64_t{SIZE_MAX} - 1, std::uint64_t{SIZE_MAX}}) {
    if (wide > SIZE_MAX) continue;
    const auto length = static_cast<std::size_t>(wide);
    EXPECT_EQ(parser.GetBuffer(length), nullptr) << length;
    EXPECT_FALSE(parser.Parse(length, true)) << length;
  }
  EXPECT_EQ(parser.GetBuffer(INT_MAX), nullptr) << "more than expat can allocate";
  char* const buffer = static_cast<char*>(parser.GetBuffer(4));
  ASSERT_NE(buffer, nullptr);
  std::memcpy(buffer, "<a/>", 4);
  EXPECT_TRUE(parser.Parse(std::size_t{4}, true)) << "the parser is unchanged";
}

TEST(LongText, IsParsedOrRejected) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  for (const char c : {'<', '&', 'x', '\0', '\xFF', ' '}) {
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    EXPECT_FALSE(parser.Parse(std::string(kLongText, c).data(), kLongText, true)) << c;
  }
  for (const std::string& document :
       {"<a>" + std::string(kLongText, 'x') + "</a>",
        "<a k='" + std::string(kLongText, 'x') + "'/>", "<" + std::string(kLongText, 'x') + "/>",
        "<!--" + std::string(kLongText, 'x') + "--><a/>"}) {
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    EXPECT_TRUE(parser.Parse(document.c_str(), true)) << document.substr(0, 10);
  }
}

/// The document "<a>xxx...</a>", followed by a NUL. It needs little memory, because the same block
/// of x's is mapped repeatedly.
class HugeDocument {
 public:
  explicit HugeDocument(std::size_t atLeast) : blocks_(atLeast / kBlock + 1) {
    const std::string block(kBlock, 'x');
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
    if (file == nullptr || std::fwrite(block.data(), 1, kBlock, file.get()) != kBlock ||
        std::fflush(file.get()) != 0) {
      return;
    }
    void* const range = mmap(nullptr, blocks_ * kBlock, PROT_NONE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (range == MAP_FAILED) return;
    text_ = static_cast<char*>(range);
    for (std::size_t i = 0; i < blocks_; ++i) {
      if (mmap(text_ + i * kBlock, kBlock, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED,
               fileno(file.get()), 0) == MAP_FAILED) {
        return;
      }
    }
    std::memcpy(text_, "<a>", 3);
    std::memcpy(text_ + size() - 4, "</a>", 5);
    isReady_ = true;
  }
  ~HugeDocument() {
    if (text_ != nullptr) munmap(text_, blocks_ * kBlock);
  }
  HugeDocument(const HugeDocument&) = delete;
  HugeDocument& operator=(const HugeDocument&) = delete;

  bool isReady() const { return isReady_; }
  char* text() const { return text_; }
  std::size_t size() const { return blocks_ * kBlock - 1; }

 private:
  static constexpr std::size_t kBlock = 16 * 1024 * 1024;
  std::size_t blocks_;
  char* text_ = nullptr;
  bool isReady_ = false;
};

class TextCounter : public XMLEvtHandler {
 public:
  void OnCharacterData(const XML_Char* text, int length) override {
    for (int i = 0; i < length; i += 4096) areAllX = areAllX && text[i] == 'x';
    total += static_cast<std::size_t>(length);
  }
  std::size_t total = 0;
  bool areAllX = true;
};

TEST(LongText, IsFedInPiecesBeyondTheLimitOfExpat) {
  const HugeDocument document(std::size_t{INT_MAX} + 1);
  ASSERT_TRUE(document.isReady());
  ASSERT_GT(document.size(), std::size_t{INT_MAX});
  TextCounter counter;
  XMLParser parser(&counter);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  parser.EnableCharacterDataHandler(true);
  EXPECT_TRUE(parser.Parse(document.text(), document.size(), true)) << parser.GetErrorString();
  EXPECT_EQ(counter.total, document.size() - std::strlen("<a></a>"));
  EXPECT_TRUE(counter.areAllX);
  EXPECT_EQ(parser.GetCurrentByteIndex(), static_cast<XML_Index>(document.size()));
  EXPECT_FALSE(parser.Parse("", true)) << "the last piece was final";
}

TEST(LongText, IsSplitOnlyIfExpatCannotParseItAtOnce) {
  constexpr int longest = 1 << 30;
  constexpr int piece = 64 << 20;
  const HugeDocument document(std::size_t{longest} + piece);
  ASSERT_TRUE(document.isReady());
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  const auto partsOf = [&](std::size_t length) {
    expatCalls.onlyNotesParts = true;
    EXPECT_TRUE(parser.Parse(document.text(), length, true));
    expatCalls.onlyNotesParts = false;
    return std::exchange(expatCalls.parts, {});
  };
  using Parts = decltype(expatCalls.parts);
  EXPECT_EQ(partsOf(longest), (Parts{{longest, true}}));
  Parts expected(longest / piece, {piece, false});
  expected.emplace_back(1, true);
  EXPECT_EQ(partsOf(std::size_t{longest} + 1), expected);
  expected.back() = {piece, true};
  EXPECT_EQ(partsOf(std::size_t{longest} + piece), expected);
}

// As a whole, such a document would exhaust the memory before expat reads a byte.
TEST(LongText, StopsAtTheFirstPieceThatFails) {
  const HugeDocument document(std::size_t{1} << 30);
  ASSERT_TRUE(document.isReady());
  Stopper stopper;
  XMLParser suspended(&stopper);
  stopper.parser = &suspended;
  ASSERT_TRUE(suspended.Create(nullptr, nullptr));
  suspended.EnableStartElementHandler(true);
  EXPECT_FALSE(suspended.Parse(document.text(), document.size(), true));
  EXPECT_EQ(suspended.GetErrorCode(), XML_ERROR_SUSPENDED);
  EXPECT_EQ(stopper.log, "created\nstart a\n");

  constexpr std::size_t errorAt = 200 * 1024 * 1024 + 5;
  document.text()[errorAt] = '\1';
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_FALSE(parser.Parse(document.text(), document.size(), true));
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_INVALID_TOKEN);
  EXPECT_EQ(parser.GetCurrentByteIndex(), static_cast<XML_Index>(errorAt));
}

// ---- Documents in pieces

TEST(Splitting, DoesNotChangeTheText) {
  const SplitDocument expected = splitDocument();
  for (std::size_t size = 1; size <= 8192; ++size) {
    XmlOutline outline;
    XMLParser parser(&outline);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    parser.EnableCharacterDataHandler(true);
    ASSERT_TRUE(parseInPieces(parser, expected.document, size)) << size;
    ASSERT_EQ(outline.text, expected.text) << size;
  }
}

}  // namespace
