#include "places.h"

#include <tokenizer.h>
#include <zn_str.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "errors.h"
#include "text.h"

namespace almanac {
namespace {

/// Limits the memory that a file without line ends, such as a device, can use.
constexpr std::size_t kLongestLine = 1 << 20;

using Latitudes = std::map<std::string, double>;  // of the places, by name
using Names = std::vector<std::string>;

/// Returns the error for a file, with the reason for the last system call's failure.
Error fileError(Problem problem, const std::string& file) {
  return Error(problem, {quote(file), systemReason()});
}

bool isCapital(char c) { return c >= 'A' && c <= 'Z'; }

bool isCountryCode(const std::string& text) {
  return text.size() == 2 && std::all_of(text.begin(), text.end(), isCapital);
}

/// Reads degrees of `degreeDigits` digits, then two digits of minutes and, unless the text ends
/// there, two of seconds.
std::optional<double> readAngle(const std::string& digits, std::size_t degreeDigits, int most) {
  constexpr int mostSixtieths = 59;
  const std::size_t withMinutes = degreeDigits + 2;
  const bool hasSeconds = digits.size() == withMinutes + 2;
  if (digits.size() != withMinutes && !hasSeconds) return {};
  const auto degrees = toWholeNumber(digits.substr(0, degreeDigits), 0, most);
  const auto minutes = toWholeNumber(digits.substr(degreeDigits, 2), 0, mostSixtieths);
  const auto seconds =
      toWholeNumber(hasSeconds ? digits.substr(withMinutes) : "0", 0, mostSixtieths);
  if (!degrees || !minutes || !seconds) return {};
  const double angle = *degrees + *minutes / 60.0 + *seconds / 3600.0;
  if (angle > most) return {};
  return angle;
}

/// Returns the latitude of coordinates such as "+5222+00454" or "+404251-0740023", north positive.
/// Returns nothing if the coordinates are malformed.
std::optional<double> readLatitude(const std::string& coordinates) {
  // Each angle begins with its sign, so the token before the first sign is empty.
  const zn_lib::Tokenizer angles(coordinates, "+-");
  if (angles.tokens.size() != 3 || !angles.getToken(0).empty()) return {};
  const std::string latitude = angles.getToken(1);
  const std::string longitude = angles.getToken(2);
  const std::optional<double> north = readAngle(latitude, 2, 90);
  // Either both angles have seconds or neither does. A sign at the end is not visible in the
  // tokens.
  if (!north || !readAngle(longitude, 3, 180) || longitude.size() != latitude.size() + 1 ||
      coordinates.size() != latitude.size() + longitude.size() + 2) {
    return {};
  }
  return coordinates.front() == '-' ? -*north : *north;
}

bool isName(const std::string& text) {
  constexpr const char* characters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/_+-.";
  return !text.empty() && text.find_first_not_of(characters) == std::string::npos;
}

/// Returns the place of one line of the table, or nothing if the line is malformed.
std::optional<Place> readPlace(const std::string& line) {
  const zn_lib::Tokenizer fields(line, "\t");
  const auto isStray = [](char c) { return isControl(c) && c != '\t'; };
  if (fields.tokens.size() < 3 || fields.tokens.size() > 4 ||
      std::any_of(line.begin(), line.end(), isStray)) {
    return {};
  }
  const std::optional<double> latitude = readLatitude(fields.getToken(1));
  if (!isCountryCode(fields.getToken(0)) || !latitude || !isName(fields.getToken(2))) return {};
  return Place{fields.getToken(2), *latitude};
}

/// Reads a file line by line. Throws Error if it cannot be read.
class LineReader {
 public:
  explicit LineReader(const std::string& file)
      : file_(file), in_(std::fopen(file.c_str(), "r"), &std::fclose) {
    if (in_ == nullptr) throw fileError(Problem::kCannotOpen, file_);
  }

  /// Stores the next line without its line end. Returns false if there is none.
  bool next(std::string& line) {
    ++number_;
    line.clear();
    int c;
    while ((c = std::fgetc(in_.get())) != EOF && c != '\n') {
      if (line.size() == kLongestLine) throw error(Problem::kLineTooLong);
      line += static_cast<char>(c);
    }
    if (std::ferror(in_.get()) != 0) throw fileError(Problem::kCannotRead, file_);
    return c != EOF || !line.empty();
  }

  /// Returns `problem` with the number of the line that was read last.
  Error error(Problem problem) const {
    return Error(problem, {quote(file_), std::to_string(number_)});
  }

