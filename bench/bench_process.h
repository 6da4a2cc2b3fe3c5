/// Child processes for benchmarks.
#ifndef BENCH_PROCESS_H
#define BENCH_PROCESS_H

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace bench {

/// Waits for a child and returns the resources that it used. Throws unless its exit status is 0.
inline rusage waitFor(pid_t child) {
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error("a child process failed");
  }
  return usage;
}

/// Runs the program `command[0]` with the arguments that follow. The parent is suspended until the
/// child runs the program, as by vfork.
inline rusage runProgram(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t child = 0;
  if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
    throw std::runtime_error("cannot run " + command.front());
  }
  return waitFor(child);
}

/// Runs `operation` with the file `file` for its standard output.
template <class Operation>
void printTo(const std::string& file, Operation operation) {
  const int out = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(out, STDOUT_FILENO);
  close(out);
  operation();
  std::cout.flush();
  std::fflush(stdout);
}

/// Runs `operation` in a child whose standard output is `file`. All rows that print run this way,
/// because some of them replace the child by a program. A row whose instructions are counted runs
/// in this process, which prints nothing else.
template <class Operation>
void printInChild(const std::string& file, Operation operation) {
#ifdef ZN_UDF_COUNT_INSTRUCTIONS
  printTo(file, operation);
#else
  const pid_t child = fork();
  if (child == 0) {
    printTo(file, operation);
    _exit(0);
  }
  waitFor(child);
#endif
}

}  // namespace bench

#endif  // BENCH_PROCESS_H
