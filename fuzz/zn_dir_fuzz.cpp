/// Runs any sequence of operations on the files of a directory, and compares the results, the
/// listings, the output and the files with those of a model.
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>
#include <zn_dir.h>
#include <zn_file.h>
#include <zn_output.h>
#include <zn_readfile.h>
#include <zn_writefile.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

#include "captured_stream.h"
#include "directory_contents.h"
#include "fuzz_check.h"
#include "fuzz_files.h"
#include "reference_names.h"
#include "whitespace.h"

namespace {

using fuzz::expectSame;
using Names = std::vector<std::string>;

/// The files of the working directory and of its subdirectories, and their expected contents. HOME
/// is not set. The names contain neither slashes nor backslashes, so all stays in that directory.
class Model {
 public:
  /// Begins with an empty directory, or with files and with directories to copy from and to.
  explicit Model(FuzzedDataProvider& input) : input_(input) {
    const int start = input_.ConsumeIntegralInRange(0, 7);
    if (start > 3) contents_ = {{"a", "one\ntwo"}, {"sub", "/"}, {"sub/a", "A"}, {"copy", "/"}};
    if (start == 7) contents_["b.txt"] = std::string(200000, 'b');
    makeContents(contents_);
  }

  void step() {
    switch (input_.ConsumeIntegralInRange(0, 9)) {
      case 0:
        copyFile();
        break;
      case 1:
        renameFile();
        break;
      case 2:
        backUp();
        break;
      case 3:
        create();
        break;
      case 4:
        list();
        break;
      case 5:
        copyAll();
        break;
      case 6:
        change();
        break;
      case 7:
        print();
        break;
      case 8:
        dump();
        break;
      default:
        write();
        break;
    }
  }

  void check() const {
    const Contents actual = contents();
    expectSame("files", namesOf(actual), namesOf(contents_));
    for (const auto& [name, bytes] : actual) expectSame("contents", bytes, contents_.at(name));
  }

 private:
  static Names namesOf(const Contents& all) {
    Names names;
    for (const auto& [name, bytes] : all) names.push_back(name);
    return names;
  }

