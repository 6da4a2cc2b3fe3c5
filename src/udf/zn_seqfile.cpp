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

/// Mirrors `fileseq`, and returns the length of its first group: what stands before the "-" and the
/// digits at the end of a numbered name. A name with a line break does not match.
std::optional<std::size_t> scanFileseq(const std::string& name) {
  const auto hyphen = std::find_if_not(name.rbegin(), name.rend(), internal::isDigit);
  if (hyphen == name.rend() || *hyphen != '-' || hyphen + 1 == name.rend()) return std::nullopt;
  if (internal::hasLineBreak(name)) return std::nullopt;
  return static_cast<std::size_t>(name.rend() - hyphen) - 1;
}

/// Returns a numbered name without its number, or nothing for another name.
std::optional<std::string> withoutNumber(const std::string& name) {
  const std::optional<std::size_t> length = scanFileseq(name);
  const std::string_view view = name;
  internal::verify(internal::definitions::fileseq, name, length.has_value(),
                   {view.substr(0, length.value_or(0)), view.substr(length ? *length + 1 : 0)});
  return length ? std::optional<std::string>(name.substr(0, *length)) : std::nullopt;
}

}  // namespace

void sequentialFile(std::string& name) {
  const name_of_file parts = splitFileName(name);
  std::string base = withoutNumber(parts.name).value_or(parts.name);
  std::vector<std::string> entries;
  // A base that is not a valid filter counts as a directory that cannot be listed.
  if (!listDir(parts.path, base, false, entries)) return;
  for (std::string& entry : entries) {
    std::string stem = stripExtension(entry);
    if (!withoutNumber(stem)) base = std::move(stem);
  }
  name = parts.path + base + "-1." + parts.extension;
}

}  // namespace zn_lib
