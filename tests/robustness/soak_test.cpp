/// Effects that show after many repetitions: saves that are killed, leaks of descriptors, memory
/// and child processes, and sums of as many terms as an int can count.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tokenizer.h>
#include <unistd.h>
#include <zn_datetime.h>
#include <zn_daylength.h>
#include <zn_dir.h>
#include <zn_error.h>
#include <zn_file.h>
#include <zn_ip.h>
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
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <iostream>
#include <limits>
#include <memory>
#include <random>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "child_status.h"
#include "emulation.h"
#include "long_run.h"
#include "memory_in_use.h"
#include "redirected_descriptor.h"
#include "resource_limits.h"
#include "shared_memory.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "xml_outline.h"

namespace {

using Clock = std::chrono::steady_clock;

class Soak : public InTemporaryDirectory {
 protected:
  ~Soak() override { zn_lib::setVerbose(false); }
};

// ---- Children with every handling of SIGCHLD

// These tests come first, while the process is small and quick to fork.

volatile std::sig_atomic_t reapedByHandler;

void reapAll(int) {
  const int error = errno;
  while (waitpid(-1, nullptr, WNOHANG) > 0) reapedByHandler = reapedByHandler + 1;
  errno = error;
}

struct Handling {
  const char* what;
  void (*handler)(int);
  int flags;
};

off_t sizeOf(const char* name) {
  struct stat status;
  return stat(name, &status) == 0 ? status.st_size : 0;
}

/// Collects failures in a process that has no test to report to.
class Failures {
 public:
  /// Adds a failure unless `right` is true.
  template <class Answer>
  void unless(bool right, const char* what, const Answer& answer) {
    if (!right) text_ << what << ": " << answer << '\n';
  }

  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
};

/// Waits for all children of this process. Returns how many of them it reaps itself.
int reapTheRest() {
  int reaped = 0;
  for (;;) {
    if (waitpid(-1, nullptr, 0) > 0) {
      ++reaped;
    } else if (errno != EINTR) {
      return reaped;
    }
  }
}

bool hasNoChild() { return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD; }

/// Runs `count` children of each kind. Returns the failures. `program` appends a byte to the file
/// that is its argument.
std::string failuresWith(const Handling& handling, const std::string& program, int count) {
  const bool isIgnored = handling.handler == SIG_IGN;
  Failures failures;
  for (int i = 0; i < count; ++i) {
    const int answer = zn_lib::childProcess(program, "waited", true);
    failures.unless(answer == 0, "childProcess that waits", answer);
    failures.unless(sizeOf("waited") == i + 1, "programs that ended", sizeOf("waited"));
    // The child of this call exits with a copy of the buffered output.
    zn_lib::childProcess("/missing/program", "", true);
  }
  failures.unless(hasNoChild(), "after waiting", "a child was left");

  for (int i = 0; i < count; ++i) {
    const bool answer = zn_lib::execShell("printf x >> shell");
    failures.unless(answer != isIgnored, "execShell", answer);
  }
  failures.unless(hasNoChild(), "after commands", "a child was left");
  failures.unless(isIgnored || sizeOf("shell") == count, "commands that ended", sizeOf("shell"));

  reapedByHandler = 0;
  for (int i = 0; i < count; ++i) {
    const int answer = zn_lib::childProcess(program, "unwaited", false);
    failures.unless(answer == 0, "childProcess that does not wait", answer);
  }
  int reaped = reapTheRest();
  reaped += reapedByHandler;
  failures.unless(reaped == (isIgnored ? 0 : count), "children for the host to reap", reaped);
  failures.unless(sizeOf("unwaited") == count, "programs that ran on", sizeOf("unwaited"));
  return failures.text();
}

/// Runs children while output is buffered, writes the failures to a file, and exits.
[[noreturn]] void runChildren(const Handling& handling, const std::string& program, int count) {
  constexpr unsigned int longestSeconds = 300;
  alarm(longestSeconds);
  const RedirectedDescriptor out(STDOUT_FILENO, "out", O_WRONLY | O_CREAT | O_TRUNC);
  const RedirectedDescriptor err(STDERR_FILENO, "err", O_WRONLY | O_CREAT | O_TRUNC);
  struct sigaction action{};
  action.sa_handler = handling.handler;
  action.sa_flags = handling.flags;
  sigaction(SIGCHLD, &action, nullptr);

  std::cout << "of the stream,";
  std::fputs("of the file", stdout);
  const std::string failures = failuresWith(handling, program, count);
  std::cout.flush();
  std::fflush(stdout);
  writeFile("failures", failures);
  _exit(0);
}

TEST_F(Soak, ChildrenWithEveryHandlingOfSigchld) {
  const std::string program = directory / "program";
  writeFile(program, "#!/bin/sh\nprintf x >> \"$1\"\n");
  chmod(program.c_str(), 0700);
  const int count = isLongRun() ? 250 : 25;  // of each of four kinds
  std::string refusals;
  for (int i = 0; i < count; ++i) refusals += "No command processor available\n";

  const Handling handlings[] = {
      {"default", SIG_DFL, 0},
      {"ignored", SIG_IGN, 0},
      {"handled", reapAll, 0},
      {"handled, calls restart", reapAll, SA_RESTART},
  };
  for (const Handling& handling : handlings) {
    const Clock::time_point start = Clock::now();
    for (const char* name : {"waited", "shell", "unwaited", "failures"}) std::remove(name);
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t host = fork();
    if (host == 0) runChildren(handling, program, count);
    EXPECT_EQ(waitForExit(host), 0) << handling.what;
    EXPECT_TRUE(isThere("failures")) << handling.what;
    EXPECT_EQ(readFile("failures"), "") << handling.what;
    EXPECT_EQ(readFile("out"), "of the stream,of the file") << handling.what;
    EXPECT_EQ(readFile("err"), handling.handler == SIG_IGN ? refusals : "") << handling.what;
    std::printf("SIGCHLD %-32s %8d children %5.3f s\n", handling.what, 4 * count,
                std::chrono::duration<double>(Clock::now() - start).count());
  }
  RecordProperty("children", 4 * count);
}

// ---- Saves that are killed

/// The progress of a process that saves.
struct Progress {
  std::atomic<long> started;  ///< the generation whose save was started last
  std::atomic<long> saved;    ///< the generation whose save was completed last
  std::atomic<long> saves;
};

/// A store whose settings all have the same value, the generation. Each save starts a new one.
class Series {
 public:
  Series(const std::string& name, int entries) : name_(name), entries_(entries) { restart(); }

