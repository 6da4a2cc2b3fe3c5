/// Expat's positions, by the functions that its version has for them: since 2.9.0 those of 64 bits,
/// which deprecate the ones before. The results keep expat's own types; where these have 32 bits, a
/// position wraps in both.
#ifndef ZN_EXPAT_H
#define ZN_EXPAT_H

#include <expat.h>

namespace zn_lib {

#if XML_MAJOR_VERSION > 2 || (XML_MAJOR_VERSION == 2 && XML_MINOR_VERSION >= 9)

inline XML_Index expatByteIndex(XML_Parser parser) {
  return static_cast<XML_Index>(XML_GetCurrentByteIndex64(parser));
}

inline XML_Size expatLineNumber(XML_Parser parser) {
  return static_cast<XML_Size>(XML_GetCurrentLineNumber64(parser));
}

inline XML_Size expatColumnNumber(XML_Parser parser) {
  return static_cast<XML_Size>(XML_GetCurrentColumnNumber64(parser));
}

inline int expatByteCount(XML_Parser parser) {
  return static_cast<int>(XML_GetCurrentByteCount64(parser));
}

inline const char* expatInputContext(XML_Parser parser, int* offset, int* size) {
  int64_t wideOffset;
  uint64_t wideSize;
  const char* const context = XML_GetInputContext64(parser, &wideOffset, &wideSize);
  if (context == nullptr) return nullptr;
  if (offset != nullptr) *offset = static_cast<int>(wideOffset);
  if (size != nullptr) *size = static_cast<int>(wideSize);
  return context;
}

#else

inline XML_Index expatByteIndex(XML_Parser parser) { return XML_GetCurrentByteIndex(parser); }

inline XML_Size expatLineNumber(XML_Parser parser) { return XML_GetCurrentLineNumber(parser); }

inline XML_Size expatColumnNumber(XML_Parser parser) { return XML_GetCurrentColumnNumber(parser); }

inline int expatByteCount(XML_Parser parser) { return XML_GetCurrentByteCount(parser); }

inline const char* expatInputContext(XML_Parser parser, int* offset, int* size) {
  return XML_GetInputContext(parser, offset, size);
}

#endif

}  // namespace zn_lib

#endif  // ZN_EXPAT_H
