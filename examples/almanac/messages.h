/// The messages of the program, from the error catalog almanac.xml beside it.
#ifndef ALMANAC_MESSAGES_H
#define ALMANAC_MESSAGES_H

#include <string>

#include "errors.h"

namespace almanac {

/// Prints the message of `error` with its number to standard error. `program` is what the program
/// was called as. Where the catalog is missing, what would fill the message in is printed alone.
void printError(const Error& error, const std::string& program);

}  // namespace almanac

#endif  // ALMANAC_MESSAGES_H
