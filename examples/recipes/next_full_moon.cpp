// Finds the next full moon, to the hour.
#include <zn_datetime.h>
#include <zn_moonphase.h>

#include <iostream>

namespace {

constexpr unsigned long long hour = 3600000;  // milliseconds

// Returns the angle between moon and sun in degrees, which is 180 at a full moon.
double angleAt(unsigned long long julian) {
  zn_lib::MoonPhase moon;
  moon.days = static_cast<double>(julian) / 86400000.0 - 2444238.5;
  moon.compute();
  return moon.phaseAngle;
}

// Returns the first hour, counted from `julian`, at which the moon has just become full. The angle
// grows by half a degree an hour. The limits 90 and 270 leave out the jump from 360 to 0. Returns
// 0, which means "no date", if there is no full moon within 31 days.
unsigned long long nextFullMoon(unsigned long long julian) {
  double before = angleAt(julian);
  for (const unsigned long long end = julian + 31 * 24 * hour; julian < end; julian += hour) {
    const double angle = angleAt(julian + hour);
    if (before > 90 && before < 180 && angle >= 180 && angle < 270) return julian + hour;
    before = angle;
  }
  return 0;
}

}  // namespace

int main() {
  // Turns times on. Otherwise every date means noon, and no time is written.
  zn_lib::defaultDateTimeFormat();
  const unsigned long long start = zn_lib::dateToJulian("2024-01-01T00:00:00");
  const unsigned long long full = nextFullMoon(start);
  if (full == 0) {
    std::cerr << "No full moon within 31 days\n";
    return 1;
  }
  std::cout << "full moon on " << zn_lib::julianToISO(full) << " UT\n";
}
