// Creates, lists and copies a directory, and derives a numbered file name.
#include <zn_dir.h>
#include <zn_seqfile.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

int main() {
  zn_lib::createDir("reports");
  zn_lib::createDir("reports/old");
  std::ofstream("reports/may.txt") << "31 days\n";
  std::ofstream("reports/may.csv") << "31\n";

  // The filter is a regular expression, searched anywhere in the name. Names are appended in the
  // system's order.
  std::vector<std::string> entries;
  zn_lib::listDir("reports", "\\.txt$", true, entries);
  zn_lib::listDir("reports", "<dir>", true, entries);
  for (const std::string& entry : entries) std::cout << entry << '\n';

  // copyDir copies the files. The subdirectory becomes an empty file.
  std::string source = "reports";
  std::string target = "copies";
  zn_lib::copyDir(source, target);
  entries.clear();
  zn_lib::listDir(target, "", true, entries);
  std::sort(entries.begin(), entries.end());
  for (const std::string& entry : entries) std::cout << target << '/' << entry << '\n';
  std::cout << "old is a file: " << std::boolalpha << std::ifstream("copies/old").is_open() << '\n';

  // The number is always 1, even if that file exists.
  std::string name = "reports/may.txt";
  zn_lib::sequentialFile(name);
  std::cout << name << '\n';
}
