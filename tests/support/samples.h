/// Inputs that several tests share.
#ifndef SAMPLES_H
#define SAMPLES_H

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "sanitizers.h"

/// A length at which any recursion over a text overflows the stack of 8 MiB. AddressSanitizer keeps
/// the frame pointer, so that a frame takes at least 16 bytes.
constexpr std::size_t kLongText = (kHasAddressSanitizer ? 2 : 16) * std::size_t{1024} * 1024;

/// Enumerates the texts of one length over an alphabet like numbers, the first character fastest.
class TextCounter {
 public:
  TextCounter(const std::string& alphabet, std::size_t length)
      : alphabet_(alphabet), positions_(length), text_(length, alphabet.front()) {}

  const std::string& text() const { return text_; }

  /// Advances to the next text. Returns false after the last one.
  bool next() {
    for (std::size_t i = 0; i < text_.size(); ++i) {
      positions_[i] = (positions_[i] + 1) % alphabet_.size();
      text_[i] = alphabet_[positions_[i]];
      if (positions_[i] != 0) return true;
    }
    return false;
  }

 private:
  const std::string& alphabet_;
  std::vector<std::size_t> positions_;
  std::string text_;
};

/// Calls `visit` with every text of at most `longest` characters from `alphabet`, beginning with
/// the empty one.
template <class Visit>
void forEveryText(const std::string& alphabet, std::size_t longest, Visit visit) {
  for (std::size_t length = 0; length <= longest; ++length) {
    TextCounter counter(alphabet, length);
    do {
      visit(counter.text());
    } while (counter.next());
  }
}

/// Returns a text of `length` random characters from `alphabet`.
inline std::string randomText(std::mt19937& random, const std::string& alphabet,
                              std::size_t length) {
  std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
  std::string text(length, '\0');
  for (char& c : text) c = alphabet[pick(random)];
  return text;
}

/// Returns all byte values in order.
inline std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

#endif  // SAMPLES_H
