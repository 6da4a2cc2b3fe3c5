/// \file
/// \ingroup family_xmlparser
/// Wraps the expat XML parser in an object, and its callbacks in virtual functions.
///
///     class Counter : public XMLEvtHandler {
///      public:
///       void OnStartElement(const XML_Char*, const XML_Char**) override { ++elements; }
///       int elements = 0;
///     };
///
///     Counter counter;
///     XMLParser parser(&counter);             // does not own the handler
///     parser.Create(nullptr, nullptr)         ->  true
///     parser.EnableStartElementHandler(true);
///     parser.Parse("<a><b/><c></a>", true)    ->  false
///     counter.elements                        ->  3
///     parser.GetErrorString()                 ->  "mismatched tag"
///
/// The binding is thin: it buffers nothing, prints nothing and keeps no state except two pointers.
/// Behaviour that is not described here is expat's. All names are in the global namespace.
#ifndef ZN_XMLPARSER_H
#define ZN_XMLPARSER_H

#include <expat.h>

#include <cstddef>

#include "zn_common.h"

// Event handlers have no virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Receives the events of a parser. Derive from it, override the callbacks you need, and switch
/// those on in the parser. The callbacks of this class do nothing. Texts are UTF-8, end with a NUL
/// unless a length comes with them, and belong to expat: they are valid until the callback returns.
///
/// No exception may leave a callback while expat is parsing. It would unwind expat's C functions,
/// after which the parser can be neither used nor freed. Catch the exception, keep it in the
/// handler, and stop the parser with `XML_StopParser(parser.m_parser, XML_FALSE)`. `Parse` then
/// returns false with the error XML_ERROR_ABORTED, and the host can throw the exception again. A
/// few callbacks may still follow the stop.
///
/// A handler that needs the parser, to stop it or to ask for the position, keeps a pointer to it.
/// The host sets the pointer after it has created both.
///
/// A callback other than `OnPostCreate` must not create, destroy or feed the parser that calls it.
/// A recent expat rejects some of these calls; an older one overwrites its own memory.
///
/// The destructor is not virtual: do not delete a handler through a pointer to this class.
class ZN_UDF_API XMLEvtHandler {
 public:
  /// Runs as soon as `XMLParser::Create` has created the parser. Expat calls no other callback of
  /// this object until this one has returned.
  ///
  /// It may switch callbacks on, ask the parser for a buffer or its position, and configure expat
  /// itself through `m_parser`, except for the user data, which `Create` sets afterwards. Text that
  /// it parses triggers no callback. It must not call `Create`, which would call it again. If it
  /// calls `Destroy`, the running `Create` returns true without a parser.
  ///
  /// It may throw. The exception leaves `Create`, with a parser that calls no callback of this
  /// object.
  virtual void OnPostCreate();

  /// Receives the start of an element. `attributes` alternates names and values, and ends with a
  /// null pointer.
  virtual void OnStartElement(const XML_Char* name, const XML_Char** attributes);

  /// Receives the end of an element, also for one written `<name/>`.
  virtual void OnEndElement(const XML_Char* name);

  /// Receives text: `length` bytes, not NUL-terminated. One text may arrive in several calls.
  virtual void OnCharacterData(const XML_Char* text, int length);

  /// Receives `<?target data?>`.
  virtual void OnProcessingInstruction(const XML_Char* target, const XML_Char* data);

  /// Receives `<!--text-->`.
  virtual void OnComment(const XML_Char* text);

  virtual void OnStartCdataSection();  ///< receives `<![CDATA[`, before its text
  virtual void OnEndCdataSection();    ///< receives `]]>`

  /// Receives the parts of the document for which no other callback is switched on: `length` bytes,
  /// not NUL-terminated. Among them are references to entities that an external DTD may declare,
  /// since expat does not read it. No other callback receives these references.
  virtual void OnDefault(const XML_Char* text, int length);

  /// Receives the name of an encoding that expat does not know. Fills `encoding` and returns true,
  /// or returns false, as this class does. `XMLParser::EnableUnknownEncodingHandler` describes how
  /// to have it called.
  virtual bool OnUnknownEncoding(const XML_Char* name, XML_Encoding* encoding);

  /// Receives the start of a namespace, before the element that declares it. `prefix` is null for a
  /// default namespace. `uri` is null if the declaration removes the default namespace.
  virtual void OnStartNamespaceDecl(const XML_Char* prefix, const XML_Char* uri);

  /// Receives the end of a namespace, after the element that declared it.
  virtual void OnEndNamespaceDecl(const XML_Char* prefix);

  /// Receives the XML declaration. `standalone` is false only for standalone="no", and true if the
  /// declaration does not mention it. `encoding` is null if the declaration has none.
  virtual void OnXmlDecl(const XML_Char* version, const XML_Char* encoding, bool standalone);

  /// Receives `<!DOCTYPE name`. `systemId` and `publicId` are null if the declaration has none.
  virtual void OnStartDoctypeDecl(const XML_Char* name, const XML_Char* systemId,
                                  const XML_Char* publicId, bool hasInternalSubset);

