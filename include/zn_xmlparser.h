/// \file
/// The expat XML parser as an object, its callbacks as virtual functions.
///
///     class Outline : public XMLEvtHandler {
///      public:
///       void OnStartElement(const XML_Char* name, const XML_Char**) override { names += name; }
///       std::string names;
///     };
///
///     Outline outline;
///     XMLParser parser(&outline);
///     parser.Create(nullptr, nullptr);
///     parser.EnableStartElementHandler(true);
///     parser.Parse("<a><b/><c></a>", true)   ->  false
///     outline.names                          ->  "abc"
///     parser.GetErrorString()                ->  "mismatched tag"
///
/// A thin binding: it buffers nothing, prints nothing and keeps no state but two pointers. What is
/// not said here is as expat has it. All names are in the global namespace.
#ifndef ZN_XMLPARSER_H
#define ZN_XMLPARSER_H

#include <expat.h>

#include <cstddef>

#include "zn_common.h"

/// What a parser calls. Derive from it, override the callbacks that matter, and switch those on in
/// the parser; each does nothing here. Texts are UTF-8, end with a NUL unless a length comes with
/// them, and are expat's: they last until the callback returns.
///
/// No exception may leave a callback while expat is parsing: it would unwind expat's C functions,
/// after which that parser can neither be used nor freed. Nor may a callback other than
/// `OnPostCreate` create, destroy or feed the parser that calls it: a recent expat refuses some of
/// that, an older one overwrites its own memory.
///
/// The destructor is not virtual: do not delete a handler through a pointer to this class.
class ZN_UDF_API XMLEvtHandler {
 public:
  /// The parser exists. Expat calls no other callback of this object until this one has returned.
  ///
  /// It may switch callbacks on, ask the parser for a buffer or its position, and set up expat
  /// itself through `m_parser`, but for the user data, which `Create` sets afterwards. What it
  /// parses is parsed without callbacks. `Create` would lead here again. After `Destroy`, the
  /// `Create` that leads here returns true without a parser. It may throw: the exception leaves
  /// `Create`, with a parser that calls no callback of this object.
  virtual void OnPostCreate();

  /// The start of an element. `attributes` holds names and values in turn, closed by a null
  /// pointer.
  virtual void OnStartElement(const XML_Char* name, const XML_Char** attributes);

  /// The end of an element, of one written `<name/>` too.
  virtual void OnEndElement(const XML_Char* name);

  /// Text: `length` bytes without a NUL. One run of text may come in several calls.
  virtual void OnCharacterData(const XML_Char* text, int length);

  /// `<?target data?>`
  virtual void OnProcessingInstruction(const XML_Char* target, const XML_Char* data);

  /// `<!--text-->`
  virtual void OnComment(const XML_Char* text);

  virtual void OnStartCdataSection();  ///< `<![CDATA[`; its text comes as character data
  virtual void OnEndCdataSection();    ///< `]]>`

  /// Whatever no switched-on callback takes: `length` bytes without a NUL, as in the document.
  virtual void OnDefault(const XML_Char* text, int length);

  /// The document names an encoding that expat does not know. True when `encoding` has been filled;
  /// here false. See `XMLParser::EnableUnknownEncodingHandler`, which does not lead here by itself.
  virtual bool OnUnknownEncoding(const XML_Char* name, XML_Encoding* encoding);

  /// A namespace begins, before the element that declares it. `prefix` is null for a default
  /// namespace, `uri` null where one is taken back.
  virtual void OnStartNamespaceDecl(const XML_Char* prefix, const XML_Char* uri);

  /// It ends, after that element.
  virtual void OnEndNamespaceDecl(const XML_Char* prefix);

  /// The XML declaration. `standalone` is false for standalone="no" only: without it, true.
  /// `encoding` is null where the declaration has none.
  virtual void OnXmlDecl(const XML_Char* version, const XML_Char* encoding, bool standalone);

  /// `<!DOCTYPE name`. `systemId` and `publicId` are null where the declaration has none.
  virtual void OnStartDoctypeDecl(const XML_Char* name, const XML_Char* systemId,
                                  const XML_Char* publicId, bool hasInternalSubset);

  /// The end of that declaration, after its internal subset.
  virtual void OnEndDoctypeDecl();
};

