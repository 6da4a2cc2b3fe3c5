/// \file
/// \ingroup family_error
/// Reads numbered error messages from XML catalogs and prints them, or the system's last error.
///
///     std::map<int, std::string, zn_lib::error_order> catalog;
///     zn_lib::readErrorFile("errors.xml", catalog)  ->  true
///     catalog[1]                                    ->  "Text of error one"
///     zn_lib::setVerbose(true);
///     zn_lib::showErrorMessage(catalog, 2);   // standard error: ERROR: #2<tab>Text of error two
///
/// A catalog is an XML file of this form. The root element may have any name.
///
/// ```xml
/// <?xml version="1.0" encoding="UTF-8"?>
/// <ERRORS>
/// <ERROR><ID>1</ID><MESSAGE>Text of error one</MESSAGE></ERROR>
/// <ERROR><ID>2</ID><MESSAGE>Text of error two</MESSAGE></ERROR>
/// </ERRORS>
/// ```
///
/// Write the elements of one error directly after one another. Text after `</ID>` replaces the
/// number, and text after `</MESSAGE>` replaces the message. A line break there makes the number 0,
/// or the message empty. A catalog with a line for each element is therefore read as number 0
/// without a message.
///
/// An error without a number or a message takes that of the previous error. A number beyond 32 bits
/// keeps its lowest 32 bits on every machine: 4294967298 is 2. A number beyond 64 bits is -1, or 0
/// if it is negative.
///
/// The parser delivers a message in pieces. It splits the message at each reference, line break,
/// comment and edge of a CDATA section, at each "]" inside one, and after each 8192 bytes of the
/// file. Only the last piece is kept, without its leading whitespace. These errors of a file
/// pieces.xml
///
/// ```xml
/// <ERRORS>
/// <ERROR><ID>1</ID><MESSAGE>Tom &amp; Jerry</MESSAGE></ERROR>
/// <ERROR><ID>2</ID><MESSAGE>Tom &amp;amp; Jerry</MESSAGE></ERROR>
/// <ERROR><ID>3</ID><MESSAGE>less than &lt;</MESSAGE></ERROR>
/// <ERROR><ID>4</ID><MESSAGE>one<!-- two -->three</MESSAGE></ERROR>
/// <ERROR><ID>5</ID><MESSAGE><![CDATA[Tom & Jerry]]></MESSAGE></ERROR>
/// <ERROR><ID>6</ID><MESSAGE>one <![CDATA[& two]]></MESSAGE></ERROR>
/// <ERROR><ID>7</ID><MESSAGE>usage: tool [KEY | -]</MESSAGE></ERROR>
/// <ERROR><ID>8</ID><MESSAGE><![CDATA[usage: tool [KEY | -]]]></MESSAGE></ERROR>
/// </ERRORS>
/// ```
///
/// have these messages:
///
///     zn_lib::readErrorFile("pieces.xml", catalog);
///     catalog[1]  ->  "Jerry"
///     catalog[2]  ->  "amp; Jerry"
///     catalog[3]  ->  "<"
///     catalog[4]  ->  "three"
///     catalog[5]  ->  "Tom & Jerry"
///     catalog[6]  ->  "& two"
///     catalog[7]  ->  "usage: tool [KEY | -]"
///     catalog[8]  ->  "]"
///
/// Put a message with "<" or "&" into one CDATA section, on one line, and one with "]" into none. A
/// message whose end tag is on a line of its own is empty.
///
/// The printing functions print in verbose mode only. Functions throw only when memory runs out.
#ifndef ZN_ERROR_H
#define ZN_ERROR_H

#include <map>
#include <string>

#include "zn_common.h"
#include "zn_readxml.h"

// Event handlers have no virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace zn_lib {

/// Orders error numbers from low to high.
///
///     error_order()(1, 2)  ->  true
struct ZN_UDF_API error_order {
  bool operator()(int a, int b) const;  ///< returns `a` < `b`
};

extern template class XmlEvent<std::map<int, std::string, error_order>>;

/// Fills a map from error number to message while a catalog is parsed. With an XMLParser of your
/// own, switch on the callbacks for elements and for character data.
///
///     ErrorEvent handler;
///     handler.OnStartElement("ID", nullptr); handler.tag  ->  "ID"
///     handler.OnCharacterData(" 7", 2); handler.id        ->  7
///     handler.OnEndElement("ERROR"); handler.data         ->  {{7, ""}}
class ZN_UDF_API ErrorEvent final : public XmlEvent<std::map<int, std::string, error_order>> {
 public:
  /// Creates a handler that has read nothing.
  ErrorEvent();

  /// Stores `name` in `tag`.
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override;

  /// Stores `name` in `tag`. At the end of an `ERROR`, stores the message under its number.
  void OnEndElement(const XML_Char* name) override;

  /// Stores the text if `tag` is "ID" or "MESSAGE", without its leading whitespace.
  void OnCharacterData(const XML_Char* text, int length) override;

  /// Copies the messages read into `catalog`. They replace messages with the same number.
  ///
  ///     ErrorEvent handler;
  ///     handler.data[7] = "No such place";
  ///     handler.exportData(catalog); catalog[7]  ->  "No such place"
  void exportData(std::map<int, std::string, error_order>& catalog);

  std::string tag;      ///< the element that started or ended last
  int id = 0;           ///< the number that was read last
  std::string message;  ///< the message that was read last
};

extern template class ReadXml<ErrorEvent>;

/// Reads a catalog file into `catalog`. Its messages replace those with the same number. "~" in the
/// file name is expanded.
///
/// Always returns true and prints nothing. A malformed file adds the messages before the error, and
/// a missing file adds none.
ZN_UDF_API bool readErrorFile(std::string fileName,
                              std::map<int, std::string, error_order>& catalog);

/// Prints "#", the number, a tab and the message through `errorMessage`. A number that is missing
/// in `catalog` is added with an empty message, even in quiet mode.
///
///     showErrorMessage(catalog, 7);   // standard error: ERROR: #7<tab>No such place
ZN_UDF_API void showErrorMessage(std::map<int, std::string, error_order>& catalog, int id);

/// Prints a heading and all errors through `display`, in the order of their numbers and between two
/// lines of hyphens.
///
///     catalog = {{1, "No such place"}, {2, "No such date"}};
///     showErrorList(catalog);   // standard output:
///     // Error list
///     // ----------------------------------------------------------------------
///     // 1 No such place
///     // 2 No such date
///     // ----------------------------------------------------------------------
ZN_UDF_API void showErrorList(std::map<int, std::string, error_order>& catalog);

/// Prints the C library's last error through `errorMessage`. The text is in the language of the
/// current C locale.
///
///     errno = ENOENT;
///     systemError();   // standard error: ERROR: System error #2. No such file or directory
ZN_UDF_API void systemError();

}  // namespace zn_lib

#pragma GCC diagnostic pop

#endif  // ZN_ERROR_H
