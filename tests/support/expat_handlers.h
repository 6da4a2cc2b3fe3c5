/// Handlers that are called by expat alone, without the library.
#ifndef EXPAT_HANDLERS_H
#define EXPAT_HANDLERS_H

#include <expat.h>

/// Lets `parser` report elements and text to `handler`, which has start(name, attributes),
/// end(name) and text(bytes, length).
template <class Handler>
void setHandlers(XML_Parser parser, Handler& handler) {
  XML_SetUserData(parser, &handler);
  XML_SetElementHandler(
      parser,
      [](void* data, const XML_Char* name, const XML_Char** attributes) {
        static_cast<Handler*>(data)->start(name, attributes);
      },
      [](void* data, const XML_Char* name) { static_cast<Handler*>(data)->end(name); });
  XML_SetCharacterDataHandler(parser, [](void* data, const XML_Char* bytes, int length) {
    static_cast<Handler*>(data)->text(bytes, length);
  });
}

#endif  // EXPAT_HANDLERS_H
