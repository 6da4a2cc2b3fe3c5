/// Inputs that several test files share.
#ifndef SAMPLES_H
#define SAMPLES_H

#include <cstddef>
#include <random>
#include <string>

/// Long enough to overflow any stack that something recurses on.
constexpr std::size_t kLongText = 16 * 1024 * 1024;

/// Calls `visit` with every text of at most `longest` characters from `alphabet`, the empty one
/// included.
template <class Visit>
void forEveryText(const std::string& alphabet, std::size_t longest, Visit visit) {
  for (std::size_t length = 0; length <= longest; ++length) {
    std::string text(length, alphabet.front());
    std::string positions(length, '\0');
    for (bool more = true; more;) {
      visit(text);
      more = false;
      for (std::size_t i = 0; i < length && !more; ++i) {
        const std::size_t next = static_cast<std::size_t>(positions[i]) + 1;
        more = next < alphabet.size();
        positions[i] = static_cast<char>(more ? next : 0);
        text[i] = alphabet[more ? next : 0];
      }
    }
  }
}

/// A text of `length` random characters from `alphabet`.
inline std::string randomText(std::mt19937& random, const std::string& alphabet,
                              std::size_t length) {
  std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
  std::string text(length, '\0');
  for (char& c : text) c = alphabet[pick(random)];
  return text;
}

/// All byte values in order.
inline std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

#endif  // SAMPLES_H
