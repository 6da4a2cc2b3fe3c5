/// Starts programs in child processes.
#ifndef ZN_INTERNAL_CHILD_H
#define ZN_INTERNAL_CHILD_H

#include <sys/types.h>

namespace zn_lib::internal {

/// Runs `program` with one argument in a child process. Returns the number of the child, or -1 if
/// none can be created. The child ends with status 0 if the program cannot be started.
pid_t startProgram(const char* program, const char* argument);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_CHILD_H
