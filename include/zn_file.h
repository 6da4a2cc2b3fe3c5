/// \file
/// \ingroup family_file
/// Splits and joins file names, and operates on whole files.
///
///     std::string name = "C:\\tmp\\x.txt";
///     zn_lib::splitFileName(name)                     ->  {"C:/tmp/", "x", "txt"}
///     name                                            ->  "C:/tmp/x.txt"
///     zn_lib::createFileName("~/conf", "app", "xml")  ->  "/home/ada/conf/app.xml"
///
/// The name functions work on text alone and touch no file. A backslash separates directories as
/// "/" does. A function that analyses a name first turns each backslash into "/", in the caller's
/// string too if it takes the name by reference.
///
/// The file operations use names as they are: they replace neither backslashes nor "~". They print
/// no error messages. The return value reports the outcome, except for `fileCopy`, which returns
/// true once the copy was attempted.
///
/// Functions throw only when memory runs out.
#ifndef ZN_FILE_H
#define ZN_FILE_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Stores a file name in three parts. A moved-from object is empty.
struct name_of_file {
  std::string path;       ///< the directory with its "/", or empty
  std::string name;       ///< the base name, without directory and extension
  std::string extension;  ///< the last extension without its dot, or empty
};

/// Stores the name of a file in its parts. This is the base class of the file objects, such as
/// `ReadFile`:
///
///     ReadFile notes;
///     name = "~/notes.txt";
///     notes.setFileName(name); notes.nameParts  ->  {"~/", "notes", "txt"}
///     notes.getFileName()                       ->  "/home/ada/notes.txt"
class ZN_UDF_API FileName {
 public:
  virtual ~FileName();  ///< does nothing

  /// Splits `name` into `nameParts`. Each backslash in `name` becomes "/".
  void setFileName(std::string& name);

  /// Joins the parts with `createFileName` and passes the result through `checkHomePath`.
  ///
  /// "~" may therefore be replaced twice: the first one in the directory, and then the first one
  /// that is left anywhere in the name. "~/a~b/c" comes back as "/home/ada/a/home/adab/c", and the
  /// backup name "data.cfg~" as "data.cfg/home/ada". Leading whitespace of the whole name is
  /// removed.
  std::string getFileName();

  /// The name that was set.
  name_of_file nameParts;

 protected:
  FileName();  ///< creates an empty name
};

// ---- Names

/// Appends "/" to `dir` unless `dir` is empty or ends in "/".
///
///     std::string dir = "logs";
///     addEndSlash(dir); dir  ->  "logs/"
ZN_UDF_API void addEndSlash(std::string& dir);

/// Removes leading whitespace from `name` and replaces its first "~" by the environment variable
/// HOME. The "~" may be anywhere. If HOME is not set, "~" stays.
///
///     name = "~/notes"; checkHomePath(name); name  ->  "/home/ada/notes"
///     name = "a~b"; checkHomePath(name); name      ->  "a/home/adab"
ZN_UDF_API void checkHomePath(std::string& name);

/// Splits `name` into its directory, base name and last extension.
///
/// Each backslash in `name` first becomes "/", in the caller's string too. The text is then cut at
/// the last dot that has text on both sides, even if that dot is in a directory name. The part
/// before the dot is cut after the last slash that has text on both sides:
///
///     splitFileName(name = "src/zn_str.cpp")  ->  {"src/", "zn_str",  "cpp"}
///     splitFileName(name = "dir.d/file")      ->  {"",     "dir",     "d/file"}
///     splitFileName(name = "../logs/x")       ->  {"",     ".",       "/logs/x"}
///     splitFileName(name = "src/.profile")    ->  {"",     "src/",    "profile"}
///     splitFileName(name = ".bashrc")         ->  {"",     ".bashrc", ""}
///     splitFileName(name = "a.b.")            ->  {"",     "a",       "b."}
///     splitFileName(name = "/etc")            ->  {"",     "/etc",    ""}
///     splitFileName(name = "dir/")            ->  {"",     "dir/",    ""}
///
/// A name that contains a line feed or a carriage return yields three empty parts.
ZN_UDF_API name_of_file splitFileName(std::string& name);

