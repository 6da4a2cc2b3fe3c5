/// \file
/// \ingroup family_dir
/// Derives numbered file names.
///
///     std::string name = "report.txt";   // in a directory that contains report.txt
///     zn_lib::sequentialFile(name); name  ->  "report-1.txt"
#ifndef ZN_SEQFILE_H
#define ZN_SEQFILE_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Turns `name` into directory + base + "-1." + extension, with "/" for each backslash.
///
/// The number is always 1, even if that file exists, so check for the file. A "-" with any digits
/// after it is first dropped from the end of the base: "report-7.txt" and "report-.txt" become
/// "report-1.txt". The dot is written even if there is no extension: "notes" becomes "notes-1.".
///
/// The base may come from another file. The function lists the directory with the base as the
/// filter of `listDir`: a regular expression that is searched anywhere in the names. The stem of
/// the last listed name that has no number replaces the base. If the listing contains "run.log" and
/// then "rerun.log", "run.log" becomes "rerun-1.log". The order is the system's. If `name` has no
/// directory, the working directory is listed. A "~" in the directory is expanded for the listing
/// only. The base "<dir>" selects subdirectories, as it does for `listDir`.
///
/// If the directory cannot be listed, or if `listDir` rejects the base as malformed or too long,
/// only the backslashes in `name` change. `errorMessage` reports this, in verbose mode only.
///
/// Throws only when memory runs out.
ZN_UDF_API void sequentialFile(std::string& name);

}  // namespace zn_lib

#endif  // ZN_SEQFILE_H
