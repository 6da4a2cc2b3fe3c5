/// Compares events, errors and positions of the parser object with those of expat alone, for
/// documents that are fed in any pieces.
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_xmlparser.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "../src/udf/internal/expat.h"
#include "fuzz_check.h"

namespace {

/// A log of events, one on each line. Consecutive text or unhandled markup is one event, since the
/// parser may split it anywhere. Very long logs are truncated, as entities may expand without
/// limit.
class Record {
 public:
  void event(const std::string& kind, const std::vector<const XML_Char*>& parts = {}) {
    end();
    if (events.size() > kMost) return;
    events += kind;
    for (const XML_Char* part : parts) {
      events += part == nullptr ? " null" : " " + fuzz::shown(std::string(part));
    }
    events += '\n';
  }

  void run(const std::string& kind, const XML_Char* text, int length) {
    if (kind_ != kind) end();
    kind_ = kind;
    if (run_.size() <= kMost) run_.append(text, static_cast<std::size_t>(length));
  }

  /// Ends the run of text.
  void end() {
    if (!kind_.empty() && events.size() <= kMost) {
      events += kind_ + " " + fuzz::shown(run_.substr(0, kMost)) + "\n";
    }
    kind_.clear();
    run_.clear();
  }

  void start(const XML_Char* name, const XML_Char** attributes) {
    std::vector<const XML_Char*> parts = {name};
    for (; *attributes != nullptr; ++attributes) parts.push_back(*attributes);
    event("start", parts);
  }

  std::string events;

 private:
  static constexpr std::size_t kMost = 1 << 16;

  std::string kind_;
  std::string run_;
};

/// Defines an encoding in which bytes above ASCII are Latin-1, except for one that is invalid.
/// Returns false for names that do not begin with an x.
bool fillEncoding(const XML_Char* name, XML_Encoding* encoding) {
  if (name[0] != 'x') return false;
  for (int i = 0; i < 256; ++i) encoding->map[i] = i == 0xFF ? -1 : i;
  encoding->data = nullptr;
  encoding->convert = nullptr;
  encoding->release = nullptr;
  return true;
}

class Recorder : public XMLEvtHandler {
 public:
  void OnPostCreate() override { ++created; }
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    record.start(name, attributes);
  }
  void OnEndElement(const XML_Char* name) override { record.event("end", {name}); }
  void OnCharacterData(const XML_Char* text, int length) override {
    record.run("text", text, length);
  }
  void OnProcessingInstruction(const XML_Char* target, const XML_Char* data) override {
    record.event("instruction", {target, data});
  }
  void OnComment(const XML_Char* text) override { record.event("comment", {text}); }
  void OnStartCdataSection() override { record.event("cdata"); }
  void OnEndCdataSection() override { record.event("end of cdata"); }
  void OnDefault(const XML_Char* text, int length) override { record.run("other", text, length); }
  bool OnUnknownEncoding(const XML_Char* name, XML_Encoding* encoding) override {
    record.event("encoding", {name});
    return fillEncoding(name, encoding);
  }
  void OnStartNamespaceDecl(const XML_Char* prefix, const XML_Char* uri) override {
    record.event("namespace", {prefix, uri});
  }
  void OnEndNamespaceDecl(const XML_Char* prefix) override {
    record.event("end of namespace", {prefix});
  }
  void OnXmlDecl(const XML_Char* version, const XML_Char* encoding, bool standalone) override {
    record.event(standalone ? "standalone xml" : "xml", {version, encoding});
  }
  void OnStartDoctypeDecl(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId,
                          bool hasInternalSubset) override {
    record.event(hasInternalSubset ? "doctype [" : "doctype", {name, systemId, publicId});
  }
  void OnEndDoctypeDecl() override { record.event("end of doctype"); }

  Record record;
  int created = 0;
};

struct Options {
  std::string encoding;
  std::string separator;
  bool isEncodingHandled;
  bool isDefaultOn;
  bool expand;
  /// The number of the switch that is turned off again before the parse. Some numbers are none.
  int off;
};

// ---- Expat alone

Record& recordOf(void* data) { return *static_cast<Record*>(data); }