  /// Receives the end of the document type declaration, after its internal subset.
  virtual void OnEndDoctypeDecl();
};

/// Owns an expat parser, and passes its events to a handler.
///
/// All operations except `Create`, `Destroy` and the static ones need a parser. Without one they
/// fail the assertion `m_parser != NULL`, which ends the process. A library built with
/// ZN_UDF_ASSERTIONS off does not check.
class ZN_UDF_API XMLParser {
 public:
  /// For direct calls of expat, which hosts link together with this library. Null while there is
  /// no parser.
  XML_Parser m_parser;
  XMLEvtHandler* m_handler;  ///< not owned; must not be null and must outlive the parser

  /// Stores `handler`. Creates no parser.
  XMLParser(XMLEvtHandler* handler);

  /// Calls `Destroy`.
  ~XMLParser();

  XMLParser(const XMLParser&) = delete;             ///< a parser has one owner
  XMLParser& operator=(const XMLParser&) = delete;  ///< a parser has one owner

  /// Creates a parser with every callback off. Frees an existing parser first, with its position
  /// and everything that was switched on. Returns false, and leaves no parser, if expat cannot
  /// create one.
  ///
  /// `encoding` overrides the document's own encoding; null or "" does not. An encoding that expat
  /// does not know causes an error only during parsing. If `separator` is given, names are reported
  /// as namespace URI and local name with the first character of `separator` in between. Null or ""
  /// turns namespaces off.
  ///
  /// Calls the handler's `OnPostCreate`, and only then makes the handler expat's user data. Events
  /// in between are lost.
  bool Create(const char* encoding, const char* separator);

  /// Frees the parser, if any.
  ///
  ///     XMLParser other(&counter);
  ///     other.Create(nullptr, nullptr)              ->  true
  ///     other.Destroy(); other.m_parser == nullptr  ->  true
  void Destroy();

  /// Parses the next `length` bytes of the document, which are the last if `isFinal` is true.
  /// Returns false on an error, which the queries below describe. The result is also true if a
  /// callback suspended the parser.
  ///
  /// Expat cannot take more than 1 GiB in one call, so a longer text is passed in pieces, up to the
  /// first that fails. If a callback suspends the parser before the last piece, the next piece
  /// fails with XML_ERROR_SUSPENDED.
  bool Parse(const char* buffer, std::size_t length, bool isFinal);

  /// Parses a NUL-terminated text, as above.
  bool Parse(const char* text, bool isFinal);

  /// Parses the first `length` bytes of the buffer from the last `GetBuffer`, as above. `length`
  /// must not exceed the length requested there. For a length above INT_MAX the result is false,
  /// and expat is not called.
  ///
  /// `Parse(0, true)` does not compile, since 0 is a null pointer too. To end a document, write
  /// `Parse("", true)`, or `Parse(std::size_t{0}, true)` after a `GetBuffer`.
  bool Parse(std::size_t length, bool isFinal);

  /// Returns a buffer inside expat with room for `length` bytes, for the next `Parse(length,
  /// isFinal)`. Returns null if memory runs out, if `length` is above INT_MAX, if the document has
  /// ended, or while the parser is suspended. May return null for a length of 0.
  ///
  ///     parser.Create(nullptr, nullptr);
  ///     void* buffer = parser.GetBuffer(8192);   // room for 8192 bytes
  ///     std::memcpy(buffer, "<a/>", 4);
  ///     parser.Parse(4, true)  ->  true
  ///
  /// Do not call it inside a callback: a recent expat then returns null without an error code, and
  /// an older one moves the text that it is parsing.
  void* GetBuffer(std::size_t length);

  /// Switches the callback of the same name on or off, at any time, even from within a callback. A
  /// name without "Start" or "End" stands for both.
  ///
  ///     parser.EnableCommentHandler(true);    // calls OnComment for each comment
  ///     parser.EnableElementHandler(false);   // calls neither OnStartElement nor OnEndElement
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

  /// Switches `OnDefault` on or off. If `expand` is true, which is also the initial state,
  /// references to internal entities are replaced by their text. If `expand` is false, a reference
  /// is passed to `OnDefault` as it is written; it is dropped if `enable` is false too.
  ///
  ///     parser.EnableDefaultHandler(true, false);   // passes "&e;" on as it is written
  void EnableDefaultHandler(bool enable, bool expand);

  /// Registers the function `UnknownEncodingHandler` with null data, so every unknown encoding
  /// remains an error. To have `OnUnknownEncoding` called, register the handler as the data:
  ///
  ///     parser.EnableUnknownEncodingHandler(true);   // an unknown encoding remains an error
  ///     XML_SetUnknownEncodingHandler(parser.m_parser, UnknownEncodingHandler, parser.m_handler);
  void EnableUnknownEncodingHandler(bool enable);

  /// Switches the callback of the same name on or off, as above. It is called only if `Create`
  /// received a separator.
  /// @{
  void EnableStartNamespaceDeclHandler(bool enable);
  void EnableEndNamespaceDeclHandler(bool enable);
  void EnableNamespaceDeclHandler(bool enable);
  /// @}