 private:
  const std::string file_;
  // With a file stream, not every standard library distinguishes a failed read from the end.
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> in_;
  unsigned long long number_ = 0;
};

Latitudes readTable(const std::string& file) {
  LineReader lines(file);
  Latitudes latitudes;
  for (std::string line; lines.next(line);) {
    const std::string text = zn_lib::rightTrim(line);
    if (text.empty() || text.front() == '#') continue;
    const std::optional<Place> place = readPlace(text);
    if (!place) throw lines.error(Problem::kMalformedLine);
    latitudes.emplace(place->name, place->latitude);
  }
  return latitudes;
}

/// Returns `name` in the spelling that all ways to write it share.
std::string folded(const std::string& name) {
  return zn_lib::replaceChar(zn_lib::stringToLower(name), ' ', '_');
}

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// Returns the names that the folded name `wanted` stands for: as a whole or else, if there is no
/// such name, as last parts.
Names namesFor(const std::string& wanted, const Latitudes& latitudes) {
  Names whole;
  Names byLastParts;
  for (const auto& [name, latitude] : latitudes) {
    const std::string candidate = folded(name);
    if (candidate == wanted) whole.push_back(name);
    if (endsWith(candidate, "/" + wanted)) byLastParts.push_back(name);
  }
  return whole.empty() ? byLastParts : whole;
}

/// Returns true if at most `edits` insertions, deletions and replacements of a character turn `a`
/// into `b`. Each further edit triples the time.
bool isWithin(int edits, std::string_view a, std::string_view b) {
  const auto [endOfA, endOfB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  a.remove_prefix(static_cast<std::size_t>(endOfA - a.begin()));
  b.remove_prefix(static_cast<std::size_t>(endOfB - b.begin()));
  if (a.empty() && b.empty()) return true;
  if (edits == 0) return false;
  const std::string_view restOfA = a.substr(a.empty() ? 0 : 1);
  const std::string_view restOfB = b.substr(b.empty() ? 0 : 1);
  return isWithin(edits - 1, restOfA, restOfB) || isWithin(edits - 1, a, restOfB) ||
         isWithin(edits - 1, restOfA, b);
}

/// Returns the number of edits between the folded name `wanted` and another one, as a whole or in
/// its last part. A name that contains `wanted` has 0. Returns nothing if they are not similar.
std::optional<int> editsBetween(const std::string& wanted, const std::string& name) {
  constexpr std::size_t shortestPiece = 3;
  constexpr std::size_t charactersPerEdit = 3;
  constexpr std::size_t mostEdits = 2;
  if (wanted.size() >= shortestPiece && name.find(wanted) != std::string::npos) return 0;
  const std::string lastPart = name.substr(name.rfind('/') + 1);
  const std::size_t allowed = std::min(wanted.size() / charactersPerEdit, mostEdits);
  for (int edits = 1; edits <= static_cast<int>(allowed); ++edits) {
    if (isWithin(edits, wanted, name) || isWithin(edits, wanted, lastPart)) return edits;
  }
  return {};
}

/// Returns the names that are similar to the folded name `wanted`, the most similar ones first.
Names namesLike(const std::string& wanted, const Latitudes& latitudes) {
  std::multimap<int, std::string> byEdits;
  for (const auto& [name, latitude] : latitudes) {
    const std::optional<int> edits = editsBetween(wanted, folded(name));
    if (edits) byEdits.emplace(*edits, name);
  }
  Names names;
  for (const auto& [edits, name] : byEdits) names.push_back(name);
  return names;
}

/// Returns the first names for a message, with the number of the others.
std::string listed(const Names& names) {
  constexpr std::size_t most = 8;
  const std::size_t shown = std::min(names.size(), most);
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) text += (i == 0 ? "" : ", ") + quote(names[i]);
  if (names.size() > shown) text += " and " + std::to_string(names.size() - shown) + " more";
  return text;
}

}  // namespace

Place findPlace(const std::string& name, const std::string& file) {
  const Latitudes latitudes = readTable(file);
  Names names = {name};
  if (latitudes.count(name) == 0) names = namesFor(folded(name), latitudes);
  if (names.size() > 1) {
    throw Error(Problem::kAmbiguousPlace, {quote(name), quote(file), listed(names)});
  }
  if (names.empty()) {
    const Names similar = namesLike(folded(name), latitudes);
    if (similar.empty()) throw Error(Problem::kNoSuchPlace, {quote(name), quote(file)});
    throw Error(Problem::kOnlySimilarPlaces, {quote(name), quote(file), listed(similar)});
  }
  return {names.front(), latitudes.at(names.front())};
}

}  // namespace almanac
