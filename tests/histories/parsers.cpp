// Calls of the parser binding.
#include <algorithm>
#include <cstring>
#include <string>

#include "model_parser.h"
#include "pools.h"

namespace histories {

// ---- The events

void EventLog::add(const std::string& event, const XML_Char* text) {
  add(event + ":" + shown(text));
}

void EventLog::add(const std::string& event, const XML_Char* text, int length) {
  add(event + ":" + shown(std::string(text, static_cast<std::size_t>(length))));
}

void EventLog::addStart(const XML_Char* name, const XML_Char** attributes) {
  add("start", name);
  for (; *attributes != nullptr; attributes += 2) {
    add(std::string("attribute ") + attributes[0], attributes[1]);
  }
}

std::string EventLog::take() {
  std::string all;
  all.swap(text_);
  return all;
}

void LoggingHandler::OnPostCreate() { log.add("created"); }
void LoggingHandler::OnStartElement(const XML_Char* name, const XML_Char** attributes) {
  log.addStart(name, attributes);
}
void LoggingHandler::OnEndElement(const XML_Char* name) { log.add("end", name); }
void LoggingHandler::OnCharacterData(const XML_Char* text, int length) {
  log.add("text", text, length);
}
void LoggingHandler::OnProcessingInstruction(const XML_Char* target, const XML_Char* data) {
  log.add("instruction", target);
  log.add("data", data);
}
void LoggingHandler::OnComment(const XML_Char* text) { log.add("comment", text); }
void LoggingHandler::OnStartCdataSection() { log.add("cdata"); }
void LoggingHandler::OnEndCdataSection() { log.add("cdata ends"); }
void LoggingHandler::OnDefault(const XML_Char* text, int length) {
  log.add("default", text, length);
}
bool LoggingHandler::OnUnknownEncoding(const XML_Char* name, XML_Encoding*) {
  log.add("encoding", name);
  return true;
}
void LoggingHandler::OnStartNamespaceDecl(const XML_Char* prefix, const XML_Char* uri) {
  log.add("namespace", prefix);
  log.add("uri", uri);
}
void LoggingHandler::OnEndNamespaceDecl(const XML_Char* prefix) {
  log.add("namespace ends", prefix);
}
void LoggingHandler::OnXmlDecl(const XML_Char* version, const XML_Char* encoding, bool standalone) {
  log.add("version", version);
  log.add("encoding", encoding);
  log.add(standalone ? "standalone" : "not standalone");
}
void LoggingHandler::OnStartDoctypeDecl(const XML_Char* name, const XML_Char* systemId,
                                        const XML_Char* publicId, bool hasInternalSubset) {
  log.add("doctype", name);
  log.add("system", systemId);
  log.add("public", publicId);
  log.add(hasInternalSubset ? "subset" : "no subset");
}
void LoggingHandler::OnEndDoctypeDecl() { log.add("doctype ends"); }

namespace {

// ---- Expat alone

EventLog& logOf(void* data) { return *static_cast<EventLog*>(data); }

void startElement(XML_Parser expat, bool on) {
  XML_SetStartElementHandler(
      expat, !on ? nullptr : +[](void* data, const XML_Char* name, const XML_Char** attributes) {
        logOf(data).addStart(name, attributes);
      });
}
void endElement(XML_Parser expat, bool on) {
  XML_SetEndElementHandler(
      expat,
      !on ? nullptr : +[](void* data, const XML_Char* name) { logOf(data).add("end", name); });
}
void characterData(XML_Parser expat, bool on) {
  XML_SetCharacterDataHandler(
      expat, !on ? nullptr : +[](void* data, const XML_Char* text, int length) {
        logOf(data).add("text", text, length);
      });
}
void instruction(XML_Parser expat, bool on) {
  XML_SetProcessingInstructionHandler(
      expat, !on ? nullptr : +[](void* data, const XML_Char* target, const XML_Char* text) {
        logOf(data).add("instruction", target);
        logOf(data).add("data", text);
      });
}
void comment(XML_Parser expat, bool on) {
  XML_SetCommentHandler(
      expat,
      !on ? nullptr : +[](void* data, const XML_Char* text) { logOf(data).add("comment", text); });
}
void startCdata(XML_Parser expat, bool on) {
  XML_SetStartCdataSectionHandler(
      expat, !on ? nullptr : +[](void* data) { logOf(data).add("cdata"); });
}
void endCdata(XML_Parser expat, bool on) {
  XML_SetEndCdataSectionHandler(
      expat, !on ? nullptr : +[](void* data) { logOf(data).add("cdata ends"); });
}
void unknownEncoding(XML_Parser expat, bool on) {
  // No document has an unknown encoding: the binding documents that it passes no handler then.
  XML_SetUnknownEncodingHandler(
      expat, !on ? nullptr : +[](void*, const XML_Char*, XML_Encoding*) { return 0; }, nullptr);
}
void startNamespace(XML_Parser expat, bool on) {
  XML_SetStartNamespaceDeclHandler(
      expat, !on ? nullptr : +[](void* data, const XML_Char* prefix, const XML_Char* uri) {
        logOf(data).add("namespace", prefix);
        logOf(data).add("uri", uri);
      });
}
void endNamespace(XML_Parser expat, bool on) {
  XML_SetEndNamespaceDeclHandler(
      expat, !on ? nullptr : +[](void* data, const XML_Char* prefix) {
        logOf(data).add("namespace ends", prefix);
      });
}
void declaration(XML_Parser expat, bool on) {
  XML_SetXmlDeclHandler(
      expat, !on ? nullptr
                 : +[](void* data, const XML_Char* version, const XML_Char* encoding, int alone) {
                     logOf(data).add("version", version);
                     logOf(data).add("encoding", encoding);
                     logOf(data).add(alone == 0 ? "not standalone" : "standalone");
                   });
}
void startDoctype(XML_Parser expat, bool on) {
  XML_SetStartDoctypeDeclHandler(
      expat, !on ? nullptr
                 : +[](void* data, const XML_Char* name, const XML_Char* systemId,
                       const XML_Char* publicId, int hasInternalSubset) {
                     logOf(data).add("doctype", name);
                     logOf(data).add("system", systemId);
                     logOf(data).add("public", publicId);
                     logOf(data).add(hasInternalSubset == 0 ? "no subset" : "subset");
                   });
}
void endDoctype(XML_Parser expat, bool on) {
  XML_SetEndDoctypeDeclHandler(
      expat, !on ? nullptr : +[](void* data) { logOf(data).add("doctype ends"); });
}

template <void (*first)(XML_Parser, bool), void (*second)(XML_Parser, bool)>
void both(XML_Parser expat, bool on) {
  first(expat, on);
  second(expat, on);
}

struct Switch {
  const char* name;
  void (XMLParser::*ofBinding)(bool);
  void (*ofExpat)(XML_Parser, bool);
};

#define SWITCH(name, ofExpat) {#name, &XMLParser::name, ofExpat}
const std::vector<Switch> kSwitches = {
    SWITCH(EnableElementHandler, (both<startElement, endElement>)),
    SWITCH(EnableCharacterDataHandler, characterData),
    SWITCH(EnableStartElementHandler, startElement),
    SWITCH(EnableEndElementHandler, endElement),
    SWITCH(EnableProcessingInstructionHandler, instruction),
    SWITCH(EnableCommentHandler, comment),
    SWITCH(EnableStartCdataSectionHandler, startCdata),
    SWITCH(EnableEndCdataSectionHandler, endCdata),
    SWITCH(EnableCdataSectionHandler, (both<startCdata, endCdata>)),
    SWITCH(EnableUnknownEncodingHandler, unknownEncoding),
    SWITCH(EnableStartNamespaceDeclHandler, startNamespace),
    SWITCH(EnableEndNamespaceDeclHandler, endNamespace),
    SWITCH(EnableNamespaceDeclHandler, (both<startNamespace, endNamespace>)),
    SWITCH(EnableXmlDeclHandler, declaration),
    SWITCH(EnableStartDoctypeDeclHandler, startDoctype),
    SWITCH(EnableEndDoctypeDeclHandler, endDoctype),
    SWITCH(EnableDoctypeDeclHandler, (both<startDoctype, endDoctype>)),
};
#undef SWITCH

void switchDefault(XML_Parser expat, bool on, bool expand) {
  const XML_DefaultHandler handler =
      !on ? nullptr : +[](void* data, const XML_Char* text, int length) {
        logOf(data).add("default", text, length);
      };
  expand ? XML_SetDefaultHandlerExpand(expat, handler) : XML_SetDefaultHandler(expat, handler);
}

// ---- Calls

struct Pair {
  std::string number;
  ParserUnderTest& own;
  ParserModel& model;
};

Pair parserOf(Step& step) {
  const unsigned object = anyObject(step.choose);
  return {std::to_string(object), *step.world.parsers[object], step.world.model.parsers[object]};
}

void compareEvents(Step& step, const Pair& pair) {
  step.same(pair.model.log.take(), pair.own.handler.log.take());
}

/// Creates a parser, and all the callbacks are off.
void createParser(Step& step, const Pair& pair) {
  const char* const encoding =
      step.choose.one<const char*>({nullptr, "", "UTF-8", "ISO-8859-1", "US-ASCII"});
  const char* const separator = step.choose.one<const char*>({nullptr, "", "|"});
  step.call("Create" + pair.number, encoding, separator);
  const auto orNull = [](const char* text) {
    return text == nullptr || text[0] == '\0' ? nullptr : text;
  };
  pair.model.expat.reset(XML_ParserCreate_MM(orNull(encoding), nullptr, orNull(separator)));
  XML_SetUserData(pair.model.expat.get(), &pair.model.log);
  pair.model.log.add("created");
  step.same(true, pair.own.parser.Create(encoding, separator));
  compareEvents(step, pair);
}

void create(Step& step) { createParser(step, parserOf(step)); }

/// Makes a call for which there must be a parser. The first of them creates it.
template <void (*make)(Step&, const Pair&)>
void withParser(Step& step) {
  const Pair pair = parserOf(step);
  if (pair.model.expat == nullptr) {
    createParser(step, pair);
  } else {
    make(step, pair);
  }
}

void destroy(Step& step) {
  const unsigned object = anyObject(step.choose);
  const bool isByDestructor = step.choose.flag();
  step.call((isByDestructor ? "~XMLParser" : "Destroy") + std::to_string(object));
  step.world.model.parsers[object].expat.reset();
  if (isByDestructor) {
    step.world.parsers[object] = std::make_unique<ParserUnderTest>();
  } else {
    step.world.parsers[object]->parser.Destroy();
  }
  step.same(true, step.world.parsers[object]->parser.m_parser == nullptr);
}

void enable(Step& step, const Pair& pair) {
  const Switch& one = step.choose.one(kSwitches);
  const bool on = step.choose.below(4) != 3;
  step.call(one.name + pair.number, on);
  one.ofExpat(pair.model.expat.get(), on);
  (pair.own.parser.*one.ofBinding)(on);
}

void enableDefault(Step& step, const Pair& pair) {
  const bool on = step.choose.flag();
  const bool expand = step.choose.flag();
  step.call("EnableDefaultHandler" + pair.number, on, expand);
  switchDefault(pair.model.expat.get(), on, expand);
  pair.own.parser.EnableDefaultHandler(on, expand);
}

void parse(Step& step, const Pair& pair) {
  const std::string whole = document(step.choose);
  const std::string piece = step.choose.flag() ? whole : whole.substr(0, whole.size() / 2);
  const bool isFinal = step.choose.flag();
  const XML_Parser expat = pair.model.expat.get();
  const int size = static_cast<int>(piece.size());
  switch (step.choose.below(3)) {
    case 0:
      step.call("Parse" + pair.number, piece, size, isFinal);
      step.same(XML_Parse(expat, piece.data(), size, isFinal) != XML_STATUS_ERROR,
                pair.own.parser.Parse(piece.data(), piece.size(), isFinal));
      break;
    case 1:
      step.call("Parse" + pair.number, piece, isFinal);
      step.same(XML_Parse(expat, piece.data(), size, isFinal) != XML_STATUS_ERROR,
                pair.own.parser.Parse(piece.c_str(), isFinal));
      break;
    default: {
      step.call("GetBuffer, Parse" + pair.number, piece, isFinal);
      void* const expected = XML_GetBuffer(expat, size);
      void* const actual = pair.own.parser.GetBuffer(piece.size());
      step.same(expected == nullptr, actual == nullptr);
      if (expected == nullptr || actual == nullptr) break;
      std::memcpy(expected, piece.data(), piece.size());
      std::memcpy(actual, piece.data(), piece.size());
      step.same(XML_ParseBuffer(expat, size, isFinal) != XML_STATUS_ERROR,
                pair.own.parser.Parse(piece.size(), isFinal));
    }
  }
  compareEvents(step, pair);
}

std::string contextOf(const char* text, int size) {
  return text == nullptr ? "none" : std::string(text, static_cast<std::size_t>(size));
}

void query(Step& step, const Pair& pair) {
  step.call("GetErrorCode" + pair.number + " and others");
  const XML_Parser expat = pair.model.expat.get();
  const XMLParser& own = pair.own.parser;
  step.same(int{XML_GetErrorCode(expat)}, int{own.GetErrorCode()});
  step.same(XML_ErrorString(XML_GetErrorCode(expat)), own.GetErrorString());
  step.same(XML_GetCurrentByteIndex(expat), own.GetCurrentByteIndex());
  step.same(XML_GetCurrentLineNumber(expat), own.GetCurrentLineNumber());
  step.same(XML_GetCurrentColumnNumber(expat), own.GetCurrentColumnNumber());
  step.same(XML_GetCurrentByteCount(expat), own.GetCurrentByteCount());
  int offset = -1, size = 0, ownOffset = -1, ownSize = 0;
  const char* const context = XML_GetInputContext(expat, &offset, &size);
  const char* const ownContext = own.GetInputContext(&ownOffset, &ownSize);
  step.same(contextOf(context, size), contextOf(ownContext, ownSize));
  step.same(offset, ownOffset);
}

void queryExpat(Step& step) {
  const XML_Error code = static_cast<XML_Error>(step.choose.below(40));
  step.call("XMLParser::GetErrorString", int{code});
  step.same(XML_ErrorString(code), XMLParser::GetErrorString(code));
  step.sameHere(XML_ExpatVersion(), XMLParser::GetExpatVersion());
}

/// Calls a function that expat calls otherwise.
void callBack(Step& step) {
  LoggingHandler& handler = step.world.parsers[anyObject(step.choose)]->handler;
  XMLEvtHandler* const data = &handler;
  const std::string text = step.choose.one({"a"s, ""s, "\xC3\xA4"s});
  const XML_Char* attributes[] = {"x", "1", nullptr};
  const int flag = step.choose.one({0, 1, -1, 2});
  const int length = static_cast<int>(text.size());
  XML_Encoding encoding{};
  EventLog expected;
  const unsigned which = step.choose.below(14);
  step.call("trampoline", which, text, flag);
  switch (which) {
    case 0:
      StartElementHandler(data, text.c_str(), attributes);
      expected.addStart(text.c_str(), attributes);
      break;
    case 1:
      EndElementHandler(data, text.c_str());
      expected.add("end", text.c_str());
      break;
    case 2:
      CharacterDataHandler(data, text.c_str(), length);
      expected.add("text", text.c_str(), length);
      break;
    case 3:
      ProcessingInstructionHandler(data, text.c_str(), "d");
      expected.add("instruction", text.c_str());
      expected.add("data", "d");
      break;
    case 4:
      CommentHandler(data, text.c_str());
      expected.add("comment", text.c_str());
      break;
    case 5:
      StartCdataSectionHandler(data);
      expected.add("cdata");
      break;
    case 6:
      EndCdataSectionHandler(data);
      expected.add("cdata ends");
      break;
    case 7:
      DefaultHandler(data, text.c_str(), length);
      expected.add("default", text.c_str(), length);
      break;
    case 8:
      step.same(1, UnknownEncodingHandler(data, text.c_str(), &encoding));
      expected.add("encoding", text.c_str());
      break;
    case 9:
      StartNamespaceDeclHandler(data, nullptr, text.c_str());
      expected.add("namespace", nullptr);
      expected.add("uri", text.c_str());
      break;
    case 10:
      EndNamespaceDeclHandler(data, text.c_str());
      expected.add("namespace ends", text.c_str());
      break;
    case 11:
      XmlDeclHandler(data, "1.0", nullptr, flag);
      expected.add("version", "1.0");
      expected.add("encoding", nullptr);
      expected.add(flag != 0 ? "standalone" : "not standalone");
      break;
    case 12:
      StartDoctypeDeclHandler(data, text.c_str(), nullptr, "p", flag);
      expected.add("doctype", text.c_str());
      expected.add("system", nullptr);
      expected.add("public", "p");
      expected.add(flag != 0 ? "subset" : "no subset");
      break;
    default:
      EndDoctypeDeclHandler(data);
      expected.add("doctype ends");
  }
  step.same(expected.take(), handler.log.take());
}

/// The callbacks of the base class do nothing.
void ignoreEvents(Step& step) {
  step.call("XMLEvtHandler's callbacks");
  XMLEvtHandler base;
  const XML_Char* attributes[] = {nullptr};
  XML_Encoding encoding{};
  base.OnPostCreate();
  base.OnStartElement("a", attributes);
  base.OnEndElement("a");
  base.OnCharacterData("a", 1);
  base.OnProcessingInstruction("a", "b");
  base.OnComment("a");
  base.OnStartCdataSection();
  base.OnEndCdataSection();
  base.OnDefault("a", 1);
  base.OnStartNamespaceDecl("a", "b");
  base.OnEndNamespaceDecl("a");
  base.OnXmlDecl("1.0", nullptr, true);
  base.OnStartDoctypeDecl("a", nullptr, nullptr, false);
  base.OnEndDoctypeDecl();
  step.same(false, base.OnUnknownEncoding("a", &encoding));
}

}  // namespace

void addParsers(Kinds& kinds) {
  std::string switches;
  for (const Switch& one : kSwitches) switches += std::string(" XMLParser::") + one.name;
  kinds.push_back({"XMLParser::Create XMLParser::XMLParser", create, 3});
  kinds.push_back({"XMLParser::Destroy XMLParser::~XMLParser", destroy, 2});
  kinds.push_back({switches, withParser<enable>, 24});
  kinds.push_back({"XMLParser::EnableDefaultHandler", withParser<enableDefault>, 3});
  kinds.push_back({"XMLParser::Parse XMLParser::GetBuffer", withParser<parse>, 16});
  kinds.push_back(
      {"XMLParser::GetErrorCode XMLParser::GetErrorString "
       "XMLParser::GetCurrentByteIndex XMLParser::GetCurrentLineNumber "
       "XMLParser::GetCurrentColumnNumber XMLParser::GetCurrentByteCount "
       "XMLParser::GetInputContext",
       withParser<query>});
  kinds.push_back({"XMLParser::GetExpatVersion XMLParser::GetErrorString", queryExpat, 2});
  kinds.push_back(
      {"StartElementHandler EndElementHandler CharacterDataHandler "
       "ProcessingInstructionHandler CommentHandler StartCdataSectionHandler "
       "EndCdataSectionHandler DefaultHandler UnknownEncodingHandler "
       "StartNamespaceDeclHandler EndNamespaceDeclHandler XmlDeclHandler "
       "StartDoctypeDeclHandler EndDoctypeDeclHandler",
       callBack, 4});
  kinds.push_back(
      {"XMLEvtHandler::OnPostCreate XMLEvtHandler::OnStartElement "
       "XMLEvtHandler::OnEndElement XMLEvtHandler::OnCharacterData "
       "XMLEvtHandler::OnProcessingInstruction XMLEvtHandler::OnComment "
       "XMLEvtHandler::OnStartCdataSection XMLEvtHandler::OnEndCdataSection "
       "XMLEvtHandler::OnDefault XMLEvtHandler::OnUnknownEncoding "
       "XMLEvtHandler::OnStartNamespaceDecl XMLEvtHandler::OnEndNamespaceDecl "
       "XMLEvtHandler::OnXmlDecl XMLEvtHandler::OnStartDoctypeDecl "
       "XMLEvtHandler::OnEndDoctypeDecl",
       ignoreEvents, 1});
}

}  // namespace histories
