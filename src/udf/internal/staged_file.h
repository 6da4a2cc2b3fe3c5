/// Files that are replaced as a whole.
#ifndef ZN_INTERNAL_STAGED_FILE_H
#define ZN_INTERNAL_STAGED_FILE_H

#include <string>

namespace zn_lib::internal {

/// Makes `text` the content of `file`. With `keepsBackup`, the file that was there becomes its
/// backup, whose name ends in "~".
///
/// If another file can take its name, writes `text` beside the file, brings it to the disk, and
/// renames it: the name leads to the old text or to the new one at every moment. Only a file that
/// cannot have a second name is moved to its backup before the renaming. A text that cannot be
/// written whole replaces nothing, and the result is true.
///
/// Otherwise moves the file to its backup, if that succeeds, and writes it in place.
///
/// Returns false if the file can be neither replaced nor opened.
bool saveText(const std::string& file, const std::string& text, bool keepsBackup);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_STAGED_FILE_H
