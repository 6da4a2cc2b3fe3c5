#include "zn_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include "zn_file.h"
#include "zn_output.h"

namespace zn_lib {

int childProcess(std::string program, const std::string& argument, bool wait) {
  checkHomePath(program);
  const pid_t child = fork();
  if (child < 0) {
    errorMessage("Cannot create subprocess");
    _exit(1);
  }
  if (child == 0) {
    execl(program.c_str(), program.c_str(), argument.c_str(), nullptr);
    // The child must neither run its copies of the host's exit handlers nor flush its copies of the
    // host's buffers.
    _exit(0);
  }
  if (wait) {
    message("Waiting for child process #" + std::to_string(child) + " to complete...");
    ::wait(nullptr);
  }
  return 0;
}

}  // namespace zn_lib
