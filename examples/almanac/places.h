/// Looks up places in a table such as the system's /usr/share/zoneinfo/zone.tab.
#ifndef ALMANAC_PLACES_H
#define ALMANAC_PLACES_H

#include <string>

namespace almanac {

struct Place {
  std::string name;
  double latitude;  ///< degrees, north positive
};

/// Returns the place called `name` in the table `file`.
///
/// `name` is the name in the table or its last parts, in any case and with spaces for "_":
///
///     findPlace("America/New_York", file).name  ->  "America/New_York"
///     findPlace("new york", file).name          ->  "America/New_York"
///
/// The same spelling takes precedence over another case, and a whole name over last parts. If a
/// name occurs twice in the table, the first one counts.
///
/// A line consists of fields with one tab between them: a country code of two capital letters, ISO
/// 6709 coordinates, a name of letters, digits and "/_+-.", and optional comments. Empty lines and
/// lines that begin with "#" are skipped. Whitespace at the end of a line is ignored, so other
/// systems' line ends are accepted.
///
/// Reads and checks the whole file, wherever the name is. Throws Error if the file cannot be read,
/// if any line is malformed, or if there is no such place or more than one. The error lists
/// candidates: the places with these last parts, or those with similar names.
Place findPlace(const std::string& name, const std::string& file);

}  // namespace almanac

#endif  // ALMANAC_PLACES_H
