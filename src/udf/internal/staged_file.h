/// Replaces files as a whole.
#ifndef ZN_INTERNAL_STAGED_FILE_H
#define ZN_INTERNAL_STAGED_FILE_H

#include <string>

namespace zn_lib::internal {

/// Makes `text` the content of `file`. With `keepsBackup`, the old file becomes the backup, whose
/// name is `file` followed by "~".
///
/// If the file can be replaced by name, the text is staged: it is written to a new file in the same
/// directory and synchronised to the disk, and the new file is then renamed to `file`. The name
/// `file` always refers to the old or the new text, with one exception: an old file to which no
/// hard link can be made is moved to its backup before the renaming. If the text cannot be written
/// completely, nothing is replaced, and the result is true.
///
/// Otherwise the old file is moved to its backup, if possible, and the text is written in place.
///
/// Returns false if the file can be neither replaced nor opened.
bool saveText(const std::string& file, const std::string& text, bool keepsBackup);

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_STAGED_FILE_H