/// Returns a parser without the library. Only the first character of the separator counts.
XML_Parser plainParser(Record& record, const Options& options) {
  const XML_Char* const encoding = options.encoding.empty() ? nullptr : options.encoding.c_str();
  const XML_Parser parser = options.separator.empty()
                                ? XML_ParserCreate(encoding)
                                : XML_ParserCreateNS(encoding, options.separator[0]);
  XML_SetUserData(parser, &record);
  if (options.off != 1) {
    XML_SetStartElementHandler(parser,
                               [](void* data, const XML_Char* name, const XML_Char** attributes) {
                                 recordOf(data).start(name, attributes);
                               });
  }
  if (options.off != 2) {
    XML_SetEndElementHandler(
        parser, [](void* data, const XML_Char* name) { recordOf(data).event("end", {name}); });
  }
  if (options.off != 3) {
    XML_SetCharacterDataHandler(parser, [](void* data, const XML_Char* text, int length) {
      recordOf(data).run("text", text, length);
    });
  }
  if (options.off != 4) {
    XML_SetProcessingInstructionHandler(
        parser, [](void* data, const XML_Char* target, const XML_Char* text) {
          recordOf(data).event("instruction", {target, text});
        });
  }
  if (options.off != 5) {
    XML_SetCommentHandler(
        parser, [](void* data, const XML_Char* text) { recordOf(data).event("comment", {text}); });
  }
  if (options.off != 6 && options.off != 10) {
    XML_SetStartCdataSectionHandler(parser, [](void* data) { recordOf(data).event("cdata"); });
  }
  if (options.off != 6 && options.off != 11) {
    XML_SetEndCdataSectionHandler(parser, [](void* data) { recordOf(data).event("end of cdata"); });
  }
  if (options.off != 7 && options.off != 12) {
    XML_SetStartNamespaceDeclHandler(parser,
                                     [](void* data, const XML_Char* prefix, const XML_Char* uri) {
                                       recordOf(data).event("namespace", {prefix, uri});
                                     });
  }
  if (options.off != 7 && options.off != 13) {
    XML_SetEndNamespaceDeclHandler(parser, [](void* data, const XML_Char* prefix) {
      recordOf(data).event("end of namespace", {prefix});
    });
  }
  if (options.off != 8) {
    XML_SetXmlDeclHandler(
        parser, [](void* data, const XML_Char* version, const XML_Char* encoding_, int standalone) {
          recordOf(data).event(standalone == 0 ? "xml" : "standalone xml", {version, encoding_});
        });
  }
  if (options.off != 9 && options.off != 14) {
    XML_SetStartDoctypeDeclHandler(parser, [](void* data, const XML_Char* name,
                                              const XML_Char* systemId, const XML_Char* publicId,
                                              int hasSubset) {
      recordOf(data).event(hasSubset == 0 ? "doctype" : "doctype [", {name, systemId, publicId});
    });
  }
  if (options.off != 9 && options.off != 15) {
    XML_SetEndDoctypeDeclHandler(parser,
                                 [](void* data) { recordOf(data).event("end of doctype"); });
  }
  const XML_DefaultHandler other = [](void* data, const XML_Char* text, int length) {
    recordOf(data).run("other", text, length);
  };
  if (options.expand) {
    XML_SetDefaultHandlerExpand(parser, options.isDefaultOn ? other : nullptr);
  } else {
    XML_SetDefaultHandler(parser, options.isDefaultOn ? other : nullptr);
  }
  if (options.isEncodingHandled) {
    XML_SetUnknownEncodingHandler(
        parser,
        [](void* data, const XML_Char* name, XML_Encoding* encoding_) {
          recordOf(data).event("encoding", {name});
          return static_cast<int>(fillEncoding(name, encoding_));
        },
        &record);
  }
  return parser;
}

// ---- The library

