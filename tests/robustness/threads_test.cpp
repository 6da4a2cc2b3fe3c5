/// Functions that threads may call at the same time, and functions that a host must serialise. A
/// wrong answer fails a test, and so does a data race under ThreadSanitizer.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
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
#include <zn_shell.h>
#include <zn_str.h>
#include <zn_writefile.h>
#include <zn_xmlparser.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "output_capture.h"
#include "redirected_descriptor.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "xml_outline.h"

namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 200;

/// The arguments of one thread. They differ between threads, so that state shared by mistake
/// changes an answer.
struct Own {
  int number;
  std::string word;
  std::string directory;

  std::string file(const std::string& name) const { return directory + "/" + name; }
};

std::string shown(const std::string& answer) { return answer; }

std::string shown(double answer) {
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%a", answer);
  return text.data();
}

template <class Number, std::enable_if_t<std::is_integral_v<Number>, bool> = true>
std::string shown(Number answer) {
  return std::to_string(answer);
}

template <class Text>
std::string shown(std::vector<Text> answer) {
  std::sort(answer.begin(), answer.end());
  std::string all;
  for (const Text& text : answer) all += text + ',';
  return all;
}

std::string shown(const zn_lib::date_time_record& date) {
  return shown(date.year) + '-' + shown(date.month) + '-' + shown(date.day) + ' ' +
         shown(date.hour) + ':' + shown(date.minute) + ':' + shown(date.second);
}

std::string shown(const Catalog& catalog) {
  std::string all;
  for (const auto& [number, message] : catalog) all += shown(number) + '=' + message + ',';
  return all;
}

template <class... Answers>
std::string answers(const Answers&... all) {
  return (std::string() + ... + ('[' + shown(all) + ']'));
}

/// A few calls of a kind, whose results are joined into one text.
struct Call {
  const char* what;
  std::function<std::string(const Own&)> answer;
};

// ---- Stateless functions

std::string trimAndConvert(const Own& own) {
  const std::string text = " \t" + own.word + " Ab 'c' \r\n";
  return answers(zn_lib::leftTrim(text), zn_lib::rightTrim(text), zn_lib::allTrim(text),
                 zn_lib::stringToUpper(text), zn_lib::stringToLower(text),
                 zn_lib::stringToBool(own.number % 2 == 0 ? "Yes" : "no"),
                 zn_lib::stringToDouble(std::to_string(own.number) + "e3x"),
                 zn_lib::isNumber("-1,234." + std::to_string(own.number)));
}

std::string buildAndRewrite(const Own& own) {
  const std::string& word = own.word;
  return answers(zn_lib::rightPad(word, 20, '0'), zn_lib::leftPad(word, 20, '.'),
                 zn_lib::percentString(own.number, 7, 2), zn_lib::replicateChar('x', own.number),
                 zn_lib::replicateString(word, own.number), zn_lib::replaceChar(word, word[0], '-'),
                 zn_lib::removeChar(word + "-", '-'), zn_lib::removeQuotes("'" + word + "\""),
                 zn_lib::inQuotes(word, '\''), zn_lib::replaceString(word, word, "z" + word),
                 zn_lib::findStrings(word, {"zz", word}));
}

std::string refuseNegativeCount(const Own& own) {
  try {
    return zn_lib::replicateChar('x', -own.number - 1);
  } catch (const std::length_error&) {
    return "length_error";
  }
}

std::string splitAtCharacters(const Own& own) {
  zn_lib::Tokenizer tokenizer(own.word + ",b;;" + own.word, ",;");
  const std::size_t count = tokenizer.tokens.size();
  const bool sorted = tokenizer.sortTokens();
  return answers(count, sorted, tokenizer.getToken(1), tokenizer.getToken(9), tokenizer.tokens);
}

std::string splitWithTheEngine(const Own& own) {
  zn_lib::Tokenizer bySet;
  zn_lib::Tokenizer byPattern;
  const std::size_t sets = bySet.split(own.word + "1b22" + own.word, "0-9");
  const std::size_t patterns = byPattern.splitMulti(own.word + ", b,c" + own.word, ", ?");
  return answers(sets, bySet.tokens, patterns, byPattern.tokens);
}

std::string refuseMalformedSet(const Own& own) {
  zn_lib::Tokenizer tokenizer;
  try {
    tokenizer.split(own.word, "z-a");
    return "taken";
  } catch (const std::regex_error&) {
    return answers(tokenizer.tokens);
  }
}

