/// Writes the files that the user names.
#ifndef ALMANAC_OUTPUT_H
#define ALMANAC_OUTPUT_H

#include <zn_writefile.h>

#include <ostream>
#include <string>

namespace almanac {

/// Controls the treatment of a file that exists. If neither is set, the user is asked.
struct Existing {
  bool backUp = false;  ///< move it to its backup name
  bool number = false;  ///< write to another name, and print that to standard output
};

/// Writes one file.
class OutputFile {
 public:
  /// Opens the file. Throws Error if it cannot be opened, or if the user wants to keep an existing
  /// file. Asks no question about devices and other special files.
  OutputFile(const std::string& name, const Existing& existing);

  std::ostream& stream() { return out_.file; }

  /// Closes the file. Throws Error if it could not be written completely.
  void close();

 private:
  zn_lib::WriteFile out_;
  std::string name_;
};

}  // namespace almanac

#endif  // ALMANAC_OUTPUT_H
