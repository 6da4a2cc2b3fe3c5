/// Strict reading of numbers, and text that is fit for a message.
#ifndef ALMANAC_TEXT_H
#define ALMANAC_TEXT_H

#include <optional>
#include <string>

namespace almanac {

/// True for the bytes 0 to 31 and 127.
bool isControl(char c);

/// `text` in double quotes, with a "?" for each control character: a message stays one line
/// whatever it quotes.
std::string quote(const std::string& text);

/// Why the last system call failed, in the system's words.
std::string systemReason();

/// The value of `text` when it is digits only and lies between `least` and `most`; nothing
/// otherwise.
std::optional<int> toWholeNumber(const std::string& text, int least, int most);

/// The value of `text` when all of it is a number, "-33.9" or "5e-1", between `least` and `most`;
/// nothing otherwise.
std::optional<double> toNumber(const std::string& text, double least, double most);

}  // namespace almanac

#endif  // ALMANAC_TEXT_H
