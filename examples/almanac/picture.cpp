#include "picture.h"

#include <zn_datetime.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <vector>

#include "sky.h"

namespace almanac {
namespace {

// Lengths are in SVG user units, which a browser shows as pixels.
constexpr int kWidth = 1000;
constexpr int kHeight = 560;
constexpr int kLeft = 60;
constexpr int kTop = 80;
constexpr int kPlotWidth = 910;
constexpr int kPlotHeight = 384;
constexpr int kRight = kLeft + kPlotWidth;
constexpr int kBottom = kTop + kPlotHeight;
constexpr int kLegendLine = kBottom + 64;
constexpr double kMoonRadius = 7.0;
constexpr double kLitRadius = 6.4;  // within the outline

constexpr const char* kStyle =
    ".paper{fill:#fff}text{font-family:sans-serif;font-size:14px;fill:#333}"
    ".title{font-size:20px}.hours{text-anchor:end}.month{text-anchor:middle}"
    ".night{fill:#16213e}.day{fill:#f6c65b}.curve{fill:none;stroke:#e07a1f;stroke-width:2}"
    ".grid{stroke:#fff;stroke-opacity:.25}"
    ".dark{fill:#2b3350;stroke:#8d95b3;stroke-width:1.2}.lit{fill:#fffbe8}"
    "@media(prefers-color-scheme:dark){.paper{fill:#0d1117}text{fill:#ccc}}";

/// Holds a year and converts its days to positions in the picture.
struct Year {
  int number;
  unsigned long long first;  ///< noon of its first day, a Julian value
  int days;

  double x(double day) const { return kLeft + day * kPlotWidth / (days - 1); }
  unsigned long long noonOfDay(int day) const {
    return first + static_cast<unsigned long long>(day) * kMillisecondsPerDay;
  }
};

double y(double hours) { return kBottom - hours * kPlotHeight / kHoursPerDay; }

Year yearOf(unsigned long long julian) {
  const int number = zn_lib::julianToDate(julian).year;
  const unsigned long long first = noonOf(number, 1, 1);
  const unsigned long long last = noonOf(number, 12, 31);
  return {number, first, static_cast<int>((last - first) / kMillisecondsPerDay) + 1};
}

/// Returns the hours of daylight of each day.
std::vector<double> dayLengths(const Year& year, double latitude) {
  std::vector<double> lengths;
  for (int day = 0; day < year.days; ++day) {
    const double hours = dayLength(year.noonOfDay(day), latitude);
    lengths.push_back(std::isnan(hours) ? 0.0 : hours);
  }
  return lengths;
}

/// Returns the number of quarters, 0 to 4, that have passed since new moon.
double quartersAt(unsigned long long julian) {
  constexpr double turn = 360.0;
  const double angle = std::fmod(moonAt(julian).phaseAngle + turn, turn);
  return angle / 90.0;
}

/// Holds an instant at which the moon is new, half or full.
struct Quarter {
  double day;  ///< days since noon of the year's first day, with fraction
  int number;  ///< 0 new, 1 first quarter, 2 full, 3 last quarter
};

std::vector<Quarter> quartersOf(const Year& year) {
  std::vector<Quarter> quarters;
  double before = quartersAt(year.first);
  for (int day = 1; day < year.days; ++day) {
    const double after = quartersAt(year.noonOfDay(day));
    const int number = static_cast<int>(after);
    if (number != static_cast<int>(before)) {
      const double sinceQuarter = after - number;
      const double moved = std::fmod(after - before + 4.0, 4.0);
      quarters.push_back({day - sinceQuarter / moved, number});
    }
    before = after;
  }
  return quarters;
}

std::string moonName(int quarter) { return kPhaseNames.at(static_cast<std::size_t>(2 * quarter)); }

/// Returns the disc of a moon with its centre at the origin.
std::string moonDisc(int quarter, bool isSouthern) {
  std::ostringstream disc;
  disc << "<circle class=\"dark\" r=\"" << kMoonRadius << "\"/>";
  if (quarter == 2) disc << "<circle class=\"lit\" r=\"" << kLitRadius << "\"/>";
  if (quarter == 1 || quarter == 3) {
    // Half a disc: an arc from the lower end to the upper one, and a straight line back.
    const bool isRightLit = (quarter == 1) != isSouthern;
    disc << "<path class=\"lit\" d=\"M0," << kLitRadius << "A" << kLitRadius << ',' << kLitRadius
         << " 0 0 " << (isRightLit ? 0 : 1) << " 0," << -kLitRadius << "Z\"/>";
  }
  return disc.str();
}

/// Draws the parts of the picture on top of each other.
class Picture {
 public:
  explicit Picture(const Request& request)
      : request_(request),
        year_(yearOf(request.first)),
        lengths_(dayLengths(year_, request.latitude)),
        isSouthern_(request.latitude < 0.0) {
    svg_ << std::fixed << std::setprecision(1);
  }

