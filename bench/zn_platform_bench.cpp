/// The name of the operating system, compared with the call to the system.
#include <sys/utsname.h>
#include <zn_platform.h>

#include <string>

#include "bench_rows.h"

int main(int argc, char** argv) {
  const std::string none = "unknown";
  bench::addRow("getOSName/zn_udf", none, [](const std::string&) { return zn_lib::getOSName(); });
  bench::addRow("getOSName/baseline:uname", none, [](const std::string& unknown) {
    utsname names{};
    return uname(&names) == 0 ? std::string(names.sysname) : unknown;
  });
  return bench::runRows(argc, argv);
}
