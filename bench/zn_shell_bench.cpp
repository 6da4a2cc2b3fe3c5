/// Running a shell command that does nothing, compared with the function of the C library.
#include <zn_shell.h>

#include <cstdlib>
#include <string>

#include "bench_process.h"
#include "bench_rows.h"

int main(int argc, char** argv) {
  const std::string command = "exit 0";
  bench::addClockRow("execShell/zn_udf", command,
                     [](const std::string& c) { return zn_lib::execShell(c); });
  bench::addClockRow("execShell/system", command,
                     [](const std::string& c) { return std::system(c.c_str()); });
  bench::addClockRow("execShell/baseline:posix_spawn", command, [](const std::string& c) {
    return bench::runProgram({"/bin/sh", "-c", c}).ru_nsignals;
  });
  return bench::runRows(argc, argv);
}
