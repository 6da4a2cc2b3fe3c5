#include "zn_shell.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>

namespace zn_lib {
namespace {

/// Returns true if the system reaps the children of this process, so that their status is lost.
bool isChildStatusLost() {
  struct sigaction action;
  return sigaction(SIGCHLD, nullptr, &action) == 0 &&
         (action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0);
}

bool hasShell() { return std::system(nullptr) != 0; }

/// What the result of `system` tells about the shell.
enum class Shell { kStarted, kNotStarted, kUnknown };

/// Runs `command`. A shell that cannot be started has the exit status 127, as a command may have,
/// or a signal's status if there is too little memory. Only the C library leaves a reason in
/// `errno`, which may also be that the command is too long.
Shell run(const std::string& command, int& status) {
  constexpr int notStarted = 127;
  const int errorBefore = errno;
  errno = 0;
  status = std::system(command.c_str());
  const bool hasReason = errno != 0;
  if (!hasReason) errno = errorBefore;
  if (status == -1 || !WIFEXITED(status)) return Shell::kUnknown;
  if (WEXITSTATUS(status) != notStarted) return Shell::kStarted;
  return hasReason && errno != E2BIG ? Shell::kNotStarted : Shell::kUnknown;
}

bool fail(const char* reason) {
  std::cerr << reason << std::endl;
  return false;
}

}  // namespace

bool execShell(std::string command) {
  constexpr const char* noShell = "No command processor available";
  // Asking for the shell starts it once more, so it is done only if the command's status does not
  // answer the question. If no status will be available, it has to be done before the command runs.
  const bool asksFirst = isChildStatusLost();
  if (asksFirst && !hasShell()) return fail(noShell);
  int status = 0;
  const Shell shell = run(command, status);
  if (!asksFirst) {
    if (shell == Shell::kNotStarted) return fail(noShell);
    if (shell == Shell::kUnknown && !hasShell()) return fail(noShell);
  }
  if (status == -1) return fail("Problem executing command");
  return true;
}

}  // namespace zn_lib
