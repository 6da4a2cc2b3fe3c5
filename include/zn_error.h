/// \file
/// Numbered error messages, kept in XML catalogs, and the system's own last error.
///
///     std::map<int, std::string, zn_lib::error_order> catalog;
///     zn_lib::readErrorFile("errors.xml", catalog);
///     zn_lib::setVerbose(true);
///     zn_lib::showErrorMessage(catalog, 2);   // standard error: ERROR: #2<tab>Text of error two
///
/// A catalog is an XML file of this form, whatever its root element is called:
///
///     <?xml version="1.0" encoding="UTF-8"?>
///     <ERRORS>
///     <ERROR><ID>1</ID><MESSAGE>Text of error one</MESSAGE></ERROR>
///     <ERROR><ID>2</ID><MESSAGE>Text of error two</MESSAGE></ERROR>
///     </ERRORS>
///
/// Write the elements of one error directly after one another. Text that follows `</ID>` or
/// `</MESSAGE>`, and be it a line break, is taken for the number or the message, which then is 0 or
/// empty: a catalog with a line for each element reads as number 0 without a message. An error
/// without number or message has those of the error before it. A number beyond 32 bits keeps its
/// lowest 32 on every machine: 4294967298 is 2. One beyond 64 bits is -1, or 0 if it is negative.
///
/// A message keeps the last of the pieces in which the parser delivers it, without its leading
/// blanks. References, line breaks, comments, CDATA sections and the ends of the blocks in which
/// the file is read separate pieces:
///
///     Tom &amp; Jerry            ->  "Jerry"
///     Tom &amp;amp; Jerry        ->  "amp; Jerry"
///     less than &lt;             ->  "<"
///     one<!-- two -->three       ->  "three"
///     <![CDATA[Tom & Jerry]]>    ->  "Tom & Jerry"
///     one <![CDATA[& two]]>      ->  "& two"
///
/// Put a message with such characters into one CDATA section, on one line. A message whose end tag
/// has a line of its own is empty.
///
/// The printing functions print in verbose mode only. Nothing is thrown, except when memory runs
/// out.
#ifndef ZN_ERROR_H
#define ZN_ERROR_H

#include <map>
#include <string>

#include "zn_common.h"
#include "zn_readxml.h"

namespace zn_lib {

/// Ascending order of error numbers.
struct ZN_UDF_API error_order {
  bool operator()(int a, int b) const;  ///< `a` < `b`
};

extern template class XmlEvent<std::map<int, std::string, error_order>>;

/// Fills a map from error number to message while a catalog is parsed.
class ZN_UDF_API ErrorEvent final : public XmlEvent<std::map<int, std::string, error_order>> {
 public:
  /// Nothing read.
  ErrorEvent();

  /// Keeps `name` as the element whose text follows.
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override;

  /// Keeps `name` too; the end of an `ERROR` stores the message under its number.
  void OnEndElement(const XML_Char* name) override;

  /// Keeps the text of an `ID` or a `MESSAGE`, without its leading blanks.
  void OnCharacterData(const XML_Char* text, int length) override;

  /// Copies each message that was read into `catalog`, in place of one with the same number.
  void exportData(std::map<int, std::string, error_order>& catalog);

  std::string tag;      ///< the element last started or ended
  int id = 0;           ///< the number last read
  std::string message;  ///< the message last read
};

extern template class ReadXml<ErrorEvent>;

/// Reads a catalog into `catalog`, in place of messages with the same numbers. Always true: a file
/// that is missing or malformed adds what could be read of it, without a message. "~" in the name
/// is expanded.
ZN_UDF_API bool readErrorFile(std::string fileName,
                              std::map<int, std::string, error_order>& catalog);

/// Prints "#", the number, a tab and its message through `errorMessage`. A number that `catalog`
/// does not hold is put into it, with an empty message, in quiet mode too.
ZN_UDF_API void showErrorMessage(std::map<int, std::string, error_order>& catalog, int id);

/// Prints all messages in the order of their numbers between two lines of hyphens, through
/// `display`.
ZN_UDF_API void showErrorList(std::map<int, std::string, error_order>& catalog);

/// Prints the C library's last error, "System error #2. No such file or directory", through
/// `errorMessage`. The text is in the language of the C locale.
ZN_UDF_API void systemError();

}  // namespace zn_lib

#endif  // ZN_ERROR_H
