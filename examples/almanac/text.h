/// Reads numbers strictly, and prepares text for messages.
#ifndef ALMANAC_TEXT_H
#define ALMANAC_TEXT_H

#include <optional>
#include <string>

namespace almanac {

/// Returns true for the bytes 0 to 31 and 127.
bool isControl(char c);

/// Returns `text` in double quotes, with a "?" for each control character, so that every message
/// stays on one line.
std::string quote(const std::string& text);

/// Returns the system's message for the last failed system call.
std::string systemReason();

/// Returns the value of `text` if it consists of digits only and is between `least` and `most`.
/// Returns nothing otherwise.
std::optional<int> toWholeNumber(const std::string& text, int least, int most);

/// Returns the value of `text` if all of it is a number, such as "-33.9" or "5e-1", between `least`
/// and `most`. Returns nothing otherwise.
std::optional<double> toNumber(const std::string& text, double least, double most);

}  // namespace almanac

#endif  // ALMANAC_TEXT_H
