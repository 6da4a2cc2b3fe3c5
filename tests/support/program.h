/// Programs as children of a test.
#ifndef PROGRAM_H
#define PROGRAM_H

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "child_status.h"
#include "redirected_descriptor.h"

/// Becomes the program `command.front()`, without its output.
[[noreturn]] inline void execQuietly(std::vector<std::string> command) {
  const RedirectedDescriptor out(STDOUT_FILENO, "/dev/null", O_WRONLY);
  const RedirectedDescriptor err(STDERR_FILENO, "/dev/null", O_WRONLY);
  // No leak can be searched for in a traced process.
  setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  execv(arguments.front(), arguments.data());
  _exit(kCannotPrepare);
}

/// Runs the program without its output. Returns its exit status.
inline int statusOfProgram(const std::vector<std::string>& command) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) execQuietly(command);
  return waitForExit(child);
}

#endif  // PROGRAM_H