  std::string draw() {
    svg_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kWidth << ' ' << kHeight
         << "\" role=\"img\">\n<title>" << title() << "</title>\n<style>" << kStyle << "</style>\n"
         << "<rect class=\"paper\" width=\"" << kWidth << "\" height=\"" << kHeight << "\"/>\n"
         << "<text class=\"title\" x=\"" << kLeft << "\" y=\"40\">" << title() << "</text>\n";
    drawDaylight();
    drawHours();
    drawMonths();
    drawCurve();
    drawMoons();
    drawLegend();
    svg_ << "</svg>\n";
    return svg_.str();
  }

 private:
  std::string title() const {
    return "Day length and moon in " + std::to_string(year_.number) + " at " +
           whereabouts(request_.place, request_.latitude);
  }

  void drawDaylight() {
    svg_ << "<rect class=\"night\" x=\"" << kLeft << "\" y=\"" << kTop << "\" width=\""
         << kPlotWidth << "\" height=\"" << kPlotHeight << "\"/>\n<polygon class=\"day\" points=\""
         << kLeft << ',' << kBottom;
    drawPoints();
    svg_ << ' ' << kRight << ',' << kBottom << "\"/>\n";
  }

  void drawHours() {
    constexpr int step = 4;
    for (int hours = 0; hours <= kHoursPerDay; hours += step) {
      svg_ << "<path class=\"grid\" d=\"M" << kLeft << ',' << y(hours) << 'H' << kRight
           << "\"/><text class=\"hours\" x=\"" << kLeft - 8 << "\" y=\"" << y(hours) + 5 << "\">"
           << hours << " h</text>\n";
    }
  }

  void drawMonths() {
    for (unsigned short month = 1; month <= 12; ++month) {
      const double start = xOfMonth(month);
      const double end = month == 12 ? kRight : xOfMonth(month + 1);
      if (month > 1)
        svg_ << "<path class=\"grid\" d=\"M" << start << ',' << kTop << 'V' << kBottom << "\"/>";
      svg_ << "<text class=\"month\" x=\"" << (start + end) / 2 << "\" y=\"" << kBottom + 22
           << "\">" << zn_lib::getMonthName(month, true) << "</text>\n";
    }
  }

  void drawCurve() {
    svg_ << "<polyline class=\"curve\" points=\"";
    drawPoints();
    svg_ << "\"/>\n";
  }

  void drawMoons() {
    for (const Quarter& quarter : quartersOf(year_)) {
      const int day = static_cast<int>(std::lround(quarter.day));
      svg_ << "<g transform=\"translate(" << year_.x(quarter.day) << ',' << y(lengthOn(day))
           << ")\"><title>" << formatDate(year_.noonOfDay(day), request_.style) << ' '
           << moonName(quarter.number) << "</title>" << moonDisc(quarter.number, isSouthern_)
           << "</g>\n";
    }
  }

  void drawLegend() {
    for (int quarter = 0; quarter < 4; ++quarter) {
      const int x = kLeft + 10 + quarter * 130;
      svg_ << "<g transform=\"translate(" << x << ',' << kLegendLine << ")\">"
           << moonDisc(quarter, isSouthern_) << "<text x=\"14\" y=\"5\">" << moonName(quarter)
           << "</text></g>\n";
    }
    const auto [shortest, longest] = std::minmax_element(lengths_.begin(), lengths_.end());
    svg_ << "<text class=\"hours\" x=\"" << kRight << "\" y=\"" << kLegendLine + 5
         << "\">longest day " << zn_lib::hourFormat(*longest) << ", shortest "
         << zn_lib::hourFormat(*shortest) << "</text>\n";
  }

  void drawPoints() {
    for (int day = 0; day < year_.days; ++day) {
      svg_ << ' ' << year_.x(day) << ',' << y(lengthOn(day));
    }
  }

  double xOfMonth(int month) const {
    const unsigned long long first = noonOf(year_.number, month, 1);
    return year_.x(static_cast<double>((first - year_.first) / kMillisecondsPerDay));
  }

  double lengthOn(int day) const { return lengths_[static_cast<std::size_t>(day)]; }

  const Request& request_;
  const Year year_;
  const std::vector<double> lengths_;
  const bool isSouthern_;
  std::ostringstream svg_;
};

}  // namespace

std::string drawYear(const Request& request) { return Picture(request).draw(); }

}  // namespace almanac
