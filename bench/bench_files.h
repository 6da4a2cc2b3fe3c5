/// Files for benchmarks.
#ifndef BENCH_FILES_H
#define BENCH_FILES_H

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace bench {

/// A directory that is gone, with all that is in it, when the object is.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = std::filesystem::temp_directory_path() / "zn_udf_bench.XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string path() const { return path_; }
  std::string file(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

}  // namespace bench

#endif  // BENCH_FILES_H
