/// \file
/// Directories: changing into, creating, listing and copying them.
///
///     std::vector<std::string> entries;
///     zn_lib::listDir("src", "\\.cpp$", true, entries);   // adds what ends in ".cpp"
///     zn_lib::listDir("", "<dir>", true, entries);        // adds the subdirectories here
///
/// Failures are told by the result and, for listing and copying, through `errorMessage`, which
/// shows in verbose mode only. Nothing is thrown, except when memory runs out.
#ifndef ZN_DIR_H
#define ZN_DIR_H

#include <string>
#include <vector>

#include "zn_common.h"

namespace zn_lib {

/// Changes the working directory of the whole process. True when that succeeded. "~" is not
/// expanded.
ZN_UDF_API bool changeDir(const std::string& dir);

/// Creates a directory that owner and group may use, as far as the umask lets them. True when that
/// succeeded; false for one that exists. Creates no parents and does not expand "~".
ZN_UDF_API bool createDir(const std::string& dir);

/// Appends the names of entries of `dir`, without the directory, to `entries`, in the order in
/// which the system gives them; what `entries` held before stays. An empty `dir` is the working
/// directory; a "~" in it is expanded.
///
/// `filter` is a regular expression (ECMAScript) and is searched anywhere in the name: "txt$"
/// selects names that end in "txt", and in "a.b" the dot stands for any character. An empty one
/// selects all. The filter `"<dir>"` selects the subdirectories, without "." and "..", and no links
/// to directories. `skipHidden` leaves out names that begin with a dot, "." and ".." among them.
///
/// A directory that cannot be read to its end counts as one that cannot be opened.
///
/// False, with `entries` unchanged, and a message "Couldn't open the directory", or "Invalid
/// filter" for one that is no regular expression or is too long. Too long is a filter of more than
/// 10,000 bytes, unless it consists of plain characters and dots, or is a single set, "[...]", with
/// no "]" but its last. A filter with repetitions runs on std::regex, which may exhaust the stack
/// on names only where a file system allows names of thousands of bytes.
ZN_UDF_API bool listDir(std::string dir, const std::string& filter, bool skipHidden,
                        std::vector<std::string>& entries);

/// Copies the files of `source` whose names do not begin with a dot into `target`, which is created
/// when it is missing. "~" in the names is expanded, in the caller's strings too.
///
/// Files that `target` has already are kept. Subdirectories are not entered: each becomes an empty
/// file. True when the copying was attempted, whatever became of the single files; false, with a
/// message, when a name is empty, `source` does not exist, or `target` cannot be created. A
/// `source` that cannot be listed, such as a plain file, prints "Couldn't open the directory", and
/// the result is true: `target` is created, and nothing is copied.
ZN_UDF_API bool copyDir(std::string& source, std::string& target);

}  // namespace zn_lib

#endif  // ZN_DIR_H