std::string takeNamesApart(const Own& own) {
  std::string name = "dir\\" + own.word + ".txt";
  const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
  std::string slashed = own.word;
  zn_lib::addEndSlash(slashed);
  std::string home = " ~/" + own.word;
  zn_lib::checkHomePath(home);
  return answers(name, parts.path, parts.name, parts.extension, slashed, home,
                 zn_lib::stripExtension(name), zn_lib::createFileName("~", own.word, "cfg"));
}

std::string changeFiles(const Own& own) {
  const std::string copy = own.file("copy");
  const std::string moved = own.file("moved");
  const bool copied = zn_lib::fileCopy(own.file("report.txt"), copy, true);
  const bool kept = !zn_lib::fileCopy(own.file("report.txt"), copy, false);
  const bool renamed = zn_lib::fileRename(copy, moved, true);
  const bool backedUp = zn_lib::createBackup(moved);
  const std::string text = readFile(moved + "~");
  std::filesystem::remove(moved + "~");
  return answers(copied, kept, renamed, backedUp, text, zn_lib::hexDump(own.file("missing"), 16));
}

std::string listDirectories(const Own& own) {
  std::vector<std::string> plain;
  std::vector<std::string> engine;
  std::vector<std::string> directories;
  std::vector<std::string> none;
  const bool all = zn_lib::listDir(own.directory, "\\.txt$", true, plain) &&
                   zn_lib::listDir(own.directory, "^r.*t$", false, engine) &&
                   zn_lib::listDir(own.directory, "<dir>", true, directories);
  return answers(all, plain, engine, directories, zn_lib::listDir(own.directory, "(", true, none),
                 zn_lib::listDir(own.file("missing"), "", true, none), none);
}

std::string copyDirectories(const Own& own) {
  std::string source = own.file("inner");
  std::string target = own.file("copies");
  const bool copied = zn_lib::copyDir(source, target);
  const std::string text = readFile(target + "/note");
  std::filesystem::remove_all(target);
  const bool created = zn_lib::createDir(target);
  const bool again = zn_lib::createDir(target);
  std::filesystem::remove(target);
  return answers(copied, text, created, again);
}

std::string numberNames(const Own& own) {
  std::string name = own.file("report.txt");
  zn_lib::sequentialFile(name);
  std::string engine = own.file("rep.*.txt");
  zn_lib::sequentialFile(engine);
  return answers(name, engine);
}

std::string writeAndRead(const Own& own) {
  std::string name = own.file("written.txt");
  zn_lib::WriteFile out;
  out.setFileName(name);
  const bool created = out.fileOpen();
  out.file << own.word << '\n' << own.number << '\n';
  out.fileClose();
  out.append = true;
  const bool appended = out.fileOpen();
  out.file << "end\n";
  out.fileClose();

  zn_lib::ReadFile in;
  in.setFileName(name);
  const bool opened = in.fileOpen();
  std::string first, second, third;
  in.file >> first >> second >> third;
  in.fileClose();
  std::filesystem::remove(name);
  return answers(created, appended, opened, in.getFileName(), first, second, third);
}

std::string parseXml(const Own& own) {
  XmlOutline outline;
  XMLParser parser(&outline);
  const bool created = parser.Create("UTF-8", nullptr);
  parser.EnableStartElementHandler(true);
  parser.EnableCharacterDataHandler(true);
  const std::string document = "<a k='" + own.word + "'>" + own.word + "<b></a>";
  const bool parsed = parser.Parse(document.c_str(), true);
  return answers(created, parsed, outline.text, std::string(parser.GetErrorString()),
                 parser.GetCurrentByteIndex());
}

std::string readCatalogs(const Own& own) {
  Catalog catalog;
  const bool read = zn_lib::readErrorFile(own.file("errors.xml"), catalog);
  zn_lib::readErrorFile(own.file("missing.xml"), catalog);
  zn_lib::showErrorMessage(catalog, own.number + 100);
  zn_lib::showErrorList(catalog);

  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  std::string name = own.file("errors.xml");
  reader.setFileName(name);
  const bool parsed = reader.parseFile();
  return answers(read, catalog, parsed, reader.event->data);
}

std::string useSettings(const Own& own) {
  zn_lib::Configuration store("TOOL", "store");
  store.path = own.directory;
  const bool loaded = store.load();
  store.set(" added ", own.word);
  store.set("typed", "INTEGER", std::to_string(own.number), "a number");
  const std::string described = store.get("added").describe;
  const std::string values = answers(store.get("word").value, store.get("added").value,
                                     store.get("typed").type, store.get("missing").type);
  // Threads must not save at the same time, so the destructor must not.
  store.changed = false;
  return answers(loaded, described, values, store.getConfigurationFile());
}

