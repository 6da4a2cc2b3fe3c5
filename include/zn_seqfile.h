/// \file
/// Numbered variants of file names.
///
///     std::string name = "report.txt";   // in a directory that holds report.txt
///     zn_lib::sequentialFile(name);
///     name                               ->  "report-1.txt"
#ifndef ZN_SEQFILE_H
#define ZN_SEQFILE_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Turns `name` into directory + base + "-1." + extension, with "/" for each backslash in it.
///
/// The number is always 1: numbers that are taken already are not looked for, so check whether the
/// file exists. The dot is written even without an extension: "notes" becomes "notes-1.". A number
/// that `name` has is dropped first: "report-7.txt" becomes "report-1.txt".
///
/// The base may come from another file. The directory (the working directory for a bare name; "~"
/// is expanded for the search) is listed with the base as a regular expression searched anywhere in
/// the names, and the last name found that has no number of its own gives the base: with "run.log"
/// and "rerun.log", listed in that order, "run.log" becomes "rerun-1.log". That order is the
/// system's. The base "<dir>" stands for the subdirectories, as it does for `listDir`.
///
/// A directory that cannot be listed leaves `name` as it is but for the "/"; so does a base that
/// `listDir` refuses as a filter because it is malformed or too long. `errorMessage` tells, in
/// verbose mode only. Nothing is thrown, except when memory runs out.
ZN_UDF_API void sequentialFile(std::string& name);

}  // namespace zn_lib

#endif  // ZN_SEQFILE_H
