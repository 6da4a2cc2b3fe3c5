/// Expectations in a child process.
#ifndef CHILD_STATUS_H
#define CHILD_STATUS_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

/// Runs `test`, with its expectations, in a child. Its status is 0 when they held.
inline int statusOfChild(const std::function<void()>& test) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    test();
    std::fflush(stdout);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

#endif  // CHILD_STATUS_H
