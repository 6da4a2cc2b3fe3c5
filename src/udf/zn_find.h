/// Searching text.
#ifndef ZN_FIND_H
#define ZN_FIND_H

#include <cstring>
#include <string>

namespace zn_lib {

/// Where `part` first occurs in `text` from `start` on, which is within the text; npos when it does
/// not. std::string::find takes quadratic time on long texts that repeat themselves; memmem does
/// not, but it takes longer for short ones.
inline std::size_t findText(const std::string& text, const std::string& part,
                            std::size_t start = 0) {
  constexpr std::size_t shortText = 256;
  if (text.size() <= shortText) return text.find(part, start);
  const void* const hit =
      memmem(text.data() + start, text.size() - start, part.data(), part.size());
  return hit == nullptr ? std::string::npos
                        : static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
}

}  // namespace zn_lib

#endif  // ZN_FIND_H
