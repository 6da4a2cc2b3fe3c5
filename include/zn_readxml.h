/// \file
/// \ingroup family_xmlparser
/// Reads XML files into maps. `ReadXml` parses a file and passes its events to an event handler,
/// which stores the data in a map. Error catalogs (`zn_error.h`) and settings (`zn_setcfg.h`) are
/// read this way.
///
///     zn_lib::ReadXml<zn_lib::ErrorEvent> reader;   // owns an ErrorEvent
///     std::string name = "errors.xml";
///     reader.setFileName(name);
///     reader.parseFile()     ->  true
///     reader.event->data[2]  ->  "Text of error two"
#ifndef ZN_READXML_H
#define ZN_READXML_H

#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "zn_readfile.h"
#include "zn_xmlparser.h"

// Event handlers have no virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace zn_lib {

/// Provides the base class of event handlers that fill a map. A handler is a value: its whole state
/// is its three members, which a host may set, clear, copy or swap between events. `ConfigEvent`
/// uses all three. `ErrorEvent` uses only `data` and adds members of its own.
///
/// A handler that `ReadXml` owns may throw from its callbacks. A handler that a host passes
/// directly to an `XMLParser` must not throw, not even when memory runs out.
template <class Map>
class ZN_UDF_API XmlEvent : public XMLEvtHandler {
 public:
  /// The data read so far.
  Map data;

  /// The element whose text is being read, or empty between elements.
  std::string element;

  /// The element whose text was stored last.
  std::string lastElement;

  /// Returns the first `length` bytes of `text`, or those before its first NUL, without leading
  /// whitespace. Trailing whitespace stays.
  ///
  ///     reader.event->skipWhiteSpace("  a b ", 6)  ->  "a b "
  std::string skipWhiteSpace(const char* text, int length);
};

template <class Map>
std::string XmlEvent<Map>::skipWhiteSpace(const char* text, int length) {
  // gcov does not say which branches of an instance that never runs are for exceptions only.
  if (length < 1) return "";  // GCOVR_EXCL_BR_LINE
  // leftTrim would copy the text once more.
  std::string piece(text, strnlen(text, static_cast<std::size_t>(length)));
  piece.erase(0, piece.find_first_not_of(" \t\n\v\f\r"));
  return piece;
}

/// \cond internal
namespace internal {

/// Passes events to a handler until one of its callbacks throws. The exception is kept until the
/// parser returns, since it must not unwind expat's C functions.
class ExceptionBarrier final : public XMLEvtHandler {
 public:
  explicit ExceptionBarrier(XMLEvtHandler& handler) : handler_(handler) {}

  void OnPostCreate() override { handler_.OnPostCreate(); }
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override {
    run([&] { handler_.OnStartElement(name, attributes); });
  }
  void OnEndElement(const XML_Char* name) override {
    run([&] { handler_.OnEndElement(name); });
  }
  void OnCharacterData(const XML_Char* text, int length) override {
    run([&] { handler_.OnCharacterData(text, length); });
  }

  /// Throws the exception that was kept, if any.
  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  template <class Callback>
  void run(Callback callback) noexcept {
    if (failure_) return;
#ifdef __cpp_exceptions
    try {
      // For the same reason as in skipWhiteSpace.
      callback();  // GCOVR_EXCL_BR_LINE
    } catch (...) {
      failure_ = std::current_exception();
    }
#else
    callback();
#endif
  }

  XMLEvtHandler& handler_;
  std::exception_ptr failure_ = nullptr;
};

}  // namespace internal
/// \endcond

/// Reads an XML file into an event handler, which the reader owns.
///
/// The reader opens the file itself. It does not use the stream and the `binary` flag of
/// `ReadFile`.
template <class Event>
class ZN_UDF_API ReadXml : public ReadFile {
 public:
  /// The event handler, which contains the data after `parseFile`. The reader deletes it.
  Event* event;

  /// Creates a reader without a file name, and its event handler.
  ReadXml();

  /// Deletes the event handler through its type `Event`. Declare your own handler class `final`,
  /// since handlers have no virtual destructor.
  ~ReadXml() override;

  ReadXml(const ReadXml&) = delete;             ///< a handler has one owner
  ReadXml& operator=(const ReadXml&) = delete;  ///< a handler has one owner

  /// Reads the file that `setFileName` named. Returns false if it cannot be opened. Prints nothing.
  ///
  /// The result is true even if the file is malformed or a read fails; the data before the error
  /// are then kept. The file is always read as UTF-8.
  ///
  /// Throws whatever a callback of the event handler throws. The handler receives no event after
  /// that.
  virtual bool parseFile();
};

template <class Event>
ReadXml<Event>::ReadXml() : event(new Event) {}

template <class Event>
ReadXml<Event>::~ReadXml() {
  delete event;
}

template <class Event>
bool ReadXml<Event>::parseFile() {
  internal::ExceptionBarrier handler(*event);
  XMLParser parser(&handler);
  parser.Create("UTF-8", nullptr);
  parser.EnableElementHandler(true);
  parser.EnableCharacterDataHandler(true);

  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(std::fopen(getFileName().c_str(), "r"),
                                                           &std::fclose);
  if (in == nullptr) return false;
  std::array<char, 8192> block;
  bool isFinal = false;
  bool isParsed = true;
  while (!isFinal && isParsed) {
    const std::size_t count = std::fread(block.data(), 1, block.size(), in.get());
    // A failed read, such as that of a directory, never sets the end of the file.
    isFinal = std::feof(in.get()) != 0 || std::ferror(in.get()) != 0;
    isParsed = parser.Parse(block.data(), count, isFinal);
    handler.rethrow();
  }
  return true;
}

}  // namespace zn_lib

#pragma GCC diagnostic pop

#endif  // ZN_READXML_H
