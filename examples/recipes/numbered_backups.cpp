// Keeps the last three copies of a log as run.log.1, run.log.2 and run.log.3.
#include <zn_file.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>

namespace {

// Moves `name` to `name`.1, which first moves to `name`.2, and so on. The last copy is replaced.
// Returns false if a file cannot be moved.
bool moveToBackups(const std::string& name, int count) {
  for (int number = count; number > 0; --number) {
    const std::string older = name + '.' + std::to_string(number);
    const std::string newer = number == 1 ? name : name + '.' + std::to_string(number - 1);

    // fileRename also returns false if there is nothing to rename.
    std::error_code ignored;
    if (std::filesystem::exists(newer, ignored) && !zn_lib::fileRename(newer, older, true)) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main() {
  for (int run = 1; run <= 5; ++run) {
    if (!moveToBackups("run.log", 3)) {
      std::cerr << "Cannot move the logs\n";
      return 1;
    }
    std::ofstream log("run.log");
    log << "run " << run << '\n';
    log.close();
    if (log.fail()) {
      std::cerr << "Cannot write run.log\n";
      return 1;
    }
  }
  for (const char* const name : {"run.log", "run.log.1", "run.log.2", "run.log.3", "run.log.4"}) {
    std::ifstream file(name);
    std::string line;
    std::cout << name << ": " << (std::getline(file, line) ? line : "missing") << '\n';
  }
}