/// One expat parser and the handler that it reports to.
///
/// All but the life cycle and the static operations need a parser: without one they fail the
/// assertion `m_parser != NULL`, which ends the process. Built with ZN_UDF_ASSERTIONS off, the
/// library does not check.
class ZN_UDF_API XMLParser {
 public:
  XML_Parser m_parser;       ///< null while there is no parser; for direct calls of expat
  XMLEvtHandler* m_handler;  ///< not owned; must outlive the parser, and must not be null

  /// Stores `handler`; creates no parser.
  XMLParser(XMLEvtHandler* handler);

  /// As `Destroy`.
  ~XMLParser();

  XMLParser(const XMLParser&) = delete;             ///< a parser has one owner
  XMLParser& operator=(const XMLParser&) = delete;  ///< a parser has one owner

  /// Frees the parser there is, with its position and all that was switched on, and creates one
  /// with every callback off. False, and no parser is left, when expat cannot create one.
  ///
  /// `encoding` overrides the document's own; null or "" leaves it to the document. An encoding
  /// that expat does not know only shows when parsing. With the first character of `separator`
  /// between them, names come as namespace URI and local name; null or "" means no namespaces.
  ///
  /// Calls the handler's `OnPostCreate`, and makes the handler expat's user data only after that.
  /// A callback that fires in between is lost.
  bool Create(const char* encoding, const char* separator);

  /// Frees the parser, if there is one.
  void Destroy();

  /// Parses the next `length` bytes of the document, the last ones when `isFinal`. False on an
  /// error, which the queries below then describe; true also when a callback suspended the parser.
  ///
  /// More than 1 GiB, which expat cannot hold at once, goes to it in pieces, up to the first that
  /// fails. Suspended before the last piece, the parser refuses the next: XML_ERROR_SUSPENDED.
  bool Parse(const char* buffer, std::size_t length, bool isFinal);

  /// The same for a text that ends with a NUL.
  bool Parse(const char* text, bool isFinal);

  /// The same for the first `length` bytes of the buffer from the last `GetBuffer`, no more than
  /// were asked for there. A length above INT_MAX is false; expat does not learn of it.
  ///
  /// `Parse(0, true)` does not compile, since 0 is a null pointer too. To end a document, write
  /// `Parse("", true)`, or `Parse(std::size_t{0}, true)` after a `GetBuffer`.
  bool Parse(std::size_t length, bool isFinal);

  /// Expat's buffer with room for `length` bytes, which the next `Parse(length, isFinal)` takes.
  /// Null when there is no memory, when `length` is above INT_MAX, when the document has ended and
  /// while the parser is suspended; may be null for 0.
  ///
  /// Not for use inside a callback: a recent expat returns null there, without an error code, and
  /// an older one moves the text that it is parsing.
  void* GetBuffer(std::size_t length);

  /// Each switches the callback of its name on or off, at any time, also from within a callback.
  /// Without a start or an end in its name, both.
  /// @{
  void EnableStartElementHandler(bool enable);
  void EnableEndElementHandler(bool enable);
  void EnableElementHandler(bool enable);
  void EnableCharacterDataHandler(bool enable);
  void EnableProcessingInstructionHandler(bool enable);
  void EnableCommentHandler(bool enable);
  void EnableStartCdataSectionHandler(bool enable);
  void EnableEndCdataSectionHandler(bool enable);
  void EnableCdataSectionHandler(bool enable);
  /// @}

  /// With `expand`, the text of internal entities comes in place of references to them, as it does
  /// before the first call. Without, a reference goes to `OnDefault` as it is written; with
  /// `enable` false as well, it goes nowhere.
  void EnableDefaultHandler(bool enable, bool expand);

  /// Registers the function `UnknownEncodingHandler` with null data, so that every unknown encoding
  /// stays an error. For `OnUnknownEncoding` to be called, register the handler as the data:
  ///
  ///     XML_SetUnknownEncodingHandler(parser.m_parser, UnknownEncodingHandler, parser.m_handler);
  void EnableUnknownEncodingHandler(bool enable);

  /// Each switches the callback of its name on or off, as those above. The namespace callbacks only
  /// come where `Create` was given a separator.
  /// @{
  void EnableStartNamespaceDeclHandler(bool enable);
  void EnableEndNamespaceDeclHandler(bool enable);
  void EnableNamespaceDeclHandler(bool enable);
  void EnableXmlDeclHandler(bool enable);
  void EnableStartDoctypeDeclHandler(bool enable);
  void EnableEndDoctypeDeclHandler(bool enable);
  void EnableDoctypeDeclHandler(bool enable);
  /// @}