  /// Returns the name of a file in the working directory. It is often one that is used again.
  std::string name() {
    if (input_.ConsumeIntegralInRange(0, 3) > 0) {
      return input_.PickValueInArray<std::string>(
          {"a", "a~", "b.txt", "sub", ".hidden", " b", "~"});
    }
    std::string text = input_.ConsumeRandomLengthString(20);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '/' || c == '\\' || c == '\0'; }, '-');
    const std::string trimmed = withoutLeadingWhitespace(text);
    return trimmed.empty() || trimmed == "." || trimmed == ".." ? "a" : text;
  }

  std::string bytes() {
    const std::string text = input_.ConsumeRandomLengthString(60);
    switch (input_.ConsumeIntegralInRange(0, 5)) {
      case 0:
        return repeated(text, 30);
      case 1:
        return repeated(text, 4000);
      case 2:  // about as long as the longest line
        return std::string(input_.ConsumeIntegralInRange<std::size_t>(1020, 1026), 'x') + text;
      default:
        return text == "/" ? "" : text;  // which marks directories
    }
  }

  static std::string repeated(const std::string& text, int count) {
    std::string copies;
    for (int i = 0; i < count; ++i) copies += text;
    return copies;
  }

  bool exists(const std::string& name) const { return contents_.count(name) != 0; }
  bool isDirectory(const std::string& name) const {
    return exists(name) && contents_.at(name) == "/";
  }

  /// Returns the names in the directory `dir`, and those in the working directory if it is empty.
  Names namesIn(const std::string& dir) const {
    Names names;
    const std::string start = dir.empty() ? "" : dir + "/";
    for (const auto& [name, bytes] : contents_) {
      const bool isInside = name.compare(0, start.size(), start) == 0;
      const std::string rest = isInside ? name.substr(start.size()) : "";
      if (!rest.empty() && rest.find('/') == std::string::npos) names.push_back(rest);
    }
    return names;
  }

  /// Removes a file or an empty directory. Returns whether the name is free now.
  bool clear(const std::string& name, bool overwrite) {
    if (!exists(name)) return true;
    if (!overwrite || (isDirectory(name) && !namesIn(name).empty())) return false;
    contents_.erase(name);
    return true;
  }

  void copyFile() {
    const std::string source = name(), target = name();
    const bool overwrite = input_.ConsumeBool();
    bool expected = exists(source) && clear(target, overwrite);
    if (expected) {
      const bool hasBytes = exists(source) && !isDirectory(source);
      contents_[target] = hasBytes ? contents_[source] : "";
    }
    expectSame("fileCopy", zn_lib::fileCopy(source, target, overwrite), expected);
  }

  bool rename(const std::string& from, const std::string& to, bool overwrite) {
    if (!exists(from) || !clear(to, overwrite) || !exists(from)) return false;
    Contents moved;
    for (const auto& [name, bytes] : contents_) {
      const bool isMoved = name == from || name.compare(0, from.size() + 1, from + "/") == 0;
      moved[isMoved ? to + name.substr(from.size()) : name] = bytes;
    }
    contents_ = moved;
    return true;
  }

  void renameFile() {
    const std::string from = name(), to = name();
    const bool overwrite = input_.ConsumeBool();
    const bool expected = rename(from, to, overwrite);
    expectSame("fileRename", zn_lib::fileRename(from, to, overwrite), expected);
  }

  void backUp() {
    const std::string file = name();
    const bool expected = rename(file, file + "~", true);
    expectSame("createBackup", zn_lib::createBackup(file), expected);
  }

  void create() {
    const std::string dir = name();
    expectSame("createDir", zn_lib::createDir(dir), !exists(dir));
    contents_.insert({dir, "/"});
  }

  void change() {
    const std::string dir = name();
    const bool isChanged = zn_lib::changeDir(dir);
    expectSame("changeDir", isChanged, isDirectory(dir));
    if (!isChanged) return;
    expectSame("the files there", contents().size(), namesIn(dir).size());
    fuzz::expect("back", zn_lib::changeDir(".."));
  }

  void list() {
    std::string dir = input_.ConsumeBool() ? "" : name();
    // Any filter is tried by zn_file_fuzz, in which fewer functions compete for inputs.
    const std::string filter = input_.PickValueInArray<std::string>(
        {"", "<dir>", "a", "^b", "t$", "(", "[.~]", "b|u", ".*\\.", "xx*"});
    const bool skipHidden = input_.ConsumeBool();

    const std::string trimmed = withoutLeadingWhitespace(dir);
    bool isListed = trimmed.empty() || isDirectory(trimmed);
    std::string error = isListed ? "" : "ERROR: Couldn't open the directory\n";
    Names expected;
    try {
      const std::regex pattern(filter == "<dir>" ? "" : filter);
      for (const std::string& entry : namesIn(trimmed)) {
        const bool isSelected = filter == "<dir>" ? trimmed.empty() && isDirectory(entry)
                                                  : std::regex_search(entry, pattern);
        if (isSelected && !(skipHidden && entry[0] == '.')) expected.push_back(entry);
      }
      for (const std::string dots : {".", ".."}) {
        if (!skipHidden && filter != "<dir>" && std::regex_search(dots, pattern)) {
          expected.push_back(dots);
        }
      }
    } catch (const std::regex_error&) {
      isListed = false;
      error = "ERROR: Invalid filter\n";
    }
    if (!isListed) expected.clear();
    expected.push_back("old");

    CapturedStream messages(std::cerr);
    Names actual = {"old"};
    expectSame("listDir", zn_lib::listDir(dir, filter, skipHidden, actual), isListed);
    std::sort(actual.begin(), actual.end());
    std::sort(expected.begin(), expected.end());
    expectSame("entries", actual, expected);
    expectSame("its message", messages.text(), zn_lib::isVerbose() ? error : "");
  }

  void copyAll() {
    std::string source = input_.ConsumeBool() ? name() : "";
    std::string target = input_.ConsumeBool() ? name() : "copy";
    const std::string from = withoutLeadingWhitespace(source);
    const std::string to = withoutLeadingWhitespace(target);
    const bool expected = exists(from);
    if (expected) contents_.insert({to, "/"});
    if (isDirectory(from) && isDirectory(to)) {
      for (const std::string& file : namesIn(from)) {
        if (file[0] != '.') contents_.insert({to + "/" + file, contents_[from + "/" + file]});
      }
    }
    CapturedStream messages(std::cerr);
    expectSame("copyDir", zn_lib::copyDir(source, target), expected);
    if (!from.empty()) expectSame("the caller's string", source + target, from + to);
  }

  /// Returns the name that the file objects use for `file`.
  static std::string nameOf(const std::string& file) {
    return reference::withHome(reference::join(reference::split(file), "~"), "~");
  }

  void write() {
    const std::string dir = input_.PickValueInArray<std::string>({"", "", "sub/", "copy/"});
    std::string file = dir + name();
    const std::string text = bytes();
    zn_lib::WriteFile out;
    out.append = input_.ConsumeBool();
    out.overwrite = input_.ConsumeBool();
    const bool append = out.append;
    const std::string used = nameOf(file);
    const std::size_t slash = used.find('/');
    const bool isThere = slash == std::string::npos || isDirectory(used.substr(0, slash));
    const bool expected = !used.empty() && isThere && !isDirectory(used);
    const bool isWarned = zn_lib::isVerbose() && !append && !out.overwrite && exists(used);
    out.setFileName(file);

    CapturedStream messages(std::cerr);
    expectSame("fileOpen", out.fileOpen(), expected);
    expectSame("its message", messages.text(), isWarned ? "ERROR: File name exists\n" : "");
    fuzz::expect("overwrite", !append || out.overwrite);
    out.file.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.fileClose();
    if (expected) contents_[used] = (append ? contents_[used] : "") + text;
  }

  /// Returns the lines that `cat` prints.
  static std::string lines(const std::string& bytes) {
    constexpr std::size_t longest = 1023;
    std::string printed;
    for (std::size_t at = 0; true;) {
      const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
      printed += bytes.substr(at, std::min(end - at, longest)).c_str();
      printed += '\n';
      if (end - at > longest || end == bytes.size()) return printed;
      at = end + 1;
    }
  }

  void print() {
    std::string file = name();
    const std::string used = nameOf(file);
    zn_lib::ReadFile in;
    in.binary = input_.ConsumeBool();
    in.setFileName(file);
    // The streams of the standard library open directories too, but cannot read them.
    if (isDirectory(used)) return;
    expectSame("fileOpen", in.fileOpen(), exists(used));
    CapturedStream out(std::cout);
    if (input_.ConsumeBool()) std::cout << std::unitbuf;
    expectSame("cat", in.cat(), exists(used));
    std::cout << std::nounitbuf;
    expectSame("its output", out.text(), exists(used) ? lines(contents_[used]) : "");
    in.fileClose();
    expectSame("fileClose", in.file.is_open(), false);
  }

  static std::string dumpOf(const std::string& bytes, int width) {
    std::string text, digits;
    char number[16];
    for (int i = 0; i < width; ++i) {
      std::snprintf(number, sizeof number, "%2d ", i);
      text += number;
      digits += std::to_string(i % 10);
    }
    text += "  " + digits + "\n\n";
    if (!zn_lib::isVerbose()) return text;
    std::string row;
    for (std::size_t i = 0; i <= bytes.size(); ++i) {
      const bool isEnd = i == bytes.size();
      const char c = isEnd ? '\0' : bytes[i];
      std::snprintf(number, sizeof number, "%02x ", static_cast<unsigned char>(c));
      text += isEnd ? "ffffffff " : number;
      row += c >= ' ' && c <= '~' ? c : '.';
      if (static_cast<int>(row.size()) < width) continue;
      text += (width > 0 ? "  " : " ") + row + "\n";
      row.clear();
    }
    return text + "\n";
  }

  void dump() {
    const std::string file = name();
    const int width = input_.ConsumeIntegralInRange(-1, 40);
    if (isDirectory(file) || (exists(file) && contents_[file].size() > 10000)) return;
    CapturedStream out(std::cout);
    expectSame("hexDump", zn_lib::hexDump(file, width), exists(file));
    expectSame("its output", out.text(), exists(file) ? dumpOf(contents_[file], width) : "");
  }

  FuzzedDataProvider& input_;
  Contents contents_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr int mostSteps = 20;
  static const fuzz::TemporaryDirectory directory;
  static const bool isThere = chdir(directory.path().c_str()) == 0 && unsetenv("HOME") == 0;
  fuzz::expect("the directory is there", isThere);
  FuzzedDataProvider input(data, size);
  zn_lib::setVerbose(input.ConsumeBool());
  Model model(input);
  for (int i = 0; i < mostSteps && input.remaining_bytes() > 0; ++i) model.step();
  model.check();
  return 0;
}
