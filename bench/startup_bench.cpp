/// The time from exec to exit of an empty program that loads the library, compared with one that
/// loads an empty library with the same dependencies.
#include <string>

#include "bench_process.h"
#include "bench_rows.h"

namespace {

void addStartRow(const std::string& implementation, const char* program) {
  bench::addClockRow("startup/" + implementation, std::string(program),
                     [](const std::string& p) { return bench::runProgram({p}).ru_minflt; });
}

}  // namespace

int main(int argc, char** argv) {
  addStartRow("zn_udf", ZN_UDF_EMPTY_WITH_LIBRARY);
  addStartRow("empty_library", ZN_UDF_EMPTY_WITH_EMPTY_LIBRARY);
  addStartRow("baseline:no_library", ZN_UDF_EMPTY_WITH_NOTHING);
  return bench::runRows(argc, argv);
}
