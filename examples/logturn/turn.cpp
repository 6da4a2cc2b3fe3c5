#include "turn.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zn_dir.h>
#include <zn_file.h>
#include <zn_output.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>

#include "errors.h"

namespace logturn {
namespace {

namespace fs = std::filesystem;

constexpr int kOpenFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

/// The number of a complete copy whose log may not be empty yet.
constexpr int kPending = 0;

/// Owns a file descriptor and closes it.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (isOpen()) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

 private:
  const int number_;
};

/// Repeats a system call while signals interrupt it.
template <class Call>
auto repeated(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

/// Returns the number of the copy `name` of `log`, such as 1 for "app.log.1". Returns nothing if it
/// is not the name of a copy. A number has no leading zeros.
std::optional<int> numberOf(const std::string& name, const std::string& log) {
  constexpr std::size_t mostDigits = 9;
  const std::string start = log + ".";
  if (name.compare(0, start.size(), start) != 0) return {};
  const std::string digits = name.substr(start.size());
  if (digits.empty() || digits.size() > mostDigits) return {};
  if (digits.find_first_not_of("0123456789") != std::string::npos) return {};
  const int number = std::stoi(digits);
  if (std::to_string(number) != digits) return {};
  return number;
}

/// A file whose name is that of a copy.
struct Copy {
  bool isRegular;
  std::uintmax_t bytes;
};

/// One turn of a log in the working directory. Names are relative to it, since the library expands
/// a "~" in the names of directories. A dry run takes the same steps, but only in `copies_`.
class Turn {
 public:
  Turn(const std::string& log, const std::string& shown, const Request& request,
       std::vector<Row>& rows)
      : log_(log), shown_(shown), request_(request), rows_(rows), file_(openLog()) {}

  void run() {
    lock();
    findCopies();
    finishKilledTurn();
    if (size() > 0) {
      turnLog();
    } else {
      addRow("left empty", log_, 0);
    }
    removeOldCopies();
  }

 private:
  // ---- Names

  std::string copyName(int number) const { return log_ + "." + std::to_string(number); }
  std::string partialName() const { return log_ + ".logturn"; }

  /// Returns `name`, which is in the directory of the log, as the user would write it.
  std::string withDirectory(const std::string& name) const {
    return shown_.substr(0, shown_.size() - log_.size()) + name;
  }
  std::string quoted(const std::string& name) const { return quote(withDirectory(name)); }

  void addRow(const std::string& action, const std::string& name, std::uintmax_t bytes) {
    const std::string planned = request_.isDryRun ? "would be " : "";
    rows_.push_back({shown_, planned + action, withDirectory(name), bytes});
  }

  // ---- The log

  Error notRegular(const std::string& name) const {
    return Error(Problem::kNotRegular, {quoted(name)});
  }

  /// Opens the log. A special file is not even opened, since that may wake a process at the other
  /// end of a pipe.
  int openLog() const {
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(log_, ignored);
    if (fs::exists(status) && !fs::is_regular_file(status)) throw notRegular(log_);
    const std::string original = log_.substr(0, log_.rfind('.'));
    if (numberOf(log_, original) && fs::exists(original, ignored)) {
      throw Error(Problem::kIsCopy, {quoted(log_), quoted(original)});
    }
    const int log = open(log_.c_str(), O_RDWR | kOpenFlags);
    if (log < 0) throw Error(Problem::kCannotOpen, {quoted(log_), systemReason()});
    return log;
  }

  /// Another turn would see a copy that is not complete.
  void lock() const {
    if (request_.isDryRun) return;
    if (repeated([&] { return flock(file_.number(), LOCK_EX | LOCK_NB); }) != 0) {
      throw Error(Problem::kCannotLock, {quoted(log_), systemReason()});
    }
  }

  struct stat status() const {
    struct stat status;
    if (fstat(file_.number(), &status) != 0) {
      throw Error(Problem::kCannotRead, {quoted(log_), systemReason()});
    }
    return status;
  }
  std::uintmax_t size() const { return static_cast<std::uintmax_t>(status().st_size); }

  // ---- The copies

  Copy copyAt(const std::string& name) const {
    std::error_code failed;
    const bool isRegular = fs::is_regular_file(fs::symlink_status(name, failed));
    const std::uintmax_t bytes = isRegular && !failed ? fs::file_size(name, failed) : 0;
    if (failed) throw Error(Problem::kCannotRead, {quoted(name), failed.message()});
    return {isRegular, bytes};
  }

  /// Finds the copies. An empty filter selects all names; as a filter, the name of the log would be
  /// a regular expression.
  void findCopies() {
    std::vector<std::string> names;
    if (!zn_lib::listDir(".", "", false, names)) throw Error(Problem::kCannotList, {quoted(log_)});
    for (const std::string& name : names) {
      if (const std::optional<int> number = numberOf(name, log_)) copies_[*number] = copyAt(name);
      if (name == partialName()) partial_ = copyAt(name);
    }
    // Neither a directory nor a link may be where the turn puts a file.
    if (partial_ && !partial_->isRegular) throw notRegular(partialName());
    for (const int number : {kPending, lastCopy() + 1}) {
      const auto copy = copies_.find(number);
      if (copy != copies_.end() && !copy->second.isRegular) throw notRegular(copyName(number));
    }
  }

  /// Returns the highest number of the copies, which are consecutive from 1. Returns 0 if there is
  /// none.
  int lastCopy() const {
    int last = 0;
    for (auto copy = copies_.find(1); copy != copies_.end() && copy->second.isRegular;
         copy = copies_.find(last + 1)) {
      ++last;
    }
    return last;
  }

  /// Returns true if the log has the size and the time of the pending copy.
  bool isAsPendingCopy() const {
    std::error_code failed;
    const auto time = fs::last_write_time(log_, failed);
    const auto timeOfCopy = failed ? time : fs::last_write_time(copyName(kPending), failed);
    if (failed) throw Error(Problem::kCannotRead, {quoted(log_), failed.message()});
    return time == timeOfCopy && size() == copies_.at(kPending).bytes;
  }

  // ---- Changes to names

  void rename(const std::string& from, const std::string& to) const {
    if (request_.isDryRun) return;
    if (!zn_lib::fileRename(from, to, false)) {
      throw Error(Problem::kCannotRename, {quoted(from), quoted(to), systemReason()});
    }
    zn_lib::message("Renamed " + quoted(from) + " to " + quoted(to));
  }

  void renumber(int from, int to) {
    rename(copyName(from), copyName(to));
    copies_[to] = copies_.at(from);
    copies_.erase(from);
  }

  void remove(const std::string& action, const std::string& name, const Copy& copy) {
    if (!request_.isDryRun) {
      if (unlink(name.c_str()) != 0) {
        throw Error(Problem::kCannotRemove, {quoted(name), systemReason()});
      }
      zn_lib::message("Removed " + quoted(name));
    }
    addRow(action, name, copy.bytes);
  }

  /// Frees the number 1.
  void moveCopiesUp() {
    for (int number = lastCopy(); number > 0; --number) renumber(number, number + 1);
  }

  /// Gives the pending copy the number 1.
  void finishPendingCopy(const std::string& action) {
    renumber(kPending, 1);
    syncDirectory();
    addRow(action, copyName(1), copies_.at(1).bytes);
  }

  /// Waits until the data of a file are on the disk. Some file systems cannot do that.
  void sync(const Descriptor& file, const std::string& name) const {
    if (!file.isOpen() ||
        (repeated([&] { return fsync(file.number()); }) != 0 && errno != EINVAL)) {
      throw Error(Problem::kCannotSync, {quoted(name), systemReason()});
    }
  }

  void syncDirectory() const {
    if (request_.isDryRun) return;
    sync(Descriptor(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)), ".");
  }

  // ---- The steps of a turn

  void finishKilledTurn() {
    if (partial_) remove("discarded", partialName(), *partial_);
    if (copies_.count(kPending) == 0) return;
    if (isAsPendingCopy()) {
      remove("discarded", copyName(kPending), copies_.at(kPending));
      copies_.erase(kPending);
    } else {
      moveCopiesUp();
      finishPendingCopy("finished");
    }
  }

  void turnLog() {
    if (request_.isDryRun) {
      moveCopiesUp();
      copies_[kPending] = {true, size()};
    } else {
      copyAndEmpty();
    }
    finishPendingCopy("turned");
  }

  /// Makes the log the pending copy, frees the number 1, and empties the log.
  void copyAndEmpty() {
    std::string name = partialName();
    const Descriptor copy(
        open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | kOpenFlags, S_IRUSR | S_IWUSR));
    if (!copy.isOpen()) throw Error(Problem::kCannotWrite, {quoted(name), systemReason()});
    std::uintmax_t bytes = 0;
    try {
      bytes = appendTo(copy, name);
      describe(copy);
      sync(copy, name);
      moveCopiesUp();
      rename(name, copyName(kPending));
      name = copyName(kPending);
      syncDirectory();
      // The log is emptied immediately after a read has found its end.
      bytes += appendTo(copy, name);
    } catch (const Error&) {
      unlink(name.c_str());
      throw;
    }
    // If this fails, the next turn finds out whether the log was emptied.
    if (repeated([&] { return ftruncate(file_.number(), 0); }) != 0) {
      throw Error(Problem::kCannotEmpty, {quoted(log_), systemReason()});
    }
    zn_lib::message("Emptied " + quoted(log_));
    copies_[kPending] = {true, bytes};
    sync(copy, name);
    // Otherwise the log could be full again after a power cut, and its copy have a number.
    sync(file_, log_);
  }

