/// \file
/// \ingroup family_dir
/// Creates, lists and copies directories, and changes the working directory.
///
///     std::vector<std::string> entries;
///     zn_lib::listDir("src", "\\.cpp$", true, entries)  ->  true
///     entries                                           ->  {"main.cpp"}   // ends in ".cpp"
///     zn_lib::listDir("", "<dir>", true, entries)       ->  true
///     entries                                           ->  {"main.cpp", "src"}   // appended
///
/// The return value reports a failure, but `copyDir` does not report failures of single files.
/// Listing and copying also report a failure through `errorMessage`, which prints in verbose mode
/// only. Functions throw only when memory runs out.
#ifndef ZN_DIR_H
#define ZN_DIR_H

#include <string>
#include <vector>

#include "zn_common.h"

namespace zn_lib {

/// Changes the working directory of the whole process. Returns true on success. "~" is not
/// expanded.
///
///     changeDir("src")  ->  true
///     changeDir("..")   ->  true
ZN_UDF_API bool changeDir(const std::string& dir);

/// Creates a directory with the permissions 0770, less the umask. Returns true on success, and
/// false if the directory exists. Creates no parents and does not expand "~".
///
///     createDir("logs")      ->  true
///     createDir("logs")      ->  false   // it exists
///     createDir("new/logs")  ->  false   // it would need a parent
ZN_UDF_API bool createDir(const std::string& dir);

/// Appends the names of the entries of `dir` to `entries`, without the directory and in the
/// system's order. Names already in `entries` stay. An empty `dir` is the working directory. A "~"
/// in `dir` is expanded; to list a directory whose name contains one, call `changeDir` and pass an
/// empty `dir`.
///
/// `filter` is an ECMAScript regular expression, searched anywhere in the name: "txt$" selects
/// names that end in "txt", and in "a.b" the dot stands for any character. An empty filter selects
/// all names. The filter `"<dir>"` selects subdirectories; it excludes ".", ".." and links to
/// directories. `skipHidden` leaves out names that begin with a dot, including "." and "..".
///
/// Returns false and leaves `entries` unchanged if the directory cannot be opened or read to its
/// end; the message is "Couldn't open the directory".
///
/// Returns false and leaves `entries` unchanged if the filter is malformed or too long; the message
/// is "Invalid filter". A filter may have up to 10,000 bytes. A filter of plain characters and
/// dots, or a single set, "[...]", with no other "]", may be longer. The filter is checked first,
/// and an empty filter is always valid.
///
/// A filter with repetitions runs on std::regex, which may exhaust the stack on very long names.
/// Only file systems that allow names of thousands of bytes are affected.
ZN_UDF_API bool listDir(std::string dir, const std::string& filter, bool skipHidden,
                        std::vector<std::string>& entries);

/// Copies the files of `source` whose names do not begin with a dot into `target`. Creates `target`
/// if it is missing. "~" is expanded in both names, in the caller's strings too.
///
/// Files that exist in `target` are kept. Subdirectories are not entered: each becomes an empty
/// file.
///
/// Returns true once the copying was attempted, even if single files could not be copied. Returns
/// false, with a message, if a name is empty, `source` does not exist, or `target` cannot be
/// created. If `source` exists but cannot be listed, such as a plain file, the message is "Couldn't
/// open the directory", and the result is true: `target` is created, and nothing is copied.
///
///     std::string source = "src";
///     std::string target = "copy";
///     copyDir(source, target)  ->  true
ZN_UDF_API bool copyDir(std::string& source, std::string& target);

}  // namespace zn_lib

#endif  // ZN_DIR_H
