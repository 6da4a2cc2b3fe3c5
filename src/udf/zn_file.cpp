#include "zn_file.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <regex>

#include "tokenizer.h"
#include "zn_exists.h"
#include "zn_output.h"
#include "zn_pattern.h"
#include "zn_str.h"

namespace zn_lib {
namespace {

const std::regex lastExt = compilePattern("(.+)[\\.](.+)$");
const std::regex fileSplit = compilePattern("(.+[\\/])?(.+)");

/// Where `mark` last stands with at least one byte before and behind it; npos when it does not.
std::size_t lastInside(const std::string& text, char mark) {
  if (text.size() < 3) return std::string::npos;
  const std::size_t position = text.rfind(mark, text.size() - 2);
  return position == 0 ? std::string::npos : position;
}

/// A name without its extension.
struct Stem {
  std::string stem;       ///< the name without extension and dot
  std::string extension;  ///< empty when there is none
};

Stem splitExtension(const std::string& name) {
  // A name with a line break matches neither pattern, since "." takes all bytes but those.
  if (!hasLineBreak(name)) {
    const std::size_t dot = lastInside(name, '.');
    if (dot == std::string::npos) return {name, ""};
    return {name.substr(0, dot), name.substr(dot + 1)};
  }
  std::smatch match;
  if (name.size() <= kLongestForEngine && std::regex_match(name, match, lastExt)) {
    return {match[1], match[2]};
  }
  return {name, ""};
}

void useSlashes(std::string& name) { name = replaceChar(name, '\\', '/'); }

/// Makes way for `target`: false when it exists and may not or cannot be removed.
bool clearTarget(const std::string& target, bool overwrite) {
  if (!exists(target)) return true;
  return overwrite && std::remove(target.c_str()) == 0;
}

/// The printable characters of ASCII, whatever the host's locale.
bool isPrintable(int value) { return value >= ' ' && value <= '~'; }

void printDumpHeader(int width) {
  std::string numbers;
  std::string digits;
  for (int column = 0; column < width; ++column) {
    numbers += rightPad(std::to_string(column), 2, ' ') + ' ';
    digits += static_cast<char>('0' + column % 10);
  }
  std::cout << numbers + "  " + digits + "\n\n";
}

/// Builds the rows of a dump, value by value.
class DumpBody {
 public:
  explicit DumpBody(int width) : lastColumn_(static_cast<long long>(width) - 1) {}

  /// Adds a byte, or the end of the file, which is -1.
  void add(int value) {
    constexpr const char* digits = "0123456789abcdef";
    if (value < 0) {
      text_ += "ffffffff ";
    } else {
      text_ += {digits[value / 16], digits[value % 16], ' '};
    }
    row_ += isPrintable(value) ? static_cast<char>(value) : '.';
    if (column_ < lastColumn_) {
      ++column_;
      return;
    }
    text_ += column_ == lastColumn_ ? "  " : " ";
    text_ += row_;
    text_ += '\n';
    row_.clear();
    column_ = 0;
  }

  /// Ends the body; the characters of a row that is not full are left out.
  const std::string& finish() { return text_ += '\n'; }

 private:
  const long long lastColumn_;
  long long column_ = 0;
  std::string row_;
  std::string text_;
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
  const Stem stem = splitExtension(name);
  if (!hasLineBreak(stem.stem)) {
    const std::size_t slash = lastInside(stem.stem, '/');
    const std::size_t split = slash == std::string::npos ? 0 : slash + 1;
    return {stem.stem.substr(0, split), stem.stem.substr(split), stem.extension};
  }
  std::smatch match;
  if (stem.stem.size() > kLongestForEngine || !std::regex_match(stem.stem, match, fileSplit)) {
    return {};
  }
  return {match[1], match[2], stem.extension};
}

std::string stripExtension(std::string& name) {
  useSlashes(name);
  return splitExtension(name).stem;
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

  DumpBody body(width);
  std::array<char, 65536> block;
  // A read that fails, of a directory for one, sets no end-of-file state; the stream is not good
  // any more then either.
  while (in.good()) {
    in.read(block.data(), block.size());
    const std::size_t count = static_cast<std::size_t>(in.gcount());
    for (std::size_t i = 0; i < count; ++i) body.add(static_cast<unsigned char>(block[i]));
  }
  body.add(-1);
  in.close();
  display(body.finish());
  return true;
}

}  // namespace zn_lib
