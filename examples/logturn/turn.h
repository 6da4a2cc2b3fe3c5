/// Turns logs.
///
/// The copies of app.log are app.log.1, app.log.2 and so on, from the newest to the oldest, up to
/// the first number that is missing. A turn takes these steps:
///
///  1. It copies the log to app.log.logturn and syncs this file to the disk.
///  2. It renames app.log.1 to app.log.2 and so on, the highest number first, up to the first
///     number that is missing.
///  3. It renames app.log.logturn to app.log.0 and syncs the directory.
///  4. It appends to app.log.0 what has been written to the log in the meantime, empties the log,
///     and syncs both.
///  5. It renames app.log.0 to app.log.1 and syncs the directory.
///  6. It removes the copies that are not kept, the oldest first.
///
/// A failure before the log is emptied removes the new copy. If the process is killed, the names of
/// the files tell the next turn what to do:
///
///  - app.log.logturn may be incomplete. The log contains all of it, so it is removed.
///  - app.log.0 is complete. If it has the size and the time of the log, the log was not emptied,
///    and app.log.0 is removed. Otherwise it becomes app.log.1. If the log was not emptied but has
///    grown, its beginning is therefore in two copies.
#ifndef LOGTURN_TURN_H
#define LOGTURN_TURN_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace logturn {

/// Says what was done to a file.
struct Row {
  std::string log;
  std::string action;
  std::string name;  ///< the copy
  std::uintmax_t bytes;
};

struct Request {
  int keep;       ///< the number of copies to keep, at least 1
  bool isDryRun;  ///< whether nothing is changed
};

/// Turns the log whose absolute name is `path`, and adds what was done to `rows`. `shown` is the
/// name that the user has given. Changes the working directory to that of the log. Throws Error if
/// the turn fails; nothing is lost then.
void turn(const std::filesystem::path& path, const std::string& shown, const Request& request,
          std::vector<Row>& rows);

}  // namespace logturn

#endif  // LOGTURN_TURN_H
