/// Draws the year as a picture.
#ifndef ALMANAC_PICTURE_H
#define ALMANAC_PICTURE_H

#include <string>

#include "request.h"

namespace almanac {

/// Returns an SVG picture of the year of the request's first day: the curve of day lengths, with
/// the moon at each of its quarters along it. The moon is lit on the side that an observer at the
/// request's latitude sees lit.
std::string drawYear(const Request& request);

}  // namespace almanac

#endif  // ALMANAC_PICTURE_H
