/// \file
/// The machine: its operating system and its byte order.
///
///     zn_lib::getOSName()     ->  "Linux"
///     zn_lib::getOSRelease()  ->  "6.1.0-18-amd64"
///     zn_lib::IsBigEndian()   ->  false
#ifndef ZN_PLATFORM_H
#define ZN_PLATFORM_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Writes six lines to standard output, whatever the verbose flag, each one flushed:
///
///     Platform information
///     ------------------------------
///     Name of OS          : Linux
///     Release level       : 6.1.0-18-amd64
///     Hardware type       : x86_64
///     Name of network node: fileserver
///
/// False, and nothing is written, when the system does not tell (`uname` fails).
ZN_UDF_API bool platformInfo();

/// The name of the operating system; "unknown" when the system does not tell. Asks it every time.
ZN_UDF_API std::string getOSName();

/// The release of the operating system; "unknown" when the system does not tell. Asks it every
/// time.
ZN_UDF_API std::string getOSRelease();

// The library is for little-endian hosts and does not compile on others. What follows is therefore
// constant: the order of bytes is never tested, and nothing is ever rotated.

/// False, always.
ZN_UDF_API bool IsBigEndian();

/// `value`, unchanged: rotate2b(-2) is -2.
ZN_UDF_API short rotate2b(short value);

/// `value`, unchanged: rotate4b(0x12345678) is 0x12345678.
ZN_UDF_API unsigned int rotate4b(unsigned int value);

}  // namespace zn_lib

#endif  // ZN_PLATFORM_H
