/// Files that the user names to be written.
#ifndef ALMANAC_OUTPUT_H
#define ALMANAC_OUTPUT_H

#include <zn_writefile.h>

#include <ostream>
#include <string>

namespace almanac {

/// What becomes of a file that exists; the user is asked where neither is set.
struct Existing {
  bool backUp = false;  ///< it is moved to its backup name
  bool number = false;  ///< another name is taken, and printed to standard output
};

class OutputFile {
 public:
  /// Opens the file. Throws Error when it cannot be opened, and when the user wants an existing one
  /// kept. Devices and the like are written to without a question.
  OutputFile(const std::string& name, const Existing& existing);

  std::ostream& stream() { return out_.file; }

  /// Closes the file; throws Error when not all of it could be written.
  void close();

 private:
  zn_lib::WriteFile out_;
  std::string name_;
};

}  // namespace almanac

#endif  // ALMANAC_OUTPUT_H
