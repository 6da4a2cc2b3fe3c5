/// Keeps the number of copies between runs in logturn.cfg in the user's configuration directory,
/// which is XDG_CONFIG_HOME or else ~/.config.
#ifndef LOGTURN_SETTINGS_H
#define LOGTURN_SETTINGS_H

#include <string>

namespace logturn {

/// Returns the number of copies to keep that `text` contains. Throws Error if it is invalid.
int readKeep(const std::string& text);

/// Returns the saved number of copies to keep, or the default if there is no file. Throws Error if
/// the file contains no valid number: with the default, copies might be removed that the user wants
/// to keep.
int savedKeep();

/// Saves the number of copies to keep. Throws Error if the file cannot be written.
void saveKeep(int keep);

}  // namespace logturn

#endif  // LOGTURN_SETTINGS_H