  /// Switches the callback of the same name on or off, as above.
  /// @{
  void EnableXmlDeclHandler(bool enable);
  void EnableStartDoctypeDeclHandler(bool enable);
  void EnableEndDoctypeDeclHandler(bool enable);
  void EnableDoctypeDeclHandler(bool enable);
  /// @}

  /// Returns the error of the last failed operation, or XML_ERROR_NONE.
  ///
  ///     parser.Create(nullptr, nullptr);
  ///     parser.Parse("<a></b>", true); parser.GetErrorCode()  ->  XML_ERROR_TAG_MISMATCH
  XML_Error GetErrorCode() const;

  /// Returns `GetErrorCode` as English text, or null for XML_ERROR_NONE.
  const XML_LChar* GetErrorString() const;

  /// Returns the byte, line or column of the current position. Inside a callback it is the start of
  /// the event, except here:
  ///
  /// - in `OnEndElement` for `<y/>`, and at the end of its namespaces, it is the byte after the
  ///   tag;
  /// - in `OnStartDoctypeDecl` it is the `[` before the internal subset, or else the closing `>`;
  /// - in `OnEndDoctypeDecl` it is the closing `>`;
  /// - for events in the text of an entity it is the reference to it in the document itself.
  ///
  /// After an error it is the position of the error. For a mismatched tag, that is the name in the
  /// end tag. Lines count from 1. Columns, in characters, and bytes count from 0. A byte order mark
  /// counts as one column of line 1. The byte index is -1 before the first parse.
  ///
  ///     parser.Create(nullptr, nullptr);
  ///     parser.Parse("<a>\n  <b></a>", true)  ->  false
  ///     parser.GetCurrentByteIndex()           ->  11
  ///     parser.GetCurrentLineNumber()          ->  2
  ///     parser.GetCurrentColumnNumber()        ->  7
  /// @{
  XML_Index GetCurrentByteIndex() const;
  XML_Size GetCurrentLineNumber() const;
  XML_Size GetCurrentColumnNumber() const;
  /// @}

  /// Returns the length in bytes of the event at the current position. For `<y/>` it is 4 in the
  /// callback of the start tag and 0 in that of the end tag. For a document type declaration it is
  /// 1 in both. For events in the text of an entity it is the length of the reference, such as 3
  /// for an entity called e. Outside a callback it is 0.
  ///
  ///     parser.GetCurrentByteCount()  ->  0
  int GetCurrentByteCount() const;

  /// Returns expat's input buffer, sets `*size` to its length in bytes, and sets `*offset` to the
  /// position of the parser in it. Use it inside a callback. Returns null and sets neither if there
  /// is no input, as before the first `Parse`.
  ///
  ///     int offset = 0;
  ///     int size = 0;
  ///     parser.GetInputContext(&offset, &size) != nullptr  ->  true
  const char* GetInputContext(int* offset, int* size) const;

  /// Returns expat's name and version.
  ///
  ///     XMLParser::GetExpatVersion()  ->  "expat_2.5.0"   // for instance
  static const XML_LChar* GetExpatVersion();

  /// Returns `code` as English text, or null for XML_ERROR_NONE and for an unknown code.
  ///
  ///     XMLParser::GetErrorString(XML_ERROR_SYNTAX)  ->  "syntax error"
  static const XML_LChar* GetErrorString(XML_Error code);
};

/// Calls the callback of the same name, `On...`, on the handler that the first argument points to.
/// Does nothing if that pointer is null. A parser registers these functions with expat.
///
///     StartElementHandler(&counter, "d", nullptr); counter.elements  ->  4
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

/// Calls `OnUnknownEncoding`. Returns XML_STATUS_OK (1) if the callback returns true, and
/// XML_STATUS_ERROR (0) if it returns false or `handler` is null.
ZN_UDF_API int XMLCALL UnknownEncodingHandler(void* handler, const XML_Char* name,
                                              XML_Encoding* encoding);

ZN_UDF_API void XMLCALL StartNamespaceDeclHandler(void* handler, const XML_Char* prefix,
                                                  const XML_Char* uri);
ZN_UDF_API void XMLCALL EndNamespaceDeclHandler(void* handler, const XML_Char* prefix);

/// Calls `OnXmlDecl`. Any `standalone` other than 0 is true, including -1, expat's value for a
/// declaration without one.
ZN_UDF_API void XMLCALL XmlDeclHandler(void* handler, const XML_Char* version,
                                       const XML_Char* encoding, int standalone);

ZN_UDF_API void XMLCALL StartDoctypeDeclHandler(void* handler, const XML_Char* name,
                                                const XML_Char* systemId, const XML_Char* publicId,
                                                int hasInternalSubset);
ZN_UDF_API void XMLCALL EndDoctypeDeclHandler(void* handler);
/// @}

#pragma GCC diagnostic pop

#endif  // ZN_XMLPARSER_H
