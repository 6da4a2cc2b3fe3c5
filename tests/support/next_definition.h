/// Functions that a test program defines in place of those of another library.
#ifndef NEXT_DEFINITION_H
#define NEXT_DEFINITION_H

#include <dlfcn.h>

/// Returns the function `name` that the program's own definition hides.
template <class Function>
Function nextDefinition(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

#endif  // NEXT_DEFINITION_H
