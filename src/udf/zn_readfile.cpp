#include "zn_readfile.h"

#include <array>
#include <iostream>
#include <memory>
#include <new>
#include <string_view>

namespace zn_lib {
namespace {

/// The size of the longest line with its end.
constexpr std::size_t kLineSize = 1024;

/// Returns true if the host sees the same output and the same states of the streams whether the
/// lines of `in` are printed one by one or together: reading does not wait for another process, no
/// stream throws, and `std::cout` neither pads a line, nor is flushed after each, nor writes to a
/// `std::filebuf`.
bool canPrintTogether(std::istream& in) {
  constexpr std::ios_base::iostate nothing = std::ios_base::goodbit;
  const std::streamoff place = in.rdbuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
  return place != -1 && in.exceptions() == nothing && in.tie() == nullptr &&
         std::cout.exceptions() == nothing && std::cout.width() == 0 &&
         (std::cout.flags() & std::ios_base::unitbuf) == 0 &&
         dynamic_cast<std::filebuf*>(std::cout.rdbuf()) == nullptr;
}

/// Gives access to what a stream has read ahead.
struct ReadAhead : std::streambuf {
  static std::string_view of(const std::streambuf& buffer) {
    const char* const start = (buffer.*&ReadAhead::gptr)();
    const char* const end = (buffer.*&ReadAhead::egptr)();
    return {start, static_cast<std::size_t>(end - start)};
  }

  static void skip(std::streambuf& buffer, std::size_t size) {
    (buffer.*&ReadAhead::gbump)(static_cast<int>(size));
  }
};

/// Returns the size of the lines at the start of `text` that are printed as they are: they end in
/// `text`, are short enough and contain no NUL.
std::size_t sizeOfPlainLines(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  std::size_t size = 0;
  while (true) {
    const std::size_t last = text.substr(size, kLineSize).rfind('\n');
    if (last == std::string_view::npos) return size;
    size += last + 1;
  }
}

/// Lines that are printed together.
class Lines {
 public:
  /// Moves the plain lines that `buffer` has read ahead, but keeps room for one more line.
  void takeFrom(std::streambuf& buffer) {
    const std::string_view text = ReadAhead::of(buffer).substr(0, room() - kLineSize);
    const std::size_t size = sizeOfPlainLines(text);
    append(text.substr(0, size));
    ReadAhead::skip(buffer, size);
  }

  void add(std::string_view line) {
    append(line);
    append("\n");
  }

  /// Returns true if there is no room for another line.
  bool isFull() const { return room() < kLineSize; }

  /// Prints and removes the lines. The last two characters are printed on their own: a buffer that
  /// one of them fills is then written only before the next one, as if each line had been printed
  /// alone.
  void print() {
    const std::string_view text(text_.data(), size_);
    if (size_ > 1) std::cout << text.substr(0, size_ - 2) << text.substr(size_ - 2, 1);
    if (size_ > 0) std::cout << '\n';
    size_ = 0;
  }

 private:
  std::size_t room() const { return text_.size() - size_; }

  void append(std::string_view text) { size_ += text.copy(text_.data() + size_, room()); }

  std::array<char, 256 * 1024> text_;
  std::size_t size_ = 0;
};

}  // namespace

ReadFile::ReadFile() = default;

ReadFile::~ReadFile() {
  try {
    fileClose();
  } catch (...) {
    // The stream throws if the host enabled its exceptions. A destructor cannot report the failure.
  }
}

bool ReadFile::fileOpen() {
  file.open(getFileName(), binary ? std::ios_base::in | std::ios_base::binary : std::ios_base::in);
  return file.is_open();
}

void ReadFile::fileClose() {
  if (file.is_open()) file.close();
}

bool ReadFile::cat() {
  if (!file.is_open()) return false;
  std::istream& in = file;  // has the buffer that the host may have given to the stream
  std::unique_ptr<Lines> lines;
  // Without memory, the lines are printed one by one.
  if (in.good() && canPrintTogether(in)) lines.reset(new (std::nothrow) Lines);
  std::array<char, kLineSize> line;
  while (in.good()) {
    if (lines != nullptr) lines->takeFrom(*in.rdbuf());
    in.getline(line.data(), line.size());
    if (lines == nullptr) {
      std::cout << line.data() << "\n";
      continue;
    }
    lines->add(line.data());
    // No line is held back while the next one is not there yet.
    if (lines->isFull() || in.rdbuf()->in_avail() <= 0) lines->print();
  }
  if (lines != nullptr) lines->print();
  return true;
}

}  // namespace zn_lib
