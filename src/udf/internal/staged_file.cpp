#include "staged_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

namespace zn_lib::internal {
namespace {

/// Ends the name of a file that a save writes beside another one.
constexpr std::string_view kStagedMark = ".zn_udf";

std::string backupOf(const std::string& file) { return file + "~"; }

std::string directoryOf(const std::string& file) {
  const std::size_t slash = file.rfind('/');
  return slash == std::string::npos ? "./" : file.substr(0, slash + 1);
}

/// A descriptor, closed with the object.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  void reset(int number = -1) {
    if (isOpen()) close(number_);
    number_ = number;
  }
  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

 private:
  int number_;
};

/// Whether both names lead to one file.
bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isSameFile(const std::string& a, const std::string& b) {
  struct stat first;
  struct stat second;
  return lstat(a.c_str(), &first) == 0 && lstat(b.c_str(), &second) == 0 &&
         isSameFile(first, second);
}

bool isOpenAs(const Descriptor& descriptor, const std::string& name) {
  struct stat opened;
  struct stat named;
  return fstat(descriptor.number(), &opened) == 0 && lstat(name.c_str(), &named) == 0 &&
         isSameFile(opened, named);
}

bool writeAll(const Descriptor& file, const std::string& text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    const ssize_t count = write(file.number(), at, static_cast<std::size_t>(end - at));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    at += count;
  }
  return true;
}

/// Whether a file system that cannot synchronise at all answers so.
bool isUnsupported(int error) {
  return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EOPNOTSUPP ||
         error == EROFS;
}

/// Waits until the data of `file` are on the disk. Returns false when they did not get there.
bool sync(const Descriptor& file) {
  int result;
  do {
#ifdef F_FULLFSYNC
    // On macOS, fsync by itself leaves the data in the cache of the drive.
    result = fcntl(file.number(), F_FULLFSYNC);
    if (result != 0) result = fsync(file.number());
#else
    result = fdatasync(file.number());
#endif
  } while (result != 0 && errno == EINTR);
  return result == 0 || isUnsupported(errno);
}

/// The mode to create a file with that gets the permissions of `old` once it has its group.
mode_t modeBefore(const struct stat& old) { return old.st_mode & (S_IRUSR | S_IWUSR); }

/// Gives `file` the owner and the group of `old`, as far as the process may, and its permissions.
void takeAfter(const struct stat& old, const Descriptor& file) {
  // The permissions come last: until then they would be those of another group, and a change of
  // the owner clears some.
  constexpr uid_t unchanged = static_cast<uid_t>(-1);
  [[maybe_unused]] const bool hasGroup = fchown(file.number(), old.st_uid, old.st_gid) == 0 ||
                                         fchown(file.number(), unchanged, old.st_gid) == 0;
  fchmod(file.number(), old.st_mode & 07777);
}

/// Whether files can be added to `directory` but not removed.
bool isAppendOnly(const std::string& directory) {
#if defined(STATX_ATTR_APPEND)
  struct statx status;
  return statx(AT_FDCWD, directory.c_str(), 0, 0, &status) == 0 &&
         (status.stx_attributes & STATX_ATTR_APPEND) != 0;
#elif defined(UF_APPEND) && defined(SF_APPEND)
  struct stat status;
  return stat(directory.c_str(), &status) == 0 && (status.st_flags & (UF_APPEND | SF_APPEND)) != 0;
#else
  static_cast<void>(directory);
  return false;
#endif
}

/// Whether a file can be put beside `file` and take its name, as far as that shows without trying.
/// Where it cannot, what is put there might have to stay. `old` is the file there is, if any.
bool isReplaceable(const std::string& file, const std::optional<struct stat>& old) {
  if (old && !S_ISREG(old->st_mode)) return false;
  const std::string directory = directoryOf(file);
  struct stat status;
  if (stat(directory.c_str(), &status) != 0 || isAppendOnly(directory)) return false;
  const bool isSticky = (status.st_mode & S_ISVTX) != 0;
  const uid_t user = geteuid();
  return !isSticky || !old || user == 0 || user == old->st_uid || user == status.st_uid;
}

/// Removes what a save was writing when it was killed: the staged file `name`, and the second name
/// of the old file. A save that is running holds a lock.
void removeLeftover(const std::string& name) {
  constexpr int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  // Some network file systems lock only what is open for writing.
  Descriptor leftover(open(name.c_str(), O_WRONLY | flags));
  if (!leftover.isOpen()) leftover.reset(open(name.c_str(), O_RDONLY | flags));
  if (!leftover.isOpen() || flock(leftover.number(), LOCK_EX | LOCK_NB) != 0) return;
  // The save may have come to its end in the meantime, and the file have the store's name.
  if (!isOpenAs(leftover, name)) return;
  unlink(backupOf(name).c_str());
  unlink(name.c_str());
}

void removeLeftovers(const std::string& file) {
  const std::string directory = directoryOf(file);
  const std::string start = file.substr(file.rfind('/') + 1) + ".";
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory.c_str()), &closedir);
  if (entries == nullptr) return;
  while (const dirent* const entry = readdir(entries.get())) {
    std::string_view name = entry->d_name;
    if (name.size() <= start.size() + kStagedMark.size()) continue;
    const std::string_view end = name.substr(name.size() - kStagedMark.size());
    if (name.substr(0, start.size()) != start || end != kStagedMark) continue;
    name.remove_prefix(start.size());
    name.remove_suffix(kStagedMark.size());
    if (name.find_first_not_of("0123456789-") != std::string_view::npos) continue;
    removeLeftover(directory + entry->d_name);
  }
}

