#include "zn_seqfile.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "internal/definitions.h"
#include "internal/text.h"
#include "zn_dir.h"
#include "zn_file.h"

namespace zn_lib {
namespace {

/// Recognises the form `fileseq`: a name that ends in "-" and digits, which may be missing. Returns
/// the length of the text before the "-". A name with a line break does not match.
std::optional<std::size_t> scanFileseq(const std::string& name) {
  const auto hyphen = std::find_if_not(name.rbegin(), name.rend(), internal::isDigit);
  if (hyphen == name.rend() || *hyphen != '-' || hyphen + 1 == name.rend()) return std::nullopt;
  if (internal::hasLineBreak(name)) return std::nullopt;
  return static_cast<std::size_t>(name.rend() - hyphen) - 1;
}

/// Returns a numbered name without "-" and its number, or nothing if the name is not numbered.
std::optional<std::string> withoutNumber(const std::string& name) {
  const std::optional<std::size_t> length = scanFileseq(name);
  const std::string_view view = name;
  internal::verify(internal::definitions::fileseq, name, length.has_value(),
                   {view.substr(0, length.value_or(0)), view.substr(length ? *length + 1 : 0)});
  if (!length) return std::nullopt;
  return name.substr(0, *length);
}

}  // namespace

void sequentialFile(std::string& name) {
  const name_of_file parts = splitFileName(name);
  std::string base = withoutNumber(parts.name).value_or(parts.name);
  std::vector<std::string> entries;
  // The listing also fails if the base is not a valid filter.
  if (!listDir(parts.path, base, false, entries)) return;
  for (std::string& entry : entries) {
    std::string stem = stripExtension(entry);
    if (!withoutNumber(stem)) base = std::move(stem);
  }
  name = parts.path + base + "-1." + parts.extension;
}

}  // namespace zn_lib
