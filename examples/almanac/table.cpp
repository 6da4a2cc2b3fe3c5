#include "table.h"

#include <zn_datetime.h>
#include <zn_output.h>
#include <zn_str.h>

#include <cmath>

#include "sky.h"

namespace almanac {
namespace {

constexpr int kLengthWidth = 11;  // "polar night"
constexpr int kChangeWidth = 8;   // "+1234:56", a few kilometres from a pole
constexpr int kPhaseWidth = 15;   // "waxing crescent"
constexpr int kPercentWidth = 4;  // "100%"
constexpr int kBarWidth = kHoursPerDay;

// leftPad moves the text to the left end of its field, and rightPad to the right end.

std::string alignLeft(const std::string& text, int width) {
  return zn_lib::leftPad(text, width, ' ');
}

std::string alignRight(const std::string& text, int width) {
  return zn_lib::rightPad(text, width, ' ');
}

bool isPolarNight(double hours) { return std::isnan(hours); }

bool isPolarDay(double hours) { return hours >= kHoursPerDay; }

bool isPolar(double hours) { return isPolarNight(hours) || isPolarDay(hours); }

std::string lengthText(double hours) {
  if (isPolarNight(hours)) return "polar night";
  if (isPolarDay(hours)) return "polar day";
  return zn_lib::hourFormat(hours);
}

/// Returns the change as a sign, minutes and seconds. Returns "-" if either day has no sunrise or
/// sunset.
std::string changeText(double before, double hours) {
  if (isPolar(before) || isPolar(hours)) return "-";
  const double seconds = std::round((hours - before) * 3600.0);
  return (seconds < 0.0 ? "-" : "+") + sexagesimal(std::fabs(seconds));
}

/// Returns one "#" for each hour of daylight, and one "." for each other hour.
std::string bar(double hours) {
  const int lit = isPolarNight(hours) ? 0 : static_cast<int>(std::lround(hours));
  return zn_lib::leftPad(zn_lib::replicateString("#", lit), kBarWidth, '.');
}

/// Joins the six columns of a row.
std::string row(const std::string& date, const std::string& length, const std::string& change,
                const std::string& phase, const std::string& lit, const std::string& hours) {
  return date + "  " + alignRight(length, kLengthWidth) + ' ' + alignRight(change, kChangeWidth) +
         "  " + alignLeft(phase, kPhaseWidth) + ' ' + alignRight(lit, kPercentWidth) + "  " +
         hours + '\n';
}

}  // namespace

void printTable(std::ostream& out, const Request& request) {
  const int widthOfDate = dateWidth(request.style);
  if (zn_lib::isVerbose()) {
    out << "[Day length and moon at " << whereabouts(request.place, request.latitude) << "]\n"
        << row(alignLeft("date", widthOfDate), "day length", "change", "moon", "lit",
               "0     6     12    18");
  }
  unsigned long long julian = request.first;
  double before = dayLength(julian - kMillisecondsPerDay, request.latitude);
  for (int i = 0; i < request.days; ++i) {
    const double hours = dayLength(julian, request.latitude);
    const zn_lib::MoonPhase moon = moonAt(julian);
    out << row(alignLeft(formatDate(julian, request.style), widthOfDate), lengthText(hours),
               changeText(before, hours), kPhaseNames.at(static_cast<std::size_t>(moon.phase)),
               zn_lib::percentString(moon.illuminated, 1.0, 0), bar(hours));
    before = hours;
    julian += kMillisecondsPerDay;
  }
}

}  // namespace almanac
