// For builds that count coverage: what a process has counted is written as it ends by exit(), but many tests end their
// children by _exit(), as the library does. This one counts.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

extern "C" __attribute__((visibility("default"))) void _exit(int status) {
  // What the child holds of its parent's buffers must not be written twice.
  const int nowhere = open("/dev/null", O_WRONLY);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  std::exit(status);
}