void enable(XMLParser& parser, const Options& options) {
  parser.EnableElementHandler(true);
  parser.EnableCharacterDataHandler(true);
  parser.EnableProcessingInstructionHandler(true);
  parser.EnableCommentHandler(true);
  parser.EnableCdataSectionHandler(true);
  parser.EnableNamespaceDeclHandler(true);
  parser.EnableXmlDeclHandler(true);
  parser.EnableDoctypeDeclHandler(true);
  parser.EnableDefaultHandler(options.isDefaultOn, options.expand);
  parser.EnableUnknownEncodingHandler(true);
  if (options.isEncodingHandled) {
    XML_SetUnknownEncodingHandler(parser.m_parser, UnknownEncodingHandler, parser.m_handler);
  }
  switch (options.off) {
    case 1:
      parser.EnableStartElementHandler(false);
      break;
    case 2:
      parser.EnableEndElementHandler(false);
      break;
    case 3:
      parser.EnableCharacterDataHandler(false);
      break;
    case 4:
      parser.EnableProcessingInstructionHandler(false);
      break;
    case 5:
      parser.EnableCommentHandler(false);
      break;
    case 6:
      parser.EnableCdataSectionHandler(false);
      break;
    case 7:
      parser.EnableNamespaceDeclHandler(false);
      break;
    case 8:
      parser.EnableXmlDeclHandler(false);
      break;
    case 9:
      parser.EnableDoctypeDeclHandler(false);
      break;
    case 10:
      parser.EnableStartCdataSectionHandler(false);
      break;
    case 11:
      parser.EnableEndCdataSectionHandler(false);
      break;
    case 12:
      parser.EnableStartNamespaceDeclHandler(false);
      break;
    case 13:
      parser.EnableEndNamespaceDeclHandler(false);
      break;
    case 14:
      parser.EnableStartDoctypeDeclHandler(false);
      break;
    case 15:
      parser.EnableEndDoctypeDeclHandler(false);
      break;
    default:
      break;
  }
}

// ---- Comparison

/// A part of a document in separate memory, so that AddressSanitizer notices reads past it.
struct Piece {
  std::vector<char> bytes;
  bool isFinal;
  bool isForBuffer;
};
using Pieces = std::vector<Piece>;

/// Splits a document. Each byte of `cuts` determines the length of a piece, and whether it is
/// copied to the buffer of expat. The rest is the last piece.
Pieces piecesOf(const std::string& xml, const std::string& cuts, bool isLastForBuffer) {
  constexpr unsigned lengthBits = 0x3F;
  constexpr unsigned bufferBit = 0x40;
  Pieces pieces;
  std::size_t at = 0;
  for (const char c : cuts) {
    const unsigned cut = static_cast<unsigned char>(c);
    const std::size_t length = std::min<std::size_t>(cut & lengthBits, xml.size() - at);
    pieces.push_back({{xml.data() + at, xml.data() + at + length}, false, (cut & bufferBit) != 0});
    at += length;
  }
  pieces.push_back({{xml.data() + at, xml.data() + xml.size()}, true, isLastForBuffer});
  return pieces;
}

/// The result of a parse.
struct Outcome {
  std::string events;
  std::string settled;  // the events before the last run of text
  bool isParsed;
  XML_Error error;
  XML_Index byte;
  XML_Size line, column;
};

Outcome byExpat(const Pieces& pieces, const Options& options) {
  Record record;
  const XML_Parser parser = plainParser(record, options);
  bool isParsed = true;
  for (const Piece& piece : pieces) {
    const int length = static_cast<int>(piece.bytes.size());
    isParsed = isParsed && XML_Parse(parser, piece.bytes.data(), length, piece.isFinal) != 0;
  }
  const std::string settled = record.events;
  record.end();
  const Outcome outcome = {record.events,
                           settled,
                           isParsed,
                           XML_GetErrorCode(parser),
                           zn_lib::internal::expatByteIndex(parser),
                           zn_lib::internal::expatLineNumber(parser),
                           zn_lib::internal::expatColumnNumber(parser)};
  XML_ParserFree(parser);
  return outcome;
}

bool parsePiece(XMLParser& parser, const Piece& piece) {
  const std::size_t length = piece.bytes.size();
  if (piece.isForBuffer && std::count(piece.bytes.begin(), piece.bytes.end(), '\0') == 0) {
    const std::string text(piece.bytes.begin(), piece.bytes.end());
    if (text.size() % 2 == 1) return parser.Parse(text.c_str(), piece.isFinal);
  }
  if (!piece.isForBuffer || length == 0) {
    return parser.Parse(piece.bytes.data(), length, piece.isFinal);
  }
  std::memcpy(parser.GetBuffer(length), piece.bytes.data(), length);
  return parser.Parse(length, piece.isFinal);
}

