/// Defines the errors that end the program: each is one line on standard error and an exit status.
#ifndef ALMANAC_ERRORS_H
#define ALMANAC_ERRORS_H

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace almanac {

/// Numbers the messages in almanac.xml. The comments list the values that a message contains.
enum class Problem {
  // Invalid command lines.
  kUnknownOption = 1,
  kMissingArgument = 2,     ///< the option
  kUnexpectedArgument = 3,  ///< the option with its argument
  kStrayArgument = 4,       ///< the argument
  kUnknownWord = 5,         ///< the word, the option
  kNotOnePlace = 6,
  kNoFileToKeep = 7,
  kTwoOutputs = 8,

  // Invalid values, files and places.
  kUnreadableDate = 20,  ///< the text
  kNoSuchDate = 21,      ///< the text
  kBadDays = 22,         ///< the most days, the text
  kBadLatitude = 23,     ///< the text
  kBeyondLastDay = 24,
  kCannotOpen = 25,     ///< the file, the system's reason
  kCannotRead = 26,     ///< the file, the system's reason
  kLineTooLong = 27,    ///< the file, the line's number
  kMalformedLine = 28,  ///< the file, the line's number
  kNoSuchPlace = 29,    ///< the place, the file
  kCannotPrint = 30,
  kCannotWrite = 31,         ///< the file
  kKept = 32,                ///< the file
  kCannotBackUp = 33,        ///< the file
  kCannotSaveSettings = 34,  ///< the file
  kBadSetting = 35,          ///< the value, the setting, the file
  kMalformedSettings = 36,   ///< the file
  kUnfitSetting = 37,        ///< the setting, the file
  kNoSettingsDirectory = 38,
  kOnlySimilarPlaces = 39,  ///< the place, the file, the names of similar places
  kAmbiguousPlace = 40,     ///< the place, the file, the names of the candidates
};

/// Holds a problem and the values for its message. Values from the user are quoted by `quote`.
class Error : public std::exception {
 public:
  explicit Error(Problem problem, std::vector<std::string> values = {})
      : problem_(problem), values_(std::move(values)) {}

  Problem problem() const { return problem_; }
  const std::vector<std::string>& values() const { return values_; }

  /// Returns 2 for an invalid command line, and 1 otherwise.
  int exitStatus() const { return problem_ < Problem::kUnreadableDate ? 2 : 1; }

 private:
  Problem problem_;
  std::vector<std::string> values_;
};

}  // namespace almanac

#endif  // ALMANAC_ERRORS_H
