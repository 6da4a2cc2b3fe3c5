/// Model of the readers of XML files.
#ifndef HISTORIES_MODEL_READERS_H
#define HISTORIES_MODEL_READERS_H

#include <string>

#include "model_names.h"
#include "world.h"

namespace histories {

/// Lets `events` have what a reader reads from the file `name`. Returns false if there is no file.
template <class Events>
bool readFile(const Model& model, const std::string& name, Events& events) {
  const NodePointer file = model.disk.openForReading(fullName(model, reference::split(name)));
  if (file == nullptr) return false;
  readBy(events, file->bytes);
  return true;
}

}  // namespace histories

#endif  // HISTORIES_MODEL_READERS_H
