/// Defines the errors of the program and prints them. Each is one line on standard error.
#ifndef LOGTURN_ERRORS_H
#define LOGTURN_ERRORS_H

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace logturn {

/// Numbers the messages in logturn.xml. The comments list the values that a message contains.
enum class Problem {
  // Invalid command lines.
  kInvalidOption = 1,    ///< the argument
  kMissingArgument = 2,  ///< the option
  kNoFile = 3,
  kDryRunSaves = 4,

  // Invalid values, and files that cannot be used.
  kBadKeep = 20,             ///< the most copies, the text
  kBadSettings = 21,         ///< the file
  kCannotSaveSettings = 22,  ///< the file
  kCannotOpen = 23,          ///< the log, the system's reason
  kNotRegular = 24,          ///< the file
  kIsCopy = 25,              ///< the copy, the log
  kCannotLock = 26,          ///< the log, the system's reason
  kCannotList = 27,          ///< the log
  kCannotRead = 28,          ///< the log, the system's reason
  kCannotWrite = 29,         ///< the copy, the system's reason
  kCannotEmpty = 30,         ///< the log, the system's reason
  kCannotRename = 31,        ///< the old name, the new name, the system's reason
  kCannotRemove = 32,        ///< the file, the system's reason
  kCannotSync = 33,          ///< the file, the system's reason
  kCannotPrint = 34,
};

/// Holds a problem and the values for its message. Names of files are quoted by `quote`.
class Error : public std::exception {
 public:
  explicit Error(Problem problem, std::vector<std::string> values = {})
      : problem_(problem), values_(std::move(values)) {}

  Problem problem() const { return problem_; }
  const std::vector<std::string>& values() const { return values_; }

  /// Returns 2 for an invalid command line, and 1 otherwise.
  int exitStatus() const { return problem_ < Problem::kBadKeep ? 2 : 1; }

 private:
  Problem problem_;
  std::vector<std::string> values_;
};

/// Returns `text` in double quotes, with a "?" for each control character, so that every message
/// stays on one line.
std::string quote(const std::string& text);

/// Returns the system's message for the last failed system call.
std::string systemReason();

/// Prints the message of `error` with its number to standard error, whatever the verbose flag.
/// `program` is `argv[0]`. The messages are in logturn.xml, beside the program. If the message is
/// missing there, prints the name of the catalog and the values of `error`.
void printError(const Error& error, const std::string& program);

}  // namespace logturn

#endif  // LOGTURN_ERRORS_H
