#include "child.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace zn_lib::internal {
namespace {

/// Replaces the child by the program. If that fails, the child ends without running exit handlers
/// or flushing buffers. These belong to the parent after vfork, and are copies of the parent's
/// after fork.
[[noreturn]] void runProgram(const char* program, const char* argument) {
  execl(program, program, argument, nullptr);
  _exit(0);
}

#ifdef __linux__

/// Resets every signal that has a handler to its default action, as the start of a program does.
void removeSignalHandlers() {
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action;
    const bool isHandled = sigaction(signal, nullptr, &action) == 0 &&
                           action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
    if (!isHandled) continue;
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
  }
}

#endif

}  // namespace

#ifdef __linux__

// The child borrows the memory of the parent, which is suspended until the program runs. A copy of
// the memory would take milliseconds for each GiB.
pid_t startProgram(const char* program, const char* argument) {
  // A handler that ran in the child would change the memory of the parent.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  const bool isBlocked = pthread_sigmask(SIG_SETMASK, &all, &before) == 0;
  const int errorBefore = errno;
  const pid_t child = vfork();
  if (child == 0) {
    removeSignalHandlers();
    if (isBlocked) pthread_sigmask(SIG_SETMASK, &before, nullptr);
    runProgram(program, argument);
  }
  if (child > 0) errno = errorBefore;  // which the child may have changed
  if (isBlocked) pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return child;
}

#else

pid_t startProgram(const char* program, const char* argument) {
  const pid_t child = fork();
  if (child == 0) runProgram(program, argument);
  return child;
}

#endif

}  // namespace zn_lib::internal
