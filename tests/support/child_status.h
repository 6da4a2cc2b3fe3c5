/// Child processes of tests.
#ifndef CHILD_STATUS_H
#define CHILD_STATUS_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>

constexpr int kNoSuchChild = -1;
constexpr int kSignalled = 1000;

/// The exit status by which a child says that it cannot prepare its test on this machine.
constexpr int kCannotPrepare = 77;

/// Waits for `child`. Returns its exit status, `kSignalled` plus the number of the signal that
/// ended it, or `kNoSuchChild`.
inline int waitForExit(pid_t child) {
  int status = 0;
  pid_t reaped;
  while ((reaped = waitpid(child, &status, 0)) < 0 && errno == EINTR) {
  }
  if (reaped < 0) return kNoSuchChild;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

/// Runs `test`, with its expectations, in a child. Returns 0 if they hold, otherwise what
/// `waitForExit` returns.
inline int statusOfChild(const std::function<void()>& test) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    test();
    std::fflush(stdout);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  return waitForExit(child);
}

#endif  // CHILD_STATUS_H
