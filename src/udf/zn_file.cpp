#include "zn_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <regex>
#include <string_view>
#include <vector>

#include "tokenizer.h"
#include "zn_exists.h"
#include "zn_output.h"
#include "zn_pattern.h"
#include "zn_str.h"

namespace zn_lib {
namespace {

const Pattern lastExt = compilePattern("(.+)[\\.](.+)$");
const Pattern fileSplit = compilePattern("(.+[\\/])?(.+)");

/// Where `mark` last stands with at least one byte before and behind it; npos when it does not.
std::size_t lastInside(std::string_view text, char mark) {
  if (text.size() < 3) return std::string_view::npos;
  const std::size_t position = text.rfind(mark, text.size() - 2);
  return position == 0 ? std::string_view::npos : position;
}

/// A name without its extension, as views of the name.
struct Stem {
  std::string_view stem;       ///< the name without extension and dot
  std::string_view extension;  ///< empty when there is none
};

/// The name cut at the dot there; whole where there is none.
Stem cutAt(std::size_t dot, std::string_view name) {
  if (dot == std::string_view::npos) return {name, ""};
  return {name.substr(0, dot), name.substr(dot + 1)};
}

/// As the pattern splits a name without a line break.
Stem splitExtension(std::string_view name) { return cutAt(lastInside(name, '.'), name); }

Stem matchExtension(const std::string& name) {
  std::smatch match;
  const bool isMatch = name.size() <= kLongestForEngine && std::regex_match(name, match, lastExt);
  return cutAt(isMatch ? static_cast<std::size_t>(match.length(1)) : std::string::npos, name);
}

/// For any name. One with a line break matches neither pattern, since "." takes all bytes but
/// those.
name_of_file matchFileName(const std::string& name) {
  const Stem parts = matchExtension(name);
  const std::string stem(parts.stem);
  std::smatch match;
  const bool isMatch = stem.size() <= kLongestForEngine && std::regex_match(stem, match, fileSplit);
  return isMatch ? name_of_file{match[1], match[2], std::string(parts.extension)} : name_of_file();
}

void useSlashes(std::string& name) { std::replace(name.begin(), name.end(), '\\', '/'); }

/// Makes way for `target`: false when it exists and may not or cannot be removed, and when the
/// system could not look.
bool clearTarget(const std::string& target, bool overwrite) {
  if (!exists(target)) return errno != EIO && errno != ENOMEM;
  return overwrite && std::remove(target.c_str()) == 0;
}

/// The printable characters of ASCII, whatever the host's locale.
bool isPrintable(char c) { return c >= ' ' && c <= '~'; }

void printDumpHeader(int width) {
  std::string numbers;
  std::string digits;
  for (int column = 0; column < width; ++column) {
    numbers += rightPad(std::to_string(column), 2, ' ') + ' ';
    digits += static_cast<char>('0' + column % 10);
  }
  std::cout << numbers + "  " + digits + "\n\n";
}

using Blocks = std::vector<std::string>;

/// All that can be read of a file, also when a read fails in the end.
Blocks readToEnd(std::istream& in) {
  Blocks blocks;
  // Only what lies in the stream's buffer already is asked for: a read that fails would take with
  // it what it has got before. Of a directory, the first one fails.
  while (in.peek() != std::istream::traits_type::eof()) {
    std::string& block =
        blocks.emplace_back(static_cast<std::size_t>(in.rdbuf()->in_avail()), '\0');
    in.read(block.data(), static_cast<std::streamsize>(block.size()));
  }
  return blocks;
}

using HexEntry = std::array<char, 3>;

/// Each byte value as two digits and a blank.
constexpr std::array<HexEntry, 256> hexEntries() {
  constexpr const char* digits = "0123456789abcdef";
  std::array<HexEntry, 256> entries{};
  for (std::size_t value = 0; value < entries.size(); ++value) {
    entries[value] = {digits[value / 16], digits[value % 16], ' '};
  }
  return entries;
}

constexpr std::array<HexEntry, 256> kHexEntries = hexEntries();

/// Gives the rows of a dump, block by block.
class DumpRows {
 public:
  explicit DumpRows(int width)
      : width_(static_cast<std::size_t>(std::max(width, 1))), gap_(width > 0 ? "  " : " ") {}