  /// Loads the store, and sets and saves the next generation. Returns whether that succeeds.
  bool saveNext() const {
    zn_lib::Configuration store("SOAK", name_);
    store.load();
    if (generationIn(store) != progress_->saved) return false;
    return saveNextOf(store);
  }

  /// Saves in a child until it is killed. Returns false if the child ends by itself.
  bool saveUntilKilled(std::mt19937& random) const {
    const pid_t child = fork();
    if (child == 0) {
      while (saveNext()) {
      }
      _exit(1);
    }
    std::uniform_int_distribution<useconds_t> life(0, longestLife_);
    usleep(life(random));
    kill(child, SIGKILL);
    return waitForExit(child) == kSignalled + SIGKILL;
  }

  /// Returns whether the file holds a complete generation that is not older than the one saved
  /// last. Continues from this generation, or from an empty store if there is none.
  bool hasLastGeneration() {
    zn_lib::Configuration store("SOAK", name_);
    store.load();
    const long generation = generationIn(store);
    const bool kept = generation >= progress_->saved && generation <= progress_->started;
    if (kept) {
      progress_->saved = generation;
    } else {
      restart();
    }
    return kept;
  }

  /// Removes the files that killed saves left, and returns their number.
  int removeLeftovers() const {
    const std::string file = name_ + ".cfg";
    std::vector<std::string> names;
    zn_lib::listDir("", "^" + name_, false, names);
    int removed = 0;
    for (const std::string& name : names) {
      if (name != file && name != file + "~") removed += std::filesystem::remove(name) ? 1 : 0;
    }
    return removed;
  }

