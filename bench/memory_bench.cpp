/// Peak memory of each case in a new process, compared with a process that only holds the result.
///
/// The peak of a process includes its memory before it ran its program, which is that of this
/// program. This program therefore stays small. The row "memory_nothing" shows how small.
#include <string>

#include "bench_files.h"
#include "bench_process.h"
#include "bench_rows.h"
#include "bench_settings.h"
#include "memory_case.h"

namespace {

/// Adds a row with the peak of the case `name`, and with the size of its input unless that is 0.
void addPeakRow(const std::string& row, const std::string& name, const std::string& file,
                std::size_t inputSize) {
  constexpr double mebibyte = 1 << 20;
  const auto run = [=](benchmark::State& state) {
    rusage usage{};
    for (auto _ : state) usage = bench::runProgram({ZN_UDF_MEMORY_CASE, name, file});
    constexpr double kibibyte = 1024;  // the unit of ru_maxrss
    state.counters["peak_MiB"] = static_cast<double>(usage.ru_maxrss) * kibibyte / mebibyte;
    state.counters["input_MiB"] = static_cast<double>(inputSize) / mebibyte;
  };
  benchmark::RegisterBenchmark(row.c_str(), run)->UseRealTime()->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryDirectory directory;
  addPeakRow("memory_nothing/zn_udf", "nothing", "", 0);

  bench::writeSettings(directory.path(), memory_case::kStore, memory_case::kSettings, 1);
  const std::size_t storeSize = std::filesystem::file_size(
      bench::storeIn(directory.path(), memory_case::kStore)->getConfigurationFile());
  const auto addLoadRow = [&](const std::string& implementation) {
    addPeakRow("memory_load_100000/" + implementation, "load/" + implementation, directory.path(),
               storeSize);
  };
  addLoadRow("zn_udf");
  addLoadRow("baseline:result_alone");
  addLoadRow("expat_and_map");
#ifdef ZN_UDF_HAVE_PUGIXML
  addLoadRow("pugixml");
#endif
#ifdef ZN_UDF_HAVE_TINYXML2
  addLoadRow("tinyxml2");
#endif

  const auto addSplitRow = [&](const std::string& implementation) {
    addPeakRow("memory_split_16MiB/" + implementation, "split/" + implementation, "",
               memory_case::kTextSize);
  };
  addSplitRow("zn_udf");
  addSplitRow("baseline:result_alone");
#ifdef ZN_UDF_HAVE_ABSL
  addSplitRow("absl_StrSplit");
#endif

  const std::string dumped = directory.file("dumped");
  std::ofstream(dumped).close();
  std::filesystem::resize_file(dumped, memory_case::kDumpSize);
  for (const char* implementation : {"zn_udf", "baseline:file_alone"}) {
    addPeakRow("memory_hexDump_8MiB/" + std::string(implementation),
               "hexDump/" + std::string(implementation), dumped, memory_case::kDumpSize);
  }

  const bench::FullDirectory listed(memory_case::kFiles);
  for (const char* implementation : {"zn_udf", "baseline:result_alone", "readdir"}) {
    addPeakRow("memory_listDir_100000/" + std::string(implementation),
               "listDir/" + std::string(implementation), listed.path(), 0);
  }
  return bench::runRows(argc, argv);
}
