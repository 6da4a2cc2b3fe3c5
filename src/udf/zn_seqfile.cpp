#include "zn_seqfile.h"

#include <algorithm>
#include <optional>
#include <regex>
#include <vector>

#include "zn_ascii.h"
#include "zn_dir.h"
#include "zn_file.h"
#include "zn_pattern.h"

namespace zn_lib {
namespace {

const Pattern fileseq = compilePattern("(.+)[-](\\d+)?");

/// What stands before the "-" and the digits that end a numbered name; nothing for other names.
std::optional<std::string> beforeNumber(const std::string& name) {
  if (hasLineBreak(name)) {
    std::smatch match;
    const bool isMatch = name.size() <= kLongestForEngine && std::regex_match(name, match, fileseq);
    return isMatch ? std::optional<std::string>(match[1]) : std::nullopt;
  }
  const auto hyphen = std::find_if_not(name.rbegin(), name.rend(), isDigit);
  if (hyphen == name.rend() || *hyphen != '-' || hyphen + 1 == name.rend()) return {};
  return std::string(name.begin(), hyphen.base() - 1);
}

}  // namespace

void sequentialFile(std::string& name) {
  const name_of_file parts = splitFileName(name);
  std::string base = beforeNumber(parts.name).value_or(parts.name);
  std::vector<std::string> entries;
  // A base that is no filter counts as a listing that fails.
  if (!listDir(parts.path, base, false, entries)) return;
  for (std::string& entry : entries) {
    std::string stem = stripExtension(entry);
    if (!beforeNumber(stem)) base = std::move(stem);
  }
  name = parts.path + base + "-1." + parts.extension;
}

}  // namespace zn_lib
