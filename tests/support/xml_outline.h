/// Helpers for tests of the XML parser.
#ifndef XML_OUTLINE_H
#define XML_OUTLINE_H

#include <zn_xmlparser.h>

#include <cstddef>
#include <string>

/// Joins the names of elements, the values of their first attributes and their text, as far as the
/// parser reports them.
class XmlOutline final : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    text += name;
    if (attributes[0] != nullptr) text += attributes[1];
  }
  void OnCharacterData(const XML_Char* data, int length) override {
    text.append(data, static_cast<std::size_t>(length));
  }
  std::string text;
};

/// Returns `text` as a string, "-" for a null pointer.
inline std::string textOf(const XML_Char* text) { return text == nullptr ? "-" : text; }

#endif  // XML_OUTLINE_H
