/// \file
/// File names taken apart and put together, and operations on whole files.
///
///     std::string name = "C:\\tmp\\x.txt";
///     zn_lib::name_of_file parts = zn_lib::splitFileName(name);
///     parts.path, parts.name, parts.extension            ->  "C:/tmp/", "x", "txt"
///     name                                               ->  "C:/tmp/x.txt"
///     zn_lib::createFileName("~/conf", "app", "xml")     ->  "/home/ada/conf/app.xml"
///
/// The name functions work on text alone and touch no file. A backslash separates directories as
/// "/" does: functions that analyse a name turn each backslash into "/" first, in the caller's
/// string too where they take it by reference. The file operations take names as they are: no
/// backslash and no "~" is replaced. They print no message and tell their outcome by their result.
///
/// Nothing is thrown, except when memory runs out.
#ifndef ZN_FILE_H
#define ZN_FILE_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// A file name in three parts. A moved-from one is empty.
struct name_of_file {
  std::string path;       ///< the directory with its "/"; empty when there is none
  std::string name;       ///< what follows the directory, without the extension
  std::string extension;  ///< the last extension, without its dot; empty when there is none
};

/// The root of the file objects: holds the name of a file in its parts.
class ZN_UDF_API FileName {
 public:
  virtual ~FileName();  ///< does nothing of its own

  /// Splits `name` into `nameParts`; each backslash in it becomes "/".
  void setFileName(std::string& name);

  /// The parts joined by `createFileName` and passed through `checkHomePath`.
  ///
  /// So "~" may be replaced twice: the first one of the directory, then the first one that is left,
  /// in the directory or behind it. A backup name such as "data.cfg~" comes back as
  /// "data.cfg/home/ada", and "~/a~b/c" as "/home/ada/a/home/adab/c". And leading blanks go when
  /// there is no directory.
  std::string getFileName();

  /// The name that was set.
  name_of_file nameParts;

 protected:
  FileName();  ///< an empty name
};

// ---- Names

/// Appends "/" to `dir` unless it is empty or ends in one.
ZN_UDF_API void addEndSlash(std::string& dir);

/// Removes leading blanks from `name` and replaces the first "~" in it, wherever it stands, by the
/// environment variable HOME: "a~b" becomes "a/home/adab". Without HOME only the blanks go.
ZN_UDF_API void checkHomePath(std::string& name);

/// Splits `name` into directory, base name and last extension.
///
/// Each backslash in `name` becomes "/" first, in the caller's string too. The extension is
/// whatever follows the last dot anywhere in the text, so a dot in a directory name is taken for
/// it. Dots and slashes at the very beginning or end belong to the base name:
///
///     splitFileName("src/zn_str.cpp")  ->  "src/", "zn_str",  "cpp"
///     splitFileName("dir.d/file")      ->  "",     "dir",     "d/file"
///     splitFileName("../logs/x")       ->  "",     ".",       "/logs/x"
///     splitFileName("src/.profile")    ->  "",     "src/",    "profile"
///     splitFileName(".bashrc")         ->  "",     ".bashrc", ""
///     splitFileName("a.b.")            ->  "",     "a",       "b."
///     splitFileName("/etc")            ->  "",     "/etc",    ""
///     splitFileName("dir/")            ->  "",     "dir/",    ""
///
/// A name that holds a line feed or a carriage return yields three empty parts.
ZN_UDF_API name_of_file splitFileName(std::string& name);

/// `name` without its last extension and dot; the directory stays. Each backslash in `name` becomes
/// "/" first, in the caller's string too. The extension is that of `splitFileName`; a name with a
/// line break has none.
ZN_UDF_API std::string stripExtension(std::string& name);

/// Joins the parts of a name. `dir` goes through `checkHomePath`, a backslash in it becomes "/",
/// and one "/" is added where it is missing; `name` and `ext` are taken as they are. An empty `dir`
/// or `ext` adds nothing, not even its mark.
ZN_UDF_API std::string createFileName(std::string dir, const std::string& name,
                                      const std::string& ext);

// ---- Files

/// Copies `source` to `target`. An existing target is removed first when `overwrite` is true.
///
/// False, with nothing changed, when `source` does not exist, or `target` does and may not or
/// cannot be removed, or the disk fails as it is looked for. True means only that the copy was
/// attempted: a target that cannot be created or a disk that is full gives true as well, so check
/// the target where it matters. Copying a file onto itself with `overwrite` leaves it empty.
ZN_UDF_API bool fileCopy(const std::string& source, const std::string& target, bool overwrite);

/// Renames a file; true when that succeeded. An existing `newName` is removed first when
/// `overwrite` is true, and is lost when the renaming then fails: a file renamed onto itself with
/// `overwrite` is gone. False when `oldName` does not exist, or `newName` does and may not or
/// cannot be removed, or the disk fails as it is looked for.
ZN_UDF_API bool fileRename(const std::string& oldName, const std::string& newName, bool overwrite);

/// Moves the file to its backup name, `name` followed by "~", in place of an earlier backup. It
/// moves, it does not copy: afterwards there is no file called `name`. True when that succeeded.
ZN_UDF_API bool createBackup(const std::string& name);

/// Prints the bytes of a file in rows of `width`, in hexadecimal and as ASCII characters.
///
/// False, and nothing is printed, when the file cannot be opened. The header goes to standard
/// output whatever the verbose flag; the rows go through `display`, only when it is set, and the
/// file is read only then.
///
/// The end of the file, or a read that fails, is written as one more byte, "ffffffff". The
/// characters of the row that it leaves incomplete are not printed:
///
///      0  1  2  3   0123
///
///     48 65 6c 6c   Hell
///     6f ffffffff
///
/// With a `width` below 1 the header is empty and each byte has a row of its own. A file whose
/// length is one short of a multiple of `width` has the "." of its end in the last row's
/// characters.
ZN_UDF_API bool hexDump(const std::string& name, int width);

}  // namespace zn_lib

#endif  // ZN_FILE_H
