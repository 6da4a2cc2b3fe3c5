/// Prints the results of functions on numbers, dates, the sky and addresses for many inputs, one on
/// each line. `./check portable` compares the lines of different machines.
#include <tokenizer.h>
#include <zn_datetime.h>
#include <zn_daylength.h>
#include <zn_ip.h>
#include <zn_moonphase.h>
#include <zn_platform.h>
#include <zn_str.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Exact arithmetic is printed with all digits. The last bits of sines differ between C libraries.
constexpr int kAllDigits = 17;
constexpr int kDigitsOfSines = 11;

std::string shown(double value, int digits = kAllDigits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*g", digits, value);
  return text;
}

std::string shown(const zn_lib::date_time_record& record) {
  char text[128];
  std::snprintf(text, sizeof text, "%u-%u-%u %u:%u:", record.year + 0U, record.month + 0U,
                record.day + 0U, record.hour + 0U, record.minute + 0U);
  return text + shown(record.second);
}

/// Escapes bytes that are not printable.
std::string shown(const std::string& text) {
  std::string all;
  for (const char c : text) {
    const unsigned byte = static_cast<unsigned char>(c);
    if (byte >= ' ' && byte < 127 && c != '\\') {
      all += c;
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\%02X", byte);
      all += escape;
    }
  }
  return all;
}

/// Prints a result without the sign of a NaN, which differs between processors.
void print(const std::string& call, std::string answer) {
  for (std::size_t at; (at = answer.find("-nan")) != std::string::npos;) answer.erase(at, 1);
  std::printf("%s = %s\n", call.c_str(), answer.c_str());
}

/// A random sequence that is the same on every machine. No expression uses two of its values, since
/// compilers evaluate arguments in different orders.
class Source {
 public:
  unsigned long long bits() { return engine_(); }
  int below(int limit) { return static_cast<int>(bits() % static_cast<unsigned>(limit)); }
  int any() { return static_cast<int>(static_cast<unsigned>(bits())); }

  /// Returns random bits, a number with few decimals, or a quotient of small integers.
  double number() {
    switch (below(3)) {
      case 0: {
        const unsigned long long pattern = bits();
        double value;
        std::memcpy(&value, &pattern, sizeof value);
        return value;
      }
      case 1: {
        constexpr double powers[] = {1, 10, 100, 1000, 1e4, 1e5, 1e6};
        const int value = below(2000001);
        return value / powers[below(7)] - 1000;
      }
      default: {
        const int part = below(2001) - 1000;
        return static_cast<double>(part) / (1 + below(1000));
      }
    }
  }

  std::string text(const std::string& alphabet, int most) {
    std::string text;
    for (int size = below(most + 1); size > 0; --size) {
      text += alphabet[static_cast<std::size_t>(below(static_cast<int>(alphabet.size())))];
    }
    return text;
  }

 private:
  std::mt19937_64 engine_{20240305};
};

const std::vector<double>& specialNumbers() {
  using Limits = std::numeric_limits<double>;
  static const std::vector<double> all = {0.0,
                                          -0.0,
                                          0.15,
                                          0.5,
                                          1.0,
                                          -1.0,
                                          23.999999,
                                          24.0,
                                          100.0,
                                          2147483647.5,
                                          2147483648.0,
                                          -2147483649.0,
                                          4294967295.0,
                                          4294967296.0,
                                          9007199254740993.0,
                                          9223372036854775807.0,
                                          -9223372036854775808.0,
                                          18446744073709551615.0,
                                          Limits::min(),
                                          Limits::denorm_min(),
                                          Limits::max(),
                                          Limits::lowest(),
                                          Limits::infinity(),
                                          -Limits::infinity(),
                                          Limits::quiet_NaN()};
  return all;
}

void printPercentage(double part, double whole, int decimals) {
  print(
      "percentString(" + shown(part) + ", " + shown(whole) + ", " + std::to_string(decimals) + ")",
      zn_lib::percentString(part, whole, decimals));
}

void printStrings(Source& source) {
  for (const double part : specialNumbers()) {
    for (const double whole : specialNumbers()) printPercentage(part, whole, 1);
  }
  for (int part = 0; part <= 1000; ++part) {
    for (const int whole : {3, 7, 800, 1000}) printPercentage(part, whole, 0);
  }
  for (int i = 0; i < 40000; ++i) {
    const double part = source.number();
    const double whole = source.number();
    printPercentage(part, whole, source.below(20));
  }

  for (int i = 0; i < 40000; ++i) {
    const std::string text = source.text("0123456789.,eE+-x \xE4", 12);
    print("stringToDouble(" + shown(text) + ")", shown(zn_lib::stringToDouble(text)));
    print("isNumber(" + shown(text) + ")", std::to_string(zn_lib::isNumber(text)));
  }
  for (int i = 0; i < 20000; ++i) {
    const std::string number = shown(source.number());
    print("stringToDouble(" + number + ")", shown(zn_lib::stringToDouble(number)));
    const std::string text = source.text("aZ \t\xE4\xFF'\"`", 8);
    print("stringToUpper(" + shown(text) + ")", shown(zn_lib::stringToUpper(text)));
    print("allTrim(" + shown(text) + ")", shown(zn_lib::allTrim(text)));
    const int from = source.any() % 600;
    const int to = source.any() % 600;
    print("replaceChar(" + shown(text) + ", " + std::to_string(from) + ", " + std::to_string(to) +
              ")",
          shown(zn_lib::replaceChar(text, from, to)));
  }
}

