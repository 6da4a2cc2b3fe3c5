/// \file
/// What the XML readers share: `ReadXml` feeds a file to an event handler, which keeps what it
/// reads in a map. Error catalogs (`zn_error.h`) and settings (`zn_setcfg.h`) are
/// read this way.
///
///     zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
///     std::string name = "errors.xml";
///     reader.setFileName(name);
///     if (reader.parseFile()) reader.event->exportData(catalog);
#ifndef ZN_READXML_H
#define ZN_READXML_H

#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "zn_readfile.h"
#include "zn_str.h"
#include "zn_xmlparser.h"

namespace zn_lib {

/// An event handler with the map that it fills and the state that its callbacks share. It is a
/// value: its state is its three members, which a host may set, clear, copy or swap between events.
/// `ConfigEvent` uses all three; `ErrorEvent` uses `data` only, and adds members of its own.
///
/// A handler that `ReadXml` owns may throw from its callbacks. One that a host passes to an
/// `XMLParser` itself must not, and running out of memory counts.
template <class Map>
class ZN_UDF_API XmlEvent : public XMLEvtHandler {
 public:
  /// What has been read.
  Map data;

  /// The element whose text is being read; empty between elements.
  std::string element;

  /// The element whose text was stored last.
  std::string lastElement;

  /// The first `length` bytes of `text`, or those before its first NUL, without leading blanks.
  /// Trailing ones stay.
  std::string skipWhiteSpace(const char* text, int length);
};

template <class Map>
std::string XmlEvent<Map>::skipWhiteSpace(const char* text, int length) {
  if (length < 1) return "";
  return leftTrim({text, strnlen(text, static_cast<std::size_t>(length))});
}

/// \cond internal
namespace internal {

/// Passes events on to a handler, up to the first one that throws. The exception is kept until the
/// parser is done: it must not unwind expat's C functions.
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

  /// Throws the exception, if there was one.
  void rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  template <class Callback>
  void run(Callback callback) noexcept {
    if (failure_) return;
    try {
      callback();
    } catch (...) {
      failure_ = std::current_exception();
    }
  }

  XMLEvtHandler& handler_;
  std::exception_ptr failure_;
};

}  // namespace internal
/// \endcond

/// Reads an XML file into an event handler, which it owns.
///
/// It opens the file by itself: the stream and the `binary` flag of `ReadFile` are not used.
template <class Event>
class ZN_UDF_API ReadXml : public ReadFile {
 public:
  /// Where the data is after `parseFile`; deleted with the reader.
  Event* event;

  /// No name and a new event handler.
  ReadXml();

  /// Deletes the event handler, as an `Event`: declare a class of your own `final`, since handlers
  /// have no virtual destructor.
  ~ReadXml() override;

  ReadXml(const ReadXml&) = delete;             ///< a handler has one owner
  ReadXml& operator=(const ReadXml&) = delete;  ///< a handler has one owner

  /// Reads the file that `setFileName` named. False when it cannot be opened.
  ///
  /// True says nothing about its content: a malformed file gives the entries before the error, a
  /// read that fails those before the failure. Prints nothing. The file is taken for UTF-8.
  ///
  /// Throws what a callback of the event handler throws. The handler gets no further event after
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
    // A read that fails, of a directory for one, never comes to the end of the file.
    isFinal = std::feof(in.get()) != 0 || std::ferror(in.get()) != 0;
    isParsed = parser.Parse(block.data(), count, isFinal);
    handler.rethrow();
  }
  return true;
}

}  // namespace zn_lib

#endif  // ZN_READXML_H
