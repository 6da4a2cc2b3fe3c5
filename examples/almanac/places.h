/// Places by name, from a table such as the system's /usr/share/zoneinfo/zone.tab.
#ifndef ALMANAC_PLACES_H
#define ALMANAC_PLACES_H

#include <string>

namespace almanac {

/// The latitude, in degrees, of the place called `name` in the table `file`; of the first one,
/// should it stand there twice.
///
/// A line is two capital letters of country code, ISO 6709 coordinates, a name of letters,
/// digits and "/_+-.", and, as it likes, comments, with one tab between each two of them. Empty
/// lines and those that begin with "#" are skipped. Blanks at a line's end do not count, so lines
/// may end as they do on other systems.
///
/// Reads and checks the whole file, wherever the name stands. Throws Error when the file cannot be
/// read, when any of its lines is malformed, and when the place is not there.
double latitudeOf(const std::string& name, const std::string& file);

}  // namespace almanac

#endif  // ALMANAC_PLACES_H
