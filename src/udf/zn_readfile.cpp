#include "zn_readfile.h"

#include <array>
#include <iostream>

namespace zn_lib {

ReadFile::ReadFile() = default;

ReadFile::~ReadFile() {
  try {
    fileClose();
  } catch (...) {
    // The stream throws if the host enabled its exceptions. A destructor cannot report the failure.
  }
}

bool ReadFile::fileOpen() {
  file.open(getFileName(), binary ? std::ios_base::in | std::ios_base::binary : std::ios_base::in);
  return file.is_open();
}

void ReadFile::fileClose() {
  if (file.is_open()) file.close();
}

bool ReadFile::cat() {
  if (!file.is_open()) return false;
  std::array<char, 1024> line;
  while (file.good()) {
    file.getline(line.data(), line.size());
    std::cout << line.data() << "\n";
  }
  return true;
}

}  // namespace zn_lib
