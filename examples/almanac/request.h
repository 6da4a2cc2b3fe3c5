/// Holds the checked values of the command line and the settings.
#ifndef ALMANAC_REQUEST_H
#define ALMANAC_REQUEST_H

#include <string>

#include "dates.h"

namespace almanac {

struct Request {
  std::string place;             ///< empty if only the latitude is known
  double latitude = 0.0;         ///< degrees, north positive
  unsigned long long first = 0;  ///< the first day, a Julian value at noon
  int days = 0;                  ///< the number of rows of the table
  DateStyle style = DateStyle::kIso;
};

}  // namespace almanac

#endif  // ALMANAC_REQUEST_H
