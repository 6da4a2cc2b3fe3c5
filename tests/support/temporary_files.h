/// Real files for tests, each test in a fresh directory of its own.
#ifndef TEMPORARY_FILES_H
#define TEMPORARY_FILES_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// The working directory of the test, empty at first and removed with all that is in it.
class InTemporaryDirectory : public testing::Test {
 protected:
  InTemporaryDirectory() : before_(std::filesystem::current_path()) {
    std::string pattern = std::filesystem::temp_directory_path() / "zn_udf_test.XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
    directory = pattern;
    std::filesystem::current_path(directory);
  }

  ~InTemporaryDirectory() override {
    std::filesystem::current_path(before_);
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
  }

  std::filesystem::path directory;

 private:
  std::filesystem::path before_;
};

inline void writeFile(const std::string& name, const std::string& bytes) {
  std::ofstream out(name, std::ios_base::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string readFile(const std::string& name) {
  std::ifstream in(name, std::ios_base::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline bool isThere(const std::string& name) { return access(name.c_str(), F_OK) == 0; }

/// The descriptor that the next file to be opened gets.
inline int nextDescriptor() {
  const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(descriptor);
  return descriptor;
}

/// HOME with another value, for the time of a scope.
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
