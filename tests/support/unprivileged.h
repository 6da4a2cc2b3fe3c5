/// Code that runs without root's privileges, since permissions and limits do not bind root.
#ifndef UNPRIVILEGED_H
#define UNPRIVILEGED_H

#include <sys/resource.h>
#include <unistd.h>

#include <functional>

#include "child_status.h"

constexpr uid_t kNobody = 65534;

/// Gives up root's privileges for good. Does nothing in a process without them.
inline bool dropPrivileges() { return geteuid() != 0 || setuid(kNobody) == 0; }

/// Prevents this process from creating others, for good.
inline bool forbidForks() {
  const rlimit none{0, 0};
  return dropPrivileges() && setrlimit(RLIMIT_NPROC, &none) == 0;
}

/// Runs `test` in a child without root's privileges. Returns its exit status as `waitForExit` does.
inline int withoutPrivileges(const std::function<int()>& test) {
  const pid_t child = fork();
  if (child == 0) _exit(dropPrivileges() ? test() : kCannotPrepare);
  return waitForExit(child);
}

#endif  // UNPRIVILEGED_H
