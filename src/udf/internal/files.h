/// What several families ask of the file system.
#ifndef ZN_INTERNAL_FILES_H
#define ZN_INTERNAL_FILES_H

#include <dirent.h>
#include <unistd.h>

#include <memory>
#include <string>

namespace zn_lib::internal {

inline bool exists(const std::string& name) { return access(name.c_str(), F_OK) == 0; }

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

/// An open directory, closed with the object.
using Directory = std::unique_ptr<DIR, CloseDirectory>;

/// Returns null, with the reason in `errno`, if the directory cannot be opened.
inline Directory openDirectory(const std::string& name) { return Directory(opendir(name.c_str())); }

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_FILES_H
