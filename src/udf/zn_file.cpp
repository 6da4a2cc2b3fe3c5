#include "zn_file.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

#include "internal/copy.h"
#include "internal/definitions.h"
#include "internal/descriptor.h"
#include "internal/files.h"
#include "internal/text.h"
#include "tokenizer.h"
#include "zn_output.h"
#include "zn_str.h"

namespace zn_lib {
namespace {

/// Returns the last position of `mark` that has at least one byte before and after it, or npos.
std::size_t lastInside(std::string_view text, char mark) {
  if (text.size() < 3) return std::string_view::npos;
  const std::size_t position = text.rfind(mark, text.size() - 2);
  return position == 0 ? std::string_view::npos : position;
}

/// The two parts of a name, as views into it.
struct Parts {
  std::string_view first, second;
};

/// Recognises the form `lastExt`: a stem, a dot and an extension. A name without an extension or
/// with a line break does not match.
std::optional<Parts> scanLastExt(const std::string& name) {
  const std::size_t dot = lastInside(name, '.');
  if (dot == std::string::npos || internal::hasLineBreak(name)) return std::nullopt;
  const std::string_view view = name;
  return Parts{view.substr(0, dot), view.substr(dot + 1)};
}

/// Recognises the form `fileSplit`: a directory, up to and including its last slash, and the rest.
/// The empty name and names with a line break do not match.
std::optional<Parts> scanFileSplit(std::string_view name) {
  if (name.empty() || internal::hasLineBreak(name)) return std::nullopt;
  const std::size_t slash = lastInside(name, '/');
  const std::size_t split = slash == std::string_view::npos ? 0 : slash + 1;
  return Parts{name.substr(0, split), name.substr(split)};
}

/// Returns the parts that the scan of `form` found in `text`, or `otherwise` if it found none.
Parts verified(const internal::Definition& form, std::string_view text,
               const std::optional<Parts>& found, const Parts& otherwise) {
  const Parts parts = found.value_or(otherwise);
  internal::verify(form, text, found.has_value(), {parts.first, parts.second});
  return parts;
}

/// Returns the name without its extension, and the extension.
Parts splitExtension(const std::string& name) {
  return verified(internal::definitions::lastExt, name, scanLastExt(name), {name, ""});
}

void useSlashes(std::string& name) { std::replace(name.begin(), name.end(), '\\', '/'); }

/// Removes `target` if it exists and may be overwritten. Returns false if it remains, or if the
/// system could not check whether it exists.
bool clearTarget(const std::string& target, bool overwrite) {
  if (!internal::exists(target)) return errno != EIO && errno != ENOMEM;
  return overwrite && std::remove(target.c_str()) == 0;
}

/// Returns true for the printable characters of ASCII, whatever the host's locale.
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

/// Reads a file up to its end or to the first read that fails.
Blocks readToEnd(std::istream& in) {
  Blocks blocks;
  // Each read requests no more than the stream's buffer contains, because a read that fails loses
  // what it has already copied. For a directory, the first read fails.
  while (in.peek() != std::istream::traits_type::eof()) {
    std::string& block =
        blocks.emplace_back(static_cast<std::size_t>(in.rdbuf()->in_avail()), '\0');
    in.read(block.data(), static_cast<std::streamsize>(block.size()));
  }
  return blocks;
}

using HexEntry = std::array<char, 3>;

/// Returns each byte value as two hexadecimal digits and a space.
constexpr std::array<HexEntry, 256> hexEntries() {
  constexpr const char* digits = "0123456789abcdef";
  std::array<HexEntry, 256> entries{};
  for (std::size_t value = 0; value < entries.size(); ++value) {
    entries[value] = {digits[value / 16], digits[value % 16], ' '};
  }
  return entries;
}

constexpr std::array<HexEntry, 256> kHexEntries = hexEntries();

/// Formats the rows of a dump, block by block.
class DumpRows {
 public:
  explicit DumpRows(int width)
      : width_(static_cast<std::size_t>(std::max(width, 1))), gap_(width > 0 ? "  " : " ") {}

  /// Returns the text that the next `bytes` of the file add to the dump.
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

  /// Returns the end of the dump. The end of the file counts as one more byte, and the last row
  /// shows its characters only if it is full.
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
  const auto [stem, extension] = splitExtension(name);
  const auto [directory, base] =
      verified(internal::definitions::fileSplit, stem, scanFileSplit(stem), {"", ""});
  return {std::string(directory), std::string(base), std::string(extension)};
}

std::string stripExtension(std::string& name) {
  useSlashes(name);
  return std::string(splitExtension(name).first);
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
  if (!internal::exists(source) || !clearTarget(target, overwrite)) return false;
  internal::Descriptor in(open(source.c_str(), O_RDONLY | O_CLOEXEC));
  const internal::Descriptor out(
      open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, internal::kNewFile));
  if (in.isOpen() && out.isOpen()) internal::copyContents(in, out);
  in.reset();  // before the target
  return true;
}

bool fileRename(const std::string& oldName, const std::string& newName, bool overwrite) {
  if (!internal::exists(oldName) || !clearTarget(newName, overwrite)) return false;
  return std::rename(oldName.c_str(), newName.c_str()) == 0;
}

bool createBackup(const std::string& name) {
  // The system ends a name at its first NUL, and would ignore a "~" after it.
  return fileRename(name, std::string(name.c_str()) + "~", true);
}

bool hexDump(const std::string& name, int width) {
  std::ifstream in(name, std::ios_base::binary);
  if (!in.is_open()) return false;
  printDumpHeader(width);
  if (!isVerbose()) return true;

  // The whole file is read first, since standard output may be redirected to it.
  const Blocks blocks = readToEnd(in);
  in.close();
  DumpRows rows(width);
  for (const std::string& block : blocks) display(rows.add(block));
  display(rows.finish());
  return true;
}

}  // namespace zn_lib
