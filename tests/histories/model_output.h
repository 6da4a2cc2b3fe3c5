/// Model of what the library prints.
#ifndef HISTORIES_MODEL_OUTPUT_H
#define HISTORIES_MODEL_OUTPUT_H

#include <string>

#include "world.h"

namespace histories {

/// Prints as the functions of these names do.
void display(Model& model, const std::string& text);
void errorMessage(Model& model, const std::string& text);

}  // namespace histories

#endif  // HISTORIES_MODEL_OUTPUT_H
