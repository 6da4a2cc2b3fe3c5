/// A document for parsers that are fed in pieces.
#ifndef SPLIT_DOCUMENT_H
#define SPLIT_DOCUMENT_H

#include <zn_xmlparser.h>

#include <cstddef>
#include <map>
#include <string>

/// A document of more than 8 KiB, with its text and its settings.
struct SplitDocument {
  std::string document = "<?xml version='1.0' encoding='UTF-8'?>\r\n<r>";
  std::string text;
  std::map<std::string, std::string> settings;  ///< value, type and description by key
};

inline SplitDocument splitDocument() {
  SplitDocument made;
  for (int i = 0; made.document.size() <= 8192; ++i) {
    const std::string key = "k" + std::to_string(i);
    const std::string number = std::to_string(i);
    made.document +=
        "<" + key + " a='t&lt;" + number + "' b='d'>v\xC3\xBC" + number +
        "&amp;\xE2\x82\xAC<![CDATA[<c>&]]]]><!-- - -->&#x1F600;\r\nwords of some length\r</" + key +
        ">";
    const std::string value =
        "v\xC3\xBC" + number + "&\xE2\x82\xAC<c>&]]\xF0\x9F\x98\x80\nwords of some length\n";
    made.text += value;
    made.settings[key] = value + "|t<" + number + "|d";
  }
  made.document += "</r>\n";
  return made;
}

/// Feeds `document` to `parser` in pieces of `size` bytes. Returns whether it is well-formed.
inline bool parseInPieces(XMLParser& parser, const std::string& document, std::size_t size) {
  for (std::size_t at = 0; at < document.size(); at += size) {
    // AddressSanitizer notices if the parser reads past this copy.
    const std::string piece = document.substr(at, size);
    if (!parser.Parse(piece.data(), piece.size(), at + size >= document.size())) return false;
  }
  return true;
}

#endif  // SPLIT_DOCUMENT_H