/// Returns `name` without its last extension and dot; the directory stays. Each backslash in `name`
/// first becomes "/", in the caller's string too. The extension is that of `splitFileName`. A name
/// with a line break has none.
///
///     stripExtension(name = "logs/run.tar.gz")  ->  "logs/run.tar"
ZN_UDF_API std::string stripExtension(std::string& name);

/// Joins the parts of a name. `dir` passes through `checkHomePath`, each backslash in it becomes
/// "/", and a "/" is appended if it does not end in one. `name` and `ext` stay as they are. An
/// empty `dir` or `ext` adds nothing, not even its "/" or dot.
///
///     createFileName("logs", "run", "txt")  ->  "logs/run.txt"
///     createFileName("", "run", "")         ->  "run"
ZN_UDF_API std::string createFileName(std::string dir, const std::string& name,
                                      const std::string& ext);

// ---- Files

/// Copies `source` to `target`. If `overwrite` is true, an existing target is removed first.
///
/// Returns false and changes nothing in these cases:
///
/// - `source` does not exist;
/// - `target` exists, and `overwrite` is false or `target` cannot be removed;
/// - a disk error prevents the search for `target`.
///
/// Returns true once the copy was attempted, even if the target cannot be created or the disk is
/// full. Check the target where it matters. Copying a file onto itself with `overwrite` leaves it
/// empty.
///
///     fileCopy("notes.txt", "copy.txt", false)      ->  true
///     fileCopy("notes.txt", "copy.txt", false)      ->  false   // the target exists
///     fileCopy("notes.txt", "new/copy.txt", false)  ->  true    // there is no directory "new"
ZN_UDF_API bool fileCopy(const std::string& source, const std::string& target, bool overwrite);

/// Renames a file and returns true on success. If `overwrite` is true, an existing `newName` is
/// removed first, and is lost if the renaming then fails. Renaming a file onto itself with
/// `overwrite` therefore deletes it.
///
///     fileRename("copy.txt", "old.txt", false)  ->  true
///
/// Returns false and changes nothing in these cases:
///
/// - `oldName` does not exist;
/// - `newName` exists, and `overwrite` is false or `newName` cannot be removed;
/// - a disk error prevents the search for `newName`.
///
/// A link is renamed itself. A dangling link counts as missing: as `oldName` it is not renamed, and
/// as `newName` it is replaced even if `overwrite` is false.
ZN_UDF_API bool fileRename(const std::string& oldName, const std::string& newName, bool overwrite);

/// Moves the file to its backup name, `name` followed by "~", and replaces an earlier backup.
/// Afterwards there is no file called `name`. Returns true on success. A directory is moved too,
/// and a link is moved itself. A `name` ends at its first NUL, before the "~".
///
/// Returns false if `name` does not exist or is a dangling link, if the earlier backup cannot be
/// removed, or if the renaming fails. In the last case the earlier backup is lost.
///
///     createBackup("old.txt")  ->  true   // the file is now called old.txt~
ZN_UDF_API bool createBackup(const std::string& name);

/// Prints the bytes of a file in rows of `width`, in hexadecimal and as ASCII characters. Returns
/// false and prints nothing if the file cannot be opened.
///
/// The header is written to standard output, whatever the verbose flag. The rows are written with
/// `display`. In quiet mode there are no rows and the file is not read.
///
/// The end of the file is printed as one more entry, "ffffffff"; so is a failed read. If that entry
/// leaves its row incomplete, the characters of the row are not printed:
///
///     setVerbose(true);
///     hexDump("notes.txt", 4)  ->  true   // standard output:
///     //  0  1  2  3   0123
///     //
///     // 48 65 6c 6c   Hell
///     // 6f 0a ffffffff
///
/// If the entry completes its row, it appears as "." among the characters. A `width` below 1 leaves
/// the header without columns and prints one byte in each row.
ZN_UDF_API bool hexDump(const std::string& name, int width);

}  // namespace zn_lib

#endif  // ZN_FILE_H
