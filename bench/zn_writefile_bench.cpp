/// Writing lines to a file, compared with the streams of the standard library and with the system.
#include <fcntl.h>
#include <unistd.h>
#include <zn_writefile.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "bench_files.h"
#include "bench_rows.h"

namespace {

constexpr std::size_t kLineLength = 64;

bool writeByLibrary(const std::string& name, std::size_t lines, const std::string& line) {
  zn_lib::WriteFile file;
  std::string copy = name;
  file.setFileName(copy);
  if (!file.fileOpen()) return false;
  for (std::size_t i = 0; i < lines; ++i) file.file << line;
  file.fileClose();
  return !file.file.fail();
}

bool writeByOfstream(const std::string& name, std::size_t lines, const std::string& line) {
  std::ofstream file(name);
  for (std::size_t i = 0; i < lines; ++i) file << line;
  file.close();
  return !file.fail();
}

bool writeByFputs(const std::string& name, std::size_t lines, const std::string& line) {
  std::FILE* const file = std::fopen(name.c_str(), "w");
  for (std::size_t i = 0; i < lines; ++i) std::fputs(line.c_str(), file);
  return std::fclose(file) == 0;
}

/// Writes all bytes in one call.
bool writeAtOnce(const std::string& name, const std::string& bytes) {
  const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const ssize_t count = write(file, bytes.data(), bytes.size());
  return close(file) == 0 && count == static_cast<ssize_t>(bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryDirectory directory;
  const std::string name = directory.file("written");
  constexpr std::size_t size = std::size_t{8} << 20;
  const std::string line = bench::linesOf(kLineLength);
  const auto writing = [line](auto write) {
    return [=](const std::string& n) { return write(n, size / kLineLength, line); };
  };
  bench::addCountedClockRow("write_8MiB_of_lines/zn_udf", name, writing(writeByLibrary));
  bench::addClockRow("write_8MiB_of_lines/ofstream", name, writing(writeByOfstream));
  bench::addClockRow("write_8MiB_of_lines/fputs", name, writing(writeByFputs));
  bench::addClockRow(
      "write_8MiB_of_lines/baseline:write", name,
      [bytes = bench::linesOf(size)](const std::string& n) { return writeAtOnce(n, bytes); });

  constexpr int smallestFile = 1024;
  const auto linesIn = [](std::size_t bytes) { return bytes / kLineLength; };
  bench::addGrowth("write_lines", smallestFile, bench::kLargeText, linesIn,
                   [name, line](std::size_t lines) { return writeByLibrary(name, lines, line); });
  return bench::runRows(argc, argv);
}
