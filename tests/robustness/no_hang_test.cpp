/// Special files, and numbers at the limits of their types. Every function returns at once, with
/// the documented result.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tokenizer.h>
#include <unistd.h>
#include <zn_datetime.h>
#include <zn_daylength.h>
#include <zn_dir.h>
#include <zn_error.h>
#include <zn_file.h>
#include <zn_ip.h>
#include <zn_moonphase.h>
#include <zn_output.h>
#include <zn_platform.h>
#include <zn_process.h>
#include <zn_readfile.h>
#include <zn_seqfile.h>
#include <zn_setcfg.h>
#include <zn_str.h>
#include <zn_writefile.h>
#include <zn_xmlparser.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "captured_stream.h"
#include "default_date_format.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "unprivileged.h"

namespace {

using namespace std::string_literals;

void expectAtOnce(const std::function<void()>& run) {
  const auto start = std::chrono::steady_clock::now();
  run();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

/// Runs `test` in a child without root's privileges, which is killed if it hangs.
void expectToEnd(const std::function<void()>& test) {
  constexpr unsigned patienceSeconds = 20;
  EXPECT_EQ(withoutPrivileges([&] {
              alarm(patienceSeconds);
              test();
              return testing::Test::HasFailure() ? 1 : 0;
            }),
            0)
      << kSignalled + SIGALRM << ": it hangs";
}

// ---- Files

/// What a name stands for.
enum Object {
  kDirectory,
  kFull,  // a device that accepts nothing and whose text never ends
  kNull,  // a device that accepts everything and has no text
  kUnreadable,
  kDangling,
  kLoop,
  kLongPath,
  kLongName,
  kNoName,
  kWithNul,
};

using Objects = std::set<Object>;

const Objects kAll = {kDirectory, kFull,     kNull,     kUnreadable, kDangling,
                      kLoop,      kLongPath, kLongName, kNoName,     kWithNul};
const Objects kExisting = {kDirectory, kFull, kNull, kUnreadable, kWithNul};
const Objects kReadable = {kDirectory, kFull, kNull, kWithNul};
const Objects kWritable = {kFull, kNull, kWithNul};

struct Name {
  const char* what;
  std::string name;
};

/// Returns the name of an object in the working directory. Devices have links there, so that no
/// operation renames or removes those of the machine.
const Name& nameOf(Object object) {
  static const std::map<Object, Name> names = {
      {kDirectory, {"a directory", "directory"}},
      {kFull, {"an endless device that is full", "full"}},
      {kNull, {"an empty device", "null"}},
      {kUnreadable, {"a file without permissions", "unreadable"}},
      {kDangling, {"a dangling link", "dangling"}},
      {kLoop, {"a link to itself", "loop"}},
      {kLongPath, {"a name longer than any path", std::string(4096, 'p')}},
      {kLongName, {"a name longer than any file name", std::string(256, 'n')}},
      {kNoName, {"the empty name", ""}},
      {kWithNul, {"the name of a file, followed by a NUL", "plain\0x"s}},
  };
  return names.at(object);
}

void makeObjects() {
  std::filesystem::create_directory("directory");
  writeFile("directory/file", "text\n");
  std::filesystem::create_symlink("/dev/full", "full");
  std::filesystem::create_symlink("/dev/null", "null");
  writeFile("unreadable", "text\n");
  chmod("unreadable", 0);
  std::filesystem::create_symlink("nowhere/file", "dangling");
  std::filesystem::create_symlink("loop", "loop");
  writeFile("plain", "text\n");
}

bool readFrom(const std::string& object) {
  std::string name = object;
  zn_lib::ReadFile file;
  file.setFileName(name);
  const bool isOpen = file.fileOpen();
  EXPECT_EQ(file.cat(), isOpen);
  return isOpen;
}

bool writeTo(const std::string& object, bool append) {
  std::string name = object;
  zn_lib::WriteFile file;
  file.setFileName(name);
  file.append = append;
  const bool isOpen = file.fileOpen();
  file.file << "text";
  file.fileClose();
  EXPECT_EQ(file.file.fail(), !isOpen || object == "full");
  return isOpen;
}

bool save(const std::string& object, bool backup) {
  zn_lib::Configuration store("TYPE", object);
  store.extension.clear();
  store.backup = backup;
  store.set("key", "value");
  const bool isSaved = store.save();
  EXPECT_EQ(store.changed, !isSaved);
  store.changed = false;
  return isSaved;
}

bool load(const std::string& object) {
  zn_lib::Configuration store("TYPE", object);
  store.extension.clear();
  const bool isLoaded = store.load();
  EXPECT_TRUE(store.elements.empty());
  return isLoaded;
}

bool readCatalog(const std::string& object) {
  Catalog catalog;
  const bool isRead = zn_lib::readErrorFile(object, catalog);
  EXPECT_TRUE(catalog.empty());
  return isRead;
}

bool parse(const std::string& object) {
  std::string name = object;
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  reader.setFileName(name);
  return reader.parseFile();
}

bool list(const std::string& object) {
  std::vector<std::string> entries;
  const bool isListed = zn_lib::listDir(object, "", false, entries);
  EXPECT_EQ(entries.empty(), !isListed);
  return isListed;
}

bool copyDirectory(std::string source, std::string target) {
  return zn_lib::copyDir(source, target);
}

bool enter(const std::string& object) {
  const std::filesystem::path before = std::filesystem::current_path();
  const bool isEntered = zn_lib::changeDir(object);
  EXPECT_EQ(std::filesystem::current_path() != before, isEntered);
  std::filesystem::current_path(before);
  return isEntered;
}

bool dump(const std::string& object, bool verbose) {
  zn_lib::setVerbose(verbose);
  return zn_lib::hexDump(object, 16);
}

bool number(const std::string& object) {
  std::string name = object;
  zn_lib::sequentialFile(name);
  return name.size() > 3 && name.substr(name.size() - 3) == "-1.";
}

bool split(const std::string& object) {
  std::string name = object;
  const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
  return parts.path + parts.name == object && zn_lib::stripExtension(name) == object;
}

struct Operation {
  const char* what;
  Objects succeeds;  // the objects for which it returns true
  std::function<bool(const std::string&)> run;
  Objects endless = {};  // the objects with which it does not end
};

// Copies and dumps of an endless device do not end.
const Operation kOperations[] = {
    {"fileCopy from it",
     {kDirectory, kNull, kUnreadable, kWithNul},
     [](const auto& name) { return zn_lib::fileCopy(name, "target", false); },
     {kFull}},
    {"fileCopy to it",
     {kDangling, kLoop, kLongPath, kLongName, kNoName},
     [](const auto& name) { return zn_lib::fileCopy("plain", name, false); }},
    {"fileCopy over it",
     {kFull, kNull, kUnreadable, kDangling, kLoop, kLongPath, kLongName, kNoName, kWithNul},
     [](const auto& name) { return zn_lib::fileCopy("plain", name, true); }},
    {"fileRename of it", kExisting,
     [](const auto& name) { return zn_lib::fileRename(name, "target", false); }},
    {"fileRename to it",
     {kDangling, kLoop},
     [](const auto& name) { return zn_lib::fileRename("plain", name, false); }},
    {"fileRename over it",
     {kFull, kNull, kUnreadable, kDangling, kLoop},
     [](const auto& name) { return zn_lib::fileRename("plain", name, true); }},
    {"createBackup", kExisting, [](const auto& name) { return zn_lib::createBackup(name); }},
    {"hexDump", kReadable, [](const auto& name) { return dump(name, false); }},
    {"hexDump, verbose",
     {kDirectory, kNull, kWithNul},
     [](const auto& name) { return dump(name, true); },
     {kFull}},
    {"listDir", {kDirectory, kNoName}, list},
    {"copyDir from it", kExisting, [](const auto& name) { return copyDirectory(name, "target"); }},
    {"copyDir to it", kExisting, [](const auto& name) { return copyDirectory("directory", name); }},
    {"changeDir", {kDirectory}, enter},
    {"createDir", {}, [](const auto& name) { return zn_lib::createDir(name); }},
    {"sequentialFile", kAll, number},
    {"splitFileName", kAll, split},
    {"ReadFile", kReadable, readFrom},
    {"WriteFile", kWritable, [](const auto& name) { return writeTo(name, false); }},
    {"WriteFile, appending", kWritable, [](const auto& name) { return writeTo(name, true); }},
    {"Configuration::load",
     {kDirectory, kFull, kNull, kUnreadable, kDangling, kLoop, kLongPath, kLongName, kWithNul},
     load},
    {"Configuration::save", kWritable, [](const auto& name) { return save(name, false); }},
    {"Configuration::save with a backup", kExisting,
     [](const auto& name) { return save(name, true); }},
    {"readErrorFile", kAll, readCatalog},
    {"ReadXml::parseFile", kReadable, parse},
    {"childProcess", kAll,
     [](const auto& name) { return zn_lib::childProcess(name, "", true) == 0; }},
};

class NoHang : public InTemporaryDirectory {
 protected:
  NoHang() { std::filesystem::permissions(".", std::filesystem::perms::all); }
};

/// Runs the operation on `object` in a directory of its own.
bool runOn(const Operation& operation, Object object) {
  std::filesystem::create_directory("work");
  std::filesystem::current_path("work");
  makeObjects();
  bool succeeds = false;
  expectAtOnce([&] { succeeds = operation.run(nameOf(object).name); });
  std::filesystem::current_path("..");
  std::filesystem::remove_all("work");
  return succeeds;
}

TEST_F(NoHang, OperationsOnSpecialFiles) {
  std::size_t cases = 0;
  for (const Operation& operation : kOperations) {
    cases += kAll.size() - operation.endless.size();
    SCOPED_TRACE(operation.what);
    expectToEnd([&] {
      const CapturedStream output(std::cout);
      for (const Object object : kAll) {
        if (operation.endless.count(object) != 0) continue;
        SCOPED_TRACE(nameOf(object).what);
        EXPECT_EQ(runOn(operation, object), operation.succeeds.count(object) != 0);
      }
    });
  }
  RecordProperty("cases", std::to_string(cases));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

// The system blocks a process that opens a pipe without a writer, until there is one.
TEST_F(NoHang, NamedPipesAreReadOnceThereIsAWriter) {
  const std::string catalog = "<E>" + errorXml("1", "one") + "</E>";
  const struct {
    const char* what;
    std::string text;
    std::function<bool()> run;
  } cases[] = {
      {"ReadFile", "text", [] { return readFrom("pipe"); }},
      {"hexDump", "text", [] { return dump("pipe", true); }},
      {"fileCopy", "text",
       [] { return zn_lib::fileCopy("pipe", "copy", true) && readFile("copy") == "text"; }},
      {"Configuration::load", "<r><k a='t'>v</k></r>",
       [] {
         zn_lib::Configuration store("TYPE", "pipe");
         store.extension.clear();
         return store.load() && store.get("k").value == "v";
       }},
      {"readErrorFile", catalog,
       [] {
         Catalog messages;
         return zn_lib::readErrorFile("pipe", messages) && messages == Catalog{{1, "one"}};
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    expectToEnd([&] {
      ASSERT_EQ(mkfifo("pipe", 0600), 0);
      const pid_t writer = fork();
      if (writer == 0) {
        usleep(20000);
        writeFile("pipe", c.text);
        _exit(0);
      }
      {
        const CapturedStream output(std::cout);
        expectAtOnce([&] { EXPECT_TRUE(c.run()); });
      }
      waitpid(writer, nullptr, 0);
      std::filesystem::remove("pipe");
    });
  }
}

// ---- Numbers

using Double = std::numeric_limits<double>;

const double kDoubles[] = {Double::quiet_NaN(),
                           -Double::quiet_NaN(),
                           Double::infinity(),
                           -Double::infinity(),
                           Double::max(),
                           Double::lowest(),
                           Double::min(),
                           -Double::min(),
                           Double::denorm_min(),
                           -Double::denorm_min(),
                           0.0,
                           -0.0,
                           59.9999999999,
                           1e17,
                           -1e17,
                           2147483648.0,
                           -2147483649.0,
                           9223372036854775808.0,
                           18446744073709551616.0};

constexpr int kInts[] = {INT_MIN, INT_MIN + 1, -65536, -1, 0, 1, 12, 65537, INT_MAX - 1, INT_MAX};

constexpr unsigned short kShorts[] = {0, 1, 2, 11, 12, 13, 24, 31, 32, 366, 32767, 32768, 65535};

constexpr unsigned long long kJulians[] = {0,
                                           1,
                                           43199999,
                                           43200000,
                                           LLONG_MAX - 1,
                                           LLONG_MAX,
                                           LLONG_MAX + 1ULL,
                                           ULLONG_MAX - 43200000,
                                           ULLONG_MAX - 43199999,
                                           ULLONG_MAX - 1,
                                           ULLONG_MAX};

class Limits : public WithDefaultDateFormat {};

TEST_F(Limits, FormatsOfJulianValues) {
  for (const unsigned long long julian : kJulians) {
    SCOPED_TRACE(julian);
    expectAtOnce([&] {
      const zn_lib::date_time_record record = zn_lib::julianToDate(julian);
      EXPECT_LT(record.hour, 24);
      EXPECT_LT(record.minute, 60);
      EXPECT_LT(record.second, 60.0);
      EXPECT_GE(record.second, 0.0);
      EXPECT_EQ(zn_lib::julianToISO(julian).empty(), julian == 0);
      EXPECT_EQ(zn_lib::julianToYYYYMMDD(julian).empty(), julian == 0);
      for (const int format : kInts) {
        const auto dateFormat = static_cast<zn_lib::DATE_FORMAT>(format);
        const auto monthFormat = static_cast<zn_lib::MONTH_FORMAT>(format);
        if (format < 0 || format > 2) {
          EXPECT_EQ(zn_lib::formatJulianDate(
                        julian, {dateFormat, zn_lib::MONTH_NUMBER, '-', ' ', ':', true}),
                    zn_lib::julianToISO(julian));
          EXPECT_EQ(zn_lib::formatJulianDate(
                        julian, {zn_lib::DAY_MONTH_YEAR, monthFormat, '-', ' ', ':', true}),
                    zn_lib::formatJulianDate(julian, {zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_NUMBER,
                                                      '-', ' ', ':', true}));
        }
      }
    });
  }
}

unsigned short to16Bits(int value) { return static_cast<unsigned short>(value); }

TEST_F(Limits, JulianValuesOfDates) {
  for (const int year : kInts) {
    for (const int month : kInts) {
      for (const int day : kInts) {
        const bool isDate = zn_lib::isValidDate(to16Bits(day), to16Bits(month), to16Bits(year));
        expectAtOnce([&] {
          for (const int hour : kInts) {
            for (const double second : kDoubles) {
              zn_lib::setUseTime(false);
              const unsigned long long noon =
                  zn_lib::dateToJulian(year, month, day, hour, hour, second);
              ASSERT_EQ(noon, zn_lib::dateToJulian(year, month, day, 0, 0, 0.0));
              zn_lib::setUseTime(true);
              const unsigned long long julian =
                  zn_lib::dateToJulian(year, month, day, hour, hour, second);
              ASSERT_TRUE(isDate || (julian == 0 && noon == 0)) << year << ' ' << month;
            }
          }
        });
      }
    }
  }
}

TEST_F(Limits, Records) {
  for (const unsigned short day : kShorts) {
    for (const unsigned short month : kShorts) {
      for (const unsigned short year : kShorts) {
        zn_lib::date_time_record record = {day, month, year, month, day, 0.0};
        const bool isDate = zn_lib::isValidDate(day, month, year);
        EXPECT_TRUE(!isDate || (day >= 1 && day <= 31 && month >= 1 && month <= 12));
        for (const double second : kDoubles) {
          record.second = second;
          EXPECT_EQ(zn_lib::isValidDateTime(record),
                    isDate && month < 24 && day < 60 && second < 60.0);
          EXPECT_EQ(std::isfinite(zn_lib::dateToJulianDays(record)), std::isfinite(second));
          EXPECT_TRUE(isDate || zn_lib::dateToJulian(record) == 0u);
        }
        EXPECT_EQ(
            zn_lib::getAstronomicDay(record),
            month == 12 && day >= 21 ? day - 21 : to16Bits(zn_lib::getDayOfYear(record) + 10));
        zn_lib::validDate(record);
        EXPECT_TRUE(record.day >= 1 && record.day <= 31 && record.month <= 12);
        EXPECT_EQ(record.month == 0, month > 12 && month % 12 == 0);
      }
    }
    EXPECT_EQ(zn_lib::getMonthDays(day) == 0, day < 1 || day > 12);
    EXPECT_EQ(zn_lib::getMonthName(day, day % 2 == 0).empty(), day < 1 || day > 12);
  }
}

TEST_F(Limits, HourFormat) {
  for (const double hours : kDoubles) {
    expectAtOnce([&] {
      std::string text = zn_lib::hourFormat(hours);
      EXPECT_EQ(std::count(text.begin(), text.end(), ':'), 1) << text;
      EXPECT_LT(text.size(), 32u) << text;
      text.erase(std::remove(text.begin(), text.end(), '-'), text.end());
      EXPECT_EQ(text == "nan:nan", std::isnan(hours)) << text;
      EXPECT_EQ(text == "inf:nan", std::isinf(hours)) << text;
    });
  }
}

TEST_F(Limits, DayLength) {
  constexpr double turn = 6.283185307179587;
  zn_lib::DayLength day;
  for (const double value : kDoubles) {
    SCOPED_TRACE(value);
    expectAtOnce([&] {
      const double angle = day.FNrange(value);
      EXPECT_TRUE(std::isfinite(value) ? angle >= 0.0 && angle <= turn : std::isnan(angle))
          << angle;
      const double longitude = day.FNsun(value);
      EXPECT_TRUE(std::isnan(longitude) || (longitude >= 0.0 && longitude <= turn)) << longitude;
      day.latitude = 52.0;
      const double half = day.hourAngle(value);
      EXPECT_TRUE(std::isnan(half) || (half >= 0.0 && half <= turn / 2)) << half;
    });
    for (const unsigned long long julian : kJulians) {
      SCOPED_TRACE(julian);
      expectAtOnce([&] {
        day.julian = julian;
        day.latitude = value;
        const double hours = day.compute();
        EXPECT_TRUE(std::isnan(hours) || (hours >= 0.0 && hours <= 24.0)) << hours;
        EXPECT_TRUE(std::isfinite(day.FNday()));
        // The time grows with the count. Of the counts at the limits only the lowest returns at
        // once.
        EXPECT_EQ(day.cumulative(INT_MIN), 0.0);
        for (const int count : {-100, -1, 0, 1, 100}) {
          const double sum = day.cumulative(count);
          EXPECT_TRUE(std::isnan(sum) || (sum >= 0.0 && sum <= 24.0 * 101 + 1e-9)) << sum;
        }
        EXPECT_EQ(day.julian, julian);
      });
    }
  }
}

TEST_F(Limits, MoonPhase) {
  for (const double days : kDoubles) {
    SCOPED_TRACE(days);
    expectAtOnce([&] {
      zn_lib::MoonPhase moon;
      moon.days = days;
      moon.compute();
      const double sun = moon.sunPosition();
      EXPECT_EQ(std::isnan(moon.phaseAngle), std::isnan(moon.moonPosition()));
      EXPECT_TRUE(moon.phase >= 0 && moon.phase <= 7);
      if (std::isnan(moon.phaseAngle)) {
        EXPECT_EQ(moon.phase, 0);
      } else {
        EXPECT_TRUE(std::isfinite(days));
        EXPECT_TRUE(sun >= 0.0 && sun <= 360.0) << sun;
        EXPECT_TRUE(moon.phaseAngle > -10.0 && moon.phaseAngle < 370.0) << moon.phaseAngle;
        EXPECT_TRUE(moon.illuminated >= 0.0 && moon.illuminated <= 1.0) << moon.illuminated;
      }
    });
  }
}

std::size_t decimalsOf(const std::string& percent) {
  const std::size_t point = percent.find('.');
  return point == std::string::npos ? 0 : percent.size() - point - 2;
}

TEST_F(Limits, PercentString) {
  for (const double part : kDoubles) {
    for (const double whole : kDoubles) {
      const bool isFinite = std::isfinite(part / whole * 100.0);
      for (const int decimals : {INT_MIN, -1, 0, 6, 1074, 1075, 100000}) {
        expectAtOnce([&] {
          const std::string text = zn_lib::percentString(part, whole, decimals);
          EXPECT_EQ(text.back(), '%');
          const std::size_t digits = decimals < 0 ? 6 : static_cast<std::size_t>(decimals);
          EXPECT_EQ(decimalsOf(text), isFinite ? digits : 0) << part << ' ' << whole;
        });
      }
      // A text without digits is not padded.
      if (!isFinite) {
        EXPECT_LT(zn_lib::percentString(part, whole, INT_MAX).size(), 6u);
      }
    }
  }
}

TEST_F(Limits, Texts) {
  expectAtOnce([] {
    for (const int width : {INT_MIN, INT_MIN + 1, -1, 0}) {
      EXPECT_EQ(zn_lib::leftPad("text", width, ' '), "text");
      EXPECT_EQ(zn_lib::rightPad("text", width, ' '), "text");
      EXPECT_EQ(zn_lib::replicateString("text", width), "");
    }
    EXPECT_EQ(zn_lib::replicateString("", INT_MAX), "");
    EXPECT_THROW(zn_lib::replicateChar('x', INT_MIN), std::length_error);
    EXPECT_THROW(zn_lib::replicateChar('x', -1), std::length_error);
    EXPECT_EQ(zn_lib::replicateChar(INT_MIN, 2), "\0\0"s) << "truncated to a char";
    EXPECT_EQ(zn_lib::replicateChar(INT_MAX, 2), "\xFF\xFF");
    for (const int character : {INT_MIN, -129, 128, 255, 256 + 't', INT_MAX}) {
      EXPECT_EQ(zn_lib::removeChar("text\0\xFF"s, character), "text\0\xFF"s);
      EXPECT_EQ(zn_lib::replaceChar("text\0\xFF"s, character, 'x'), "text\0\xFF"s);
    }
    EXPECT_EQ(zn_lib::replaceChar("text", 't', INT_MAX),
              "\xFF"
              "ex\xFF");
    const zn_lib::Tokenizer tokenizer("a,b", ",");
    EXPECT_EQ(tokenizer.getToken(std::numeric_limits<std::size_t>::max()), "");
  });
}

TEST_F(Limits, ByteOrderAndAddresses) {
  expectAtOnce([] {
    for (const short value : {short{SHRT_MIN}, short{-1}, short{0}, short{SHRT_MAX}}) {
      EXPECT_EQ(zn_lib::rotate2b(value), value);
    }
    for (const unsigned int value : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, UINT_MAX}) {
      EXPECT_EQ(zn_lib::rotate4b(value), value);
      zn_lib::IPv4 address;
      EXPECT_TRUE(address.set(value));
      EXPECT_EQ(address.blocksToBinary(), 1);
      EXPECT_EQ(address.binary, value);
      EXPECT_LE(address.text().size(), sizeof "255.255.255.255" - 1);
      EXPECT_EQ(address.getLevel() == -1, value == 0);
    }
    zn_lib::IPv4 address;
    address.textToBlocks("2147483647.-2147483648.-1.256");
    EXPECT_EQ(address.blocks[0], 255);
    EXPECT_EQ(address.blocks[1], 0);
    EXPECT_EQ(address.blocks[2], 255);
    EXPECT_EQ(address.blocks[3], 0);
    EXPECT_THROW(address.textToBlocks("2147483648"), std::out_of_range);
    EXPECT_THROW(address.textToBlocks("-2147483649"), std::out_of_range);
  });
}

TEST_F(Limits, CatalogsAndXml) {
  expectAtOnce([] {
    Catalog catalog;
    for (const int id : kInts) zn_lib::showErrorMessage(catalog, id);
    EXPECT_EQ(catalog.size(), std::size(kInts));
    zn_lib::ErrorEvent event;
    for (const int length : {INT_MIN, -1, 0}) EXPECT_EQ(event.skipWhiteSpace("text", length), "");
    EXPECT_EQ(event.skipWhiteSpace(" text", INT_MAX), "text") << "the text ends at its NUL";

    XMLParser parser(&event);
    ASSERT_TRUE(parser.Create(nullptr, nullptr));
    EXPECT_FALSE(parser.Parse(std::size_t{INT_MAX} + 1, false));
    EXPECT_FALSE(parser.Parse(std::numeric_limits<std::size_t>::max(), true));
    EXPECT_EQ(parser.GetBuffer(std::size_t{INT_MAX} + 1), nullptr);
    EXPECT_EQ(parser.GetBuffer(std::numeric_limits<std::size_t>::max()), nullptr);
  });
}

// The header has a number for each column, so it grows with the width.
TEST_F(NoHang, WidthsOfDumps) {
  writeFile("five", "12345");
  // A row that the end of the file completes is followed by an empty line.
  const struct {
    int width;
    std::ptrdiff_t lines;
  } cases[] = {{INT_MIN, 7}, {-1, 7}, {0, 7}, {1, 7}, {2, 4}, {6, 2}, {7, 1}, {100000, 1}};
  zn_lib::setVerbose(true);
  for (const auto& c : cases) {
    CapturedStream output(std::cout);
    expectAtOnce([&] { EXPECT_TRUE(zn_lib::hexDump("five", c.width)); });
    const std::string text = output.text();
    constexpr std::ptrdiff_t headerLines = 2;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), headerLines + c.lines) << c.width;
  }
  zn_lib::setVerbose(false);
}

}  // namespace
