#include "zn_xmlparser.h"

#include <cassert>
#include <climits>
#include <cstring>

#include "internal/expat.h"

namespace {

// Expat copies its input to a buffer and doubles the buffer's size, which is an int. A call with
// more bytes than this therefore always fails for lack of memory.
constexpr std::size_t kLongestCallBytes = 1024 * 1024 * 1024;

// Longer texts are passed in pieces of this size. It is small compared with the buffer, which also
// holds the unfinished token of earlier pieces.
constexpr int kPieceBytes = 64 * 1024 * 1024;

XMLEvtHandler noHandler;

/// Returns the handler to which a trampoline's first argument points. The argument is null for
/// callbacks during `OnPostCreate` and for the unknown-encoding callback. A handler of the base
/// class then receives the event.
XMLEvtHandler* handlerFrom(void* handler) {
  return handler == nullptr ? &noHandler : static_cast<XMLEvtHandler*>(handler);
}

}  // namespace

void XMLEvtHandler::OnPostCreate() {}
void XMLEvtHandler::OnStartElement(const XML_Char*, const XML_Char**) {}
void XMLEvtHandler::OnEndElement(const XML_Char*) {}
void XMLEvtHandler::OnCharacterData(const XML_Char*, int) {}
void XMLEvtHandler::OnProcessingInstruction(const XML_Char*, const XML_Char*) {}
void XMLEvtHandler::OnComment(const XML_Char*) {}
void XMLEvtHandler::OnStartCdataSection() {}
void XMLEvtHandler::OnEndCdataSection() {}
void XMLEvtHandler::OnDefault(const XML_Char*, int) {}
bool XMLEvtHandler::OnUnknownEncoding(const XML_Char*, XML_Encoding*) { return false; }
void XMLEvtHandler::OnStartNamespaceDecl(const XML_Char*, const XML_Char*) {}
void XMLEvtHandler::OnEndNamespaceDecl(const XML_Char*) {}
void XMLEvtHandler::OnXmlDecl(const XML_Char*, const XML_Char*, bool) {}
void XMLEvtHandler::OnStartDoctypeDecl(const XML_Char*, const XML_Char*, const XML_Char*, bool) {}
void XMLEvtHandler::OnEndDoctypeDecl() {}

XMLParser::XMLParser(XMLEvtHandler* handler) : m_parser(nullptr), m_handler(handler) {}

XMLParser::~XMLParser() { Destroy(); }

bool XMLParser::Create(const char* encoding, const char* separator) {
  Destroy();
  if (encoding != nullptr && *encoding == '\0') encoding = nullptr;
  if (separator != nullptr && *separator == '\0') separator = nullptr;
  m_parser = XML_ParserCreate_MM(encoding, nullptr, separator);
  if (m_parser == nullptr) return false;
  m_handler->OnPostCreate();
  XML_SetUserData(m_parser, m_handler);
  return true;
}

void XMLParser::Destroy() {
  if (m_parser == nullptr) return;
  XML_ParserFree(m_parser);
  m_parser = nullptr;
}

bool XMLParser::Parse(const char* buffer, std::size_t length, bool isFinal) {
  assert(m_parser != NULL);
  if (length > kLongestCallBytes) {
    for (; length > kPieceBytes; length -= kPieceBytes, buffer += kPieceBytes) {
      if (XML_Parse(m_parser, buffer, kPieceBytes, false) == XML_STATUS_ERROR) return false;
    }
  }
  return XML_Parse(m_parser, buffer, static_cast<int>(length), isFinal) != XML_STATUS_ERROR;
}

bool XMLParser::Parse(const char* text, bool isFinal) {
  return Parse(text, std::strlen(text), isFinal);
}

bool XMLParser::Parse(std::size_t length, bool isFinal) {
  assert(m_parser != NULL);
  if (length > INT_MAX) return false;
  return XML_ParseBuffer(m_parser, static_cast<int>(length), isFinal) != XML_STATUS_ERROR;
}

void* XMLParser::GetBuffer(std::size_t length) {
  assert(m_parser != NULL);
  return length > INT_MAX ? nullptr : XML_GetBuffer(m_parser, static_cast<int>(length));
}

void XMLParser::EnableStartElementHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetStartElementHandler(m_parser, enable ? StartElementHandler : nullptr);
}

void XMLParser::EnableEndElementHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetEndElementHandler(m_parser, enable ? EndElementHandler : nullptr);
}

void XMLParser::EnableElementHandler(bool enable) {
  assert(m_parser != NULL);
  EnableStartElementHandler(enable);
  EnableEndElementHandler(enable);
}

void XMLParser::EnableCharacterDataHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetCharacterDataHandler(m_parser, enable ? CharacterDataHandler : nullptr);
}

void XMLParser::EnableProcessingInstructionHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetProcessingInstructionHandler(m_parser, enable ? ProcessingInstructionHandler : nullptr);
}

void XMLParser::EnableCommentHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetCommentHandler(m_parser, enable ? CommentHandler : nullptr);
}

void XMLParser::EnableStartCdataSectionHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetStartCdataSectionHandler(m_parser, enable ? StartCdataSectionHandler : nullptr);
}

void XMLParser::EnableEndCdataSectionHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetEndCdataSectionHandler(m_parser, enable ? EndCdataSectionHandler : nullptr);
}

void XMLParser::EnableCdataSectionHandler(bool enable) {
  assert(m_parser != NULL);
  EnableStartCdataSectionHandler(enable);
  EnableEndCdataSectionHandler(enable);
}