void printTokens(Source& source) {
  for (int i = 0; i < 40000; ++i) {
    const std::string text = source.text("ab-] \xC3\xE4\xFF\x7F", 8);
    const std::string pattern = source.text("abc--[[]]^\\dw.+\xC3\xE4", 7);
    for (const bool isSet : {false, true}) {
      std::string tokens;
      try {
        zn_lib::Tokenizer tokenizer;
        isSet ? tokenizer.split(text, pattern) : tokenizer.splitMulti(text, pattern);
        for (const std::string& token : tokenizer.tokens) tokens += "<" + shown(token) + ">";
      } catch (const std::regex_error&) {
        tokens = "throws";
      }
      print((isSet ? "split(" : "splitMulti(") + shown(text) + ", " + shown(pattern) + ")", tokens);
    }
  }
}

void printJulian(unsigned long long julian) {
  const std::string name = std::to_string(julian);
  print("julianToDate(" + name + ")", shown(zn_lib::julianToDate(julian)));
  const std::string iso = zn_lib::julianToISO(julian);
  print("julianToISO(" + name + ")", iso);
  print("dateToJulian(" + iso + ")", std::to_string(zn_lib::dateToJulian(iso)));
  print("julianToYYYYMMDD(" + name + ")", zn_lib::julianToYYYYMMDD(julian));
  print("formatJulianDate(" + name + ")", zn_lib::formatJulianDate(julian));
}

void printDate(int year, int month, int day, int hour, int minute, double second) {
  char name[128];
  std::snprintf(name, sizeof name, "(%d, %d, %d, %d, %d, ", year, month, day, hour, minute);
  print("dateToJulian" + (name + shown(second)) + ")",
        std::to_string(zn_lib::dateToJulian(year, month, day, hour, minute, second)));

  zn_lib::date_time_record record;
  record.year = static_cast<unsigned short>(year);
  record.month = static_cast<unsigned short>(month);
  record.day = static_cast<unsigned short>(day);
  record.hour = static_cast<unsigned short>(hour);
  record.minute = static_cast<unsigned short>(minute);
  record.second = second;
  const std::string call = "(" + shown(record) + ")";
  print("dateToJulianDays" + call, shown(zn_lib::dateToJulianDays(record)));
  print("getDayOfYear" + call, std::to_string(zn_lib::getDayOfYear(record)));
  print("getAstronomicDay" + call, std::to_string(zn_lib::getAstronomicDay(record)));
  print("isValidDateTime" + call, std::to_string(zn_lib::isValidDateTime(record)));
  zn_lib::validDate(record);
  print("validDate" + call, shown(record));
}

void printDates(Source& source) {
  for (const bool useTime : {false, true}) {
    zn_lib::defaultDateTimeFormat();
    zn_lib::setUseTime(useTime);
    for (int year = 1; year <= 65535; year += 1 + year / 16) {
      for (const int month : {1, 2, 3, 12}) printDate(year, month, 1 + year % 28, 6, 7, 8.9);
    }
    for (int i = 0; i < 5000; ++i) {
      const int year = source.below(65536);
      const int month = 1 + source.below(12);
      const int day = 1 + source.below(31);
      const int hour = source.below(24);
      const int minute = source.below(60);
      printDate(year, month, day, hour, minute, source.below(60000) / 1000.0);
    }
    for (int i = 0; i < 2000; ++i) {
      int fields[5];
      for (int& field : fields) field = source.any();
      printDate(fields[0], fields[1], fields[2], fields[3], fields[4], source.number());
    }
    for (const unsigned long long julian : {0ULL, 1ULL, 86399999ULL, 86400000ULL, ~0ULL, ~0ULL / 2})
      printJulian(julian);
    for (int i = 0; i < 10000; ++i) {
      printJulian(source.bits() % 2200000000000000ULL);  // later than the year 65535
      const unsigned long long bits = source.bits();
      printJulian(bits >> source.below(64));
    }
    for (int i = 0; i < 20000; ++i) {
      const std::string text = source.text("0123456789--::TZ. /,junFEB+", 20);
      zn_lib::date_time_record record;
      zn_lib::resetDateTime(record);
      zn_lib::parseISOdate(text, record);
      print("parseISOdate(" + text + ")", shown(record));
      print("dateToISO(" + text + ")", shown(zn_lib::dateToISO(text)));
      print("dateToJulian(" + text + ")", std::to_string(zn_lib::dateToJulian(text)));
    }
  }
  zn_lib::defaultDateTimeFormat();
  for (const double hours : specialNumbers())
    print("hourFormat(" + shown(hours) + ")", zn_lib::hourFormat(hours));
  for (int minutes = 0; minutes <= 24 * 60; ++minutes) {
    for (const double hours : {minutes / 60.0, minutes / 100.0, minutes * 0.05})
      print("hourFormat(" + shown(hours) + ")", zn_lib::hourFormat(hours));
  }
  for (int i = 0; i < 20000; ++i) {
    const double hours = source.number();
    print("hourFormat(" + shown(hours) + ")", zn_lib::hourFormat(hours));
  }
}

