/// File system functions that several families share.
#ifndef ZN_INTERNAL_FILES_H
#define ZN_INTERNAL_FILES_H

#include <dirent.h>
#include <unistd.h>

#include <memory>
#include <string>

namespace zn_lib::internal {

inline bool exists(const std::string& name) { return access(name.c_str(), F_OK) == 0; }

/// Owns an open directory and closes it.
using Directory = std::unique_ptr<DIR, int (*)(DIR*)>;

/// Opens a directory. Returns null and leaves the reason in `errno` if that fails.
inline Directory openDirectory(const std::string& name) {
  // gcov does not say which branches of a copy that never runs are for exceptions only.
  return Directory(opendir(name.c_str()), closedir);  // GCOVR_EXCL_BR_LINE
}

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_FILES_H