/// A file beside another one, whose name it is to take; removed with the object unless it did.
class StagedFile {
 public:
  /// Creates it empty, with the permissions of `old`, the file that it is to replace.
  StagedFile(const std::string& file, const std::optional<struct stat>& old) {
    constexpr int tries = 100;
    constexpr mode_t newFile = 0666;
    for (int i = 0; i < tries && !isThere_; ++i) {
      name_ = file + "." + std::to_string(getpid()) + "-" + std::to_string(i);
      name_ += kStagedMark;
      descriptor_.reset(open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                             old ? modeBefore(*old) : newFile));
      if (!descriptor_.isOpen() && errno != EEXIST) return;
      isThere_ = descriptor_.isOpen() && lock();
    }
    if (isThere_ && old) takeAfter(*old, descriptor_);
  }

  ~StagedFile() {
    if (isThere_) unlink(name_.c_str());
  }

  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;

  bool isThere() const { return isThere_; }
  const std::string& name() const { return name_; }

  /// Writes `text`. Returns true when all of it is on the disk.
  bool write(const std::string& text) const {
    return writeAll(descriptor_, text) && sync(descriptor_);
  }

  /// Gives it the name `target`, in place of another file of that name.
  bool moveTo(const std::string& target) {
    if (std::rename(name_.c_str(), target.c_str()) != 0) return false;
    isThere_ = false;
    return true;
  }

 private:
  /// Tells other saves that this one is running. Returns false when one of them took the file for a
  /// leftover before.
  bool lock() const {
    const bool isLocked =
        flock(descriptor_.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    if (isLocked && isOpenAs(descriptor_, name_)) return true;
    unlink(name_.c_str());
    return false;
  }

  std::string name_;
  Descriptor descriptor_;
  bool isThere_ = false;
};

/// Gives `file` the name `backup`, in place of another file or of an empty directory. What has that
/// name stays where this fails. Tried twice, since an error of the disk may pass.
bool moveToBackup(const std::string& file, const std::string& backup) {
  if (std::rename(file.c_str(), backup.c_str()) == 0) return true;
  rmdir(backup.c_str());
  return std::rename(file.c_str(), backup.c_str()) == 0;
}

/// Makes the backup a second name of the file, so that the file does not go missing; moves the file
/// to its backup where the file system has no hard links. `free` is a free name.
void keepBackup(const std::string& file, const std::string& free) {
  const bool hasSecondName = link(file.c_str(), free.c_str()) == 0;
  // Another save has replaced the file at this moment, and kept a backup itself.
  if (!hasSecondName && errno == ENOENT) return;
  moveToBackup(hasSecondName ? free : file, backupOf(file));
  // Still there when the backup could not be made, and when it was the same file already.
  if (hasSecondName) unlink(free.c_str());
}

/// Whether `error` says that another file must not take a name. All else is an error of the disk,
/// to which the old text is not exposed.
bool isNameFixed(int error) {
  return error == EACCES || error == EBUSY || error == EPERM || error == EXDEV;
}

/// Writes the text beside the file and moves it into place. Gives the result of the save, or
/// nothing where that is not possible; the file is as it was then.
std::optional<bool> saveStaged(const std::string& file, const std::string& text, bool keepsBackup) {
  std::optional<struct stat> old(std::in_place);
  if (lstat(file.c_str(), &*old) != 0) {
    if (errno != ENOENT) return std::nullopt;
    old.reset();
  }
  if (!isReplaceable(file, old)) return std::nullopt;
  removeLeftovers(file);
  StagedFile staged(file, old);
  if (!staged.isThere()) return std::nullopt;
  // A text that is not whole replaces nothing. That is no failure to the caller, who learns of none
  // in writing.
  if (!staged.write(text)) return true;
  if (old && keepsBackup) keepBackup(file, backupOf(staged.name()));
  if (staged.moveTo(file)) return true;
  return isNameFixed(errno) ? std::nullopt : std::optional<bool>(false);
}

bool saveInPlace(const std::string& file, const std::string& text, bool keepsBackup) {
  struct stat old;
  const bool hasOld = stat(file.c_str(), &old) == 0 && S_ISREG(old.st_mode);
  const std::string backup = backupOf(file);
  const bool isMoved = keepsBackup && moveToBackup(file, backup);
  // A renaming leaves two names of one file as they are, and writing to one would empty the other.
  if (isMoved && isSameFile(file, backup) && unlink(file.c_str()) != 0) return false;

  const bool isReplaced = isMoved && hasOld;
  constexpr mode_t newFile = 0666;
  const Descriptor out(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC,
                            isReplaced ? modeBefore(old) : newFile));
  if (!out.isOpen()) return false;
  if (isReplaced) takeAfter(old, out);
  if (writeAll(out, text)) sync(out);
  return true;
}

}  // namespace

bool saveText(const std::string& file, const std::string& text, bool keepsBackup) {
  const std::optional<bool> staged = saveStaged(file, text, keepsBackup);
  return staged ? *staged : saveInPlace(file, text, keepsBackup);
}

}  // namespace zn_lib::internal