std::string computeDates(const Own& own) {
  const auto day = static_cast<unsigned short>(own.number + 1);
  zn_lib::date_time_record date{day, 3, 2024, 14, 7, 9.25};
  zn_lib::date_time_record noon = date;
  zn_lib::resetDateTime(noon);
  zn_lib::date_time_record repaired{40, 15, 2023, 0, 0, 0.0};
  zn_lib::validDate(repaired);
  const unsigned long long julian = zn_lib::dateToJulian(date);
  return answers(noon, repaired, zn_lib::isValidDate(day, 2, 2023), zn_lib::isValidDateTime(date),
                 zn_lib::getMonthDays(day), zn_lib::getDayOfYear(date),
                 zn_lib::getDayOfYear(day, 3, 2024), zn_lib::getAstronomicDay(date),
                 zn_lib::getAstronomicDay(day, 3, 2024), zn_lib::getMonthNumber("Sept"),
                 zn_lib::getMonthName(day, true), julian, zn_lib::julianToDate(julian),
                 zn_lib::dateToJulian(2024, day, day, 1, 2, 3.5), zn_lib::dateToJulianDays(date));
}

std::string readAndFormatDates(const Own& own) {
  const std::string day = zn_lib::rightPad(std::to_string(own.number + 1), 2, '0');
  const unsigned long long julian = zn_lib::dateToJulian("2024-03-" + day + "T14:07:09");
  zn_lib::date_time_record date;
  zn_lib::parseISOdate("202403" + day + "T1407", date);
  zn_lib::date_time_set settings = zn_lib::getDateTimeFormat();
  settings.dateFormat = zn_lib::DAY_MONTH_YEAR;
  settings.monthFormat = zn_lib::MONTH_FULL_NAME;
  return answers(julian, date, zn_lib::isValidISOdate("2024-02-" + day), zn_lib::isUseTime(),
                 zn_lib::dateToISO(day + " March 2024"), zn_lib::julianToISO(julian),
                 zn_lib::julianToYYYYMMDD(julian), zn_lib::formatJulianDate(julian, settings),
                 zn_lib::formatJulianDate(julian), zn_lib::hourFormat(own.number + 0.3));
}

std::string computeDayLength(const Own& own) {
  zn_lib::DayLength day;
  day.julian = zn_lib::dateToJulian(2024, 6, 21, 12, 0, 0.0);
  day.latitude = own.number * 7.0;
  const double hours = day.compute();
  return answers(hours, day.FNday(), day.FNrange(own.number * 5.0), day.FNsun(own.number),
                 day.hourAngle(0.3), day.cumulative(own.number), day.dayLength);
}

std::string computeMoonPhase(const Own& own) {
  zn_lib::MoonPhase moon;
  moon.days = 16000.0 + own.number * 3.7;
  moon.compute();
  return answers(moon.phaseAngle, moon.illuminated, moon.phase, moon.sunPosition(),
                 moon.moonPosition());
}

std::string readAddresses(const Own& own) {
  zn_lib::IPv4 four;
  const bool taken = four.set("10." + std::to_string(own.number % 6) + ".0.1");
  const bool refused = four.set("192.168.0.1");
  zn_lib::IPv4 blocks;
  blocks.textToBlocks("1.2.3." + std::to_string(own.number));
  blocks.blocksToBinary();
  zn_lib::IPv4 value;
  value.set(htonl(0x0A000000U + static_cast<unsigned int>(own.number)));
  zn_lib::IPv6 six;
  const bool set = six.set("fe80::" + std::to_string(own.number));
  return answers(taken, refused, four.text(), four.getLevel(), blocks.text(), value.text(), set,
                 six.text());
}

std::string askThePlatform(const Own& own) {
  return answers(zn_lib::getOSName(), zn_lib::getOSRelease(), zn_lib::IsBigEndian(),
                 zn_lib::rotate2b(static_cast<short>(own.number)),
                 zn_lib::rotate4b(static_cast<unsigned int>(own.number)));
}

const std::vector<Call> kStateless = {
    {"trimming and conversion", trimAndConvert},
    {"building and rewriting", buildAndRewrite},
    {"a negative count", refuseNegativeCount},
    {"tokens at characters", splitAtCharacters},
    {"tokens by the engine", splitWithTheEngine},
    {"a malformed set", refuseMalformedSet},
    {"file names", takeNamesApart},
    {"file operations", changeFiles},
    {"listDir", listDirectories},
    {"copyDir and createDir", copyDirectories},
    {"sequentialFile", numberNames},
    {"WriteFile and ReadFile", writeAndRead},
    {"XMLParser", parseXml},
    {"error catalogs", readCatalogs},
    {"Configuration", useSettings},
    {"dates", computeDates},
    {"dates as text", readAndFormatDates},
    {"day length", computeDayLength},
    {"moon phase", computeMoonPhase},
    {"IP addresses", readAddresses},
    {"platform", askThePlatform},
};