  long saves() const { return progress_->saves; }

 private:
  static std::string keyOf(int entry) { return "key" + std::to_string(entry); }

  /// Returns the generation of `store`, and -1 if the store is not complete.
  long generationIn(zn_lib::Configuration& store) const {
    const std::string value = store.get(keyOf(0)).value;
    for (int i = 0; i < entries_; ++i) {
      if (store.get(keyOf(i)).value != value) return -1;
    }
    const bool isStamped = store.elements.count("UPDATE") == 1;
    const std::size_t expected = static_cast<std::size_t>(entries_) + 1;
    return isStamped && store.elements.size() == expected ? std::atol(value.c_str()) : -1;
  }

  bool saveNextOf(zn_lib::Configuration& store) const {
    progress_->started = progress_->saved + 1;
    const std::string value = std::to_string(progress_->started);
    for (int i = 0; i < entries_; ++i) store.set(keyOf(i), value);
    if (!store.save()) return false;
    progress_->saved = progress_->started.load();
    ++progress_->saves;
    return true;
  }

  /// Starts from an empty store. Measures a save, so that children are killed during their first
  /// save or after some.
  void restart() {
    zn_lib::Configuration store("SOAK", name_);
    const Clock::time_point start = Clock::now();
    EXPECT_TRUE(saveNextOf(store));
    EXPECT_TRUE(saveNext());
    const auto taken = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    longestLife_ = std::max(kUsualLife, 2 * static_cast<useconds_t>(taken.count()));
  }

  static constexpr useconds_t kUsualLife = 20000;

