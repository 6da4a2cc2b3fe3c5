/// The contents of the working directory as a value.
#ifndef DIRECTORY_CONTENTS_H
#define DIRECTORY_CONTENTS_H

#include <filesystem>
#include <map>
#include <string>

#include "files.h"

/// The bytes of each file by its name, and "/" for each directory.
using Contents = std::map<std::string, std::string>;

/// Returns what is in the working directory and below.
inline Contents contents() {
  Contents all;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
    all[entry.path().lexically_normal()] = entry.is_directory() ? "/" : readFile(entry.path());
  }
  return all;
}

/// Makes `all` the contents of the working directory.
inline void makeContents(const Contents& all) {
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    std::filesystem::remove_all(entry);
  }
  for (const auto& [name, bytes] : all) {
    if (bytes == "/") {
      std::filesystem::create_directory(name);
    } else {
      writeFile(name, bytes);
    }
  }
}

#endif  // DIRECTORY_CONTENTS_H
