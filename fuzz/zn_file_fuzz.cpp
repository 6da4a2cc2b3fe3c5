/// Compares file names with a plain reference model, short names with their definitions, and
/// numbered names with a model in a directory of a few files.
#include <fuzzer/FuzzedDataProvider.h>
#include <zn_file.h>
#include <zn_readfile.h>
#include <zn_seqfile.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "fuzz_files.h"
#include "reference_name_parts.h"
#include "reference_names.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

using fuzz::expectSame;

const reference::Engine fileseq = reference::engine(definitions::fileseq);

void splits(const std::string& name) {
  std::string own = name;
  const zn_lib::name_of_file parts = zn_lib::splitFileName(own);
  const std::string text = reference::withSlashes(name);
  const reference::Parts expected = reference::split(name);
  expectSame("the caller's string", own, text);
  expectSame("path", parts.path, expected.path);
  expectSame("name", parts.name, expected.name);
  expectSame("extension", parts.extension, expected.extension);

  if (!reference::hasLineBreak(name)) {
    const std::string dot = parts.extension.empty() ? "" : ".";
    expectSame("round trip", parts.path + parts.name + dot + parts.extension, text);
  }
}

void strips(const std::string& name) {
  std::string own = name;
  expectSame("stripExtension", zn_lib::stripExtension(own), reference::stripExtension(name));
  expectSame("the caller's string", own, reference::withSlashes(name));
}

void defined(std::string name) {
  if (name.size() > fuzz::kShortText) return;
  const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
  const reference::Parts defined = reference::splitByDefinitions(name).parts;
  expectSame("path by its definition", parts.path, defined.path);
  expectSame("name by its definition", parts.name, defined.name);
  expectSame("extension by its definition", parts.extension, defined.extension);
}

void joins(const reference::Parts& parts, const std::string& home) {
  expectSame("createFileName", zn_lib::createFileName(parts.path, parts.name, parts.extension),
             reference::join(parts, home));
}

void objects(const std::string& name, const std::string& home) {
  zn_lib::ReadFile file;
  std::string own = name;
  file.setFileName(own);
  expectSame("getFileName", file.getFileName(),
             reference::withHome(reference::join(reference::split(name), home), home));
}

void expands(const std::string& name, const std::string& home) {
  std::string text = name;
  zn_lib::checkHomePath(text);
  expectSame("checkHomePath", text, reference::withHome(name, home));

  std::string dir = name;
  zn_lib::addEndSlash(dir);
  const bool isClosed = name.empty() || name[name.size() - 1] == '/';
  expectSame("addEndSlash", dir, isClosed ? name : name + "/");
}

bool isPlain(const std::string& base) {
  using namespace std::string_literals;
  return base.find_first_of("^$\\.*+?()[]{}|\0"s) == std::string::npos;
}

/// Returns those of `entries`, the names in `dir`, that a listing with the filter `base` has.
std::vector<std::string> selected(const std::vector<std::string>& entries, const std::string& dir,
                                  const std::string& base) {
  const bool directoriesOnly = base == "<dir>";
  const std::regex filter(isPlain(base) ? "" : base);
  std::vector<std::string> names;
  for (const std::string& entry : entries) {
    bool isSelected = false;
    if (directoriesOnly) {
      const bool isDots = entry == "." || entry == "..";
      isSelected = !isDots && std::filesystem::is_directory(dir + entry);
    } else if (isPlain(base)) {
      isSelected = entry.find(base) != std::string::npos;
    } else {
      isSelected = std::regex_search(entry, filter);
    }
    if (isSelected) names.push_back(entry);
  }
  return names;
}

/// Reference model of `sequentialFile` without HOME.
std::string numbered(const std::string& name) try {
  const reference::Parts parts = reference::split(name);
  const std::string stem = reference::beforeNumber(parts.name);
  std::string base = stem.empty() ? parts.name : stem;
  const std::vector<std::string> entries = namesInSystemOrder(parts.path);
  if (entries.empty()) return reference::withSlashes(name);
  for (const std::string& entry : selected(entries, parts.path, base)) {
    const std::string text = reference::stripExtension(entry);
    if (!std::regex_match(text, fileseq)) base = text;
  }
  return parts.path + base + "-1." + parts.extension;
} catch (const std::regex_error&) {
  return reference::withSlashes(name);
}

/// Compares numbered names in `directory` only, since other directories may change meanwhile.
void sequence(const std::string& tail, const fuzz::TemporaryDirectory& directory) {
  if (tail.find("..") != std::string::npos || tail.find('~') != std::string::npos) return;
  std::string name = directory.file(tail);
  const reference::Parts parts = reference::split(name);
  // A dot after the last slash, or a line break, leads to another directory.
  if (parts.path.compare(0, directory.path().size() + 1, directory.path() + "/") != 0) return;
  // A name of the system ends at a NUL.
  if (name.find('\0') != std::string::npos) return;
  const std::string stem = reference::beforeNumber(parts.name);
  const std::string base = stem.empty() ? parts.name : stem;
  if (!isPlain(base) && !fuzz::isForEngine(base)) return;
  const std::string expected = numbered(name);
  zn_lib::sequentialFile(name);
  expectSame("sequentialFile", name, expected);
}

const fuzz::TemporaryDirectory& directoryWithFiles() {
  static const fuzz::TemporaryDirectory directory;
  static bool isEmpty = true;
  if (isEmpty) {
    std::filesystem::create_directory(directory.file("out"));
    for (const char* file : {"run.log", "rerun.log", "run-12.log", "report-7.txt", "report.txt",
                             "a.b.c", ".run", "x\n-3", "run\\x.log", "out/run.log", "out/r-.x"}) {
      writeFile(directory.file(file), "");
    }
    isEmpty = false;
  }
  return directory;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int group = input.ConsumeIntegralInRange(0, 9);
  const bool hasHome = input.ConsumeBool();
  std::string home = input.ConsumeRandomLengthString(size).c_str();
  reference::Parts parts;
  parts.path = input.ConsumeRandomLengthString(size);
  parts.name = input.ConsumeRandomLengthString(size);
  parts.extension = input.ConsumeRandomLengthString(size);
  const std::string name = input.ConsumeRemainingBytesAsString();

  if (hasHome) {
    setenv("HOME", home.c_str(), 1);
  } else {
    unsetenv("HOME");
    // The first "~" is kept, as if it were the home directory.
    home = "~";
  }
  switch (group) {
    case 0:
      joins(parts, home);
      expands(name, home);
      break;
    case 1:
      objects(name, home);
      break;
    case 2:
    case 3:
    case 4:
      splits(name);
      break;
    case 5:
    case 6:
      strips(name);
      break;
    case 7:
    case 8:
      defined(name);
      break;
    default:
      sequence(name, directoryWithFiles());
      break;
  }
  return 0;
}
