#include "table.h"

#include <zn_daylength.h>
#include <zn_moonphase.h>
#include <zn_output.h>
#include <zn_str.h>

#include <array>
#include <cmath>
#include <iostream>

namespace almanac {
namespace {

constexpr int kHoursPerDay = 24;
constexpr int kLengthWidth = 11;  // "polar night"
constexpr int kChangeWidth = 8;   // "+1234:56", a few kilometres from a pole
constexpr int kPhaseWidth = 15;   // "waxing crescent"
constexpr int kPercentWidth = 4;  // "100%"
constexpr int kBarWidth = kHoursPerDay;

/// In the order of MoonPhase::phase.
constexpr std::array<const char*, 8> kPhaseNames = {
    "new moon",  "waxing crescent", "first quarter", "waxing gibbous",
    "full moon", "waning gibbous",  "last quarter",  "waning crescent"};

// leftPad pushes the text to the left end of its field, rightPad to the right end.

std::string alignLeft(const std::string& text, int width) {
  return zn_lib::leftPad(text, width, ' ');
}

std::string alignRight(const std::string& text, int width) {
  return zn_lib::rightPad(text, width, ' ');
}

bool isPolarNight(double hours) { return std::isnan(hours); }

bool isPolarDay(double hours) { return hours >= kHoursPerDay; }

bool isPolar(double hours) { return isPolarNight(hours) || isPolarDay(hours); }

double dayLength(unsigned long long julian, double latitude) {
  zn_lib::DayLength day;
  day.julian = julian;
  day.latitude = latitude;
  return day.compute();
}

/// A whole number of minutes as "hours:minutes", or of seconds as "minutes:seconds". The format
/// cuts what is below the last place, where a whole number may come out a little too small: the
/// half keeps clear of that.
std::string sexagesimal(double sixtieths) { return zn_lib::hourFormat((sixtieths + 0.5) / 60.0); }

std::string lengthText(double hours) {
  if (isPolarNight(hours)) return "polar night";
  if (isPolarDay(hours)) return "polar day";
  return zn_lib::hourFormat(hours);
}

/// The sign and the minutes and seconds of the change; "-" where there is no sunrise or sunset to
/// move.
std::string changeText(double before, double hours) {
  if (isPolar(before) || isPolar(hours)) return "-";
  const double seconds = std::round((hours - before) * 3600.0);
  return (seconds < 0.0 ? "-" : "+") + sexagesimal(std::fabs(seconds));
}

/// One mark for each hour of daylight, one point for each of the others.
std::string bar(double hours) {
  const int lit = isPolarNight(hours) ? 0 : static_cast<int>(std::lround(hours));
  return zn_lib::leftPad(zn_lib::replicateString("#", lit), kBarWidth, '.');
}

zn_lib::MoonPhase moonOf(unsigned long long julian) {
  constexpr double julianDateOfDayZero = 2444238.5;
  zn_lib::MoonPhase moon;
  moon.days = static_cast<double>(julian) / kMillisecondsPerDay - julianDateOfDayZero;
  moon.compute();
  return moon;
}

std::string latitudeText(double latitude) {
  return sexagesimal(std::round(std::fabs(latitude) * 60.0)) + (latitude < 0.0 ? " S" : " N");
}

void printHeading(const TableRequest& request) {
  const std::string where = request.place.empty() ? "" : request.place + ", ";
  zn_lib::processTitle("Day length and moon at " + where + "latitude " +
                       latitudeText(request.latitude));
  zn_lib::display(alignLeft("date", dateWidth(request.style)) + "  ");
  zn_lib::display(alignRight("day length", kLengthWidth) + ' ');
  zn_lib::display(alignRight("change", kChangeWidth) + "  ");
  zn_lib::display(alignLeft("moon", kPhaseWidth) + ' ');
  zn_lib::display(alignRight("lit", kPercentWidth) + "  ");
  zn_lib::message("0     6     12    18");
}

}  // namespace

void printTable(const TableRequest& request) {
  printHeading(request);
  const int widthOfDate = dateWidth(request.style);
  unsigned long long julian = request.first;
  double before = dayLength(julian - kMillisecondsPerDay, request.latitude);
  for (int row = 0; row < request.days; ++row) {
    const double hours = dayLength(julian, request.latitude);
    const zn_lib::MoonPhase moon = moonOf(julian);
    std::cout << alignLeft(formatDate(julian, request.style), widthOfDate) << "  "
              << alignRight(lengthText(hours), kLengthWidth) << ' '
              << alignRight(changeText(before, hours), kChangeWidth) << "  "
              << alignLeft(kPhaseNames.at(static_cast<std::size_t>(moon.phase)), kPhaseWidth) << ' '
              << alignRight(zn_lib::percentString(moon.illuminated, 1.0, 0), kPercentWidth) << "  "
              << bar(hours) << '\n';
    before = hours;
    julian += kMillisecondsPerDay;
  }
}

}  // namespace almanac
