/// What ends the program early: each error is one line on standard error and an exit status.
#ifndef ALMANAC_ERRORS_H
#define ALMANAC_ERRORS_H

#include <stdexcept>

namespace almanac {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

/// A value, a file or a place that cannot be used: `kExitFailure`.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A command line that cannot be understood: `kExitUsage`.
class UsageError : public Error {
 public:
  using Error::Error;
};

}  // namespace almanac

#endif  // ALMANAC_ERRORS_H
