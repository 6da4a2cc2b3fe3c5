/// The year as a picture.
#ifndef ALMANAC_PICTURE_H
#define ALMANAC_PICTURE_H

#include <string>

#include "request.h"

namespace almanac {

/// An SVG picture of the year that the request's first day lies in: the curve of day lengths, with
/// the moon at each of its quarters along it, lit from the side that an observer at the request's
/// latitude sees lit.
std::string drawYear(const Request& request);

}  // namespace almanac

#endif  // ALMANAC_PICTURE_H
