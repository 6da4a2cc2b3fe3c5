/// Model of dates, as far as several families use it.
#ifndef HISTORIES_MODEL_DATES_H
#define HISTORIES_MODEL_DATES_H

#include <string>

#include "world.h"

namespace histories {

/// Returns the model's date of today.
std::string todayAsISO(const Model& model);

}  // namespace histories

#endif  // HISTORIES_MODEL_DATES_H
