// Calls of day lengths, moon phases and addresses.
#include <arpa/inet.h>
#include <zn_daylength.h>
#include <zn_ip.h>
#include <zn_moonphase.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

#include "pools.h"

namespace histories {
namespace {

constexpr double kTurn = 6.283185307179586;
constexpr double kRadians = 0.017453292519943295;

/// Compares numbers that sines went into. Their last digits differ between C libraries, and the
/// ones that differ are not shown.
void near(Step& step, double expected, double actual) {
  constexpr double tolerance = 1e-9;
  const bool isNear = std::isnan(expected) ? std::isnan(actual)
                                           : std::abs(expected - actual) <=
                                                 tolerance * std::max(1.0, std::abs(expected));
  char text[64];
  std::snprintf(text, sizeof text, "%.7f", actual == 0 ? 0.0 : actual);
  const std::string number = std::isnan(actual) ? "nan" : text;
  step.add(isNear ? number : shown(expected), number);
}

double within(double angle) {
  const double turns = angle / kTurn;
  const double rest = kTurn * (turns - std::trunc(turns));
  return rest < 0 ? rest + kTurn : rest;
}

// ---- Day length

struct Sun {
  double meanLongitude, meanAnomaly, longitude;
};

Sun sunOn(double day) {
  Sun sun{};
  sun.meanLongitude = within(0.017202792393721557 * day + 4.894967873435816);
  sun.meanAnomaly = within(0.017201970343643867 * day + 6.240040768070287);
  sun.longitude = within(sun.meanLongitude + 0.03342305517569141 * std::sin(sun.meanAnomaly) +
                         0.00034906585039886593 * std::sin(2 * sun.meanAnomaly));
  return sun;
}

/// Returns the days since 1 January 2000. A Julian value changes its day at midnight.
double dayOf(unsigned long long julian) {
  const unsigned long long number = (julian + 43200000) / 86400000;
  return static_cast<double>(number) - 2451545.0;
}

double hourAngle(double latitude, double declination) {
  const double refraction = latitude < 0 ? -0.014515321612419507 : 0.014515321612419507;
  const double sine = std::tan(latitude * kRadians) * std::tan(declination + refraction);
  return std::asin(sine > 0.99999 ? 1.0 : sine) + 1.5707963267948966;
}

double lengthOf(unsigned long long julian, double latitude) {
  const double day = dayOf(julian);
  const double obliquity = 0.4090877233749509 - 6.981317007977318e-9 * day;
  const double declination = std::asin(std::sin(obliquity) * std::sin(sunOn(day).longitude));
  const double hours = hourAngle(latitude, declination) * 57.29577951308232 / 7.5;
  return hours < 0.0001 ? 0.0 : hours;
}

void useDayLength(Step& step) {
  zn_lib::DayLength& day = step.world.days[anyObject(step.choose)];
  // At the very edges of polar day and night the last digit would decide.
  switch (step.choose.below(6)) {
    case 0: {
      // Dates of the years 1901 to 2099, for which the formula of the days is exact.
      const unsigned long long number = 2415386 + step.choose.below(72000);
      day.julian = number * 86400000 + step.choose.below(86400000);
      day.latitude = static_cast<double>(step.choose.below(171)) - 85;
      step.call("julian, latitude = ", day.julian, day.latitude);
      break;
    }
    case 1:
      step.call("compute", day.julian, day.latitude);
      near(step, lengthOf(day.julian, day.latitude), day.compute());
      near(step, day.dayLength, day.dayLength);
      near(step, sunOn(dayOf(day.julian)).meanAnomaly, day.meanAnomaly);
      near(step, sunOn(dayOf(day.julian)).meanLongitude, day.meanLongitude);
      break;
    case 2: {
      const int count = step.choose.one({0, 2, -2, 5});
      step.call("cumulative", count, day.julian, day.latitude);
      unsigned long long julian = day.julian;
      double sum = lengthOf(julian, day.latitude);
      for (int i = 1; i <= std::abs(count); ++i) {
        julian += static_cast<unsigned long long>(count < 0 ? -i : i);
        sum += lengthOf(julian, day.latitude);
      }
      const unsigned long long before = day.julian;
      near(step, sum, day.cumulative(count));
      step.same(before, day.julian);
      break;
    }
    case 3:
      step.call("FNday", day.julian);
      step.same(dayOf(day.julian), day.FNday());
      break;
    case 4: {
      const double angle = anyDouble(step.choose);
      step.call("FNrange, FNsun", angle);
      near(step, within(angle), day.FNrange(angle));
      near(step, sunOn(angle).longitude, day.FNsun(angle));
      break;
    }
    default: {
      const double declination = static_cast<double>(step.choose.below(81)) / 100 - 0.4;
      step.call("hourAngle", declination, day.latitude);
      near(step, hourAngle(day.latitude, declination), day.hourAngle(declination));
    }
  }
}

void createDayLength(Step& step) {
  zn_lib::DayLength& day = step.world.days[anyObject(step.choose)];
  step.call("DayLength");
  day = zn_lib::DayLength();
  step.same(std::numeric_limits<double>::quiet_NaN(), day.dayLength);
  day.julian = 211813488000000;
  day.latitude = 52;
}

// ---- Moon phase

double reduced(double angle) { return angle - std::trunc(angle / 360) * 360; }
double positive(double angle) { return angle < 0 ? angle + 360 : angle; }
double sine(double degrees) { return std::sin(degrees * kRadians); }

double sunLongitude(double days) {
  const double anomaly =
      positive(reduced(reduced(days * 0.9856473320990837)) + -3.762863) * kRadians;
  double eccentric = anomaly;
  for (double step = 1; std::abs(step) >= 1e-12;) {
    step = eccentric - 0.016718 * std::sin(eccentric) - anomaly;
    eccentric -= step / (1 - 0.016718 * std::cos(eccentric));
  }
  const double trueAnomaly =
      114.59155902616465 * std::atan(1.01686011182 * std::tan(eccentric / 2));
  return reduced(trueAnomaly + 282.596403);
}

double moonLongitude(double days) {
  const double sun = sunLongitude(days);
  const double sunAnomaly = positive(0.985647332099 * days + -3.762863);
  const double mean = positive(reduced(13.176396 * days + 64.975464));
  const double anomaly = reduced(mean - 0.1114041 * days + -349.383063);
  const double evection = 1.2739 * sine(2 * (mean - sun) - anomaly);
  const double annual = 0.1858 * sine(sunAnomaly);
  const double corrected = anomaly + evection - annual - 0.37 * sine(sunAnomaly);
  const double centre = 6.2886 * sine(corrected);
  const double longitude = mean + evection + centre - annual + 0.214 * sine(2 * corrected);
  return longitude + 0.6583 * sine(2 * (longitude - sun));
}

void useMoonPhase(Step& step) {
  zn_lib::MoonPhase& moon = step.world.moons[anyObject(step.choose)];
  moon.days = static_cast<double>(step.choose.below(8000000)) / 100 - 40000;
  switch (step.choose.below(3)) {
    case 0: {
      step.call("MoonPhase::compute", moon.days);
      moon.compute();
      const double angle = moonLongitude(moon.days) - sunLongitude(moon.days);
      near(step, positive(angle), moon.phaseAngle);
      near(step, (1 - std::cos(angle * kRadians)) * 0.5, moon.illuminated);
      step.same(static_cast<int>((positive(angle) + 22.5) / 45) % 8, moon.phase);
      break;
    }
    case 1:
      step.call("sunPosition", moon.days);
      near(step, sunLongitude(moon.days), moon.sunPosition());
      break;
    default:
      step.call("moonPosition", moon.days);
      near(step, moonLongitude(moon.days), moon.moonPosition());
  }
}

// ---- Addresses

using Blocks = std::array<unsigned char, 4>;

std::string dotted(const Blocks& blocks) {
  std::string text;
  for (const unsigned char block : blocks) text += (text.empty() ? "" : ".") + shown(int{block});
  return text;
}

Blocks blocksOf(const zn_lib::IPv4& address) {
  Blocks blocks;
  std::copy(std::begin(address.blocks), std::end(address.blocks), blocks.begin());
  return blocks;
}

/// Returns whether the text is four parts of up to three digits from 0 to 5.
bool hasForm(const std::string& text) {
  std::size_t digits = 0;
  int dots = 0;
  for (const char c : text) {
    if (c == '.' && digits > 0) {
      ++dots;
      digits = 0;
    } else if (c >= '0' && c <= '5' && digits < 3) {
      ++digits;
    } else {
      return false;
    }
  }
  return dots == 3 && digits > 0;
}

/// Reads a text of this form. Returns false for parts above 255 and for leading zeros.
bool readBlocks(const std::string& text, Blocks& blocks) {
  Blocks read{};
  std::size_t at = 0;
  for (unsigned char& block : read) {
    const std::size_t end = std::min(text.find('.', at), text.size());
    const std::string part = text.substr(at, end - at);
    const int value = std::stoi(part);
    if (value > 255 || (part.size() > 1 && part[0] == '0')) return false;
    block = static_cast<unsigned char>(value);
    at = end + 1;
  }
  blocks = read;
  return true;
}

/// Reads the first four parts as `stoi` does, and stops at one that it rejects. Returns the error.
std::string readParts(const std::string& text, Blocks& blocks) {
  blocks = {};
  std::size_t at = 0;
  for (unsigned char& block : blocks) {
    // Nothing after the last dot is no part, but the empty text is one.
    if (at > 0 && at >= text.size()) break;
    const std::size_t end = std::min(text.find('.', at), text.size());
    const std::string part = text.substr(at, end - at);
    try {
      block = static_cast<unsigned char>(std::stoi(part));
    } catch (const std::invalid_argument&) {
      return "invalid";
    } catch (const std::out_of_range&) {
      return "out of range";
    }
    at = end + 1;
  }
  return "";
}

template <class Call>
std::string thrownBy(Call call) {
  try {
    call();
  } catch (const std::invalid_argument&) {
    return "invalid";
  } catch (const std::out_of_range&) {
    return "out of range";
  }
  return "";
}

std::string addressText(Chooser& choose) {
  static const std::vector<std::string> all = {
      "10.20.0.0", "0.0.0.0",   "127.0.0.1", "255.255.255.0", "555.0.0.0", "010.0.0.1", "1.2.3",
      "",          "1.2.3.4.5", " 1.2.3.4",  "1.2.3.4 ",      "1..2.3",    "10.0.30.0", "1.2.3.40",
      "10.0.0.9",  "a.b.c.d",   "1.2.3.\0"s, "99999999999.1", "-1.2.3.4",  "1.2.x.4"};
  return choose.one(all);
}

void useAddress(Step& step) {
  const unsigned object = anyObject(step.choose);
  ModelAddress& model = step.world.model.addresses[object];
  zn_lib::IPv4& own = step.world.addresses[object];
  switch (step.choose.below(7)) {
    case 0: {
      const std::string text = addressText(step.choose);
      step.call("IPv4::set", text);
      const bool isSet = hasForm(text) && readBlocks(text, model.binary);
      if (isSet) model.blocks = model.binary;
      step.same(isSet, own.set(text));
      break;
    }
    case 1: {
      for (unsigned char& byte : model.binary) {
        byte = static_cast<unsigned char>(step.choose.below(256));
      }
      model.blocks = model.binary;
      unsigned value;
      std::memcpy(&value, model.binary.data(), sizeof value);
      step.call("IPv4::set", value);
      step.same(true, own.set(value));
      break;
    }
    case 2: {
      const std::string text = addressText(step.choose);
      step.call("validFormat", text);
      step.same(hasForm(text), own.validFormat(text));
      break;
    }
    case 3: {
      const std::string text = addressText(step.choose);
      step.call("textToBlocks", text);
      step.same(readParts(text, model.blocks), thrownBy([&] { own.textToBlocks(text); }));
      break;
    }
    case 4: {
      for (unsigned char& byte : model.blocks) {
        byte = static_cast<unsigned char>(step.choose.below(256));
      }
      unsigned value;
      std::memcpy(&value, model.blocks.data(), sizeof value);
      step.call("binaryToBlocks", value);
      own.binaryToBlocks(value);
      break;
    }
    case 5:
      step.call("blocksToBinary");
      model.binary = model.blocks;
      step.same(1, own.blocksToBinary());
      break;
    default: {
      step.call("getLevel");
      int level = 3;
      while (level >= 0 && model.blocks[static_cast<std::size_t>(level)] == 0) --level;
      step.same(level, own.getLevel());
    }
  }
  step.same(dotted(model.binary), own.text());
  step.same(dotted(model.blocks), dotted(blocksOf(own)));
}

void useLongAddress(Step& step) {
  const unsigned object = anyObject(step.choose);
  in6_addr& model = step.world.model.six[object];
  zn_lib::IPv6& own = step.world.six[object];
  const std::string text = step.choose.one(
      {"::1"s, "::"s, "1:2:3:4:5:6:7:8:9"s, "2001:DB8:0:0:0:0:0:1"s, ""s, "::ffff:10.0.0.1"s,
       "1:0:0:2:0:0:0:3"s, "fe80::1%lo"s, "::1\0x"s, " ::1"s, "12345::"s});
  step.call("IPv6::set", text);
  in6_addr read;
  const bool isSet = inet_pton(AF_INET6, text.c_str(), &read) == 1;
  if (isSet) model = read;
  step.same(isSet, own.set(text));
  char expected[INET6_ADDRSTRLEN];
  inet_ntop(AF_INET6, &model, expected, sizeof expected);
  step.same(expected, own.text());
}

}  // namespace

void addSky(Kinds& kinds) {
  kinds.push_back(
      {"DayLength::compute DayLength::cumulative DayLength::FNday DayLength::FNrange "
       "DayLength::FNsun DayLength::hourAngle",
       useDayLength, 12});
  kinds.push_back({"DayLength::DayLength DayLength::~DayLength", createDayLength, 2});
  kinds.push_back(
      {"MoonPhase::compute MoonPhase::sunPosition MoonPhase::moonPosition", useMoonPhase, 6});
}

void addAddresses(Kinds& kinds) {
  kinds.push_back(
      {"IPv4::set IPv4::validFormat IPv4::textToBlocks IPv4::binaryToBlocks "
       "IPv4::blocksToBinary IPv4::getLevel IPv4::text",
       useAddress, 14});
  kinds.push_back({"IPv6::set IPv6::text", useLongAddress, 6});
}

}  // namespace histories
