/// Files for benchmarks.
#ifndef BENCH_FILES_H
#define BENCH_FILES_H

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <map>
#include <memory>
#include <string>

#include "files.h"

namespace bench {

/// A directory of empty files. Half of their names end in ".txt", the others in ".csv".
class FullDirectory : public TemporaryDirectory {
 public:
  explicit FullDirectory(std::size_t files) {
    for (std::size_t i = 0; i < files; ++i) std::ofstream(file(nameOf(i)));
  }

  static std::string nameOf(std::size_t i) {
    return "measurement_" + std::to_string(i) + (i % 2 == 0 ? ".txt" : ".csv");
  }
};

/// One object for each size. It is created on first use, so that rows that do not run cost nothing.
template <class Object>
class MadeOnce {
 public:
  const Object& operator()(std::size_t size) {
    std::unique_ptr<Object>& object = objects_[size];
    if (object == nullptr) object = std::make_unique<Object>(size);
    return *object;
  }

 private:
  std::map<std::size_t, std::unique_ptr<Object>> objects_;
};

/// Waits until the data of `file` are on the disk. Returns whether they are.
inline bool synchronise(const std::string& file) {
  const int descriptor = open(file.c_str(), O_RDONLY);
  const bool isOnDisk = fsync(descriptor) == 0;
  close(descriptor);
  return isOnDisk;
}

/// Returns `bytes` bytes in lines of 64 characters, including the line feed.
inline std::string linesOf(std::size_t bytes) {
  const std::string line = "a line of text, as long as the lines of a log file commonly are\n";
  std::string text;
  text.reserve(bytes + line.size());
  while (text.size() < bytes) text += line;
  text.resize(bytes);
  return text;
}

}  // namespace bench

#endif  // BENCH_FILES_H
