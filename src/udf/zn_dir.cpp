#include "zn_dir.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
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

/// A text that is searched in names, or at one or both of their ends.
struct FixedText {
  std::string text;
  bool isAtStart;
  bool isAtEnd;

  bool isIn(const std::string& name) const {
    if (!isAtStart && !isAtEnd) return findText(name, text) != std::string::npos;
    if (isAtStart && isAtEnd) return name == text;
    if (name.size() < text.size()) return false;
    return name.compare(isAtStart ? 0 : name.size() - text.size(), text.size(), text) == 0;
  }
};

/// NUL is taken for one too.
bool isOperator(char c) { return std::strchr("^$\\.*+?()[]{}|", c) != nullptr; }

/// The text that `pattern` searches for; nothing when that may be more than one.
std::optional<FixedText> fixedText(const std::string& pattern) {
  if (pattern.empty() || isPlainPattern(pattern)) return FixedText{pattern, false, false};
  // The engine decides which of the long ones it takes.
  if (pattern.size() > kLongestForEngine) return std::nullopt;

  FixedText fixed{"", pattern.front() == '^', pattern.back() == '$'};
  const std::size_t end = pattern.size() - (fixed.isAtEnd ? 1 : 0);
  for (std::size_t i = fixed.isAtStart ? 1 : 0; i < end; ++i) {
    const bool isEscape = pattern[i] == '\\' && i + 1 < end;
    if (isEscape) ++i;
    if (isOperator(pattern[i]) != isEscape || pattern[i] == '\0') return std::nullopt;
    fixed.text += pattern[i];
  }
  return fixed;
}

/// The longest text seen to be in all that the well-formed `pattern` finds; empty when none is.
std::string textInAllMatches(const std::string& pattern) {
  // What groups, alternatives and counts hold may be missing.
  if (pattern.find_first_of("(|{") != std::string::npos) return "";
  std::string longest;
  std::string run;
  const auto endRun = [&] {
    if (run.size() > longest.size()) longest = run;
    run.clear();
  };
  // Behind the last bracket, all that is not escaped stands for itself.
  for (std::size_t i = pattern.rfind(']') + 1; i < pattern.size(); ++i) {
    char c = pattern[i];
    const bool isEscape = c == '\\';
    if (isEscape) c = pattern[++i];
    if (isOperator(c) == isEscape) {
      run += c;
    } else if (isEscape && std::strchr("bBdDsSwW", c) == nullptr) {
      return "";
    } else {
      // A quantifier, of a quantified character too, may allow none.
      if (!isEscape && std::strchr("*+?", c) != nullptr && !run.empty()) run.pop_back();
      endRun();
    }
  }
  endRun();
  return longest;
}

/// Selects names by a pattern that is searched in them. A fixed text needs no engine, nor does a
/// pattern of single characters that is longer than any name, nor a name without the text that all
/// matches have.
class NameFilter {
 public:
  /// Throws std::regex_error when `pattern` is no regular expression.
  explicit NameFilter(const std::string& pattern) : fixed_(fixedText(pattern)) {
    if (fixed_ || isLongerThanNames(pattern)) return;
    engine_ = compilePattern(pattern);
    needed_ = textInAllMatches(pattern);
  }

  bool admits(const std::string& name) const {
    if (fixed_) return fixed_->isIn(name);
    return engine_ && findText(name, needed_) != std::string::npos && containsMatch(name, *engine_);
  }

 private:
  static bool isLongerThanNames(const std::string& pattern) {
    return pattern.size() > kLongestForEngine && isSingleCharacters(pattern);
  }

  const std::optional<FixedText> fixed_;
  std::optional<Pattern> engine_;
  std::string needed_;
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

/// The next entry of `directory`. Null at its end, and with `errno` set where it cannot be read on.
const dirent* nextEntry(const Directory& directory) {
  errno = 0;
  return readdir(directory.get());
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

  const int errorBefore = errno;
  std::vector<std::string> names;
  while (const dirent* const entry = nextEntry(directory)) {
    std::string name = entry->d_name;
    if (skipHidden && name.front() == '.') continue;
    if (directoriesOnly && (isDots(name) || !isDirectory(directory, *entry))) continue;
    if (selected.admits(name)) names.push_back(std::move(name));
  }
  if (errno != 0) {
    errorMessage("Couldn't open the directory");
    return false;
  }
  errno = errorBefore;
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
