#include "zn_dir.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <regex>

#include "zn_exists.h"
#include "zn_file.h"
#include "zn_find.h"
#include "zn_output.h"
#include "zn_pattern.h"

namespace zn_lib {
namespace {

constexpr mode_t kOwnerAndGroup = 0770;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

/// Selects names by a pattern that is searched in them. Plain characters need no engine, nor does a
/// pattern of single characters that is longer than any name.
class NameFilter {
 public:
  /// Throws std::regex_error when `pattern` is no regular expression.
  explicit NameFilter(const std::string& pattern)
      : pattern_(pattern), isPlain_(pattern.empty() || isPlainPattern(pattern)) {
    if (!isPlain_ && !isLongerThanNames()) engine_ = compilePattern(pattern);
  }

  bool admits(const std::string& name) const {
    if (isPlain_) return findText(name, pattern_) != std::string::npos;
    return engine_ && std::regex_search(name, *engine_);
  }

 private:
  bool isLongerThanNames() const {
    return pattern_.size() > kLongestForEngine && isSingleCharacters(pattern_);
  }

  const std::string pattern_;
  const bool isPlain_;
  std::optional<std::regex> engine_;
};

std::string workingDirectory() {
  const std::unique_ptr<char, decltype(&std::free)> path(getcwd(nullptr, 0), &std::free);
  return path == nullptr ? "" : path.get();
}

bool isDots(const std::string& name) { return name == "." || name == ".."; }

bool isDirectory(const Directory& parent, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status;
  return fstatat(dirfd(parent.get()), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

}  // namespace

bool changeDir(const std::string& dir) { return chdir(dir.c_str()) == 0; }

bool createDir(const std::string& dir) { return mkdir(dir.c_str(), kOwnerAndGroup) == 0; }

bool listDir(std::string dir, const std::string& filter, bool skipHidden,
             std::vector<std::string>& entries) try {
  const bool directoriesOnly = filter == "<dir>";
  const NameFilter selected(directoriesOnly ? "" : filter);

  if (dir.empty()) {
    dir = workingDirectory();
  } else {
    checkHomePath(dir);
  }
  addEndSlash(dir);
  const Directory directory(opendir(dir.c_str()));
  if (directory == nullptr) {
    errorMessage("Couldn't open the directory");
    return false;
  }

  std::vector<std::string> names;
  while (const dirent* const entry = readdir(directory.get())) {
    std::string name = entry->d_name;
    if (skipHidden && name.front() == '.') continue;
    if (directoriesOnly && (isDots(name) || !isDirectory(directory, *entry))) continue;
    if (selected.admits(name)) names.push_back(std::move(name));
  }
  entries.insert(entries.end(), std::make_move_iterator(names.begin()),
                 std::make_move_iterator(names.end()));
  return true;
} catch (const std::regex_error&) {
  errorMessage("Invalid filter");
  return false;
}

bool copyDir(std::string& source, std::string& target) {
  if (source.empty() || target.empty()) {
    errorMessage("No target and/or destination provided");
    return false;
  }
  checkHomePath(source);
  checkHomePath(target);
  if (!exists(source)) {
    errorMessage(source + " does not exist");
    return false;
  }
  if (!exists(target) && !createDir(target)) {
    errorMessage("Cannot create " + target);
    return false;
  }
  std::vector<std::string> names;
  listDir(source, "", true, names);
  for (const std::string& name : names) {
    fileCopy(source + "/" + name, target + "/" + name, false);
  }
  return true;
}

}  // namespace zn_lib