  std::string name_;
  int entries_;
  SharedMemory<Progress> progress_;
  useconds_t longestLife_ = kUsualLife;
};

TEST_F(Soak, KilledSavesLoseNothing) {
  Series series[] = {{"one", 1}, {"fifty", 50}, {"thousands", 2000}};
  std::mt19937 random(20240305);
  int cycles = 0, kills = 0, losses = 0, leftovers = 0;
  const Clock::time_point end =
      Clock::now() + std::chrono::seconds(isLongRun() ? 600 : 2 * kSlowdown);
  for (; Clock::now() < end; ++cycles) {
    Series& one = series[cycles % 3];
    kills += one.saveUntilKilled(random) ? 1 : 0;
    losses += one.hasLastGeneration() ? 0 : 1;
    leftovers += one.removeLeftovers();
  }
  std::printf("cycles: %d, saves: %ld, %ld, %ld, kills: %d, losses: %d, files left: %d\n", cycles,
              series[0].saves(), series[1].saves(), series[2].saves(), kills, losses, leftovers);
  const long saves = series[0].saves() + series[1].saves() + series[2].saves();
  RecordProperty("saves", std::to_string(saves));
  RecordProperty("kills", kills);
  EXPECT_EQ(losses, 0);
  EXPECT_EQ(kills, cycles) << "a process ended by itself";
  constexpr long savesOfStart = 2;
  for (const Series& one : series) EXPECT_GT(one.saves(), savesOfStart);
}

// ---- Descriptors and memory over many calls

constexpr int kDescriptors = 32;

int openDescriptors() {
  int open = 0;
  for (int i = 0; i < kDescriptors; ++i) open += fcntl(i, F_GETFD) >= 0 ? 1 : 0;
  return open;
}

struct Call {
  const char* what;
  /// Calls the function. Returns whether its result is the documented one.
  std::function<bool()> run;
};

/// Returns whether `run` throws a `Failure`.
template <class Failure, class Run>
bool throws(Run run) {
  try {
    run();
    return false;
  } catch (const Failure&) {
    return true;
  }
}

/// Returns a call whose result is always `expected`.
template <class Answer, class Run>
Call equal(const char* what, const Answer& expected, Run run) {
  return {what, [expected, run] { return run() == expected; }};
}

/// Returns a call without a result.
template <class Run>
Call silent(const char* what, Run run) {
  return {what, [run] {
            run();
            return true;
          }};
}

/// The limits of a series of calls.
struct Length {
  int calls;
  std::chrono::milliseconds longest;
};

/// The number of bytes that the allocator may keep after a series of calls.
constexpr long kSlack = 256;

struct Usage {
  int calls = 0;
  int wrong = 0;
  double seconds = 0.0;
  int descriptors = 0;  ///< opened and not closed
  long bytes = 0;       ///< allocated and not freed
};

Usage repeat(const Call& call, const Length& length) {
  Usage usage;
  constexpr int warmUpCalls = 20;
  for (int i = 0; i < warmUpCalls; ++i) usage.wrong += call.run() ? 0 : 1;
  const int descriptors = openDescriptors();
  const std::size_t bytes = bytesInUse();
  const Clock::time_point start = Clock::now();
  while (usage.calls < length.calls && Clock::now() - start < length.longest) {
    usage.wrong += call.run() ? 0 : 1;
    ++usage.calls;
  }
  usage.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  usage.bytes = static_cast<long>(bytesInUse()) - static_cast<long>(bytes);
  usage.descriptors = openDescriptors() - descriptors;
  return usage;
}

/// Repeats each call, and expects no leak of descriptors or memory.
void expectNothingLeft(const std::vector<Call>& calls, const Length& length) {
  const bool canCount = bytesAreCounted();
  writeFile("answer", "yes\n");
  std::vector<Usage> usages;
  {
    const DescriptorLimit limit(kDescriptors);
    const RedirectedDescriptor input(STDIN_FILENO, "answer", O_RDONLY);
    const RedirectedDescriptor out(STDOUT_FILENO, "/dev/null", O_WRONLY);
    const RedirectedDescriptor err(STDERR_FILENO, "/dev/null", O_WRONLY);
    zn_lib::setVerbose(true);
    for (const Call& call : calls) usages.push_back(repeat(call, length));
    zn_lib::setVerbose(false);
  }
  int fewest = length.calls;
  for (const Usage& usage : usages) fewest = std::min(fewest, usage.calls);
  testing::Test::RecordProperty("functions", std::to_string(calls.size()));
  testing::Test::RecordProperty("calls", fewest);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const Usage& usage = usages[i];
    std::printf("%-40s %8d calls %8.3f s\n", calls[i].what, usage.calls, usage.seconds);
    EXPECT_EQ(usage.wrong, 0) << calls[i].what;
    EXPECT_EQ(usage.descriptors, 0) << calls[i].what;
    EXPECT_TRUE(!canCount || usage.bytes <= kSlack) << calls[i].what << " left " << usage.bytes;
  }
  if (!canCount) GTEST_SKIP() << "the allocator of this program does not count bytes in use";
}

Length lengthOf(int daily, int longRun) {
  using std::chrono::milliseconds;
  return isLongRun() ? Length{longRun, milliseconds(30000)} : Length{daily, milliseconds(40)};
}

/// Joins the calls of several families.
std::vector<Call> joined(std::initializer_list<std::vector<Call>> families) {
  std::vector<Call> all;
  for (const std::vector<Call>& family : families) {
    all.insert(all.end(), family.begin(), family.end());
  }
  return all;
}

// ---- Files

std::vector<Call> fileCalls() {
  writeFile("source", "a report\n");
  writeFile("renamed", "text");
  writeFile("kept", "backed up");
  return {
      equal("fileCopy", true, [] { return zn_lib::fileCopy("source", "copy", true); }),
      equal("fileCopy of a directory", true, [] { return zn_lib::fileCopy(".", "copy", true); }),
      equal("fileCopy to nowhere", true,
            [] { return zn_lib::fileCopy("source", "missing/a", true); }),
      {"fileRename",
       [] {
         return zn_lib::fileRename("renamed", "other", false) &&
                zn_lib::fileRename("other", "renamed", false);
       }},
      equal("fileRename to nowhere", false,
            [] { return zn_lib::fileRename("source", "no/a", true); }),
      {"createBackup",
       [] { return zn_lib::createBackup("kept") && std::rename("kept~", "kept") == 0; }},
      equal("hexDump", true, [] { return zn_lib::hexDump("source", 16); }),
      equal("hexDump of a directory", true, [] { return zn_lib::hexDump(".", 16); }),
  };
}

