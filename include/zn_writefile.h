/// \file
/// A named file for writing.
///
///     zn_lib::WriteFile log;
///     std::string name = "run.log";
///     log.setFileName(name);
///     log.append = true;
///     if (log.fileOpen()) log.file << "started\n";
#ifndef ZN_WRITEFILE_H
#define ZN_WRITEFILE_H

#include <fstream>

#include "zn_common.h"
#include "zn_file.h"

namespace zn_lib {

/// Opens, writes and closes the file that `setFileName` names. Hosts write through `file`. Nothing
/// is thrown unless the host asks the stream for exceptions.
class ZN_UDF_API WriteFile : public FileName {
 public:
  /// No name, not appending, overwriting, closed.
  WriteFile();

  /// Flushes and closes the file. Never throws, also where `file` does: call `fileClose` first to
  /// learn of a disk that is full.
  ~WriteFile() override;

  /// Opens `file` on `getFileName()`, behind its text when `append` is set, else as an empty file.
  /// True when the stream is open afterwards.
  ///
  /// With `overwrite` off, an existing file is reported by `errorMessage("File name exists")`,
  /// which shows in verbose mode only. That is a warning and no protection: the file is emptied all
  /// the same. `append` sets `overwrite`. An object that is open already keeps its file: the
  /// stream's fail state is set, and the result is true.
  bool fileOpen();

  /// Flushes and closes the file if it is open; sets the stream's fail state when that fails.
  void fileClose();

  /// The stream.
  std::ofstream file;

  /// Whether to write behind the text of an existing file; false at first.
  bool append = false;

  /// Whether an existing file may be emptied without a warning; true at first.
  bool overwrite = true;
};

}  // namespace zn_lib

#endif  // ZN_WRITEFILE_H