void XMLParser::EnableDefaultHandler(bool enable, bool expand) {
  assert(m_parser != NULL);
  const XML_DefaultHandler handler = enable ? DefaultHandler : nullptr;
  if (expand) {
    XML_SetDefaultHandlerExpand(m_parser, handler);
  } else {
    XML_SetDefaultHandler(m_parser, handler);
  }
}

void XMLParser::EnableUnknownEncodingHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetUnknownEncodingHandler(m_parser, enable ? UnknownEncodingHandler : nullptr, nullptr);
}

void XMLParser::EnableStartNamespaceDeclHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetStartNamespaceDeclHandler(m_parser, enable ? StartNamespaceDeclHandler : nullptr);
}

void XMLParser::EnableEndNamespaceDeclHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetEndNamespaceDeclHandler(m_parser, enable ? EndNamespaceDeclHandler : nullptr);
}

void XMLParser::EnableNamespaceDeclHandler(bool enable) {
  EnableStartNamespaceDeclHandler(enable);
  EnableEndNamespaceDeclHandler(enable);
}

void XMLParser::EnableXmlDeclHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetXmlDeclHandler(m_parser, enable ? XmlDeclHandler : nullptr);
}

void XMLParser::EnableStartDoctypeDeclHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetStartDoctypeDeclHandler(m_parser, enable ? StartDoctypeDeclHandler : nullptr);
}

void XMLParser::EnableEndDoctypeDeclHandler(bool enable) {
  assert(m_parser != NULL);
  XML_SetEndDoctypeDeclHandler(m_parser, enable ? EndDoctypeDeclHandler : nullptr);
}

void XMLParser::EnableDoctypeDeclHandler(bool enable) {
  assert(m_parser != NULL);
  EnableStartDoctypeDeclHandler(enable);
  EnableEndDoctypeDeclHandler(enable);
}

XML_Error XMLParser::GetErrorCode() const {
  assert(m_parser != NULL);
  return XML_GetErrorCode(m_parser);
}

const XML_LChar* XMLParser::GetErrorString() const { return XML_ErrorString(GetErrorCode()); }

XML_Index XMLParser::GetCurrentByteIndex() const {
  assert(m_parser != NULL);
  return zn_lib::internal::expatByteIndex(m_parser);
}

XML_Size XMLParser::GetCurrentLineNumber() const {
  assert(m_parser != NULL);
  return zn_lib::internal::expatLineNumber(m_parser);
}

XML_Size XMLParser::GetCurrentColumnNumber() const {
  assert(m_parser != NULL);
  return zn_lib::internal::expatColumnNumber(m_parser);
}

int XMLParser::GetCurrentByteCount() const {
  assert(m_parser != NULL);
  return zn_lib::internal::expatByteCount(m_parser);
}

const char* XMLParser::GetInputContext(int* offset, int* size) const {
  assert(m_parser != NULL);
  return zn_lib::internal::expatInputContext(m_parser, offset, size);
}

const XML_LChar* XMLParser::GetExpatVersion() { return XML_ExpatVersion(); }

const XML_LChar* XMLParser::GetErrorString(XML_Error code) { return XML_ErrorString(code); }

void XMLCALL StartElementHandler(void* handler, const XML_Char* name, const XML_Char** attributes) {
  handlerFrom(handler)->OnStartElement(name, attributes);
}

void XMLCALL EndElementHandler(void* handler, const XML_Char* name) {
  handlerFrom(handler)->OnEndElement(name);
}

void XMLCALL CharacterDataHandler(void* handler, const XML_Char* text, int length) {
  handlerFrom(handler)->OnCharacterData(text, length);
}

void XMLCALL ProcessingInstructionHandler(void* handler, const XML_Char* target,
                                          const XML_Char* data) {
  handlerFrom(handler)->OnProcessingInstruction(target, data);
}

void XMLCALL CommentHandler(void* handler, const XML_Char* text) {
  handlerFrom(handler)->OnComment(text);
}

void XMLCALL StartCdataSectionHandler(void* handler) {
  handlerFrom(handler)->OnStartCdataSection();
}

void XMLCALL EndCdataSectionHandler(void* handler) { handlerFrom(handler)->OnEndCdataSection(); }

void XMLCALL DefaultHandler(void* handler, const XML_Char* text, int length) {
  handlerFrom(handler)->OnDefault(text, length);
}

int XMLCALL UnknownEncodingHandler(void* handler, const XML_Char* name, XML_Encoding* encoding) {
  const bool known = handlerFrom(handler)->OnUnknownEncoding(name, encoding);
  return known ? XML_STATUS_OK : XML_STATUS_ERROR;
}

void XMLCALL StartNamespaceDeclHandler(void* handler, const XML_Char* prefix, const XML_Char* uri) {
  handlerFrom(handler)->OnStartNamespaceDecl(prefix, uri);
}

void XMLCALL EndNamespaceDeclHandler(void* handler, const XML_Char* prefix) {
  handlerFrom(handler)->OnEndNamespaceDecl(prefix);
}

void XMLCALL XmlDeclHandler(void* handler, const XML_Char* version, const XML_Char* encoding,
                            int standalone) {
  handlerFrom(handler)->OnXmlDecl(version, encoding, standalone != 0);
}

void XMLCALL StartDoctypeDeclHandler(void* handler, const XML_Char* name, const XML_Char* systemId,
                                     const XML_Char* publicId, int hasInternalSubset) {
  handlerFrom(handler)->OnStartDoctypeDecl(name, systemId, publicId, hasInternalSubset != 0);
}

void XMLCALL EndDoctypeDeclHandler(void* handler) { handlerFrom(handler)->OnEndDoctypeDecl(); }