bool canList(const std::string& directory, const std::string& filter) {
  std::vector<std::string> names;
  return zn_lib::listDir(directory, filter, true, names);
}

std::string numbered(std::string name) {
  zn_lib::sequentialFile(name);
  return name;
}

std::vector<Call> directoryCalls() {
  std::filesystem::create_directory("from");
  std::filesystem::create_directory("to");
  writeFile("from/one", "1");
  writeFile("from/two", "2");
  return {
      equal("listDir", true, [] { return canList("from", "\\.txt$"); }),
      equal("listDir by the engine", true, [] { return canList("from", "o.*e"); }),
      equal("listDir of subdirectories", true, [] { return canList("", "<dir>"); }),
      equal("listDir of nothing", false, [] { return canList("missing", ""); }),
      equal("listDir by a malformed filter", false, [] { return canList("from", "("); }),
      {"copyDir",
       [] {
         std::remove("to/one");
         std::string from = "from", to = "to";
         return zn_lib::copyDir(from, to) && isThere("to/one");
       }},
      {"createDir", [] { return zn_lib::createDir("new") && rmdir("new") == 0; }},
      equal("sequentialFile", std::string("from/one-1."), [] { return numbered("from/one"); }),
      equal("sequentialFile by a malformed base", std::string("from/("),
            [] { return numbered("from/("); }),
  };
}

/// Opens `file` on `name`.
template <class File>
bool opens(File& file, std::string name) {
  file.setFileName(name);
  return file.fileOpen();
}

std::vector<Call> streamCalls() {
  writeFile("read", "a report\n");
  return {
      {"ReadFile",
       [] {
         zn_lib::ReadFile in;
         std::string word;
         const bool opened = opens(in, "read");
         in.file >> word;
         in.fileClose();
         return opened && word == "a";
       }},
      {"ReadFile::cat, left open",
       [] {
         zn_lib::ReadFile in;
         return opens(in, "read") && in.cat();
       }},
      {"WriteFile",
       [] {
         zn_lib::WriteFile out;
         const bool opened = opens(out, "written");
         out.file << "text\n";
         out.fileClose();
         return opened && !out.file.fail();
       }},
      {"WriteFile, left open and opened twice",
       [] {
         zn_lib::WriteFile out;
         return opens(out, "written") && out.fileOpen();
       }},
  };
}

std::vector<Call> storeCalls() {
  const auto saved = std::make_shared<zn_lib::Configuration>("SOAK", "saved");
  saved->set("key", "value");
  EXPECT_TRUE(saved->save());
  const auto inPlace = std::make_shared<zn_lib::Configuration>("SOAK", "in-place");
  inPlace->backup = false;
  inPlace->set("key", "value");
  const auto lost = std::make_shared<zn_lib::Configuration>("SOAK", "lost");
  lost->path = "missing";
  return {
      {"Configuration::load",
       [] {
         zn_lib::Configuration store("SOAK", "saved");
         return store.load() && store.get("key").value == "value";
       }},
      equal("Configuration::load into settings", true, [saved] { return saved->load(); }),
      equal("Configuration::save", true, [saved] { return saved->save(); }),
      equal("Configuration::save in place", true, [inPlace] { return inPlace->save(); }),
      equal("Configuration::save to nowhere", false, [lost] { return lost->save(); }),
      {"Configuration's destructor",
       [] {
         {
           zn_lib::Configuration("SOAK", "dropped").set("key", "value");
         }
         return std::remove("dropped.cfg") == 0;
       }},
      silent("Configuration::listConfiguration", [saved] { saved->listConfiguration(); }),
  };
}

