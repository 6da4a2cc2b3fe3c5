#include "zn_shell.h"

#include <cstdlib>
#include <iostream>

namespace zn_lib {

bool execShell(std::string command) {
  if (std::system(nullptr) == 0) {
    std::cerr << "No command processor available" << std::endl;
    return false;
  }
  if (std::system(command.c_str()) == -1) {
    std::cerr << "Problem executing command" << std::endl;
    return false;
  }
  return true;
}

}  // namespace zn_lib
