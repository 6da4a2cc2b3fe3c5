/// Files: names taken apart against std::filesystem::path, copies against std::filesystem, and the
/// hexadecimal dump against the command that is used for it.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_file.h>
#include <zn_output.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "bench_files.h"
#include "bench_rows.h"

namespace {

namespace fs = std::filesystem;

/// A row that is measured by the clock on the wall: the work is the kernel's or another process's.
template <class Operation>
void addClockRow(const std::string& name, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), operation)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
}

void writeMebibytes(const std::string& file, int count) {
  std::string letters;
  for (int c = 0; c < 256; ++c) letters += static_cast<char>(c);
  const std::string bytes = bench::mebibyteOf(letters);
  std::ofstream out(file, std::ios_base::binary);
  for (int i = 0; i < count; ++i) out << bytes;
}

// ---- Names

void addSplitRows(const std::string& row, const std::string& name) {
  bench::addRow(row + "/zn_udf", name, [](std::string& n) { return zn_lib::splitFileName(n); });
  bench::addRow(row + "/std_filesystem_path", name, [](const std::string& n) {
    const fs::path path(n);
    return zn_lib::name_of_file{path.parent_path(), path.stem(), path.extension()};
  });
}

// ---- Copies

void addCopyRows(const std::string& source, const std::string& target) {
  addClockRow("fileCopy_64MiB/zn_udf", [source, target](benchmark::State& state) {
    for (auto _ : state) zn_lib::fileCopy(source, target, true);
  });
  addClockRow("fileCopy_64MiB/std_copy_file", [source, target](benchmark::State& state) {
    for (auto _ : state) fs::copy_file(source, target, fs::copy_options::overwrite_existing);
  });
}

// ---- Dumps

/// Runs `operation` in a child whose standard output is `file`. Returns the child's greatest memory
/// use in MiB, the pages that it got from this process included.
template <class Operation>
double peakOfChild(const std::string& file, Operation operation) {
  const pid_t child = fork();
  if (child == 0) {
    const int out = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(out, STDOUT_FILENO);
    operation();
    std::cout.flush();
    std::fflush(stdout);
    _exit(0);
  }
  rusage usage{};
  wait4(child, nullptr, 0, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

template <class Operation>
void addDumpRow(const std::string& name, const std::string& out, Operation operation) {
  addClockRow(name, [out, operation](benchmark::State& state) {
    double peak = 0;
    for (auto _ : state) peak = peakOfChild(out, operation);
    state.counters["peak_MiB"] = peak;
  });
}

/// The rows of a dump without the library's header and end, each written as soon as it is full.
void dumpByHand(const std::string& file) {
  constexpr std::size_t width = 16;
  constexpr const char* digits = "0123456789abcdef";
  std::FILE* const in = std::fopen(file.c_str(), "rb");
  std::array<unsigned char, width> bytes;
  while (const std::size_t count = std::fread(bytes.data(), 1, width, in)) {
    std::array<char, width * 4 + 3> row;
    row.fill(' ');
    for (std::size_t i = 0; i < count; ++i) {
      row[3 * i] = digits[bytes[i] / 16];
      row[3 * i + 1] = digits[bytes[i] % 16];
      row[3 * width + 2 + i] =
          bytes[i] >= ' ' && bytes[i] <= '~' ? static_cast<char>(bytes[i]) : '.';
    }
    row.back() = '\n';
    std::fwrite(row.data(), 1, row.size(), stdout);
  }
  std::fclose(in);
}

void addDumpRows(const std::string& file, const std::string& out) {
  addDumpRow("hexDump_8MiB/zn_udf", out, [file] {
    zn_lib::setVerbose(true);
    zn_lib::hexDump(file, 16);
  });
  addDumpRow("hexDump_8MiB/hand_loop", out, [file] { dumpByHand(file); });
#ifdef ZN_UDF_XXD
  addDumpRow("hexDump_8MiB/xxd", out,
             [file] { execl(ZN_UDF_XXD, ZN_UDF_XXD, file.c_str(), static_cast<char*>(nullptr)); });
#endif
}

}  // namespace

int main(int argc, char** argv) {
  const bench::TemporaryDirectory directory;
  addSplitRows("splitFileName_21B", "/usr/local/lib/libz.a");
  addSplitRows(
      "splitFileName_84B",
      "/home/ada/documents/projects/almanac/measurements/2024/march/station_07_humidity.csv");
  writeMebibytes(directory.file("copied"), 64);
  addCopyRows(directory.file("copied"), directory.file("copy"));
  writeMebibytes(directory.file("dumped"), 8);
  addDumpRows(directory.file("dumped"), directory.file("dump"));
  return bench::runRows(argc, argv);
}