// ---- Functions with process-wide state

std::string talk(const Own& own) {
  zn_lib::setVerbose(own.number % 2 == 0);
  const bool verbose = zn_lib::isVerbose();
  zn_lib::display(own.word + ", ");
  zn_lib::message(own.word);
  zn_lib::errorMessage(own.word);
  zn_lib::processTitle(own.word);
  zn_lib::debugMessage(own.word);
  errno = ENOENT;
  zn_lib::systemError();
  zn_lib::setVerbose(false);
  return answers(verbose);
}

std::string ask(const Own& own) {
  zn_lib::pauseKey();
  return answers(zn_lib::more(), zn_lib::yesOrNo(own.word + "? "));
}

std::string print(const Own& own) {
  zn_lib::ReadFile report;
  std::string name = own.file("report.txt");
  report.setFileName(name);
  report.fileOpen();
  zn_lib::Configuration store("TOOL", "store");
  store.path = own.directory;
  store.load();
  store.listConfiguration();
  return answers(report.cat(), zn_lib::hexDump(name, 16), zn_lib::platformInfo());
}

std::string setDates(const Own& own) {
  const unsigned long long julian = zn_lib::dateToJulian(2024, 3, own.number + 1, 12, 0, 0.0);
  zn_lib::setDateTimeFormat(zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_SHORT_NAME, own.word[0], 'T', '.',
                            own.number % 2 == 0);
  const std::string first = zn_lib::formatJulianDate(julian);
  zn_lib::setDateFormat(zn_lib::MONTH_DAY_YEAR);
  zn_lib::setMonthFormat(zn_lib::MONTH_NUMBER);
  zn_lib::setDateSeparator('/');
  zn_lib::setDateTimeSeparator(own.word[0]);
  zn_lib::setTimeSeparator(';');
  zn_lib::setUseTime(own.number % 3 == 0);
  const std::string second = zn_lib::formatJulianDate(julian);
  zn_lib::defaultDateTimeFormat();
  return answers(first, second, zn_lib::formatJulianDate(julian));
}

std::string readLocalTime(const Own&) {
  zn_lib::date_time_record today;
  zn_lib::getToday(today);
  return answers(zn_lib::isValidDateTime(today), zn_lib::isValidISOdate(zn_lib::getTodayAsISO()),
                 zn_lib::getTodayAsISO().size());
}

std::string enterDirectory(const Own& own) {
  const bool changed = zn_lib::changeDir(own.directory);
  std::vector<std::string> names;
  const bool listed = zn_lib::listDir("", "\\.txt$", true, names);
  const std::string here = std::filesystem::current_path();
  return answers(changed, listed, names, here, zn_lib::changeDir(".."));
}

std::string saveSettings(const Own& own) {
  {
    zn_lib::Configuration saved("TOOL", "saved");
    saved.path = own.directory;
    saved.set("word", own.word);
    saved.save();
    saved.set("number", std::to_string(own.number));
  }
  zn_lib::Configuration loaded("TOOL", "saved");
  loaded.path = own.directory;
  loaded.load();
  return answers(loaded.get("word").value, loaded.get("number").value,
                 loaded.get("UPDATE").value.size());
}

const std::vector<Call> kSerialised = {
    {"messages", talk},
    {"prompts", ask},
    {"printing", print},
    {"date settings", setDates},
    {"local time", readLocalTime},
    {"working directory", enterDirectory},
    {"Configuration::save", saveSettings},
};

// ---- Threads

/// Holds threads back until all have arrived.
class StartingLine {
 public:
  explicit StartingLine(int runners) : missing_(runners) {}

