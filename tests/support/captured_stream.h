/// Streams whose output a test keeps.
#ifndef CAPTURED_STREAM_H
#define CAPTURED_STREAM_H

#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

/// Lets `stream` write to another buffer for the lifetime of the object.
class RedirectedStream {
 public:
  RedirectedStream(std::ostream& stream, std::streambuf* buffer)
      : stream_(stream), before_(stream.rdbuf(buffer)) {}
  ~RedirectedStream() { stream_.rdbuf(before_); }
  RedirectedStream(const RedirectedStream&) = delete;
  RedirectedStream& operator=(const RedirectedStream&) = delete;

 private:
  std::ostream& stream_;
  std::streambuf* const before_;
};

/// Keeps what is written to `stream` during the lifetime of the object.
class CapturedStream {
 public:
  explicit CapturedStream(std::ostream& stream) : redirected_(stream, text_.rdbuf()) {}

  /// Returns what has been written since the last call.
  std::string text() {
    std::string written = text_.str();
    text_.str("");
    return written;
  }

 private:
  std::ostringstream text_;
  const RedirectedStream redirected_;
};

#endif  // CAPTURED_STREAM_H
