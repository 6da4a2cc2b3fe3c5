// For builds that measure coverage. A process writes its counters in exit(), but many tests end
// their children by _exit(), as the library does. This _exit() writes the counters, too. So does
// this abort(), but only those of the test program itself.
#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

/// Writes the counters of the program, but not those of its shared libraries. <gcov.h> declares it
/// for C only.
extern "C" void __gcov_dump();

namespace {

/// The process that owns this memory.
pid_t owner = getpid();

// vfork() does not call this: its child borrows the memory of its parent.
[[maybe_unused]] const int isRegistered =
    pthread_atfork(nullptr, nullptr, [] { owner = getpid(); });

}  // namespace

extern "C" __attribute__((visibility("default"))) void _exit(int status) {
  // The parent has the counters of a child that borrows its memory.
  if (getpid() != owner) syscall(SYS_exit_group, status);
  // A terminal whose last descriptor is closed would hang up before the counters are written.
  dup(STDOUT_FILENO);
  // The buffered output that a child has inherited must not be written twice.
  const int nowhere = open("/dev/null", O_WRONLY);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  rlimit size;
  getrlimit(RLIMIT_FSIZE, &size);
  size.rlim_cur = size.rlim_max;
  setrlimit(RLIMIT_FSIZE, &size);
  std::exit(status);
}

extern "C" __attribute__((visibility("default"))) void abort() noexcept {
  __gcov_dump();
  std::signal(SIGABRT, SIG_DFL);
  raise(SIGABRT);
  syscall(SYS_exit_group, EXIT_FAILURE);
  __builtin_unreachable();
}
