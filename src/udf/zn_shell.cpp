#include "zn_shell.h"

#include <sys/wait.h>

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

/// Returns true if `status`, a result of `system`, proves that the shell was started. If it cannot
/// be started, the status is 127 or, with too little memory, a signal's.
bool provesShell(int status) {
  constexpr int notStarted = 127;
  return status != -1 && WIFEXITED(status) && WEXITSTATUS(status) != notStarted;
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
  const int status = std::system(command.c_str());
  if (!asksFirst && !provesShell(status) && !hasShell()) return fail(noShell);
  return status != -1 || fail("Problem executing command");
}

}  // namespace zn_lib
