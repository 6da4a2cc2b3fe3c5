#include "zn_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include "internal/child.h"
#include "zn_file.h"
#include "zn_output.h"

namespace zn_lib {

int childProcess(std::string program, const std::string& argument, bool wait) {
  checkHomePath(program);
  const pid_t child = internal::startProgram(program.c_str(), argument.c_str());
  if (child < 0) {
    errorMessage("Cannot create subprocess");
    _exit(1);
  }
  if (wait) {
    message("Waiting for child process #" + std::to_string(child) + " to complete...");
    ::wait(nullptr);
  }
  return 0;
}

}  // namespace zn_lib
