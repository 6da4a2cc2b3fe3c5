/// Looks up places in a table such as the system's /usr/share/zoneinfo/zone.tab.
#ifndef ALMANAC_PLACES_H
#define ALMANAC_PLACES_H

#include <string>

namespace almanac {

/// Returns the latitude, in degrees, of the place called `name` in the table `file`. If the name
/// occurs twice, the first one counts.
///
/// A line consists of fields with one tab between them: a country code of two capital letters, ISO
/// 6709 coordinates, a name of letters, digits and "/_+-.", and optional comments. Empty lines and
/// lines that begin with "#" are skipped. Whitespace at the end of a line is ignored, so other
/// systems' line ends are accepted.
///
/// Reads and checks the whole file, wherever the name is. Throws Error if the file cannot be read,
/// if any line is malformed, or if there is no such place.
double latitudeOf(const std::string& name, const std::string& file);

}  // namespace almanac

#endif  // ALMANAC_PLACES_H
