/// Running a program that does nothing, compared with the functions of the system.
#include <zn_process.h>

#include <string>

#include "bench_process.h"
#include "bench_rows.h"

namespace {

constexpr const char* kProgram = "/bin/true";
constexpr const char* kArgument = "argument";

int runByFork(const std::string& program) {
  const pid_t child = fork();
  if (child == 0) {
    execl(program.c_str(), program.c_str(), kArgument, static_cast<char*>(nullptr));
    _exit(1);
  }
  return bench::waitFor(child).ru_nsignals != 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string program = kProgram;
  bench::addClockRow("childProcess/zn_udf", program,
                     [](const std::string& p) { return zn_lib::childProcess(p, kArgument, true); });
  bench::addClockRow("childProcess/fork_exec", program, runByFork);
  bench::addClockRow("childProcess/baseline:posix_spawn", program, [](const std::string& p) {
    return bench::runProgram({p, kArgument}).ru_nsignals;
  });
  return bench::runRows(argc, argv);
}
