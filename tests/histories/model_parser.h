/// A parser of the binding, and expat alone as its model. Both log their events in the same form.
#ifndef HISTORIES_MODEL_PARSER_H
#define HISTORIES_MODEL_PARSER_H

#include <zn_xmlparser.h>

#include <memory>
#include <string>

namespace histories {

/// The events as text.
class EventLog {
 public:
  void add(const std::string& event) { text_ += (text_.empty() ? "" : " ") + event; }
  void add(const std::string& event, const XML_Char* text);
  void add(const std::string& event, const XML_Char* text, int length);
  void addStart(const XML_Char* name, const XML_Char** attributes);

  /// Returns what was logged since the last call.
  std::string take();

 private:
  std::string text_;
};

class LoggingHandler final : public XMLEvtHandler {
 public:
  EventLog log;

  void OnPostCreate() override;
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override;
  void OnEndElement(const XML_Char* name) override;
  void OnCharacterData(const XML_Char* text, int length) override;
  void OnProcessingInstruction(const XML_Char* target, const XML_Char* data) override;
  void OnComment(const XML_Char* text) override;
  void OnStartCdataSection() override;
  void OnEndCdataSection() override;
  void OnDefault(const XML_Char* text, int length) override;
  bool OnUnknownEncoding(const XML_Char* name, XML_Encoding* encoding) override;
  void OnStartNamespaceDecl(const XML_Char* prefix, const XML_Char* uri) override;
  void OnEndNamespaceDecl(const XML_Char* prefix) override;
  void OnXmlDecl(const XML_Char* version, const XML_Char* encoding, bool standalone) override;
  void OnStartDoctypeDecl(const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId,
                          bool hasInternalSubset) override;
  void OnEndDoctypeDecl() override;
};

struct ParserUnderTest {
  LoggingHandler handler;
  XMLParser parser{&handler};
};

/// Expat alone.
struct ParserModel {
  struct Free {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  std::unique_ptr<XML_ParserStruct, Free> expat;
  EventLog log;
};

}  // namespace histories

#endif  // HISTORIES_MODEL_PARSER_H
