/// Test fixtures with real files.
#ifndef TEMPORARY_FILES_H
#define TEMPORARY_FILES_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "files.h"

/// Returns a directory for temporary files in memory if there is one, and any other one otherwise.
inline std::filesystem::path directoryInMemory() {
  const char* const memory = "/dev/shm";
  return access(memory, W_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

/// Gives each test an empty working directory of its own.
class InTemporaryDirectory : public testing::Test {
 protected:
  explicit InTemporaryDirectory(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : before_(std::filesystem::current_path()), temporary_(parent) {
    std::filesystem::current_path(directory);
  }
  ~InTemporaryDirectory() override { std::filesystem::current_path(before_); }

 private:
  const std::filesystem::path before_;
  const TemporaryDirectory temporary_;

 protected:
  const std::filesystem::path directory = temporary_.path();
};

/// Returns the lowest free descriptor, which the next file to be opened gets.
inline int nextDescriptor() {
  const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(descriptor);
  return descriptor;
}

/// Sets HOME for the lifetime of the object. A null pointer unsets it.
class Home {
 public:
  explicit Home(const char* value) {
    const char* const before = std::getenv("HOME");
    had_ = before != nullptr;
    if (had_) before_ = before;
    if (value == nullptr) {
      unsetenv("HOME");
    } else {
      setenv("HOME", value, 1);
    }
  }
  ~Home() {
    if (had_) {
      setenv("HOME", before_.c_str(), 1);
    } else {
      unsetenv("HOME");
    }
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

 private:
  bool had_;
  std::string before_;
};

#endif  // TEMPORARY_FILES_H
