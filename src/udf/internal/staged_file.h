/// Files that are replaced as a whole.
#ifndef ZN_INTERNAL_STAGED_FILE_H
#define ZN_INTERNAL_STAGED_FILE_H

#include <string>

namespace zn_lib::internal {

/// Makes `text` the content of `file`. With `keepsBackup`, the file that was there becomes its
/// backup, whose name ends in "~".
///
/// Where another file can take its name, `text` is written beside the file, brought to the disk,
/// and renamed: whatever happens meanwhile, the name leads to the old text or to the new one. A
/// text that cannot be written whole replaces nothing, and the result is true. Elsewhere the file
/// is moved to its backup, as far as that succeeds, and written in place.
///
/// Returns false when the file can be neither replaced nor opened.
bool saveText(const std::string& file, const std::string& text, bool keepsBackup);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_STAGED_FILE_H
