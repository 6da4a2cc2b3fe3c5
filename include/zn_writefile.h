/// \file
/// \ingroup family_readfile
/// Writes a named file.
///
///     zn_lib::WriteFile log;   // closed, and without a name
///     std::string name = "run.log";
///     log.setFileName(name);
///     log.append = true;
///     log.fileOpen()   ->  true
///     log.file << "started\n";
///     log.fileClose();
///     log.file.good()  ->  true   // false after a failure, such as a full disk
#ifndef ZN_WRITEFILE_H
#define ZN_WRITEFILE_H

#include <fstream>

#include "zn_common.h"
#include "zn_file.h"

namespace zn_lib {

/// Opens, writes and closes the file that `setFileName` names. Hosts write through `file`. Member
/// functions throw only when memory runs out, or if the host enabled exceptions on the stream.
class ZN_UDF_API WriteFile : public FileName {
 public:
  /// Creates a closed object without a name, with `append` off and `overwrite` on.
  WriteFile();

  /// Flushes and closes the file. The destructor never throws, even if the host enabled exceptions
  /// on `file`; call `fileClose` first to see a failure such as a full disk.
  ~WriteFile() override;

  /// Opens the file named by `getFileName()`. If `append` is set, writing continues at the end of
  /// the file; otherwise the file is emptied. Returns true if the stream is open afterwards.
  ///
  /// If `overwrite` is off and the file exists, `errorMessage` reports "File name exists" in
  /// verbose mode. This is only a warning: the file is emptied all the same. If `append` is set,
  /// there is no warning, and `overwrite` becomes true.
  ///
  /// If the object is already open, it keeps its file and sets the stream's fail state; the result
  /// is true.
  bool fileOpen();

  /// Flushes and closes the file if it is open. Sets the stream's fail state on failure.
  ///
  ///     log.fileClose(); log.file.fail()  ->  false
  void fileClose();

  /// The stream.
  std::ofstream file;

  /// Whether to write at the end of an existing file; false by default.
  bool append = false;

  /// Whether to empty an existing file without a warning; true by default.
  bool overwrite = true;
};

}  // namespace zn_lib

#endif  // ZN_WRITEFILE_H