  void wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    --missing_;
    complete_.notify_all();
    complete_.wait(lock, [this] { return missing_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable complete_;
  int missing_;
};

void inEachThread(const std::function<void(int)>& run) {
  StartingLine start(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&start, &run, i] {
      start.wait();
      run(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

std::vector<std::string> answersOf(const std::vector<Call>& calls, const Own& own) {
  std::vector<std::string> all;
  for (const Call& call : calls) all.push_back(call.answer(own));
  return all;
}

/// Gives each thread arguments and a directory of its own.
class Threads : public InTemporaryDirectory {
 protected:
  Threads() {
    zn_lib::defaultDateTimeFormat();
    for (int i = 0; i < kThreads; ++i) {
      const std::string word(static_cast<std::size_t>(3 * i + 2), static_cast<char>('a' + i));
      owns_.push_back({i, word, directory.string() + "/" + word});
      prepare(owns_.back());
    }
  }

  /// Runs all calls in every thread, and compares their answers with those of a single thread.
  void expectTheAnswersOfOneThread(const std::vector<Call>& calls, int rounds) {
    std::vector<std::vector<std::string>> expected;
    for (const Own& own : owns_) expected.push_back(answersOf(calls, own));

    std::vector<std::string> differences(kThreads);
    inEachThread([&](int thread) {
      const auto i = static_cast<std::size_t>(thread);
      differences[i] = firstDifference(calls, owns_[i], expected[i], rounds);
    });
    for (const std::string& difference : differences) EXPECT_EQ(difference, "");
  }

 private:
  static void prepare(const Own& own) {
    std::filesystem::create_directories(own.file("inner"));
    writeFile(own.file("inner/note"), own.word);
    writeFile(own.file("report.txt"), "report of " + own.word);
    writeFile(own.file("errors.xml"),
              "<E>" + errorXml(std::to_string(own.number), own.word) + "</E>");
    zn_lib::Configuration store("TOOL", "store");
    store.path = own.directory;
    store.set("word", own.word);
  }

  /// All threads make the same call in even rounds, and different ones in odd rounds.
  static std::string firstDifference(const std::vector<Call>& calls, const Own& own,
                                     const std::vector<std::string>& expected, int rounds) {
    for (int round = 0; round < rounds; ++round) {
      const auto shift = static_cast<std::size_t>(round % 2 == 0 ? 0 : own.number * 3);
      for (std::size_t i = 0; i < calls.size(); ++i) {
        const std::size_t which = (i + shift) % calls.size();
        const std::string answer = calls[which].answer(own);
        if (answer == expected[which]) continue;
        return std::string(calls[which].what) + ": " + answer + " instead of " + expected[which];
      }
    }
    return "";
  }

  std::vector<Own> owns_;
};

TEST_F(Threads, MayCallStatelessFunctionsAtTheSameTime) {
  expectTheAnswersOfOneThread(kStateless, kRounds);
}

int count(const std::string& text, const std::string& searched) {
  int found = 0;
  for (std::size_t at = 0; (at = text.find(searched, at)) != std::string::npos; ++at) ++found;
  return found;
}

TEST_F(Threads, MayCallFunctionsWithSharedStateInTurn) {
  constexpr int rounds = 25;
  const RedirectedDescriptor input(STDIN_FILENO, "/dev/null", O_RDONLY);
  std::mutex turn;
  std::vector<Call> inTurn;
  for (const Call& call : kSerialised) {
    inTurn.push_back({call.what, [&turn, &call](const Own& own) {
                        const std::lock_guard<std::mutex> lock(turn);
                        return call.answer(own);
                      }});
  }
  const Written text = written([&] { expectTheAnswersOfOneThread(inTurn, rounds); });

  // A single thread makes the calls once before.
  constexpr int times = kThreads * (rounds + 1);
  EXPECT_EQ(count(text.out, "DEBUG: "), times);
  EXPECT_EQ(count(text.out, "Platform information\n"), times);
  EXPECT_EQ(count(text.out, "report of "), times);
  EXPECT_EQ(count(text.out, "[ TOOL ]\n"), times);
  EXPECT_EQ(count(text.err, "ERROR: "), times / 2 * 2) << "two from every other thread";
}

TEST_F(Threads, MayRunShellCommandsAtTheSameTime) {
  constexpr int commands = 5;
  std::vector<int> successes(kThreads);
  inEachThread([&](int thread) {
    const std::string command = "printf x >> command" + std::to_string(thread);
    for (int i = 0; i < commands; ++i) {
      successes[static_cast<std::size_t>(thread)] += zn_lib::execShell(command) ? 1 : 0;
    }
  });
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(successes[static_cast<std::size_t>(i)], commands);
    EXPECT_EQ(readFile("command" + std::to_string(i)), std::string(commands, 'x'));
  }
}

TEST_F(Threads, ReapOneChildWithEachCall) {
  constexpr int children = 5;
  inEachThread([](int) {
    for (int i = 0; i < children; ++i) zn_lib::childProcess("/bin/true", "", true);
  });
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
  EXPECT_EQ(errno, ECHILD);
}

}  // namespace
