/// Reads positions in the XML text with any version of expat. Version 2.9.0 added functions with
/// 64-bit results and deprecated the others. The functions here return the types of the deprecated
/// ones. Where such a type has 32 bits, a large position wraps, whatever the version.
#ifndef ZN_INTERNAL_EXPAT_H
#define ZN_INTERNAL_EXPAT_H

#include <expat.h>

namespace zn_lib::internal {

#if XML_MAJOR_VERSION > 2 || (XML_MAJOR_VERSION == 2 && XML_MINOR_VERSION >= 9)
#define ZN_EXPAT_LATEST(function) function##64
using ExpatOffset = int64_t;
using ExpatSize = uint64_t;
#else
#define ZN_EXPAT_LATEST(function) function
using ExpatOffset = int;
using ExpatSize = int;
#endif

inline XML_Index expatByteIndex(XML_Parser parser) {
  return static_cast<XML_Index>(ZN_EXPAT_LATEST(XML_GetCurrentByteIndex)(parser));
}

inline XML_Size expatLineNumber(XML_Parser parser) {
  return static_cast<XML_Size>(ZN_EXPAT_LATEST(XML_GetCurrentLineNumber)(parser));
}

inline XML_Size expatColumnNumber(XML_Parser parser) {
  return static_cast<XML_Size>(ZN_EXPAT_LATEST(XML_GetCurrentColumnNumber)(parser));
}

inline int expatByteCount(XML_Parser parser) {
  return static_cast<int>(ZN_EXPAT_LATEST(XML_GetCurrentByteCount)(parser));
}

/// Leaves `offset` and `size` unchanged if there is no context.
inline const char* expatInputContext(XML_Parser parser, int* offset, int* size) {
  ExpatOffset at;
  ExpatSize length;
  const char* const context = ZN_EXPAT_LATEST(XML_GetInputContext)(parser, &at, &length);
  if (context == nullptr) return nullptr;
  if (offset != nullptr) *offset = static_cast<int>(at);
  if (size != nullptr) *size = static_cast<int>(length);
  return context;
}

#undef ZN_EXPAT_LATEST

}  // namespace zn_lib::internal

#endif  // ZN_INTERNAL_EXPAT_H