std::vector<Call> catalogCalls() {
  writeFile("errors.xml", "<E>" + errorXml("1", "one") + "</E>");
  writeFile("malformed.xml", "<E><ERROR></E>");
  const auto catalog = std::make_shared<Catalog>();
  return {
      {"readErrorFile",
       [catalog] { return zn_lib::readErrorFile("errors.xml", *catalog) && catalog->size() == 1; }},
      equal("readErrorFile of a malformed file", true,
            [catalog] { return zn_lib::readErrorFile("malformed.xml", *catalog); }),
      equal("readErrorFile of a directory", true,
            [catalog] { return zn_lib::readErrorFile(".", *catalog); }),
      {"ReadXml::parseFile",
       [] {
         zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
         std::string name = "errors.xml";
         reader.setFileName(name);
         return reader.parseFile();
       }},
  };
}

TEST_F(Soak, FilesAreClosedUnderFewDescriptors) {
  expectNothingLeft(
      joined({fileCalls(), directoryCalls(), streamCalls(), storeCalls(), catalogCalls()}),
      lengthOf(2000, 100000));
}

// ---- Processes

TEST_F(Soak, ProcessesAreReaped) {
  expectNothingLeft(
      {
          {"childProcess, waited for",
           [] { return zn_lib::childProcess("/bin/true", "", true) == 0; }},
          {"childProcess, reaped by the host",
           [] {
             return zn_lib::childProcess("/bin/true", "", false) == 0 &&
                    waitpid(-1, nullptr, 0) > 0;
           }},
          {"execShell", [] { return zn_lib::execShell("exit 3"); }},
      },
      isLongRun() ? Length{100000, std::chrono::minutes(10)}
                  : Length{50, std::chrono::milliseconds(1000)});
}

/// Returns whether `document` is well-formed and has the expected elements.
bool isParsed(const std::string& document) {
  XmlOutline outline;
  XMLParser parser(&outline);
  parser.Create("UTF-8", "|");
  parser.EnableStartElementHandler(true);
  const bool parsed = parser.Parse(document.c_str(), true);
  parser.Destroy();
  return parsed && outline.text == "abv";
}

// Longer than the texts that a string stores without allocation.
const std::string kText = "  A text that is long enough for memory of its own, 'quoted'.  ";
const std::string kTrimmed = kText.substr(2, kText.size() - 4);
constexpr unsigned long long kJulian = 212576407629000;

std::vector<Call> stringCalls() {
  using namespace zn_lib;
  const std::string fifty(50, 'x');
  return {
      equal("leftTrim", kTrimmed + "  ", [] { return leftTrim(kText); }),
      equal("rightTrim", "  " + kTrimmed, [] { return rightTrim(kText); }),
      equal("allTrim", kTrimmed, [] { return allTrim(kText); }),
      equal("stringToUpper", stringToUpper(kText), [] { return stringToUpper(kText); }),
      equal("stringToLower", stringToLower(kText), [] { return stringToLower(kText); }),
      equal("rightPad", std::string(98, '.') + "ab", [] { return rightPad("ab", 100, '.'); }),
      equal("leftPad", "ab" + std::string(98, '.'), [] { return leftPad("ab", 100, '.'); }),
      equal("stringToBool", true, [] { return stringToBool("True"); }),
      equal("stringToDouble", 2000.0, [] { return stringToDouble("  2e3x"); }),
      {"stringToDouble of no number", [] { return stringToDouble("x") != stringToDouble("x"); }},
      equal("isNumber", true, [] { return isNumber("-1,234.56"); }),
      equal("percentString", std::string("33.33%"), [] { return percentString(1, 3, 2); }),
      equal("replicateChar", fifty, [] { return replicateChar('x', 50); }),
      {"replicateChar of a negative count",
       [] { return throws<std::length_error>([] { replicateChar('x', -1); }); }},
      equal("replicateString", fifty, [] { return replicateString("xxxxx", 10); }),
      equal("replaceChar", fifty, [fifty] { return replaceChar(fifty, 'y', 'z'); }),
      equal("removeChar", fifty, [fifty] { return removeChar(fifty + "y", 'y'); }),
      equal("removeQuotes", fifty, [fifty] { return removeQuotes("'" + fifty + "'"); }),
      equal("inQuotes", "'" + fifty + "'", [fifty] { return inQuotes(fifty, '\''); }),
      equal("replaceString", "y" + fifty, [fifty] { return replaceString(fifty, "", "y"); }),
      equal("findStrings", true, [fifty] { return findStrings(fifty, {kText, "xx"}); }),
  };
}

