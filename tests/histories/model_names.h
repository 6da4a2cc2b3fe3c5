/// Model of file names, and of the numbered names derived from them.
#ifndef HISTORIES_MODEL_NAMES_H
#define HISTORIES_MODEL_NAMES_H

#include <string>

#include "reference_names.h"
#include "world.h"

namespace histories {

/// Returns `name` with leading whitespace removed and its first "~" replaced.
inline std::string expanded(const Model& model, const std::string& name) {
  return reference::withHome(name, model.hasHome ? model.home : "~");
}

/// Joins the parts of a name as `createFileName` does.
inline std::string joined(const Model& model, const reference::Parts& parts) {
  return reference::join(parts, model.hasHome ? model.home : "~");
}

/// Returns the name that a file object opens.
template <class Parts>
std::string fullName(const Model& model, const Parts& parts) {
  return expanded(model, joined(model, {parts.path, parts.name, parts.extension}));
}

}  // namespace histories

#endif  // HISTORIES_MODEL_NAMES_H
