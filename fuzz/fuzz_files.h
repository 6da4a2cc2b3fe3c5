/// Files of fuzzers, in memory where the system offers that.
#ifndef FUZZ_FILES_H
#define FUZZ_FILES_H

#include <unistd.h>

#include <cstdlib>
#include <string>

#include "files.h"
#include "fuzz_answers.h"

namespace fuzz {

/// A directory in TMPDIR, else in memory, else in /tmp. It is removed when the process exits, but
/// not when it crashes: set TMPDIR to a directory that is removed in any case.
class TemporaryDirectory : public ::TemporaryDirectory {
 public:
  TemporaryDirectory() : ::TemporaryDirectory(parent()) { answers.hide(path()); }

 private:
  static std::string parent() {
    const char* const chosen = std::getenv("TMPDIR");
    if (chosen != nullptr) return chosen;
    return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  }
};

}  // namespace fuzz

#endif  // FUZZ_FILES_H