std::vector<Call> tokenCalls() {
  using zn_lib::Tokenizer;
  return {
      equal("Tokenizer::split", 13U, [] { return Tokenizer().split(kTrimmed, " ,"); }),
      equal("Tokenizer's constructor", 13U, [] { return Tokenizer(kTrimmed, " ,").tokens.size(); }),
      equal("Tokenizer::split by the engine", 13U,
            [] { return Tokenizer().split(kTrimmed, R"( \,)"); }),
      {"Tokenizer::split at a malformed set",
       [] { return throws<std::regex_error>([] { Tokenizer().split(kText, "z-a"); }); }},
      equal("Tokenizer::splitMulti", 2U, [] { return Tokenizer().splitMulti(kTrimmed, "long "); }),
      equal("Tokenizer::splitMulti by the engine", 12U,
            [] { return Tokenizer().splitMulti(kTrimmed, ",? "); }),
      {"Tokenizer::splitMulti at a malformed pattern",
       [] { return throws<std::regex_error>([] { Tokenizer().splitMulti(kText, "("); }); }},
      equal("Tokenizer::sortTokens and getToken", std::string("A"),
            [] {
              Tokenizer tokenizer(kTrimmed, " ");
              tokenizer.sortTokens();
              return tokenizer.getToken(1).substr(0, 1);
            }),
      {"operator<<",
       [] {
         std::ostringstream out;
         zn_lib::operator<<(out, kText) << zn_lib::setHexadecimal << 31;
         return out.str().size() > kText.size();
       }},
  };
}

std::vector<Call> nameCalls() {
  using namespace zn_lib;
  const std::string base(40, 'n');
  return {
      {"splitFileName",
       [base] {
         std::string name = "dir\\" + base + ".txt";
         const name_of_file parts = splitFileName(name);
         return parts.name == base && parts.extension == "txt";
       }},
      {"stripExtension",
       [base] {
         std::string name = base + ".txt";
         return stripExtension(name) == base;
       }},
      {"createFileName",
       [base] { return createFileName("dir", base, "txt") == "dir/" + base + ".txt"; }},
      {"addEndSlash",
       [base] {
         std::string dir = base;
         addEndSlash(dir);
         return dir == base + "/";
       }},
      {"checkHomePath",
       [base] {
         std::string name = " ~/" + base;
         checkHomePath(name);
         return name.front() != ' ';
       }},
      {"FileName::getFileName",
       [base] {
         ReadFile file;
         std::string name = "dir/" + base + ".txt";
         file.setFileName(name);
         return file.getFileName() == name;
       }},
  };
}

std::vector<Call> xmlCalls() {
  return {
      equal("XMLParser", true, [] { return isParsed("<a xmlns:n='urn:n'><b k='v'>t</b></a>"); }),
      equal("XMLParser of a malformed document", false, [] { return isParsed("<a><b></a>"); }),
      {"XMLParser, created twice and destroyed with the object",
       [] {
         XmlOutline outline;
         XMLParser parser(&outline);
         return parser.Create(nullptr, nullptr) && parser.Create("UTF-8", nullptr) &&
                parser.GetBuffer(100000) != nullptr;
       }},
  };
}

std::vector<Call> dateCalls() {
  using namespace zn_lib;
  return {
      equal("dateToJulian", kJulian, [] { return dateToJulian("2024-03-05T14:07:09"); }),
      {"parseISOdate",
       [] {
         date_time_record date;
         parseISOdate("20240305T1407", date);
         return date.year == 2024;
       }},
      equal("isValidISOdate", false, [] { return isValidISOdate("2024-02-30"); }),
      equal("dateToISO", std::string("2024-03-05 14:07"),
            [] { return dateToISO("05 March 2024 14:07"); }),
      equal("julianToISO", std::string("2024-03-05 14:07:09"), [] { return julianToISO(kJulian); }),
      equal("julianToYYYYMMDD", std::string("20240305"), [] { return julianToYYYYMMDD(kJulian); }),
      equal("formatJulianDate", std::string("2024-03-05 14:07:09"),
            [] { return formatJulianDate(kJulian); }),
      equal("getMonthNumber", 9, [] { return getMonthNumber("Sepulchre"); }),
      equal("getMonthName", std::string("September"), [] { return getMonthName(9, false); }),
      equal("hourFormat", std::string("07:30"), [] { return hourFormat(7.5); }),
      silent("getToday",
             [] {
               date_time_record today;
               getToday(today);
             }),
      equal("getTodayAsISO", 19U, [] { return getTodayAsISO().size(); }),
  };
}

