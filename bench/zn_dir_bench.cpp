/// Listing a directory through a filter, against bare loops over its entries.
#include <dirent.h>
#include <zn_dir.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench_files.h"
#include "bench_rows.h"

#ifdef ZN_UDF_HAVE_RE2
#include <re2/re2.h>
#endif

namespace {

namespace fs = std::filesystem;
using bench::addRow;
using Names = std::vector<std::string>;

/// A directory of 10,000 empty files, gone with the object. Half of the names end in ".txt", the
/// others in ".csv".
class FullDirectory : public bench::TemporaryDirectory {
 public:
  FullDirectory() {
    constexpr int files = 10000;
    for (int i = 0; i < files; ++i) {
      std::ofstream(file("measurement_" + std::to_string(i) + (i % 2 == 0 ? ".txt" : ".csv")));
    }
  }
};

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
  addRow(name + "/zn_udf", directory, [filter](const std::string& d) {
    Names names;
    zn_lib::listDir(d, filter, false, names);
    return names;
  });
  addRow(name + "/readdir_all", directory,
         [](const std::string& d) { return namesByReaddir(d, all); });
#ifdef ZN_UDF_HAVE_RE2
  addRow(name + "/readdir_RE2", directory, [filter](const std::string& d) {
    const RE2 pattern(filter);
    return namesByReaddir(d, [&](const std::string& n) { return RE2::PartialMatch(n, pattern); });
  });
#endif
  addRow(name + "/readdir_std_regex", directory, [filter](const std::string& d) {
    const std::regex pattern(filter);
    return namesByReaddir(d, [&](const std::string& n) { return std::regex_search(n, pattern); });
  });
}

void addAllRows(const std::string& directory) {
  addListRows("listDir_all", directory, "");
  addRow("listDir_all/std_directory_iterator", directory, [](const std::string& d) {
    Names names;
    for (const fs::directory_entry& entry : fs::directory_iterator(d)) {
      names.push_back(entry.path().filename());
    }
    return names;
  });
}

void addPlainRows(const std::string& directory, const std::string& filter) {
  addListRows("listDir_plain", directory, filter);
  addRow("listDir_plain/readdir_find", directory, [filter](const std::string& d) {
    return namesByReaddir(
        d, [&](const std::string& n) { return n.find(filter) != std::string::npos; });
  });
}

}  // namespace

int main(int argc, char** argv) {
  const FullDirectory directory;
  addAllRows(directory.path());
  addPlainRows(directory.path(), "7");
  addListRows("listDir_end", directory.path(), "txt$");
  addListRows("listDir_escaped_end", directory.path(), "\\.txt$");
  addListRows("listDir_start", directory.path(), "^measurement_77");
  addListRows("listDir_class", directory.path(), "_[0-9]+7\\.txt$");
  return bench::runRows(argc, argv);
}