/// Parses with an object that may have parsed another document before.
Outcome byLibrary(XMLParser& parser, const Pieces& pieces, const Options& options) {
  Recorder handler;
  parser.m_handler = &handler;
  fuzz::expect("Create", parser.Create(options.encoding.c_str(), options.separator.c_str()));
  fuzz::expectSame("OnPostCreate", handler.created, 1);
  enable(parser, options);
  bool isParsed = true;
  for (const Piece& piece : pieces) isParsed = isParsed && parsePiece(parser, piece);
  const std::string settled = handler.record.events;
  handler.record.end();
  fuzz::expect("GetErrorString", parser.GetErrorString() == XML_ErrorString(parser.GetErrorCode()));
  fuzz::expectSame("GetCurrentByteCount", parser.GetCurrentByteCount(),
                   XML_GetCurrentByteCount(parser.m_parser));
  int offset = -1, size = -1, expectedOffset = -1, expectedSize = -1;
  fuzz::expect("GetInputContext",
               parser.GetInputContext(&offset, &size) ==
                   XML_GetInputContext(parser.m_parser, &expectedOffset, &expectedSize));
  fuzz::expectSame("its offset", offset, expectedOffset);
  fuzz::expectSame("its size", size, expectedSize);
  return {handler.record.events,
          settled,
          isParsed,
          parser.GetErrorCode(),
          parser.GetCurrentByteIndex(),
          parser.GetCurrentLineNumber(),
          parser.GetCurrentColumnNumber()};
}

/// Expects that a handler that overrides nothing leaves the result of the parse as it is.
void parseUnhandled(const Pieces& pieces, const Outcome& expected, const Options& options) {
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  fuzz::expect("Create", parser.Create(options.encoding.c_str(), options.separator.c_str()));
  enable(parser, options);
  bool isParsed = true;
  for (const Piece& piece : pieces) isParsed = isParsed && parsePiece(parser, piece);
  // The handler knows no encoding.
  if (options.isEncodingHandled) return;
  fuzz::expectSame("without events", isParsed, expected.isParsed);
  fuzz::expectSame("error", parser.GetErrorCode(), expected.error);
  fuzz::expect("GetErrorString",
               XMLParser::GetErrorString(expected.error) == XML_ErrorString(expected.error));
}

void compare(const char* how, const Outcome& actual, const Outcome& expected) {
  if (actual.events != expected.events) {
    fuzz::fail(how, "\n" + actual.events + "instead of\n" + expected.events);
  }
  fuzz::answer("events", actual.events);
  fuzz::expectSame(how, actual.isParsed, expected.isParsed);
  fuzz::expectSame("error", actual.error, expected.error);
  fuzz::expectSame("byte", actual.byte, expected.byte);
  fuzz::expectSame("line", actual.line, expected.line);
  fuzz::expectSame("column", actual.column, expected.column);
}

/// Compares two parses of the same document. If it is malformed, the error that expat finds and the
/// text that it reports before depend on the pieces.
void compareCut(const Outcome& pieces, const Outcome& whole) {
  fuzz::expectSame("outcome", pieces.isParsed, whole.isParsed);
  const auto isPrefix = [](const std::string& events, const std::string& of) {
    return of.compare(0, events.size(), events) == 0;
  };
  if (whole.isParsed
          ? pieces.events == whole.events
          : isPrefix(pieces.settled, whole.events) && isPrefix(whole.settled, pieces.events)) {
    return;
  }
  fuzz::fail("in pieces as in one", "\n" + pieces.events + "instead of\n" + whole.events);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::expect("GetExpatVersion", XMLParser::GetExpatVersion() == XML_ExpatVersion());
  FuzzedDataProvider input(data, size);
  Options options;
  options.encoding =
      input.PickValueInArray<std::string>({"", "", "", "UTF-8", "UTF-16", "ISO-8859-1", "x-own"});
  options.separator = input.PickValueInArray<std::string>({"", "|", "##"});
  options.isEncodingHandled = input.ConsumeBool();
  options.isDefaultOn = !input.ConsumeBool();
  options.expand = input.ConsumeBool();
  options.off = input.ConsumeIntegralInRange(0, 23);
  const bool isLastForBuffer = input.ConsumeBool();
  std::string cuts(input.ConsumeIntegralInRange<std::size_t>(0, 32), '\0');
  for (char& cut : cuts) cut = input.ConsumeIntegral<char>();
  const std::string xml = input.ConsumeRemainingBytesAsString();

  const Pieces whole = piecesOf(xml, "", false);
  const Pieces pieces = piecesOf(xml, cuts, isLastForBuffer);
  XMLParser parser(nullptr);
  const Outcome ofWhole = byLibrary(parser, whole, options);
  const Outcome ofPieces = byLibrary(parser, pieces, options);
  compare("in one piece", ofWhole, byExpat(whole, options));
  compare("in pieces", ofPieces, byExpat(pieces, options));
  compareCut(ofPieces, ofWhole);
  parseUnhandled(pieces, ofPieces, options);
  return 0;
}
