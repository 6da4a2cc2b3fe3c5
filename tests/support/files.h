/// Files and directories for tests, fuzzers and benchmarks.
#ifndef FILES_H
#define FILES_H

#include <dirent.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

/// Replaces the contents of the file `name` by `bytes`. Throws if they cannot be written.
inline void writeFile(const std::string& name, const std::string& bytes) {
  std::ofstream out(name, std::ios_base::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) throw std::runtime_error("cannot write " + name);
}

/// Returns the contents of the file `name`, and an empty text if it cannot be read.
inline std::string readFile(const std::string& name) {
  std::ifstream in(name, std::ios_base::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// Returns whether `name` exists. A dangling link does not.
inline bool isThere(const std::string& name) { return access(name.c_str(), F_OK) == 0; }

/// Returns the names in `directory`, without "." and "..".
inline std::set<std::string> namesIn(const std::string& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename());
  }
  return names;
}

/// Returns the names in `directory` in the order of the system, "." and ".." among them. An empty
/// name stands for the working directory. The list is empty if the directory cannot be opened.
inline std::vector<std::string> namesInSystemOrder(const std::string& directory) {
  std::vector<std::string> names;
  DIR* const stream = opendir(directory.empty() ? "." : directory.c_str());
  if (stream == nullptr) return names;
  while (const dirent* const entry = readdir(stream)) names.push_back(entry->d_name);
  closedir(stream);
  return names;
}

/// A new directory, which the destructor removes with all that it contains.
class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : path_(parent / "zn_udf.XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary directory");
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

  /// Returns the full name of the file `name` in this directory.
  std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

#endif  // FILES_H