  /// The text that `bytes`, the next ones of the file, add to the dump.
  std::string add(std::string_view bytes) {
    const std::size_t rows = (row_.size() + bytes.size()) / width_;
    const std::size_t rowEnd = gap_.size() + width_ + 1;
    std::string text(bytes.size() * HexEntry().size() + rows * rowEnd, '\0');
    char* out = text.data();
    while (!bytes.empty()) {
      const std::string_view part = bytes.substr(0, width_ - row_.size());
      for (const char c : part) {
        const HexEntry& entry = kHexEntries[static_cast<unsigned char>(c)];
        out = std::copy(entry.begin(), entry.end(), out);
      }
      row_ += part;
      if (row_.size() == width_) out = endRow(out);
      bytes.remove_prefix(part.size());
    }
    return text;
  }

  /// The end of the dump: the end of the file is an entry too. The characters of a row that is not
  /// full are left out.
  std::string finish() {
    std::string text = "ffffffff ";
    row_ += '.';
    if (row_.size() == width_) endRow(std::back_inserter(text));
    return text += '\n';
  }

 private:
  template <class Out>
  Out endRow(Out out) {
    out = std::copy(gap_.begin(), gap_.end(), out);
    out = std::transform(row_.begin(), row_.end(), out,
                         [](char c) { return isPrintable(c) ? c : '.'; });
    *out++ = '\n';
    row_.clear();
    return out;
  }

  const std::size_t width_;
  const std::string_view gap_;
  std::string row_;  // the bytes of the row that is not full yet
};

}  // namespace

void addEndSlash(std::string& dir) {
  if (!dir.empty() && dir.back() != '/') dir += '/';
}

void checkHomePath(std::string& name) {
  name = leftTrim(name);
  const char* const home = std::getenv("HOME");
  if (home != nullptr) name = replaceString(name, "~", home);
}

name_of_file splitFileName(std::string& name) {
  useSlashes(name);
  if (hasLineBreak(name)) return matchFileName(name);
  const auto [stem, extension] = splitExtension(name);
  const std::size_t slash = lastInside(stem, '/');
  const std::size_t split = slash == std::string_view::npos ? 0 : slash + 1;
  return {std::string(stem.substr(0, split)), std::string(stem.substr(split)),
          std::string(extension)};
}

std::string stripExtension(std::string& name) {
  useSlashes(name);
  const Stem parts = hasLineBreak(name) ? matchExtension(name) : splitExtension(name);
  return std::string(parts.stem);
}

std::string createFileName(std::string dir, const std::string& name, const std::string& ext) {
  if (!dir.empty()) {
    checkHomePath(dir);
    useSlashes(dir);
    addEndSlash(dir);
  }
  std::string joined = dir + name;
  if (!ext.empty()) joined += '.' + ext;
  return joined;
}

bool fileCopy(const std::string& source, const std::string& target, bool overwrite) {
  if (!exists(source) || !clearTarget(target, overwrite)) return false;
  std::ifstream in(source, std::ios_base::binary);
  std::ofstream out(target, std::ios_base::binary | std::ios_base::trunc);
  out << in.rdbuf();
  in.close();
  out.close();
  return true;
}

bool fileRename(const std::string& oldName, const std::string& newName, bool overwrite) {
  if (!exists(oldName) || !clearTarget(newName, overwrite)) return false;
  return std::rename(oldName.c_str(), newName.c_str()) == 0;
}

bool createBackup(const std::string& name) {
  // The name ends at its first NUL for the system: a mark behind it would name the file itself.
  return fileRename(name, std::string(name.c_str()) + "~", true);
}

bool hexDump(const std::string& name, int width) {
  std::ifstream in(name, std::ios_base::binary);
  if (!in.is_open()) return false;
  printDumpHeader(width);
  if (!isVerbose()) return true;

  // All of it first: the file may be the one that standard output goes to.
  const Blocks blocks = readToEnd(in);
  in.close();
  DumpRows rows(width);
  for (const std::string& block : blocks) display(rows.add(block));
  display(rows.finish());
  return true;
}

}  // namespace zn_lib
