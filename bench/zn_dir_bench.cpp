/// Lists of a directory with a filter, compared with plain loops over its entries, and copies of a
/// directory, compared with cp and std::filesystem.
#include <dirent.h>
#include <zn_dir.h>

#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "bench_files.h"
#include "bench_process.h"
#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_RE2
#include <re2/re2.h>
#endif

namespace {

namespace fs = std::filesystem;
using bench::addClockRow;
using Names = std::vector<std::string>;

template <class Selects>
Names namesByReaddir(const std::string& directory, Selects selects) {
  Names names;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory.c_str()), &closedir);
  while (const dirent* const entry = readdir(entries.get())) {
    std::string name = entry->d_name;
    if (selects(name)) names.push_back(std::move(name));
  }
  return names;
}

bool all(const std::string&) { return true; }

void addListRows(const std::string& name, const std::string& directory, const std::string& filter) {
  bench::addCountedClockRow(name + "/zn_udf", directory, [filter](const std::string& d) {
    Names names;
    zn_lib::listDir(d, filter, false, names);
    return names;
  });
  // The baseline lists all names and ignores the filter.
  addClockRow(name + "/baseline:readdir", directory,
              [](const std::string& d) { return namesByReaddir(d, all); });
#ifdef ZN_UDF_HAVE_RE2
  addClockRow(name + "/readdir_RE2", directory, [filter](const std::string& d) {
    const RE2 pattern(filter);
    return namesByReaddir(d, [&](const std::string& n) { return RE2::PartialMatch(n, pattern); });
  });
#endif
  addClockRow(name + "/readdir_std_regex", directory, [filter](const std::string& d) {
    const std::regex pattern(filter);
    return namesByReaddir(d, [&](const std::string& n) { return std::regex_search(n, pattern); });
  });
}

void addAllRows(const std::string& directory) {
  addListRows("listDir_all", directory, "");
  addClockRow("listDir_all/std_directory_iterator", directory, [](const std::string& d) {
    Names names;
    for (const fs::directory_entry& entry : fs::directory_iterator(d)) {
      names.push_back(entry.path().filename());
    }
    return names;
  });
}

void addPlainRows(const std::string& directory, const std::string& filter) {
  addListRows("listDir_plain", directory, filter);
  addClockRow("listDir_plain/readdir_find", directory, [filter](const std::string& d) {
    return namesByReaddir(
        d, [&](const std::string& n) { return n.find(filter) != std::string::npos; });
  });
}

/// Adds a row that copies the directory `source` to a new name beside it. No copy is removed before
/// the end of the program, because ext4 creates files slowly just after others were removed.
template <class Operation>
void addCopyRow(const std::string& implementation, const std::string& source, Operation operation) {
  const auto newName = [prefix = source + "_" + implementation] {
    static int names = 0;
    return prefix + std::to_string(++names);
  };
  constexpr int calls = 1;
  bench::addLateClockRow(
      "copyDir_10000/" + implementation, newName,
      [source, operation](const std::string& target) {
        operation(source, target);
        return true;
      },
      calls);
}

void addCopyRows(const std::string& directory) {
  addCopyRow("zn_udf", directory,
             [](std::string source, std::string target) { zn_lib::copyDir(source, target); });
  addCopyRow("std_copy", directory, [](const std::string& source, const std::string& target) {
    fs::copy(source, target);
  });
#ifdef ZN_UDF_CP
  addCopyRow("cp", directory, [](const std::string& source, const std::string& target) {
    bench::runProgram({ZN_UDF_CP, "-r", source, target});
  });
#endif
}

void addGrowthRows() {
  constexpr int fewest = 64;
  constexpr int most = 100000;
  static bench::MadeOnce<bench::FullDirectory> directories;
  const auto directory = [](std::size_t files) { return directories(files).path(); };
  const auto list = [](const std::string& filter) {
    return [filter](const std::string& d) {
      Names names;
      zn_lib::listDir(d, filter, false, names);
      return names;
    };
  };
  bench::addGrowth("listDir_plain", fewest, most, directory, list("7"));
  bench::addGrowth("listDir_subdirectories", fewest, most, directory, list("<dir>"));
}

}  // namespace

int main(int argc, char** argv) {
  const bench::FullDirectory directory(10000);
  addAllRows(directory.path());
  addPlainRows(directory.path(), "7");
  addListRows("listDir_end", directory.path(), "txt$");
  addListRows("listDir_escaped_end", directory.path(), "\\.txt$");
  addListRows("listDir_start", directory.path(), "^measurement_77");
  addListRows("listDir_class", directory.path(), "_[0-9]+7\\.txt$");

  const TemporaryDirectory copies;
  const std::string source = copies.file("source");
  fs::create_directory(source);
  const std::string text = bench::linesOf(1024);
  for (int i = 0; i < 10000; ++i) writeFile(source + "/file_" + std::to_string(i), text);
  addCopyRows(source);
  addGrowthRows();
  return bench::runRows(argc, argv);
}