  /// Appends what has not been read yet from the log to `copy`. Returns the number of bytes.
  std::uintmax_t appendTo(const Descriptor& copy, const std::string& name) const {
    std::vector<char> block(std::size_t{32} * 1024);
    std::uintmax_t bytes = 0;
    for (;;) {
      const ssize_t count =
          repeated([&] { return read(file_.number(), block.data(), block.size()); });
      if (count < 0) throw Error(Problem::kCannotRead, {quoted(log_), systemReason()});
      if (count == 0) return bytes;
      const auto size = static_cast<std::size_t>(count);
      for (std::size_t done = 0; done < size;) {
        const ssize_t written =
            repeated([&] { return write(copy.number(), block.data() + done, size - done); });
        if (written < 0) throw Error(Problem::kCannotWrite, {quoted(name), systemReason()});
        done += static_cast<std::size_t>(written);
      }
      bytes += size;
    }
  }

  /// Gives the copy the group, owner, permissions and time of the log, as far as the process may.
  void describe(const Descriptor& copy) const {
    constexpr mode_t withoutGroup = S_IRWXU | S_IRWXO;
    const struct stat status = this->status();
    constexpr uid_t sameOwner = static_cast<uid_t>(-1);
    constexpr gid_t sameGroup = static_cast<gid_t>(-1);
    mode_t mode = status.st_mode & (withoutGroup | S_IRWXG);
    // Another group must not get the permissions of the log's group.
    if (fchown(copy.number(), sameOwner, status.st_gid) != 0) mode &= withoutGroup;
    fchmod(copy.number(), mode);
    [[maybe_unused]] const bool hasOwner = fchown(copy.number(), status.st_uid, sameGroup) == 0;
    std::error_code failed;
    const auto time = fs::last_write_time(log_, failed);
    if (!failed) fs::last_write_time(partialName(), time, failed);
  }

  void removeOldCopies() {
    for (int number = lastCopy(); number > request_.keep; --number) {
      remove("removed", copyName(number), copies_.at(number));
      copies_.erase(number);
    }
  }

  const std::string log_;
  const std::string shown_;
  const Request request_;
  std::vector<Row>& rows_;
  const Descriptor file_;
  std::map<int, Copy> copies_;
  std::optional<Copy> partial_;
};

}  // namespace

void turn(const fs::path& path, const std::string& shown, const Request& request,
          std::vector<Row>& rows) {
  if (!zn_lib::changeDir(path.parent_path().string())) {
    throw Error(Problem::kCannotOpen, {quote(shown), systemReason()});
  }
  if (!path.has_filename()) throw Error(Problem::kNotRegular, {quote(shown)});
  Turn(path.filename().string(), shown, request, rows).run();
}

}  // namespace logturn
