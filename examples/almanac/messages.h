/// Prints the messages of the program, which are in the error catalog almanac.xml beside it.
#ifndef ALMANAC_MESSAGES_H
#define ALMANAC_MESSAGES_H

#include <string>

#include "errors.h"

namespace almanac {

/// Prints the message of `error` with its number to standard error. `program` is `argv[0]`. If the
/// message is missing, prints the name of the catalog and the values of `error`.
void printError(const Error& error, const std::string& program);

}  // namespace almanac

#endif  // ALMANAC_MESSAGES_H
