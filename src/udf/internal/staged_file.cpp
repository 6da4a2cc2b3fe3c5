#include "staged_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string_view>

#include "descriptor.h"
#include "files.h"

namespace zn_lib::internal {
namespace {

/// The end of a staged file's name.
constexpr std::string_view kStagedMark = ".zn_udf";

std::string backupOf(const std::string& file) { return file + "~"; }

std::string directoryOf(const std::string& file) {
  const std::size_t slash = file.rfind('/');
  if (slash == std::string::npos) return "./";
  return file.substr(0, slash + 1);
}

using Status = std::optional<struct stat>;

/// Returns the status of the file `name`, without following a link, or nothing if it cannot be
/// read.
Status statusOf(const std::string& name) {
  struct stat status;
  return lstat(name.c_str(), &status) == 0 ? Status(status) : std::nullopt;
}

Status statusOf(const Descriptor& file) {
  struct stat status;
  return fstat(file.number(), &status) == 0 ? Status(status) : std::nullopt;
}

bool isSameFile(const Status& a, const Status& b) {
  return a && b && a->st_dev == b->st_dev && a->st_ino == b->st_ino;
}

/// Returns true if `error` means that the file system does not support an operation.
bool isUnsupported(int error) {
  // On Linux, the last two are the same number, so the last comparison is never true.
  return error == EINVAL || error == ENOSYS || error == ENOTSUP ||  // GCOVR_EXCL_BR_LINE
         error == EOPNOTSUPP;
}

/// Returns true if `error` means that no file can be created or renamed here, although the disk
/// works.
bool forbidsNewName(int error) {
  constexpr std::array refusals = {EACCES, EBUSY, ENAMETOOLONG, EPERM, EROFS, EXDEV};
  return isUnsupported(error) ||
         std::find(refusals.begin(), refusals.end(), error) != refusals.end();
}

/// Waits until the data of `file` are on the disk. Returns false if they could not be written.
bool sync(const Descriptor& file) {
  int result;
  do {
#ifdef F_FULLFSYNC
    // On macOS, fsync alone leaves the data in the cache of the drive.
    result = fcntl(file.number(), F_FULLFSYNC);
    if (result != 0) result = fsync(file.number());
#else
    result = fdatasync(file.number());
#endif
  } while (result != 0 && errno == EINTR);
  return result == 0 || errno == EROFS || isUnsupported(errno);
}

/// Returns the mode for creating a file that replaces `old`. It contains only the owner's
/// permissions. The others are set once the file has its group.
mode_t creationMode(const struct stat& old) { return old.st_mode & (S_IRUSR | S_IWUSR); }

/// Sets the group, permissions and owner of `file` to those of `old`, as far as the process is
/// allowed to.
void copyOwnership(const struct stat& old, const Descriptor& file) {
  constexpr uid_t sameOwner = static_cast<uid_t>(-1);
  constexpr gid_t sameGroup = static_cast<gid_t>(-1);
  [[maybe_unused]] const bool hasGroup = fchown(file.number(), sameOwner, old.st_gid) == 0;
  fchmod(file.number(), old.st_mode & 07777);
  // The owner is set last, since only the owner of a file may change its permissions.
  [[maybe_unused]] const bool hasOwner = fchown(file.number(), old.st_uid, sameGroup) == 0;
}

/// Returns true if files can be added to `directory` but not removed.
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

/// Returns false if the status of the file and its directory shows that a staged file cannot be
/// created, renamed to `file` or removed again. `old` is the status of the present file, if any.
bool isReplaceable(const std::string& file, const Status& old) {
  if (old && !S_ISREG(old->st_mode)) return false;
  const std::string directory = directoryOf(file);
  struct stat status;
  if (stat(directory.c_str(), &status) != 0 || isAppendOnly(directory)) return false;
  // The sticky bit does not restrict root, except in some containers.
  const bool isSticky = (status.st_mode & S_ISVTX) != 0;
  const uid_t user = geteuid();
  return !isSticky || !old || user == old->st_uid || user == status.st_uid;
}

/// Returns true if the process may write to `file`.
bool isWritable(const std::string& file) {
  return faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0;
}

/// Removes the files of a killed save: the staged file `name` and the hard link to the old file.
/// Keeps those of a running save, which holds a lock.
void removeLeftover(const std::string& name) {
  const Status status = statusOf(name);
  if (!status || !S_ISREG(status->st_mode)) return;
  constexpr int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  // Some network file systems lock only files that are open for writing.
  Descriptor leftover(open(name.c_str(), O_WRONLY | flags));
  if (!leftover.isOpen()) leftover.reset(open(name.c_str(), O_RDONLY | flags));
  if (!leftover.isOpen() || flock(leftover.number(), LOCK_EX | LOCK_NB) != 0) return;
  // If the save has ended in the meantime, the staged file has become the store's file and must
  // stay.
  if (!isSameFile(statusOf(leftover), statusOf(name))) return;
  unlink(backupOf(name).c_str());
  unlink(name.c_str());
}

void removeLeftovers(const std::string& file) {
  const std::string directory = directoryOf(file);
  const std::string start = file.substr(file.rfind('/') + 1) + ".";
  const Directory entries = openDirectory(directory);
  if (entries == nullptr) return;
  while (const dirent* const entry = readdir(entries.get())) {
    std::string_view name = entry->d_name;
    if (name.size() <= start.size() + kStagedMark.size()) continue;
    const std::string_view end = name.substr(name.size() - kStagedMark.size());
    if (name.substr(0, start.size()) != start || end != kStagedMark) continue;
    name.remove_prefix(start.size());
    name.remove_suffix(kStagedMark.size());
    if (name.find_first_not_of("0123456789") != std::string_view::npos) continue;
    removeLeftover(directory + entry->d_name);
  }
}

/// A new file in the directory of the file that it is to replace. The destructor removes it unless
/// it was moved.
class StagedFile {
 public:
  /// Creates an empty file with the permissions of `old`, the file that it is to replace. If that
  /// fails, `isThere` returns false and `errno` contains the reason.
  StagedFile(const std::string& file, const Status& old) {
    constexpr int tries = 100;
    for (int i = 0; i < tries && !isThere_; ++i) {
      name_ = unusedNameBeside(file);
      descriptor_.reset(open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                             old ? creationMode(*old) : kNewFile));
      if (!descriptor_.isOpen() && errno != EEXIST && errno != EINTR) return;
      isThere_ = descriptor_.isOpen() && lock();
    }
    if (isThere_ && old) copyOwnership(*old, descriptor_);
  }

