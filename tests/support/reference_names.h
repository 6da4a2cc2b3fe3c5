/// Reference model of file names for texts of any length, without regular expressions.
#ifndef REFERENCE_NAMES_H
#define REFERENCE_NAMES_H

#include <algorithm>
#include <cstddef>
#include <string>

#include "whitespace.h"

namespace reference {

struct Parts {
  std::string path, name, extension;
};

/// Returns whether `parts`, which the library returned, are `expected`.
template <class Split>
bool isSame(const Split& parts, const Parts& expected) {
  return parts.path == expected.path && parts.name == expected.name &&
         parts.extension == expected.extension;
}

inline std::string withSlashes(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

inline bool hasLineBreak(const std::string& text) {
  return text.find('\n') != std::string::npos || text.find('\r') != std::string::npos;
}

/// Returns the position of the last `mark` in `text` that is neither its first nor its last byte,
/// and 0 if there is none.
inline std::size_t before(const std::string& text, char mark) {
  if (text.size() < 3) return 0;
  const std::size_t last = text.rfind(mark, text.size() - 2);
  return last == std::string::npos ? 0 : last;
}

inline std::string stripExtension(const std::string& name) {
  const std::string text = withSlashes(name);
  const std::size_t stem = hasLineBreak(text) ? 0 : before(text, '.');
  return stem == 0 ? text : text.substr(0, stem);
}

inline Parts split(const std::string& name) {
  const std::string text = withSlashes(name);
  if (hasLineBreak(text)) return {};
  const std::string stem = stripExtension(text);
  const std::size_t slash = before(stem, '/');
  const std::size_t split = slash == 0 ? 0 : slash + 1;
  const std::string extension = stem.size() == text.size() ? "" : text.substr(stem.size() + 1);
  return {stem.substr(0, split), stem.substr(split), extension};
}

/// Returns `name` with leading whitespace removed and the first tilde replaced by `home`.
inline std::string withHome(const std::string& name, const std::string& home) {
  const std::size_t start = std::min(name.find_first_not_of(kWhitespace), name.size());
  const std::size_t tilde = name.find('~', start);
  if (tilde == std::string::npos) return name.substr(start);
  return name.substr(start, tilde - start) + home + name.substr(tilde + 1);
}

inline std::string join(const Parts& parts, const std::string& home) {
  std::string dir = withSlashes(withHome(parts.path, home));
  if (!dir.empty() && dir[dir.size() - 1] != '/') dir += '/';
  return dir + parts.name + (parts.extension.empty() ? "" : "." + parts.extension);
}

/// Returns the part of a numbered name before its "-" and digits, and an empty text for other
/// names.
inline std::string beforeNumber(const std::string& name) {
  std::size_t hyphen = name.size();
  while (hyphen > 0 && name[hyphen - 1] >= '0' && name[hyphen - 1] <= '9') --hyphen;
  const bool isNumbered = hyphen > 1 && name[hyphen - 1] == '-';
  return isNumbered && !hasLineBreak(name) ? name.substr(0, hyphen - 1) : "";
}

}  // namespace reference

#endif  // REFERENCE_NAMES_H
