/// \file
/// \ingroup family_readfile
/// Reads a named file.
///
///     zn_lib::ReadFile notes;   // closed, and without a name
///     std::string name = "notes.txt";
///     notes.setFileName(name);
///     notes.fileOpen()  ->  true
///     std::string line;
///     std::getline(notes.file, line);
///     line              ->  "Hello"
#ifndef ZN_READFILE_H
#define ZN_READFILE_H

#include <fstream>

#include "zn_common.h"
#include "zn_file.h"

namespace zn_lib {

/// Opens, reads and closes the file that `setFileName` names. Hosts read through `file`. Member
/// functions throw only when memory runs out, or if the host enabled exceptions on the stream.
class ZN_UDF_API ReadFile : public FileName {
 public:
  /// Creates a closed object without a name, in text mode.
  ReadFile();

  /// Closes the file. The destructor never throws, even if the host enabled exceptions on `file`;
  /// call `fileClose` first to see a failure.
  ~ReadFile() override;

  /// Opens the file named by `getFileName()`, in binary mode if `binary` is set. Returns true if
  /// the stream is open afterwards. Prints nothing.
  ///
  /// If the object is already open, it keeps its file and sets the stream's fail state; the result
  /// is true.
  bool fileOpen();

  /// Closes the file if it is open. Sets the stream's fail state on failure.
  ///
  ///     notes.fileClose(); notes.file.is_open()  ->  false
  void fileClose();

  /// Prints the rest of the file to standard output line by line, whatever the verbose flag.
  /// Returns false if the file is not open.
  ///
  /// An extra empty line follows if the file is empty or ends in a newline. A line of more than
  /// 1023 bytes is cut there and ends the output; the result is still true. A line ends at its
  /// first NUL. Up to 256 KiB of a regular file are read before they are printed together.
  ///
  ///     notes.fileOpen();
  ///     notes.cat()  ->  true   // standard output:
  ///     // Hello
  ///     //
  bool cat();

  /// Whether to open in binary mode; false by default.
  bool binary = false;

  /// The stream.
  std::ifstream file;
};

}  // namespace zn_lib

#endif  // ZN_READFILE_H
