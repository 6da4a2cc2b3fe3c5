#include "environment.h"

#include <cstdlib>

namespace almanac {

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

HiddenHome::HiddenHome() : value_(variable("HOME")) { unsetenv("HOME"); }

HiddenHome::~HiddenHome() {
  if (!value_.empty()) setenv("HOME", value_.c_str(), 1);
}

}  // namespace almanac
