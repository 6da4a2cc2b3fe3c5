/// Real files for fuzzers, in memory where the system offers that.
#ifndef FUZZ_FILES_H
#define FUZZ_FILES_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace fuzz {

/// A directory in TMPDIR, else in memory, else in /tmp; removed with all that is in it when the
/// process exits. It stays behind a crash, so set TMPDIR to what is removed anyway.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    const char* const chosen = std::getenv("TMPDIR");
    const char* const memory = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    path_ = std::string(chosen == nullptr ? memory : chosen) + "/zn_udf_fuzz_XXXXXX";
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary directory");
  }

  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

  /// The full name of the file `name` in this directory.
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline void writeFile(const std::string& name, const std::string& bytes) {
  std::ofstream out(name, std::ios_base::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) throw std::runtime_error("cannot write " + name);
}

inline std::string readFile(const std::string& name) {
  std::ifstream in(name, std::ios_base::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace fuzz

#endif  // FUZZ_FILES_H
