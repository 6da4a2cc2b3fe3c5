#include "zn_dir.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <regex>
#include <string_view>
#include <utility>

#include "internal/files.h"
#include "internal/literals.h"
#include "internal/patterns.h"
#include "internal/text.h"
#include "zn_file.h"
#include "zn_output.h"

namespace zn_lib {
namespace {

constexpr mode_t kOwnerAndGroup = 0770;

/// Selects the names in which a pattern matches. The regular expression engine is not needed for a
/// fixed text, for a pattern of single characters that is longer than any name, or for a name
/// without the text that all matches contain.
class NameFilter {
 public:
  /// Throws std::regex_error if `pattern` is malformed.
  explicit NameFilter(const std::string& pattern) : fixed_(internal::fixedText(pattern)) {
    if (fixed_ || isLongerThanNames(pattern)) return;
    engine_ = internal::compilePattern(pattern);
    needed_ = internal::textInAllMatches(pattern);
  }

  bool admits(std::string_view name) const {
    if (fixed_) return fixed_->isIn(name);
    if (!engine_) return false;
    const std::string text(name);
    return internal::findText(text, needed_) != std::string::npos &&
           internal::containsMatch(text, *engine_);
  }

 private:
  static bool isLongerThanNames(const std::string& pattern) {
    return pattern.size() > internal::kLongestFileName && internal::isSingleCharacters(pattern);
  }

  const std::optional<internal::FixedText> fixed_;
  std::optional<internal::Pattern> engine_;
  std::string needed_;
};

std::string workingDirectory() {
  const std::unique_ptr<char, decltype(&std::free)> path(getcwd(nullptr, 0), &std::free);
  return path == nullptr ? "" : path.get();
}

bool isDots(std::string_view name) { return name == "." || name == ".."; }

bool isDirectory(const internal::Directory& parent, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status;
  return fstatat(dirfd(parent.get()), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(status.st_mode);
}

/// Returns the next entry of `directory`. Returns null with `errno` 0 at the end, and null with the
/// reason in `errno` if the read fails.
const dirent* nextEntry(const internal::Directory& directory) {
  errno = 0;
  return readdir(directory.get());
}

using Names = std::vector<std::string>;

/// Returns the selected names, or nothing if the directory cannot be opened or read to its end.
/// Throws std::regex_error if `filter` is malformed.
std::optional<Names> namesIn(std::string dir, const std::string& filter, bool skipHidden) {
  const bool directoriesOnly = filter == "<dir>";
  // The last branch is the cleanup after an exception.
  const NameFilter selected(directoriesOnly ? "" : filter);  // GCOVR_EXCL_BR_LINE
  if (dir.empty()) {
    dir = workingDirectory();
  } else {
    checkHomePath(dir);
  }
  addEndSlash(dir);
  const internal::Directory directory = internal::openDirectory(dir);
  if (directory == nullptr) return std::nullopt;

  const int errorBefore = errno;
  Names names;
  while (const dirent* const entry = nextEntry(directory)) {
    const std::string_view name = entry->d_name;
    if (skipHidden && name.front() == '.') continue;
    if (directoriesOnly && (isDots(name) || !isDirectory(directory, *entry))) continue;
    if (selected.admits(name)) names.emplace_back(name);
  }
  if (errno != 0) return std::nullopt;
  errno = errorBefore;
  return names;
}

}  // namespace

bool changeDir(const std::string& dir) { return chdir(dir.c_str()) == 0; }

bool createDir(const std::string& dir) { return mkdir(dir.c_str(), kOwnerAndGroup) == 0; }

bool listDir(std::string dir, const std::string& filter, bool skipHidden,
             std::vector<std::string>& entries) {
  std::optional<Names> names;
  try {
    names = namesIn(std::move(dir), filter, skipHidden);
  } catch (const std::regex_error&) {
    errorMessage("Invalid filter");
    return false;
  }
  if (!names) {
    errorMessage("Couldn't open the directory");
    return false;
  }
  if (entries.empty()) {
    entries = std::move(*names);  // needs no memory for a second list
  } else {
    entries.insert(entries.end(), std::make_move_iterator(names->begin()),
                   std::make_move_iterator(names->end()));
  }
  return true;
}

bool copyDir(std::string& source, std::string& target) {
  if (source.empty() || target.empty()) {
    errorMessage("No target and/or destination provided");
    return false;
  }
  checkHomePath(source);
  checkHomePath(target);
  if (!internal::exists(source)) {
    errorMessage(source + " does not exist");
    return false;
  }
  if (!internal::exists(target) && !createDir(target)) {
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
