/// \file
/// \ingroup family_process
/// Describes the machine: its operating system and its byte order.
///
///     zn_lib::getOSName()     ->  "Linux"            // for instance
///     zn_lib::getOSRelease()  ->  "6.1.0-18-amd64"   // for instance
///     zn_lib::IsBigEndian()   ->  false
#ifndef ZN_PLATFORM_H
#define ZN_PLATFORM_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Writes six lines to standard output, whatever the verbose flag, and flushes each one:
///
///     platformInfo();   // for instance, standard output:
///     // Platform information
///     // ------------------------------
///     // Name of OS          : Linux
///     // Release level       : 6.1.0-18-amd64
///     // Hardware type       : x86_64
///     // Name of network node: fileserver
///
/// Returns false and writes nothing if `uname` fails.
ZN_UDF_API bool platformInfo();

/// Returns the name of the operating system, or "unknown" if `uname` fails. The result is not
/// cached.
ZN_UDF_API std::string getOSName();

/// Returns the release of the operating system, or "unknown" if `uname` fails. The result is not
/// cached.
ZN_UDF_API std::string getOSRelease();

// The library compiles on little-endian machines only. The following functions are therefore
// constant: they neither test the byte order nor swap any bytes.

/// Always returns false.
ZN_UDF_API bool IsBigEndian();

/// Returns `value` unchanged.
///
///     rotate2b(-2)  ->  -2
ZN_UDF_API short rotate2b(short value);

/// Returns `value` unchanged.
///
///     rotate4b(0x12345678)  ->  0x12345678
ZN_UDF_API unsigned int rotate4b(unsigned int value);

}  // namespace zn_lib

#endif  // ZN_PLATFORM_H