  /// The error of the last failed operation, XML_ERROR_NONE when there was none.
  XML_Error GetErrorCode() const;

  /// `GetErrorCode` in English words; null for XML_ERROR_NONE.
  const XML_LChar* GetErrorString() const;

  /// Returns the current position. Inside a callback it is the start of the event, but for these:
  ///
  /// - `OnEndElement` for `<y/>`, and the end of its namespaces: the byte behind the tag;
  /// - `OnStartDoctypeDecl`: the `[` before the internal subset, without one the closing `>`;
  /// - `OnEndDoctypeDecl`: the closing `>`;
  /// - all that comes from the text of an entity: the reference to it, in the document itself.
  ///
  /// After an error it is the position of the error. Lines count from 1; columns, in characters,
  /// and bytes count from 0. The byte index is -1 while nothing has been parsed.
  /// @{
  XML_Index GetCurrentByteIndex() const;
  XML_Size GetCurrentLineNumber() const;
  XML_Size GetCurrentColumnNumber() const;
  /// @}

  /// Returns the length in bytes of what is at the current position: 4 for `<y/>` in its start
  /// tag's callback and 0 in that of its end, 1 in both of a document type declaration. For all
  /// that comes from the text of an entity it is the length of the reference, 3 where the entity is
  /// called e. Outside a callback it is 0.
  int GetCurrentByteCount() const;

  /// The `*size` bytes of input that expat holds; `*offset` is where in them the parser is. For use
  /// within a callback. Null, and neither is set, when there are none, as before the first `Parse`.
  const char* GetInputContext(int* offset, int* size) const;

  /// Expat's name and version: "expat_2.5.0".
  static const XML_LChar* GetExpatVersion();

  /// `code` in English words; null for XML_ERROR_NONE and for what is no error code.
  static const XML_LChar* GetErrorString(XML_Error code);
};

/// The functions that a parser registers with expat. Each calls the callback of its name, `On...`,
/// on the handler that its first argument points to; with a null pointer there, nothing is called.
/// @{
ZN_UDF_API void XMLCALL StartElementHandler(void* handler, const XML_Char* name,
                                            const XML_Char** attributes);
ZN_UDF_API void XMLCALL EndElementHandler(void* handler, const XML_Char* name);
ZN_UDF_API void XMLCALL CharacterDataHandler(void* handler, const XML_Char* text, int length);
ZN_UDF_API void XMLCALL ProcessingInstructionHandler(void* handler, const XML_Char* target,
                                                     const XML_Char* data);
ZN_UDF_API void XMLCALL CommentHandler(void* handler, const XML_Char* text);
ZN_UDF_API void XMLCALL StartCdataSectionHandler(void* handler);
ZN_UDF_API void XMLCALL EndCdataSectionHandler(void* handler);
ZN_UDF_API void XMLCALL DefaultHandler(void* handler, const XML_Char* text, int length);

/// XML_STATUS_OK (1) when `OnUnknownEncoding` is true, XML_STATUS_ERROR (0) when it is false and
/// for a null `handler`.
ZN_UDF_API int XMLCALL UnknownEncodingHandler(void* handler, const XML_Char* name,
                                              XML_Encoding* encoding);

ZN_UDF_API void XMLCALL StartNamespaceDeclHandler(void* handler, const XML_Char* prefix,
                                                  const XML_Char* uri);
ZN_UDF_API void XMLCALL EndNamespaceDeclHandler(void* handler, const XML_Char* prefix);

/// Any `standalone` but 0 is true, also the -1 with which expat says that there was none.
ZN_UDF_API void XMLCALL XmlDeclHandler(void* handler, const XML_Char* version,
                                       const XML_Char* encoding, int standalone);

ZN_UDF_API void XMLCALL StartDoctypeDeclHandler(void* handler, const XML_Char* name,
                                                const XML_Char* systemId, const XML_Char* publicId,
                                                int hasInternalSubset);
ZN_UDF_API void XMLCALL EndDoctypeDeclHandler(void* handler);
/// @}

#endif  // ZN_XMLPARSER_H
