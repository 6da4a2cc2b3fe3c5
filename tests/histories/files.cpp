// Calls of file names, file operations, directories and numbered names, and what a host does with
// files by itself.
#include <zn_dir.h>
#include <zn_file.h>
#include <zn_seqfile.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "model_names.h"
#include "model_output.h"
#include "pools.h"
#include "reference_engine.h"

namespace histories {
namespace {

// ---- Names

/// Compares the parts, the argument after the call, and what is joined again.
void splitName(Step& step) {
  std::string name = step.choose.flag() ? fileName(step.choose) : anyText(step.choose);
  const std::string before = name;
  if (step.choose.flag()) {
    step.call("stripExtension", name);
    step.same(reference::stripExtension(before), zn_lib::stripExtension(name));
  } else {
    step.call("splitFileName", name);
    const reference::Parts expected = reference::split(before);
    const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
    step.same(expected.path, parts.path);
    step.same(expected.name, parts.name);
    step.same(expected.extension, parts.extension);
  }
  step.same(reference::withSlashes(before), name);
}

void joinName(Step& step) {
  const std::string dir = step.choose.flag() ? fileName(step.choose) : anyText(step.choose);
  const std::string name = fileName(step.choose);
  const std::string extension = step.choose.one({"txt"s, ""s, "cfg"s, "x~"s, ".d"s});
  step.call("createFileName", dir, name, extension);
  step.same(joined(step.world.model, {dir, name, extension}),
            zn_lib::createFileName(dir, name, extension));
}

void expandName(Step& step) {
  std::string name = step.choose.flag() ? fileName(step.choose) : anyText(step.choose);
  if (step.choose.flag()) {
    step.call("addEndSlash", name);
    const bool isComplete = name.empty() || name[name.size() - 1] == '/';
    const std::string expected = isComplete ? name : name + "/";
    zn_lib::addEndSlash(name);
    step.same(expected, name);
  } else {
    step.call("checkHomePath", name);
    const std::string expected = expanded(step.world.model, name);
    zn_lib::checkHomePath(name);
    step.same(expected, name);
  }
}

// ---- Files

/// Makes way for a target. Returns false if it exists and may not or cannot be removed.
bool makeWay(Disk& disk, const std::string& target, bool overwrite) {
  return !disk.exists(target) || (overwrite && disk.remove(target));
}

bool copyFile(Disk& disk, const std::string& source, const std::string& target, bool overwrite) {
  if (!disk.exists(source) || !makeWay(disk, target, overwrite)) return false;
  const NodePointer from = disk.openForReading(source);
  const NodePointer to = disk.openForWriting(target, false);
  if (from != nullptr && to != nullptr) to->bytes = from->bytes;
  return true;
}

bool renameFile(Disk& disk, const std::string& from, const std::string& to, bool overwrite) {
  return disk.exists(from) && makeWay(disk, to, overwrite) && disk.rename(from, to);
}

void copy(Step& step) {
  const std::string source = fileName(step.choose);
  const std::string target = fileName(step.choose);
  const bool overwrite = step.choose.flag();
  step.call("fileCopy", source, target, overwrite);
  step.touchesFiles();
  step.same(copyFile(step.world.model.disk, source, target, overwrite),
            zn_lib::fileCopy(source, target, overwrite));
}

void rename(Step& step) {
  const std::string from = fileName(step.choose);
  const std::string to = fileName(step.choose);
  const bool overwrite = step.choose.flag();
  step.call("fileRename", from, to, overwrite);
  step.touchesFiles();
  step.same(renameFile(step.world.model.disk, from, to, overwrite),
            zn_lib::fileRename(from, to, overwrite));
}

void backUp(Step& step) {
  const std::string name = fileName(step.choose);
  step.call("createBackup", name);
  step.touchesFiles();
  // What follows a NUL is no part of the name.
  const std::string backup = std::string(name.c_str()) + "~";
  step.same(renameFile(step.world.model.disk, name, backup, true), zn_lib::createBackup(name));
}

std::string dumpHeader(int width) {
  std::string header;
  for (int i = 0; i < width; ++i) header += (i < 10 ? " " : "") + std::to_string(i) + " ";
  header += "  ";
  for (int i = 0; i < width; ++i) header += static_cast<char>('0' + i % 10);
  return header + "\n\n";
}

std::string dumpBody(const std::string& bytes, int width) {
  std::string body, characters;
  int column = 0;
  for (std::size_t i = 0; i <= bytes.size(); ++i) {
    const bool isEnd = i == bytes.size();
    const unsigned byte = isEnd ? 0xFFFFFFFFU : static_cast<unsigned char>(bytes[i]);
    char entry[16];
    std::snprintf(entry, sizeof entry, "%02x ", byte);
    body += entry;
    characters += byte >= ' ' && byte < 127 ? static_cast<char>(byte) : '.';
    if (column == width - 1) body += ' ';
    if (column >= width - 1) {
      body += " " + characters + "\n";
      characters.clear();
      column = 0;
    } else {
      ++column;
    }
  }
  return body + "\n";
}

void dump(Step& step) {
  Model& model = step.world.model;
  const std::string name = fileName(step.choose);
  const int width = step.choose.one({16, 1, 0, -1, 4, 101, 8, 3});
  step.call("hexDump", name, width);
  const NodePointer file = model.disk.openForReading(name);
  if (file != nullptr) {
    model.out += dumpHeader(width);
    display(model, dumpBody(file->bytes, width));
  }
  step.same(file != nullptr, zn_lib::hexDump(name, width));
}

// ---- What a host does by itself

void write(Step& step) {
  const std::string name = fileName(step.choose);
  const std::string bytes = contents(step.choose);
  const bool append = step.choose.flag();
  step.call(append ? "append" : "write", name, bytes);
  step.touchesFiles();
  const NodePointer file = step.world.model.disk.openForWriting(name, append);
  if (file != nullptr) file->bytes += bytes;
  std::ofstream out(name.c_str(), append ? std::ios_base::app : std::ios_base::out);
  step.same(file != nullptr, out.is_open());
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void remove(Step& step) {
  const std::string name = fileName(step.choose);
  step.call("remove", name);
  step.touchesFiles();
  step.same(step.world.model.disk.remove(name), std::remove(name.c_str()) == 0);
}

/// Keeps the directories from growing in a long history.
void tidyUp(Step& step) {
  step.call("tidy up");
  step.touchesFiles();
  Disk& disk = step.world.model.disk;
  disk.keepOnlyWorkingDirectory();
  std::filesystem::path directory = std::filesystem::current_path();
  std::filesystem::path kept;
  for (int above = disk.depth(); above >= 0; --above) {
    const std::filesystem::directory_iterator entries(directory);
    const std::vector<std::filesystem::path> names(begin(entries), end(entries));
    for (const auto& name : names) {
      if (name != kept) std::filesystem::remove_all(name);
    }
    kept = directory;
    directory = directory.parent_path();
  }
}

void setHome(Step& step) {
  Model& model = step.world.model;
  const unsigned choice = step.choose.below(5);
  model.hasHome = choice != 4;
  if (model.hasHome) {
    // A relative directory, since "~/a" must not leave the history's own.
    constexpr const char* homes[] = {"home", "sub", ".", "home/"};
    model.home = homes[choice];
    step.call("setenv", "HOME", model.home);
    setenv("HOME", model.home.c_str(), 1);
  } else {
    step.call("unsetenv", "HOME");
    unsetenv("HOME");
  }
}

// ---- Directories

void changeDirectory(Step& step) {
  Disk& disk = step.world.model.disk;
  std::string name =
      step.choose.one({"sub"s, ".."s, "home"s, "."s, "a"s, "missing"s, ""s, "d.d"s, "sub\0x"s});
  // The history stays below its own directory, and near it.
  if (name == ".." && disk.depth() < 2) name = ".";
  if (name != "." && disk.depth() > 3) name = "..";
  step.call("changeDir", name);
  step.same(disk.changeDirectory(name), zn_lib::changeDir(name));
}

void createDirectory(Step& step) {
  const std::string name =
      step.choose.flag() ? step.choose.one({"sub"s, "home"s, "d.d"s}) : fileName(step.choose);
  step.call("createDir", name);
  step.touchesFiles();
  step.same(step.world.model.disk.makeDirectory(name), zn_lib::createDir(name));
}

/// Lists a directory in any order. Returns false if there is none.
bool list(const Model& model, std::string dir, std::vector<std::string>& names) {
  dir = dir.empty() ? "." : expanded(model, dir);
  if (!dir.empty() && dir[dir.size() - 1] != '/') dir += '/';
  const NodePointer directory = model.disk.find(dir);
  if (directory == nullptr || !directory->isDirectory) return false;
  names = {".", ".."};
  for (const auto& entry : directory->entries) names.push_back(entry.first);
  return true;
}

/// Returns whether listings with this filter show the entry `name` of `dir`.
bool isListed(const Model& model, const std::string& dir, const std::string& name,
              const std::string& filter) {
  if (filter == "<dir>") {
    if (name == "." || name == "..") return false;
    const std::string prefix = dir.empty() ? "" : expanded(model, dir) + "/";
    return model.disk.find(prefix + name)->isDirectory;
  }
  static std::string compiledFrom;
  static reference::Engine compiled;
  if (compiledFrom != filter) {
    compiled = reference::engine(filter);
    compiledFrom = filter;
  }
  return filter.empty() || reference::contains(name, compiled);
}

bool isValid(const std::string& filter) {
  try {
    reference::engine(filter);
  } catch (const std::regex_error&) {
    return false;
  }
  return true;
}

/// Lists as `listDir` does, in any order.
bool listFiltered(Model& model, const std::string& dir, const std::string& filter, bool skipHidden,
                  std::vector<std::string>& entries) {
  if (!isValid(filter)) {
    errorMessage(model, "Invalid filter");
    return false;
  }
  std::vector<std::string> names;
  if (!list(model, dir, names)) {
    errorMessage(model, "Couldn't open the directory");
    return false;
  }
  for (const std::string& name : names) {
    if (skipHidden && name[0] == '.') continue;
    if (isListed(model, dir, name, filter)) entries.push_back(name);
  }
  return true;
}

void listDirectory(Step& step) {
  World& world = step.world;
  const std::string dir =
      step.choose.one({""s, "."s, "sub"s, "sub/"s, "~"s, ".."s, "a"s, "missing"s, "~/d.d"s, " "s});
  const std::string filter = step.choose.one({""s, "<dir>"s, "txt$"s, "a"s, "^[a-c]"s, "("s, "\\."s,
                                              "run(-\\d+)?\\.log"s, "<dir"s, "\xC3"s});
  const bool skipHidden = step.choose.flag();
  if (step.choose.flag()) {
    world.entries.clear();
    world.model.entries.clear();
  }
  step.call("listDir", dir, filter, skipHidden, world.model.entries);
  const bool expected = listFiltered(world.model, dir, filter, skipHidden, world.model.entries);
  step.same(expected, zn_lib::listDir(dir, filter, skipHidden, world.entries));
  // The order is the system's.
  std::sort(world.entries.begin(), world.entries.end());
  std::sort(world.model.entries.begin(), world.model.entries.end());
  step.same(world.model.entries, world.entries);
  if (world.entries.size() > 40) {
    world.entries.clear();
    world.model.entries.clear();
  }
}

bool copyAll(Model& model, std::string& source, std::string& target) {
  if (source.empty() || target.empty()) {
    errorMessage(model, "No target and/or destination provided");
    return false;
  }
  source = expanded(model, source);
  target = expanded(model, target);
  if (!model.disk.exists(source)) {
    errorMessage(model, source + " does not exist");
    return false;
  }
  if (!model.disk.exists(target) && !model.disk.makeDirectory(target)) {
    errorMessage(model, "Cannot create " + target);
    return false;
  }
  std::vector<std::string> names;
  listFiltered(model, source, "", true, names);
  for (const std::string& name : names) {
    copyFile(model.disk, source + "/" + name, target + "/" + name, false);
  }
  return true;
}

void copyDirectory(Step& step) {
  std::string source =
      step.choose.flag() ? step.choose.one({"sub"s, "."s, "home"s, "~"s}) : fileName(step.choose);
  std::string target =
      step.choose.flag() ? step.choose.one({"sub"s, "d.d"s, "home"s, "~"s}) : fileName(step.choose);
  step.call("copyDir", source, target);
  step.touchesFiles();
  std::string expectedSource = source;
  std::string expectedTarget = target;
  step.same(copyAll(step.world.model, expectedSource, expectedTarget),
            zn_lib::copyDir(source, target));
  step.same(expectedSource, source);
  step.same(expectedTarget, target);
}

/// Returns the name that `sequentialFile` derives if the listing has this order.
void number(Step& step) {
  Model& model = step.world.model;
  std::string name = fileName(step.choose);
  step.call("sequentialFile", name);
  const reference::Parts parts = reference::split(name);
  std::string expected = reference::withSlashes(name);
  std::string base = reference::beforeNumber(parts.name);
  if (base.empty()) base = parts.name;
  std::vector<std::string> listed;
  bool isOrdered = false;  // several names could give the base, so that the order decides
  if (listFiltered(model, parts.path, base, false, listed)) {
    std::string dir = parts.path.empty() ? "" : expanded(model, parts.path);
    std::string found;
    for (std::string entry : namesInSystemOrder(dir.c_str())) {
      if (std::find(listed.begin(), listed.end(), entry) == listed.end()) continue;
      const std::string stem = reference::stripExtension(entry);
      if (!reference::beforeNumber(stem).empty()) continue;
      isOrdered = isOrdered || (!found.empty() && found != stem);
      found = stem;
    }
    expected = parts.path + (found.empty() ? base : found) + "-1." + parts.extension;
  }
  zn_lib::sequentialFile(name);
  if (isOrdered) {
    step.sameHere(expected, name);
  } else {
    step.same(expected, name);
  }
}

}  // namespace

void addNames(Kinds& kinds) {
  kinds.push_back({"splitFileName stripExtension", splitName});
  kinds.push_back({"createFileName", joinName});
  kinds.push_back({"addEndSlash checkHomePath", expandName});
}

void addFiles(Kinds& kinds) {
  kinds.push_back({"fileCopy", copy, 20});
  kinds.push_back({"fileRename", rename, 16});
  kinds.push_back({"createBackup", backUp, 12});
  kinds.push_back({"hexDump", dump, 12});
  kinds.push_back({"", write, 30});
  kinds.push_back({"", remove, 12});
  kinds.push_back({"", tidyUp, 1});
  kinds.push_back({"", setHome, 3});
}

void addDirectories(Kinds& kinds) {
  kinds.push_back({"changeDir", changeDirectory, 10});
  kinds.push_back({"createDir", createDirectory, 12});
  kinds.push_back({"listDir", listDirectory, 16});
  kinds.push_back({"copyDir", copyDirectory, 8});
  kinds.push_back({"sequentialFile", number, 12});
}

}  // namespace histories
