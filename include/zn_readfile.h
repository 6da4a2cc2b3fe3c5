/// \file
/// A named file for reading.
///
///     zn_lib::ReadFile notes;
///     std::string name = "~/notes.txt";
///     notes.setFileName(name);
///     if (notes.fileOpen()) notes.cat();   // prints the file
#ifndef ZN_READFILE_H
#define ZN_READFILE_H

#include <fstream>

#include "zn_common.h"
#include "zn_file.h"

namespace zn_lib {

/// Opens, reads and closes the file that `setFileName` names. Hosts read through `file`. Nothing is
/// thrown unless the host asks the stream for exceptions.
class ZN_UDF_API ReadFile : public FileName {
 public:
  /// No name, text mode, closed.
  ReadFile();

  /// Closes the file. Never throws, also where `file` does: call `fileClose` first to learn of a
  /// failure.
  ~ReadFile() override;

  /// Opens `file` on `getFileName()`, in binary mode when `binary` is set. True when the stream is
  /// open afterwards. An object that is open already keeps its file: the stream's fail state is
  /// set, and the result is true. Prints nothing.
  bool fileOpen();

  /// Closes the file if it is open; sets the stream's fail state when that fails.
  void fileClose();

  /// Prints the rest of the file to standard output, line by line, whatever the verbose flag. False
  /// when the file is not open.
  ///
  /// A file that ends in a newline, and an empty one, print an empty line more. A line of more than
  /// 1023 bytes is cut there and ends the output, still with true. A line stops at its first NUL.
  bool cat();

  /// Whether to open in binary mode; false at first.
  bool binary = false;

  /// The stream.
  std::ifstream file;
};

}  // namespace zn_lib

#endif  // ZN_READFILE_H
