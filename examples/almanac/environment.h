/// Reads the environment variables of the program.
#ifndef ALMANAC_ENVIRONMENT_H
#define ALMANAC_ENVIRONMENT_H

#include <string>

namespace almanac {

/// Returns the value of an environment variable, which is empty if the variable is not set.
std::string variable(const char* name);

/// Hides HOME from the library while it exists. The library would replace a "~" anywhere in a name
/// with HOME, but in an absolute name it is a character like any other.
class HiddenHome {
 public:
  HiddenHome();
  ~HiddenHome();
  HiddenHome(const HiddenHome&) = delete;
  HiddenHome& operator=(const HiddenHome&) = delete;

  /// Returns the value of HOME, which is empty if the variable is not set.
  const std::string& value() const { return value_; }

 private:
  const std::string value_;
};

}  // namespace almanac

#endif  // ALMANAC_ENVIRONMENT_H