void printSky(Source& source) {
  for (int i = 0; i < 10000; ++i) {
    zn_lib::DayLength day;
    const int year = 1900 + source.below(300);
    const int month = 1 + source.below(12);
    day.julian = zn_lib::dateToJulian(year, month, 1 + source.below(28), 0, 0, 0.0);
    day.latitude = (source.below(180001) - 90000) / 1000.0;
    const std::string name =
        "day length on " + std::to_string(day.julian) + " at " + shown(day.latitude);
    print(name, shown(day.compute(), kDigitsOfSines));
    print(name + ", mean longitude", shown(day.meanLongitude, kDigitsOfSines));
    print(name + ", mean anomaly", shown(day.meanAnomaly, kDigitsOfSines));
    if (i % 10 == 0) {
      print(name + ", a month of them", shown(day.cumulative(source.below(31)), kDigitsOfSines));
    }
  }
  for (int i = 0; i < 10000; ++i) {
    zn_lib::MoonPhase moon;
    moon.days = 2400000 + source.below(80000000) / 1000.0;
    const std::string name = "moon at " + shown(moon.days);
    moon.compute();
    print(name + ", angle", shown(moon.phaseAngle, kDigitsOfSines));
    print(name + ", lit", shown(moon.illuminated, kDigitsOfSines));
    print(name + ", phase", std::to_string(moon.phase));
  }
  for (const double value : specialNumbers()) {
    zn_lib::MoonPhase moon;
    moon.days = value;
    moon.compute();
    print("moon at " + shown(value) + ", phase", std::to_string(moon.phase));
    zn_lib::DayLength day;
    print("FNrange(" + shown(value) + ")", shown(day.FNrange(value), kDigitsOfSines));
    day.julian = zn_lib::dateToJulian(2024, 6, 21, 0, 0, 0.0);
    day.latitude = value;
    print("day length at " + shown(value), shown(day.compute(), kDigitsOfSines));
  }
}

void printAddresses(Source& source) {
  for (int i = 0; i < 20000; ++i) {
    zn_lib::IPv4 address;
    const std::string text = source.text("012345.", 15);
    std::string answer = std::to_string(address.set(text));
    answer += " " + address.text() + " " + std::to_string(address.binary);
    print("IPv4::set(" + text + ")", answer);
    const unsigned bits = static_cast<unsigned>(source.bits());
    const unsigned value = bits >> source.below(32);
    address.set(value);
    address.blocksToBinary();
    print("IPv4::set(" + std::to_string(value) + ")", address.text() + ", level " +
                                                          std::to_string(address.getLevel()) + " " +
                                                          std::to_string(address.binary));
    std::string blocks;
    try {
      address.textToBlocks(source.text("0123456789.-", 14));
    } catch (const std::logic_error&) {
      blocks = "throws, ";
    }
    for (const unsigned char block : address.blocks) blocks += std::to_string(block) + " ";
    print("IPv4::textToBlocks", blocks);
    zn_lib::IPv6 wide;
    const std::string groups = source.text("01f::", 20);
    answer = std::to_string(wide.set(groups));
    answer += " " + wide.text();
    print("IPv6::set(" + groups + ")", answer);
  }
  for (int i = 0; i < 2000; ++i) {
    const int value = source.any();
    print("rotate2b", std::to_string(zn_lib::rotate2b(static_cast<short>(value))));
    print("rotate4b", std::to_string(zn_lib::rotate4b(static_cast<unsigned>(value))));
  }
}

}  // namespace

int main() {
  Source source;
  printStrings(source);
  printTokens(source);
  printDates(source);
  printSky(source);
  printAddresses(source);
  return std::ferror(stdout) == 0 ? 0 : 1;
}
