/// Runs a fuzzer without libFuzzer, once on each file: `NAME_replay [--answers] FILE|DIRECTORY...`
/// A failing check aborts. With --answers, the program prints what the checks compared.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "files.h"
#include "fuzz_answers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Stands still, so that the dates in saved settings are the same in every run. The library calls
/// this function, too.
extern "C" std::time_t time(std::time_t* result) noexcept {
  constexpr std::time_t now = 1767225600;  // 1 January 2026
  if (result != nullptr) *result = now;
  return now;
}

namespace {

namespace fs = std::filesystem;

/// Returns the files, and those in the directories, in the order of their names. Throws if one is
/// missing.
std::vector<fs::path> filesIn(const std::vector<fs::path>& paths) {
  std::vector<fs::path> files;
  for (const fs::path& path : paths) {
    if (!fs::is_directory(path)) {
      files.push_back(fs::canonical(path));
      continue;
    }
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

void run(const fs::path& file) {
  const std::string bytes = readFile(file);
  if (fuzz::answers.areEnabled()) {
    const std::string corpus = file.parent_path().filename();
    fuzz::answers.print("file", corpus + "/" + file.filename().string());
  }
  const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(data.data(), data.size());
}

}  // namespace

int main(int argc, char* argv[]) {
  std::vector<fs::path> paths;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--answers") == 0) {
      fuzz::answers.enable();
    } else {
      paths.emplace_back(argv[i]);
    }
  }
  setenv("TZ", "UTC", 1);
  const std::vector<fs::path> files = filesIn(paths);
  if (files.empty()) {
    std::fprintf(stderr, "usage: %s [--answers] FILE|DIRECTORY...\n", argv[0]);
    return 2;
  }
  for (const fs::path& file : files) run(file);
  std::printf("%zu files\n", files.size());
  return 0;
}
