#include "zn_platform.h"

#include <sys/utsname.h>

#include <iostream>

#include "internal/machine.h"

namespace zn_lib {
namespace {

bool readNames(utsname& system) { return uname(&system) >= 0; }

}  // namespace

bool platformInfo() {
  utsname system;
  if (!readNames(system)) return false;
  std::cout << "Platform information" << std::endl;
  std::cout << "------------------------------" << std::endl;
  std::cout << "Name of OS          : " << system.sysname << std::endl;
  std::cout << "Release level       : " << system.release << std::endl;
  std::cout << "Hardware type       : " << system.machine << std::endl;
  std::cout << "Name of network node: " << system.nodename << std::endl;
  return true;
}

std::string getOSName() {
  utsname system;
  return readNames(system) ? system.sysname : "unknown";
}

std::string getOSRelease() {
  utsname system;
  return readNames(system) ? system.release : "unknown";
}

bool IsBigEndian() { return false; }

short rotate2b(short value) { return value; }

unsigned int rotate4b(unsigned int value) { return value; }

}  // namespace zn_lib
