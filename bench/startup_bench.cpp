/// Start-up: from exec to exit of a program that does nothing but to load the library, against one
/// that loads an empty library with the same dependencies.
#include <string>

#include "bench_process.h"
#include "bench_rows.h"

namespace {

void addStartRow(const std::string& who, const char* program) {
  bench::addClockRow("startup/" + who, std::string(program),
                     [](const std::string& p) { return bench::runProgram({p}).ru_minflt; });
}

}  // namespace

int main(int argc, char** argv) {
  addStartRow("zn_udf", ZN_UDF_EMPTY_WITH_LIBRARY);
  addStartRow("empty_library", ZN_UDF_EMPTY_WITH_EMPTY_LIBRARY);
  addStartRow("baseline:no_library", ZN_UDF_EMPTY_WITH_NOTHING);
  return bench::runRows(argc, argv);
}