std::vector<Call> settingsCalls() {
  using zn_lib::Configuration;
  return {
      {"Configuration::set and get",
       [] {
         Configuration store("SOAK", "store");
         store.set(" key ", kText);
         store.set("typed", "TEXT", kText, kText);
         store.changed = false;
         return store.get("key").value == kText && store.get("typed").describe == kText;
       }},
      {"showErrorMessage and showErrorList",
       [] {
         Catalog catalog{{1, kText}};
         zn_lib::showErrorMessage(catalog, 2);
         zn_lib::showErrorList(catalog);
         return catalog.size() == 2;
       }},
      silent("systemError", [] { zn_lib::systemError(); }),
  };
}

std::vector<Call> addressAndPlatformCalls() {
  using namespace zn_lib;
  return {
      {"IPv4", [] { return IPv4().set("10.20.0.0") && !IPv4().set("127.0.0.1"); }},
      equal("IPv4::text", std::string("0.0.0.0"), [] { return IPv4().text(); }),
      {"IPv4::textToBlocks of no number",
       [] { return throws<std::invalid_argument>([] { IPv4().textToBlocks("1.x.2.3"); }); }},
      {"IPv6",
       [] {
         IPv6 address;
         const std::string text = "1111:2222:3333:4444:5555:6666:7777:8888";
         return address.set(text) && address.text() == text && !address.set("x");
       }},
      equal("platformInfo", true, [] { return platformInfo(); }),
      equal("getOSName", getOSName(), [] { return getOSName(); }),
      equal("getOSRelease", getOSRelease(), [] { return getOSRelease(); }),
  };
}

std::vector<Call> outputCalls() {
  using namespace zn_lib;
  const auto fromTheStart = [](auto prompt) {
    return [prompt] {
      std::rewind(stdin);
      return prompt();
    };
  };
  return {
      silent("display", [] { display(kText); }),
      silent("message", [] { message(kText); }),
      silent("errorMessage", [] { errorMessage(kText); }),
      silent("debugMessage", [] { debugMessage(kText); }),
      silent("processTitle", [] { processTitle(kText); }),
      {"pauseKey", fromTheStart([] {
         pauseKey();
         return true;
       })},
      {"more", fromTheStart([] { return more(); })},
      {"yesOrNo", fromTheStart([] { return yesOrNo(kText); })},
  };
}

TEST_F(Soak, MemoryIsFreed) {
  zn_lib::defaultDateTimeFormat();
  expectNothingLeft(joined({stringCalls(), tokenCalls(), nameCalls(), xmlCalls(), dateCalls(),
                            settingsCalls(), addressAndPlatformCalls(), outputCalls()}),
                    lengthOf(20000, 1000000));
}

// ---- Sums with the largest count

TEST(SumOfDayLengths, TakesTheLargestNumberOfSteps) {
  // On the equator each day has exactly twelve hours.
  constexpr double hours = 12.0;
  const int largest = isLongRun() ? std::numeric_limits<int>::max() : 100000;
  for (const int count : {largest, -largest}) {
    const Clock::time_point start = Clock::now();
    zn_lib::DayLength day;
    day.julian = 211813488000000;  // 1 January 2000, 12:00
    EXPECT_EQ(day.cumulative(count), hours * (largest + 1.0)) << count;
    EXPECT_EQ(day.julian, 211813488000000u) << count;
    std::printf("steps: %d, %.3f s\n", count,
                std::chrono::duration<double>(Clock::now() - start).count());
  }
}

}  // namespace
