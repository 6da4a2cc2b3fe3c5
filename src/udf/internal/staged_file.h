/// Files that are replaced as a whole.
#ifndef ZN_INTERNAL_STAGED_FILE_H
#define ZN_INTERNAL_STAGED_FILE_H

#include <string>

namespace zn_lib::internal {

/// Makes `text` the content of `file`. With `keepsBackup`, the file that was there becomes its
/// backup, whose name ends in "~".
///
/// If another file can take the file's name, the text is staged: it is written to a file beside, is
/// brought to the disk, and takes the name by a renaming. At every moment, the name leads to the
/// old text or to the new one; only a file that cannot have a second name is moved to its backup
/// before. A text that cannot be written completely replaces nothing, and the result is true.
///
/// Otherwise the file is moved to its backup, if possible, and is written in place.
///
/// Returns false if the file can be neither replaced nor opened.
bool saveText(const std::string& file, const std::string& text, bool keepsBackup);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_STAGED_FILE_H
