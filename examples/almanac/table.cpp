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
constexpr const char* kGap = "  ";

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

/// Returns the columns of the widest bar that fits behind `columnsBefore`, or 0 if none fits.
int barWidth(std::size_t columnsBefore, const Terminal& terminal) {
  // Each mark stands for a whole number of hours.
  for (const int width : {kHoursPerDay, kHoursPerDay / 2, kHoursPerDay / 3, kHoursPerDay / 4}) {
    const std::size_t columns = columnsBefore + static_cast<std::size_t>(width);
    if (!terminal.columns || columns <= *terminal.columns) return width;
  }
  return 0;
}

/// Returns the headings of a bar: hours, each above its mark.
std::string barHeadings(int width) {
  if (width == 0) return "";
  const int hoursPerMark = kHoursPerDay / width;
  const int step = hoursPerMark > 2 ? 12 : 6;
  std::string headings;
  for (int hours = 0; hours < kHoursPerDay; hours += step) {
    headings = alignLeft(headings, hours / hoursPerMark) + std::to_string(hours);
  }
  return headings;
}

/// Returns "#" for the hours of daylight and "." for the others.
std::string bar(double hours, int width, const Terminal& terminal) {
  if (width == 0) return "";
  const int hoursPerMark = kHoursPerDay / width;
  const int lit = isPolarNight(hours) ? 0 : static_cast<int>(std::lround(hours / hoursPerMark));
  std::string marks = zn_lib::replicateString("#", lit);
  if (terminal.hasColours && lit > 0) marks = "\x1b[33m" + marks + "\x1b[0m";  // yellow
  return marks + zn_lib::replicateString(".", width - lit);
}

/// Joins the columns of a row before the bar.
std::string row(const std::string& date, const std::string& length, const std::string& change,
                const std::string& phase, const std::string& lit) {
  return date + kGap + alignRight(length, kLengthWidth) + ' ' + alignRight(change, kChangeWidth) +
         kGap + alignLeft(phase, kPhaseWidth) + ' ' + alignRight(lit, kPercentWidth);
}

/// Writes a row. An empty bar leaves no blanks.
void print(std::ostream& out, const std::string& row, const std::string& bar) {
  out << row << (bar.empty() ? "" : kGap) << bar << '\n';
}

}  // namespace

void printTable(std::ostream& out, const Request& request, const Terminal& terminal) {
  const int widthOfDate = dateWidth(request.style);
  const std::string headings =
      row(alignLeft("date", widthOfDate), "day length", "change", "moon", "lit");
  const int widthOfBar = barWidth((headings + kGap).size(), terminal);
  if (zn_lib::isVerbose()) {
    out << "[Day length and moon at " << whereabouts(request.place, request.latitude) << "]\n";
    print(out, headings, barHeadings(widthOfBar));
  }
  unsigned long long julian = request.first;
  double before = dayLength(julian - kMillisecondsPerDay, request.latitude);
  for (int i = 0; i < request.days; ++i) {
    const double hours = dayLength(julian, request.latitude);
    const zn_lib::MoonPhase moon = moonAt(julian);
    print(out,
          row(alignLeft(formatDate(julian, request.style), widthOfDate), lengthText(hours),
              changeText(before, hours), kPhaseNames.at(static_cast<std::size_t>(moon.phase)),
              zn_lib::percentString(moon.illuminated, 1.0, 0)),
          bar(hours, widthOfBar, terminal));
    before = hours;
    julian += kMillisecondsPerDay;
  }
}

}  // namespace almanac
