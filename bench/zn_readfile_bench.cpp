/// Printing a file to another one, compared with cat and with common loops. All of them run in a
/// child process, as cat does.
#include <fcntl.h>
#include <unistd.h>
#include <zn_readfile.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>

#include "bench_files.h"
#include "bench_process.h"
#include "bench_rows.h"

namespace {

struct Print {
  std::string source;
  std::string target;
};

void catByLibrary(const std::string& name) {
  zn_lib::ReadFile file;
  std::string copy = name;
  file.setFileName(copy);
  if (file.fileOpen()) file.cat();
}

void catByFgets(const std::string& name) {
  std::FILE* const in = std::fopen(name.c_str(), "r");
  std::array<char, 1024> line;
  while (std::fgets(line.data(), line.size(), in) != nullptr) std::fputs(line.data(), stdout);
  std::fclose(in);
}

void catByGetline(const std::string& name) {
  std::ifstream in(name);
  for (std::string line; std::getline(in, line);) std::cout << line << '\n';
}

void catByBlocks(const std::string& name) {
  static std::array<char, std::size_t{1} << 17> block;
  const int in = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  ssize_t count = read(in, block.data(), block.size());
  while (count > 0 && write(STDOUT_FILENO, block.data(), static_cast<std::size_t>(count)) > 0) {
    count = read(in, block.data(), block.size());
  }
  close(in);
}

template <class Cat>
auto printing(Cat cat) {
  return [cat](const Print& print) {
    bench::printInChild(print.target, [&] { cat(print.source); });
    return true;
  };
}

}  // namespace

int main(int argc, char** argv) {
  const TemporaryDirectory directory;
  const Print print = {directory.file("printed"), directory.file("out")};
  writeFile(print.source, bench::linesOf(std::size_t{8} << 20));
  bench::addCountedClockRow("cat_8MiB/zn_udf", print, printing(catByLibrary));
  bench::addClockRow("cat_8MiB/fgets", print, printing(catByFgets));
  bench::addClockRow("cat_8MiB/getline", print, printing(catByGetline));
  bench::addClockRow("cat_8MiB/baseline:read_write", print, printing(catByBlocks));
#ifdef ZN_UDF_CAT
  bench::addClockRow("cat_8MiB/cat", print, printing([](const std::string& name) {
                       execl(ZN_UDF_CAT, ZN_UDF_CAT, name.c_str(), static_cast<char*>(nullptr));
                     }));
#endif

  const Print growing = {directory.file("growing"), directory.file("growing_out")};
  const auto ofSize = [growing](std::size_t size) {
    writeFile(growing.source, bench::linesOf(size));
    return growing;
  };
  constexpr int smallestFile = 1024;
  bench::addGrowth("cat", smallestFile, bench::kLargeText, ofSize, printing(catByLibrary));
  return bench::runRows(argc, argv);
}
