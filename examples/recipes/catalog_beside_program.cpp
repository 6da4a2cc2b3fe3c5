// Reads the error catalog that is installed in the directory of the program.
#include <zn_error.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <system_error>

namespace {

// Returns the name of a file in the directory of the program, wherever the program was called from.
std::string besideProgram(const char* argument0, const std::string& file) {
  std::error_code failed;
  // Where the system provides this link, it also finds a program that was called through PATH.
  std::filesystem::path program = std::filesystem::canonical("/proc/self/exe", failed);
  if (failed) program = std::filesystem::canonical(argument0, failed);
  return program.replace_filename(file).string();
}

}  // namespace

int main(int, char** arguments) {
  std::map<int, std::string, zn_lib::error_order> catalog;
  const std::string file = besideProgram(arguments[0], "catalog_beside_program.xml");

  // The result is true even for a missing file, so look for the message itself.
  zn_lib::readErrorFile(file, catalog);
  const auto message = catalog.find(2);
  if (message == catalog.end()) {
    std::cerr << "Error 2; its message is missing in " << file << '\n';
    return 1;
  }
  std::cout << "Error 2: " << message->second << '\n';
}