  ~StagedFile() {
    if (isThere_) unlink(name_.c_str());
  }

  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;

  bool isThere() const { return isThere_; }
  const std::string& name() const { return name_; }

  /// Writes `text`. Returns true if all of it is on the disk.
  bool write(const std::string& text) const {
    return writeAll(descriptor_, text) && sync(descriptor_);
  }

  /// Renames the file to `target` and replaces any other file of that name.
  bool moveTo(const std::string& target) {
    if (std::rename(name_.c_str(), target.c_str()) != 0) return false;
    isThere_ = false;
    return true;
  }

 private:
  /// Returns a name that has never been used, since another save may be about to remove a file with
  /// an earlier name.
  static std::string unusedNameBeside(const std::string& file) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return (file + "." + std::to_string(now.count())).append(kStagedMark);
  }

  /// Locks the file, which marks it as that of a running save. Removes it and returns false if
  /// another save has already treated it as a leftover.
  bool lock() const {
    const bool isLocked =
        flock(descriptor_.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    if (isLocked && isSameFile(statusOf(descriptor_), statusOf(name_))) return true;
    unlink(name_.c_str());
    return false;
  }

  std::string name_;
  Descriptor descriptor_;
  bool isThere_ = false;
};

/// Renames `file` to `backup`, which may be an existing file or an empty directory. If that fails,
/// both files stay, unless `file` is a directory and `backup` is none.
bool moveToBackup(const std::string& file, const std::string& backup) {
  if (std::rename(file.c_str(), backup.c_str()) == 0) return true;
  // A file replaces a file, but a file and a directory do not replace each other. The second try
  // also overcomes a transient error.
  if (errno == ENOTDIR) {
    unlink(backup.c_str());
  } else {
    rmdir(backup.c_str());
  }
  return std::rename(file.c_str(), backup.c_str()) == 0;
}

/// Makes `backup` a hard link to the file, so that the file is never missing. The link is made as
/// `unused`, a name that is not in use, and then renamed. If no link can be made, moves the file
/// itself to its backup. Returns true if the file was moved.
bool keepBackup(const std::string& file, const std::string& backup, const std::string& unused) {
  if (link(file.c_str(), unused.c_str()) == 0) {
    moveToBackup(unused, backup);
    // `unused` remains if the renaming failed, or if `backup` was a link to the same file already.
    unlink(unused.c_str());
    return false;
  }
  // If the file is gone, another save has moved it and has made a backup itself.
  return errno != ENOENT && moveToBackup(file, backup);
}

/// Writes the text to a staged file and renames it to `file`. Returns the result of the save, or
/// nothing if the text has to be written in place.
std::optional<bool> saveStaged(const std::string& file, const std::string& text, bool keepsBackup) {
  const Status old = statusOf(file);
  if (!old && errno != ENOENT) return std::nullopt;
  if (!isReplaceable(file, old)) return std::nullopt;
  // Without a backup, a file that the process may not write must not be replaced either.
  if (old && !keepsBackup && !isWritable(file)) return std::nullopt;

  const auto failed = [](int error) {
    return forbidsNewName(error) ? std::nullopt : std::optional<bool>(false);
  };
  removeLeftovers(file);
  StagedFile staged(file, old);
  if (!staged.isThere()) return failed(errno);
  // An incomplete text replaces nothing. The result does not report failed writes.
  if (!staged.write(text)) return true;

  const std::string backup = backupOf(file);
  // The last branch is the cleanup after an exception.
  const bool isMoved = old && keepsBackup &&
                       keepBackup(file, backup, backupOf(staged.name()));  // GCOVR_EXCL_BR_LINE
  if (staged.moveTo(file)) return true;
  const int error = errno;
  if (isMoved) std::rename(backup.c_str(), file.c_str());
  return failed(error);
}

bool saveInPlace(const std::string& file, const std::string& text, bool keepsBackup) {
  struct stat old;
  const bool hasOld = stat(file.c_str(), &old) == 0 && S_ISREG(old.st_mode);
  const std::string backup = backupOf(file);
  const bool isMoved = keepsBackup && exists(file) && moveToBackup(file, backup);
  // If both names refer to one file, the renaming changed nothing, and writing would overwrite the
  // backup too.
  if (keepsBackup && isSameFile(statusOf(file), statusOf(backup)) && unlink(file.c_str()) != 0) {
    return false;
  }
  const Descriptor out(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC,
                            hasOld ? creationMode(old) : kNewFile));
  if (!out.isOpen()) {
    if (isMoved) std::rename(backup.c_str(), file.c_str());
    return false;
  }
  if (hasOld) copyOwnership(old, out);
  if (writeAll(out, text)) sync(out);
  return true;
}

}  // namespace

bool saveText(const std::string& file, const std::string& text, bool keepsBackup) {
  const std::optional<bool> staged = saveStaged(file, text, keepsBackup);
  return staged ? *staged : saveInPlace(file, text, keepsBackup);
}

}  // namespace zn_lib::internal
