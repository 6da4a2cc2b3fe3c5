/// Numbering a name in a large directory, compared with loops that search the directory for a name.
#include <dirent.h>
#include <zn_seqfile.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "bench_files.h"
#include "bench_rows.h"

namespace {

namespace fs = std::filesystem;

/// Returns the last name in `directory` that contains `base`.
std::string lastByReaddir(const std::string& directory, const std::string& base) {
  std::string last;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory.c_str()), &closedir);
  while (const dirent* const entry = readdir(entries.get())) {
    if (std::strstr(entry->d_name, base.c_str()) != nullptr) last = entry->d_name;
  }
  return last;
}

std::string lastByIterator(const std::string& directory, const std::string& base) {
  std::string last;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    std::string name = entry.path().filename();
    if (name.find(base) != std::string::npos) last = std::move(name);
  }
  return last;
}

std::string numbered(std::string name) {
  zn_lib::sequentialFile(name);
  return name;
}

}  // namespace

int main(int argc, char** argv) {
  static bench::MadeOnce<bench::FullDirectory> directories;
  const std::string base = "measurement_77";
  const auto name = [base](std::size_t files) { return directories(files).file(base + ".csv"); };

  constexpr std::size_t small = 1000;  // eleven names begin with the base
  bench::addCountedClockRow("sequentialFile_of_1000/zn_udf", name(small), numbered);
  const std::string directory = directories(small).path();
  bench::addClockRow("sequentialFile_of_1000/std_directory_iterator", directory,
                     [base](const std::string& d) { return lastByIterator(d, base); });
  bench::addClockRow("sequentialFile_of_1000/baseline:readdir", directory,
                     [base](const std::string& d) { return lastByReaddir(d, base); });

  constexpr std::size_t large = 100000;
  const auto nameInLarge = [name] { return name(large); };
  const auto largeDirectory = [] { return directories(large).path(); };
  bench::addLateClockRow("sequentialFile_of_100000/zn_udf", nameInLarge, numbered);
  bench::addLateClockRow("sequentialFile_of_100000/std_directory_iterator", largeDirectory,
                         [base](const std::string& d) { return lastByIterator(d, base); });
  bench::addLateClockRow("sequentialFile_of_100000/baseline:readdir", largeDirectory,
                         [base](const std::string& d) { return lastByReaddir(d, base); });

  constexpr int fewest = 64;
  constexpr int most = 100000;
  bench::addGrowth("sequentialFile", fewest, most, name, numbered);
  return bench::runRows(argc, argv);
}
