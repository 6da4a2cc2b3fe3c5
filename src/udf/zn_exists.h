/// Whether a name stands for something in the file system.
#ifndef ZN_EXISTS_H
#define ZN_EXISTS_H

#include <unistd.h>

#include <string>

namespace zn_lib {

inline bool exists(const std::string& name) { return access(name.c_str(), F_OK) == 0; }

}  // namespace zn_lib

#endif  // ZN_EXISTS_H
