/// System calls that fail once or from some call on, for example because the disk is full or no
/// descriptor is left. Every function returns a result that agrees with the files, and no setting
/// of a store is lost.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_dir.h>
#include <zn_error.h>
#include <zn_file.h>
#include <zn_output.h>
#include <zn_platform.h>
#include <zn_process.h>
#include <zn_readfile.h>
#include <zn_seqfile.h>
#include <zn_setcfg.h>
#include <zn_shell.h>
#include <zn_writefile.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "child_status.h"
#include "directory_contents.h"
#include "output_capture.h"
#include "own_mounts.h"
#include "resource_limits.h"
#include "sanitizers.h"
#include "shared_memory.h"
#include "stored_xml.h"
#include "temporary_files.h"
#if defined(__linux__) && defined(__x86_64__)
#include "fault_injection.h"
#include "forbidden_call.h"
#endif

namespace {

using zn_lib::Configuration;

using Names = std::vector<std::string>;

// ---- Stores

/// Adds settings whose file is longer than a single read.
void fill(Configuration& store) {
  store.set("UPDATE", "DATE", "2024-03-05 14:07:09", "");
  store.set("first", "1");
  store.set("long", std::string(4200, 'x'));
  store.set("second", "2");
}

std::string filledXml() {
  Configuration store;
  fill(store);
  store.changed = false;
  return xmlOf(store);
}

#if defined(__linux__) && defined(__x86_64__)

// ---- Calls that fail

bool beginsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

/// Returns whether each setting in `part` is in `whole`, with the beginning of its value at least.
bool isPartOf(const zn_lib::config_map& part, const zn_lib::config_map& whole) {
  return std::all_of(part.begin(), part.end(), [&](const auto& entry) {
    const auto found = whole.find(entry.first);
    return found != whole.end() && beginsWith(found->second.value, entry.second.value);
  });
}

std::string trueOrFalse(bool result) { return result ? "true" : "false"; }

/// Describes the answers "true, all" and "true" for a function that collects `things`.
std::function<std::string(const Outcome&)> allOrSome(const std::string& things) {
  return [things](const Outcome& outcome) {
    const std::string& answer = outcome.answer();
    if (answer == "true, all") return "true, all " + things;
    return answer == "true" ? "true, some or no " + things : answer;
  };
}

class FailingCalls : public FaultInjection {};

// ---- Settings

/// Reports `store` and returns the answer of an operation on it.
std::string answerOf(bool result, Configuration& store, Report& report) {
  report.setText(xmlOf(store));
  const std::string answer = trueOrFalse(result) + (store.changed ? ", changed" : "");
  store.changed = false;
  return answer;
}

std::string firstSave(Report& report) {
  Configuration store;
  store.set("a", "1");
  const bool result = store.save();
  return answerOf(result, store, report);
}

std::string saveChanged(Report& report) {
  Configuration store;
  fill(store);
  store.set("changed", "yes");
  const bool result = store.save();
  return answerOf(result, store, report);
}

std::string saveWithoutBackup(Report& report) {
  Configuration store;
  fill(store);
  store.set("changed", "yes");
  store.backup = false;
  const bool result = store.save();
  return answerOf(result, store, report);
}

std::string loadChangeSave(Report& report) {
  Configuration store;
  store.load();
  store.set("changed", "yes");
  const bool result = store.save();
  return answerOf(result, store, report);
}

std::string saveByDestructor(Report& report) {
  Configuration store;
  fill(store);
  store.set("changed", "yes");
  report.setText(xmlOf(store));
  return "not reported";
}

/// Expects that without faults the store is loaded from `file`, and saved with a change.
void checkStoreWorks(const std::optional<std::string>& file) {
  Configuration before;
  if (file == filledXml()) fill(before);
  before.changed = false;
  Configuration store;
  EXPECT_TRUE(store.load());
  for (const auto& [key, element] : before.elements) {
    EXPECT_EQ(store.elements[key].value, element.value) << key;
  }
  store.set("again", "yes");
  EXPECT_TRUE(store.save());
  EXPECT_EQ(readFile("config.xml"), xmlOf(store));
}

/// Expects that the result of a save is correct. A save does not report write errors.
void checkAnswer(const Outcome& outcome, bool isWhole) {
  // A staged file is opened up to a hundred times.
  const bool isOpened = !outcome.hasFailed("open", EINTR) || outcome.count < 100;
  const bool isRepeatable = outcome.isRepeatable({"open", "read", "write"}) && isOpened;
  const bool isOnDisk = !outcome.hasFailed("sync") || outcome.fault->error == EINVAL;
  const bool isWritten = !outcome.hasFailed("write") && !outcome.hasFailed("close") && isOnDisk;
  EXPECT_TRUE(outcome.answer() == "true" || outcome.answer() == "false, changed")
      << outcome.answer();
  if (isRepeatable) {
    EXPECT_EQ(outcome.answer(), "true");
  }
  if (isRepeatable || isWritten) {
    EXPECT_EQ(outcome.answer() == "true", isWhole);
  }
}

/// A staged file that a killed save has left behind.
const char* const kLeftover = "config.xml.1.zn_udf";

/// Checks a save with a backup over a file with the contents `old`.
void checkSave(const Outcome& outcome, const std::optional<std::string>& old) {
  const Contents all = contents();
  const auto bytesOf = [&](const char* name) {
    const auto found = all.find(name);
    return found == all.end() ? std::optional<std::string>() : found->second;
  };
  const std::optional<std::string> file = bytesOf("config.xml");
  const bool isWhole = file == outcome.ended.text;
  EXPECT_TRUE(!file || file == old || isWhole) << "torn: " << file->size() << " bytes";
  // If no name can be changed, the file is overwritten and an older backup is kept.
  const bool hasFixedName = outcome.hasFailed("rename") && outcome.fault->error != EIO;
  // The system says that there is no file of which a backup could be made.
  const bool isDenied = outcome.hasFailed("stat", ENOENT) || outcome.hasFailed("link", ENOENT);
  EXPECT_TRUE(!old || file == old || bytesOf("config.xml~") == old ||
              ((hasFixedName || isDenied) && isWhole))
      << "the settings are lost";
  if (outcome.answer() != "not reported") checkAnswer(outcome, isWhole);
  if (!outcome.hasFailed("unlink")) {
    for (const auto& [name, bytes] : all) {
      const bool mayStay = name == kLeftover && !outcome.isHarmless();
      EXPECT_TRUE(beginsWith("config.xml~", name) || mayStay) << name;
    }
  }
  checkStoreWorks(file);
}

/// Checks a save without a backup over a file and an older backup.
void checkSaveWithoutBackup(const Outcome& outcome) {
  const std::string file = readFile("config.xml");
  EXPECT_TRUE(file == filledXml() || file == outcome.ended.text) << "torn: " << file.size();
  EXPECT_EQ(readFile("config.xml~"), "older");
  checkAnswer(outcome, file == outcome.ended.text);
}

/// Checks a save that overwrites the file, because no name can be changed.
void checkSaveInPlace(const Outcome& outcome) {
  const std::string file = readFile("config.xml");
  EXPECT_TRUE(file == filledXml() || beginsWith(outcome.ended.text, file));
  EXPECT_EQ(readFile("config.xml~"), "older");
  if (outcome.answer() == "false, changed") {
    EXPECT_EQ(file, filledXml());
  } else {
    EXPECT_EQ(outcome.answer(), "true");
    if (!outcome.hasFailed("write") && !outcome.hasFailed("sync")) {
      EXPECT_EQ(file, outcome.ended.text);
    }
  }
}

/// Returns the result of a save and what the file then contains.
std::string describeSave(const Outcome& outcome) {
  std::string file = ", no file";
  if (isThere("config.xml")) {
    const std::string bytes = readFile("config.xml");
    file = bytes == outcome.ended.text ? ", new settings in the file"
           : bytes == filledXml()      ? ", old settings in the file"
                                       : ", part of the new settings in the file";
  }
  if (outcome.answer() == "not reported") return file.substr(2);
  return outcome.answer().substr(0, outcome.answer().find(',')) + file;
}

TEST_F(FailingCalls, SavesLoseNothing) {
  const std::string old = filledXml();
  const Contents nothing;
  const Contents file = {{"config.xml", old}};
  const Contents backup = {{"config.xml~", old}};
  const Contents fileAndBackup = {{"config.xml", old}, {"config.xml~", "older"}};
  const auto first = [](const Outcome& outcome) { checkSave(outcome, std::nullopt); };
  const auto later = [&](const Outcome& outcome) { checkSave(outcome, old); };
  const Operation operations[] = {
      {"the first save", nothing, firstSave, first},
      {"a save over a file", file, saveChanged, later},
      {"a save over a file with a backup", fileAndBackup, saveChanged, later},
      {"a save over a leftover", {{"config.xml", old}, {kLeftover, "part"}}, saveChanged, later},
      {"a save where only the backup is", backup, saveChanged, first},
      {"a change", fileAndBackup, loadChangeSave, later},
      {"a save by the destructor", fileAndBackup, saveByDestructor, later},
      {"a save without hard links", fileAndBackup, saveChanged, later, {{"link", EPERM}}},
      {"the second save without hard links", file, saveChanged, later, {{"link", EPERM}}},
      {"a save without a backup", fileAndBackup, saveWithoutBackup, checkSaveWithoutBackup},
      {"a save in place",
       fileAndBackup,
       saveChanged,
       checkSaveInPlace,
       {{"rename", EPERM}, {"link", EPERM}}},
  };
  for (Operation operation : operations) {
    const bool isByDestructor = operation.what == "a save by the destructor";
    operation.describe = describeSave;
    operation.function = isByDestructor                 ? "Configuration::~Configuration"
                         : operation.what == "a change" ? ""
                                                        : "Configuration::save";
    withEveryFault(operation);
  }
}

TEST_F(FailingCalls, LoadsKeepWhatTheyRead) {
  const Work load = [](Report&) {
    Configuration store;
    store.set("mine", "kept");
    const bool result = store.load();
    Configuration whole;
    fill(whole);
    whole.set("mine", "kept");
    whole.changed = false;
    std::string answer = trueOrFalse(result) + (store.changed ? ", changed" : "");
    store.changed = false;
    if (!isPartOf(store.elements, whole.elements)) return answer + ", with other settings";
    if (store.get("mine").value != "kept") return answer + ", without its own setting";
    return answer + (xmlOf(store) == xmlOf(whole) ? ", all" : "");
  };
  const Contents before = {{"config.xml", filledXml()}};
  withEveryFault({"a load",
                  before,
                  load,
                  [&](const Outcome& outcome) {
                    EXPECT_EQ(contents(), before);
                    if (outcome.isHarmless()) {
                      EXPECT_EQ(outcome.answer(), "true, all");
                    }
                    EXPECT_TRUE(outcome.answer() == "true, all" || outcome.answer() == "true")
                        << outcome.answer();
                  },
                  {},
                  "Configuration::load",
                  allOrSome("settings")});
}

// The disk is full as long as the process runs.
TEST_F(FailingCalls, SavesOnAFullDiskKeepFileAndBackup) {
  constexpr int saves = 20;
  const Work severalSaves = [](Report&) {
    for (int i = 0; i < saves; ++i) {
      Configuration store;
      store.load();
      store.set("changed", "yes");
      if (!store.save() || store.changed) return std::string("reported");
    }
    return std::string("true");
  };
  const Contents before = {{"config.xml", filledXml()}, {"config.xml~", "older"}};
  const Fault full = {"ENOSPC", ENOSPC, Share::kAll, {"write"}, true};
  makeContents(before);
  TracedChild child(severalSaves);
  const Outcome outcome = outcomeOf(child, {}, full, 1, true);
  EXPECT_EQ(outcome.answer(), "true");
  EXPECT_EQ(outcome.count, saves);
  EXPECT_EQ(contents(), before);
  RecordProperty("incomplete_saves", saves);
}

/// A save in which one kind of call fails.
struct SaveCase {
  const char* what;
  Work save;
  Contents before;
  int number;  ///< of the first call that fails, counted from 1
  Fault fault;
  int count;  ///< how many calls fail
  const char* answer;
  Contents after;
};

/// The name of a store beside whose file no longer name is possible. Its file is written in place.
const std::string kLongName(250, 'n');

/// Saves the store of that name.
std::string saveInPlace(Report& report) {
  Configuration store("T", kLongName);
  fill(store);
  const bool result = store.save();
  return answerOf(result, store, report);
}

/// Saves the store of that name while its backup is another name of the same file.
std::string saveOverItself(Report& report) {
  report.watch(false);
  std::filesystem::create_hard_link(kLongName + ".cfg", kLongName + ".cfg~");
  report.watch(true);
  return saveInPlace(report);
}

TEST_F(FailingCalls, SavesHandleEachError) {
  const Contents before = {{"config.xml", filledXml()}};
  Configuration changed;
  fill(changed);
  changed.set("changed", "yes");
  changed.changed = false;
  const Contents replaced = {{"config.xml", xmlOf(changed)}, {"config.xml~", filledXml()}};
  const Contents withoutBackup = {{"config.xml", xmlOf(changed)}};
  const Contents beforeInPlace = {{kLongName + ".cfg", "old"}};
  const Contents itself = {{kLongName + ".cfg", "old"}, {kLongName + ".cfg~", "old"}};
  const auto once = [](int error, const char* call) {
    return Fault{"", error, Share::kAll, {call}, false};
  };
  const auto forGood = [](int error, const char* call) {
    return Fault{"", error, Share::kAll, {call}, true};
  };
  // The first file that a save opens is the directory, which it searches for leftovers.
  const SaveCase cases[] = {
      {"an interrupted synchronisation is repeated", saveChanged, before, 1, once(EINTR, "sync"), 1,
       "true", replaced},
      {"a file system without synchronisation", saveChanged, before, 1, once(ENOSYS, "sync"), 1,
       "true", replaced},
      {"another without synchronisation", saveChanged, before, 1, once(ENOTSUP, "sync"), 1, "true",
       replaced},
      {"a special file cannot be synchronised", saveChanged, before, 1, once(EROFS, "sync"), 1,
       "true", replaced},
      {"a name that is in use", saveChanged, before, 2, once(EEXIST, "open"), 1, "true", replaced},
      {"names that are all in use", saveChanged, before, 2, forGood(EEXIST, "open"), 100,
       "false, changed", before},
      {"no new file is possible", saveChanged, before, 2, once(ENOTSUP, "open"), 1, "true",
       replaced},
      {"no renaming is possible", saveChanged, before, 1, forGood(ENOSYS, "rename"), 5, "true",
       withoutBackup},
      {"a file that another save has just moved to its backup", saveChanged, before, 1,
       once(ENOENT, "link"), 1, "true", withoutBackup},
      {"another save has locked the new file to remove it", saveChanged, before, 1,
       once(EWOULDBLOCK, "lock"), 1, "true", replaced},
      {"a file in place that cannot be opened again", saveInPlace, beforeInPlace, 3,
       once(EACCES, "open"), 1, "false, changed", beforeInPlace},
      {"a file that is its own backup and cannot be removed", saveOverItself, beforeInPlace, 1,
       once(EIO, "unlink"), 1, "false, changed", itself},
  };
  for (const SaveCase& c : cases) {
    SCOPED_TRACE(c.what);
    makeContents(c.before);
    TracedChild child(c.save);
    const Outcome outcome = outcomeOf(child, {}, c.fault, c.number, c.fault.mayLast);
    EXPECT_EQ(outcome.answer(), c.answer);
    EXPECT_EQ(outcome.count, c.count);
    EXPECT_EQ(contents(), c.after);
  }
}

// A program that another thread starts meanwhile must not keep the new file open.
TEST_F(FailingCalls, TheNewFileOfASaveIsClosedInPrograms) {
  constexpr int closeOnExec = 02000000;  // as /proc shows it
  struct Process {
    std::atomic<pid_t> id{0};
  };
  const SharedMemory<Process> saver;
  int flags = 0;
  runTraced(
      [&](Report& report) {
        saver->id = getpid();
        return firstSave(report);
      },
      [&](long call) {
        if (purposeOf(call) != "sync") return Intervention();
        const std::string process = "/proc/" + std::to_string(saver->id);
        for (const auto& descriptor : std::filesystem::directory_iterator(process + "/fd")) {
          const std::string name = std::filesystem::read_symlink(descriptor.path());
          if (name.find(".zn_udf") == std::string::npos) continue;
          std::ifstream info(process + "/fdinfo/" + descriptor.path().filename().string());
          std::string word;
          while (info >> word && word != "flags:") {
          }
          info >> std::oct >> flags;
        }
        return Intervention();
      });
  EXPECT_NE(flags & closeOnExec, 0);
}

// Where no link is possible, a save renames the file itself to its backup.
TEST_F(FailingCalls, AMovedFileIsMovedBackIfTheSaveFails) {
  const Contents before = {{"config.xml", filledXml()}};
  makeContents(before);
  int renames = 0;
  const Ended ended = runTraced(saveChanged, [&](long call) -> Intervention {
    if (purposeOf(call) == "link") return {EPERM};
    if (purposeOf(call) == "rename" && ++renames == 2) return {EIO};
    return {};
  });
  EXPECT_EQ(ended.answer, "false, changed");
  EXPECT_EQ(renames, 3);
  EXPECT_EQ(contents(), before);
}

// ---- Whole files

/// Returns lines of text that need several reads and writes.
std::string longText() {
  std::string text;
  for (int line = 0; text.size() < 9000; ++line) text += "line " + std::to_string(line) + "\n";
  return text;
}

struct FileCase {
  const char* what;
  bool hasTarget;
  bool overwrite;
};

constexpr FileCase kFileCases[] = {
    {"to a new file", false, false},
    {"to a new file, with overwrite", false, true},
    {"to an existing file, with overwrite", true, true},
    {"to an existing file, without overwrite", true, false},
};

// The interrupted calls that the streams of the C++ library repeat.
#ifdef _LIBCPP_VERSION
const Purposes kRepeatedReads = {};
const Purposes kRepeatedWrites = {};
#else
const Purposes kRepeatedReads = {"read"};
const Purposes kRepeatedWrites = {"read", "write"};
#endif

bool isRead(const Outcome& outcome) { return outcome.isRepeatable(kRepeatedReads); }

bool isWritten(const Outcome& outcome) { return outcome.isRepeatable(kRepeatedWrites); }

/// Copies repeat interrupted reads and writes with every C++ library.
bool isCopied(const Outcome& outcome) { return outcome.isRepeatable({"read", "write"}); }

/// Returns whether the system says that a file which exists does not, or cannot be looked up. A
/// file counts as missing for any error but EIO and ENOMEM.
bool isCalledMissing(const Outcome& outcome) {
  return outcome.hasFailed("access") && outcome.fault->error != EIO &&
         outcome.fault->error != ENOMEM;
}

/// Describes the result of a copy of `text` to the file `target`.
std::function<std::string(const Outcome&)> copyOf(const std::string& text,
                                                  const std::string& target) {
  return [=](const Outcome& outcome) -> std::string {
    if (outcome.answer() == "false") return "false, nothing changes";
    if (!isThere(target)) return "true, no copy";
    const std::string copy = readFile(target);
    if (copy == text) return "true, whole copy";
    return beginsWith(text, copy) ? "true, part of a copy" : "true, target unchanged";
  };
}

TEST_F(FailingCalls, CopiesDoNotChangeTheSource) {
  for (const FileCase& c : kFileCases) {
    Contents before = {{"source", longText()}};
    if (c.hasTarget) before["target"] = "target's own";
    const bool isRefused = c.hasTarget && !c.overwrite;
    withEveryFault(
        {c.what,
         before,
         [&](Report&) { return trueOrFalse(zn_lib::fileCopy("source", "target", c.overwrite)); },
         [&](const Outcome& outcome) {
           Contents after = contents();
           EXPECT_EQ(after["source"], before["source"]);
           if (isRefused && !isCalledMissing(outcome)) {
             EXPECT_EQ(outcome.answer(), "false");
           }
           if (outcome.answer() == "false") {
             EXPECT_EQ(contents(), before);
           } else {
             EXPECT_EQ(outcome.answer(), "true");
             const bool isKept = outcome.hasFailed("open") && after == before;
             EXPECT_TRUE(isKept || beginsWith(before["source"], after["target"]));
             EXPECT_LE(after.size(), 2u);
           }
           if (isCopied(outcome) && !isRefused) {
             EXPECT_EQ(after["target"], before["source"]);
           }
         },
         {},
         "fileCopy",
         copyOf(before["source"], "target")});
  }
}

TEST_F(FailingCalls, LongFilesAreNotWrittenByTheProcess) {
  makeContents({{"source", std::string(300000, 'x')}});
  int writes = 0;
  const Ended ended =
      runTraced([](Report&) { return trueOrFalse(zn_lib::fileCopy("source", "copy", true)); },
                [&](long call) {
                  writes += purposeOf(call) == "write" ? 1 : 0;
                  return Intervention();
                });
  EXPECT_EQ(ended.answer, "true");
  EXPECT_TRUE(readFile("copy") == readFile("source"));
  EXPECT_EQ(writes, 0) << "the kernel copies them";
}

// Where the kernel cannot copy a long file, it is read and written.
TEST_F(FailingCalls, LongFilesAreCopiedIfTheKernelRefuses) {
  std::string text;
  while (text.size() < 300000) text += longText();
  const Contents before = {{"source", text}};
  makeContents(before);
  TracedChild child([](Report&) { return trueOrFalse(zn_lib::fileCopy("source", "copy", true)); });
  for (const int error : {EXDEV, EINVAL, ENOSYS, EOPNOTSUPP, EPERM, EIO, ENOMEM, EINTR}) {
    const Fault refused = {"refused", error, Share::kAll, {"send"}, true};
    for (const bool isForGood : {false, true}) {
      for (const int number : {1, 2, 3}) {
        const Outcome outcome = outcomeOf(child, {}, refused, number, isForGood);
        EXPECT_EQ(outcome.answer(), "true");
        EXPECT_EQ(contents(), (Contents{{"source", text}, {"copy", text}})) << error << number;
        if (number == 1) {
          EXPECT_NE(outcome.count, 0);
        }
      }
    }
  }
}

TEST_F(FailingCalls, LongCopiesContainPartsOfTheSource) {
  std::string text;
  while (text.size() < 300000) text += longText();
  withEveryFault({"a long copy",
                  {{"source", text}},
                  [](Report&) { return trueOrFalse(zn_lib::fileCopy("source", "copy", true)); },
                  [&](const Outcome& outcome) {
                    const Contents after = contents();
                    EXPECT_EQ(after.at("source"), text);
                    const auto copy = after.find("copy");
                    if (copy != after.end()) {
                      EXPECT_TRUE(beginsWith(text, copy->second));
                    }
                    if (isCopied(outcome)) {
                      EXPECT_TRUE(copy != after.end() && copy->second == text);
                    }
                  },
                  {},
                  "fileCopy",
                  copyOf(text, "copy")});
}

/// Checks that the whole file has exactly one name after it was renamed from `from` to `to`.
void checkRenamed(const Outcome& outcome, Contents before, const std::string& from,
                  const std::string& to) {
  Contents renamed = before;
  renamed[to] = before[from];
  renamed.erase(from);
  Contents withoutTarget = before;
  withoutTarget.erase(to);
  const Contents after = contents();
  if (outcome.answer() == "true") {
    EXPECT_EQ(after, renamed);
  } else {
    EXPECT_EQ(outcome.answer(), "false");
    EXPECT_NE(outcome.count, 0);
    EXPECT_TRUE(after == before || (outcome.hasFailed("rename") && after == withoutTarget));
  }
}

/// Describes the result of renaming a file to `to`, which may exist before.
std::function<std::string(const Outcome&)> renamed(const std::string& to, bool hasTarget) {
  return [=](const Outcome& outcome) -> std::string {
    if (outcome.answer() == "true") return "true, renamed";
    return !hasTarget || isThere(to) ? "false, nothing changes" : "false, the target is lost";
  };
}

// A limit for file sizes may show only after another call has refused to copy.
TEST_F(FailingCalls, LongCopiesEndAtALimit) {
  std::string text;
  while (text.size() < 300000) text += longText();
  makeContents({{"source", text}});
  bool hasReachedLimit = false;
  const Ended ended =
      runTraced([](Report&) { return trueOrFalse(zn_lib::fileCopy("source", "copy", true)); },
                [&](long call) -> Intervention {
                  if (call == SYS_copy_file_range) return {EXDEV};
                  if (call != SYS_sendfile) return {};
                  hasReachedLimit = true;
                  return {EFBIG};
                });
  EXPECT_TRUE(hasReachedLimit);
  EXPECT_EQ(ended.answer, "true");
  EXPECT_EQ(contents(), (Contents{{"source", text}, {"copy", ""}}));
}

TEST_F(FailingCalls, RenamedFilesKeepOneName) {
  for (const FileCase& c : kFileCases) {
    Contents before = {{"old", longText()}};
    if (c.hasTarget) before["new"] = "target's own";
    const bool isRefused = c.hasTarget && !c.overwrite;
    withEveryFault(
        {c.what,
         before,
         [&](Report&) { return trueOrFalse(zn_lib::fileRename("old", "new", c.overwrite)); },
         [&](const Outcome& outcome) {
           if (isRefused && !isCalledMissing(outcome)) {
             EXPECT_EQ(outcome.answer(), "false");
             EXPECT_EQ(contents(), before);
           } else {
             checkRenamed(outcome, before, "old", "new");
           }
         },
         {},
         "fileRename",
         renamed("new", c.hasTarget)});
  }
}

TEST_F(FailingCalls, BackupsKeepTheFile) {
  for (const bool hasBackup : {false, true}) {
    Contents before = {{"file", longText()}};
    if (hasBackup) before["file~"] = "older";
    withEveryFault({hasBackup ? "over an earlier backup" : "the first backup",
                    before,
                    [](Report&) { return trueOrFalse(zn_lib::createBackup("file")); },
                    [&](const Outcome& outcome) { checkRenamed(outcome, before, "file", "file~"); },
                    {},
                    "createBackup",
                    renamed("file~", hasBackup)});
  }
}

// The C library then calls rmdir.
TEST_F(FailingCalls, TargetsThatCountAsDirectoriesStay) {
  const Contents before = {{"file", "text"}, {"file~", "older"}};
  const struct {
    const char* function;
    std::function<bool()> run;
    std::function<std::string(const Outcome&)> describe;
  } cases[] = {
      {"fileCopy", [] { return zn_lib::fileCopy("file", "file~", true); }, copyOf("text", "file~")},
      {"fileRename", [] { return zn_lib::fileRename("file", "file~", true); },
       renamed("file~", true)},
      {"createBackup", [] { return zn_lib::createBackup("file"); }, renamed("file~", true)},
  };
  for (const auto& c : cases) {
    withEveryFault({c.function,
                    before,
                    [&](Report&) { return trueOrFalse(c.run()); },
                    [&](const Outcome& outcome) {
                      if (isCalledMissing(outcome)) return;
                      EXPECT_EQ(outcome.answer(), "false");
                      EXPECT_EQ(contents(), before);
                    },
                    {{"unlink", EISDIR}},
                    c.function,
                    c.describe});
  }
}

// ---- Printing

TEST_F(FailingCalls, DumpsShowWhatWasRead) {
  const auto dumped = [](const std::string& text) {
    writeFile("file", text);
    zn_lib::setVerbose(true);
    const std::string out = written([] { EXPECT_TRUE(zn_lib::hexDump("file", 16)); }).out;
    zn_lib::setVerbose(false);
    return out;
  };
  const std::string text = "Forty bytes, which give two rows and more";
  const std::string ofNothing = dumped("");
  const std::string whole = dumped(text);
  withEveryFault(
      {"hexDump",
       {{"file", text}},
       [](Report&) {
         zn_lib::setVerbose(true);
         const bool result = zn_lib::hexDump("file", 16);
         std::cout.flush();
         return trueOrFalse(result);
       },
       [&](const Outcome& outcome) {
         EXPECT_EQ(contents(), (Contents{{"file", text}}));
         if (outcome.answer() == "false") {
           EXPECT_EQ(outcome.output, "");
           EXPECT_TRUE(outcome.hasFailed("open"));
           return;
         }
         EXPECT_EQ(outcome.answer(), "true");
         EXPECT_TRUE(beginsWith(whole, outcome.output) || beginsWith(ofNothing, outcome.output))
             << outcome.output;
         if (isRead(outcome)) {
           EXPECT_EQ(outcome.output, whole);
         }
       },
       {},
       "hexDump",
       [&](const Outcome& outcome) {
         if (outcome.answer() == "false") return std::string("false, nothing printed");
         return std::string(outcome.output == whole ? "true, whole dump"
                                                    : "true, part of the dump");
       }});
}

TEST_F(FailingCalls, FilesArePrintedUpToTheFailure) {
  const std::string text = longText();
  const std::string whole = text + "\n";
  withEveryFault({"cat",
                  {{"file.txt", text}},
                  [](Report&) {
                    zn_lib::ReadFile file;
                    std::string name = "file.txt";
                    file.setFileName(name);
                    const bool isOpen = file.fileOpen();
                    const bool isPrinted = file.cat();
                    std::cout.flush();
                    file.fileClose();
                    if (isOpen != isPrinted) return std::string("open and cat disagree");
                    return trueOrFalse(isOpen);
                  },
                  [&](const Outcome& outcome) {
                    EXPECT_EQ(contents(), (Contents{{"file.txt", text}}));
                    EXPECT_EQ(outcome.answer(), trueOrFalse(!outcome.hasFailed("open")));
                    // The output ends with the line in which a read fails, and a line break.
                    std::string output = outcome.output;
                    if (!beginsWith(whole, output) && !output.empty()) output.pop_back();
                    EXPECT_TRUE(beginsWith(whole, output));
                    if (isRead(outcome)) {
                      EXPECT_EQ(outcome.output, whole);
                    }
                  }});
}

// ---- Writing

TEST_F(FailingCalls, WriteErrorsAreReported) {
  const std::string text = longText();
  const struct {
    const char* what;
    bool append, overwrite;
  } cases[] = {{"to a new file", false, true},
               {"over a file", false, false},
               {"at the end of a file", true, false}};
  for (const auto& c : cases) {
    const std::string before = "before\n";
    withEveryFault({c.what,
                    {{"file.txt", before}},
                    [&](Report&) -> std::string {
                      zn_lib::WriteFile file;
                      std::string name = "file.txt";
                      file.setFileName(name);
                      file.append = c.append;
                      file.overwrite = c.overwrite;
                      if (!file.fileOpen()) return "not opened";
                      file.file << text << std::flush << "end\n";
                      file.fileClose();
                      return file.file.fail() ? "failed" : "written";
                    },
                    [&](const Outcome& outcome) {
                      const std::string kept = c.append ? before : "";
                      const std::string whole = kept + text + "end\n";
                      const std::string file = readFile("file.txt");
                      if (outcome.answer() == "not opened") {
                        // The stream seeks the end of the file to append.
                        EXPECT_TRUE(outcome.hasFailed("open") || outcome.hasFailed("lseek"));

                      } else if (outcome.answer() == "failed") {
                        EXPECT_NE(outcome.count, 0);
                        EXPECT_TRUE(beginsWith(file, kept));
                      } else {
                        EXPECT_EQ(outcome.answer(), "written");
                        EXPECT_FALSE(outcome.hasFailed("close"));
                        EXPECT_EQ(file, whole);
                      }
                      if (isWritten(outcome)) {
                        EXPECT_EQ(outcome.answer(), "written");
                      }
                    }});
  }
}

// ---- Directories

TEST_F(FailingCalls, AnUnknownWorkingDirectoryIsNotListed) {
  makeContents({{"~", "/"}, {"~/name", ""}});
  const Ended ended = runTraced(
      [](Report&) {
        Names names;
        const bool result = zn_lib::listDir("", "", true, names);
        return trueOrFalse(result) + ", " + std::to_string(names.size());
      },
      [](long call) {
        return purposeOf(call) == "getcwd" ? Intervention{EACCES} : Intervention();
      });
  EXPECT_EQ(ended.answer, "false, 0");
}

TEST_F(FailingCalls, ListsContainExistingNamesOnly) {
  const Contents before = {{"a.txt", "1"}, {"b.txt", "2"}, {"c", "3"}, {"dir", "/"}};
  const struct {
    const char* what;
    const char* dir;
    const char* filter;
    Names all;
    Lacking lacking = {};
  } cases[] = {
      {"a pattern", "./", "\\.txt$", {"a.txt", "b.txt"}},
      {"the working directory", "", "", {"a.txt", "b.txt", "c", "dir"}},
      // The C library looks for its name then.
      {"a working directory with a long name",
       "",
       "",
       {"a.txt", "b.txt", "c", "dir"},
       {{"getcwd", ENAMETOOLONG}}},
      {"directories", ".", "<dir>", {"dir"}},
  };
  for (const auto& c : cases) {
    withEveryFault({c.what, before,
                    [&](Report& report) {
                      Names names = {"mine"};
                      const bool result = zn_lib::listDir(c.dir, c.filter, true, names);
                      std::sort(names.begin() + 1, names.end());
                      std::string text;
                      for (const std::string& name : names) text += name + "\n";
                      report.setText(text);
                      const bool isPart =
                          names.front() == "mine" &&
                          std::includes(c.all.begin(), c.all.end(), names.begin() + 1, names.end());
                      if (!isPart) return std::string("other names");
                      return trueOrFalse(result) +
                             (names.size() == c.all.size() + 1 ? ", all" : "");
                    },
                    [&](const Outcome& outcome) {
                      EXPECT_EQ(contents(), before);
                      if (outcome.answer() == "false") {
                        EXPECT_EQ(outcome.ended.text, "mine\n");
                      } else if (!outcome.hasFailed("list", ENOENT)) {
                        // The C library takes ENOENT for the end of a directory that is removed.
                        EXPECT_EQ(outcome.answer(), "true, all");
                      }
                      if (outcome.isHarmless()) {
                        EXPECT_EQ(outcome.answer(), "true, all");
                      }
                    },
                    c.lacking, "listDir",
                    [](const Outcome& outcome) {
                      if (outcome.answer() != "false") return allOrSome("names")(outcome);
                      return std::string("false, the list is unchanged");
                    }});
  }
}

TEST_F(FailingCalls, CopiedDirectoriesContainPartsOfTheSource) {
  const std::string text = "a line\nand another\n";
  for (const bool hasTarget : {false, true}) {
    Contents before = {{"from", "/"}, {"from/a", text}, {"from/b", "short"}, {"from/empty", ""}};
    if (hasTarget) before.insert({{"to", "/"}, {"to/b", "to's own"}});
    withEveryFault(
        {hasTarget ? "to an existing directory" : "to a new directory",
         before,
         [](Report&) {
           std::string from = "from", to = "to";
           return trueOrFalse(zn_lib::copyDir(from, to));
         },
         [&](const Outcome& outcome) {
           Contents after = contents();
           for (const auto& [name, bytes] : before) {
             // Where the target counts as missing, the source's file replaces it.
             const bool isReplaced = name == "to/b" && isCalledMissing(outcome);
             EXPECT_TRUE(after[name] == bytes || (isReplaced && beginsWith("short", after[name])))
                 << name << ": " << after[name];
           }
           if (outcome.answer() == "false") {
             EXPECT_EQ(after, before);
             EXPECT_NE(outcome.count, 0);
             return;
           }
           EXPECT_EQ(outcome.answer(), "true");
           for (const auto& [name, bytes] : after) {
             if (name == "to" || before.count(name) != 0) continue;
             EXPECT_TRUE(beginsWith(name, "to/")) << name;
             EXPECT_TRUE(beginsWith(before["from" + name.substr(2)], bytes)) << name;
           }
           if (isCopied(outcome)) {
             EXPECT_EQ(after["to/a"], text);
             EXPECT_EQ(after["to/b"], hasTarget ? "to's own" : "short");
             EXPECT_EQ(after.count("to/empty"), 1u);
           }
         },
         {},
         "copyDir",
         [&](const Outcome& outcome) {
           if (outcome.answer() == "false") return std::string("false, nothing changes");
           const Contents after = contents();
           const bool isWhole = after.count("to/empty") != 0 && after.count("to/a") != 0 &&
                                after.at("to/a") == text && after.count("to/b") != 0 &&
                                after.at("to/b") == (hasTarget ? "to's own" : "short");
           return std::string(isWhole ? "true, all files copied" : "true, some or no files copied");
         }});
  }
}

TEST_F(FailingCalls, NamesAreNumberedOrUnchanged) {
  const Contents before = {{"report.txt", "1"}};
  for (const Lacking& lacking : {Lacking(), Lacking{{"getcwd", ENAMETOOLONG}}}) {
    withEveryFault({"sequentialFile", before,
                    [](Report&) {
                      std::string name = "report.txt";
                      zn_lib::sequentialFile(name);
                      return name;
                    },
                    [&](const Outcome& outcome) {
                      EXPECT_EQ(contents(), before);
                      const bool isListed = outcome.answer() == "report-1.txt";
                      EXPECT_TRUE(isListed || outcome.answer() == "report.txt") << outcome.answer();
                      if (outcome.isHarmless()) {
                        EXPECT_TRUE(isListed);
                      }
                    },
                    lacking, "sequentialFile",
                    [](const Outcome& outcome) {
                      return std::string(outcome.answer() == "report.txt" ? "name unchanged"
                                                                          : "numbered name");
                    }});
  }
}

// A list contains some of the names of the directory.
TEST_F(FailingCalls, ListsOfAVanishingDirectoryAreIncomplete) {
  Contents before = {{"from", "/"}};
  const std::string longest(200, 'n');  // so that a system call returns some 150 names
  constexpr int entries = 300;
  for (int i = 0; i < entries; ++i) before["from/" + longest + std::to_string(i)] = "";
  const auto removedAtTheSecondRead = [](const Work& run) {
    int reads = 0;
    const Ended ended = runTraced(run, [&](long call) {
      if (call == SYS_getdents64 && ++reads == 2) std::filesystem::remove_all("from");
      return Intervention();
    });
    EXPECT_GE(reads, 2);
    return ended;
  };
  const auto isOneOfThem = [&](const std::string& name) {
    return before.count("from/" + name) != 0;
  };

  makeContents(before);
  Ended ended = removedAtTheSecondRead([&](Report&) -> std::string {
    Names names;
    const bool result = zn_lib::listDir("from", "", true, names);
    const bool areThem = std::all_of(names.begin(), names.end(), isOneOfThem);
    const std::set<std::string> distinct(names.begin(), names.end());
    if (!areThem || distinct.size() != names.size()) return "other names";
    return trueOrFalse(result) + (names.empty() ? ", none" : ", some");
  });
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.answer, "true, some");

  makeContents(before);
  ended = removedAtTheSecondRead([](Report&) {
    std::string from = "from", to = "to";
    return trueOrFalse(zn_lib::copyDir(from, to));
  });
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(ended.answer, "true");
  EXPECT_EQ(contents(), (Contents{{"to", "/"}})) << "no file is left to copy";
  RecordProperty("vanishing_entries", entries);
}

// ---- Catalogs, processes, the platform

TEST_F(FailingCalls, CatalogsKeepTheirEntries) {
  std::string xml = "<ERRORS>";
  for (int i = 1; i <= 100; ++i) {
    const std::string number = std::to_string(i);
    xml += errorXml(number, "Text of " + number) + "\n";
  }
  xml += "</ERRORS>";
  withEveryFault({"readErrorFile",
                  {{"errors.xml", xml}},
                  [](Report&) {
                    Catalog catalog = {{0, "mine"}};
                    const bool result = zn_lib::readErrorFile("errors.xml", catalog);
                    const bool arePart =
                        catalog[0] == "mine" &&
                        std::all_of(
                            std::next(catalog.begin()), catalog.end(), [](const auto& entry) {
                              return entry.second == "Text of " + std::to_string(entry.first);
                            });
                    if (!arePart) return std::string("other messages");
                    return trueOrFalse(result) + (catalog.size() == 101 ? ", all" : "");
                  },
                  [&](const Outcome& outcome) {
                    EXPECT_EQ(contents(), (Contents{{"errors.xml", xml}}));
                    EXPECT_TRUE(outcome.answer() == "true" || outcome.answer() == "true, all")
                        << outcome.answer();
                    if (outcome.isHarmless()) {
                      EXPECT_EQ(outcome.answer(), "true, all");
                    }
                  },
                  {},
                  "readErrorFile",
                  allOrSome("messages")});
}

TEST_F(FailingCalls, ShellCommandsRunOnceOrNotAtAll) {
  const Work run = [](Report&) { return trueOrFalse(zn_lib::execShell("echo line >>trace")); };
  const auto describe = [](const Outcome& outcome) {
    return outcome.answer() + (isThere("trace") ? ", command has run" : ", command has not run");
  };
  withEveryFault({"execShell",
                  {},
                  run,
                  [](const Outcome& outcome) {
                    const std::string trace = readFile("trace");
                    EXPECT_TRUE(trace == "line\n" || trace.empty()) << trace;
                    if (outcome.answer() == "true") {
                      EXPECT_EQ(outcome.output, "");
                      // The C library's `system` cannot distinguish a shell that does not start
                      // from one that does not find the command.
                      EXPECT_EQ(trace, outcome.hasFailed("clone") ? "" : "line\n");
                    } else {
                      EXPECT_EQ(outcome.answer(), "false");
                      EXPECT_NE(outcome.count, 0);
                      EXPECT_TRUE(outcome.output == "No command processor available\n" ||
                                  outcome.output == "Problem executing command\n")
                          << outcome.output;
                    }
                    // The C library only waits again after an interruption.
                    if (outcome.hasFailed("wait")) {
                      EXPECT_EQ(outcome.answer(), trueOrFalse(outcome.fault->error == EINTR));
                    }
                    if (outcome.isRepeatable({"wait"})) {
                      EXPECT_EQ(outcome.answer(), "true");
                    }
                  },
                  {},
                  "execShell",
                  describe});
  withEveryFault({"execShell without processes",
                  {},
                  run,
                  [](const Outcome& outcome) {
                    EXPECT_EQ(outcome.answer(), "false");
                    EXPECT_TRUE(beginsWith("No command processor available\n", outcome.output))
                        << outcome.output;
                    EXPECT_FALSE(isThere("trace"));
                  },
                  {{"clone", EPERM}},
                  "execShell",
                  describe});
}

TEST_F(FailingCalls, ChildrenRunOrTheProcessEnds) {
  for (const bool wait : {true, false}) {
    withEveryFault(
        {wait ? "childProcess that waits" : "childProcess",
         {{"script", "echo line >>trace\n"}},
         [&](Report&) { return std::to_string(zn_lib::childProcess("/bin/sh", "script", wait)); },
         [](const Outcome& outcome) {
           const bool isChild = !outcome.hasFailed("clone");
           EXPECT_EQ(readFile("trace"), isChild ? "line\n" : "");
           EXPECT_EQ(WEXITSTATUS(outcome.ended.status), isChild ? 0 : 1);
           EXPECT_EQ(outcome.answer(), isChild ? "0" : "");
         },
         {},
         "childProcess",
         [](const Outcome& outcome) {
           return outcome.answer() + (isThere("trace") ? ", program has run" : ", no program");
         }});
  }
}

// A process may be forbidden to ask for or to change its handling of signals.
TEST_F(FailingCalls, ChildrenRunWithoutControlOfSignals) {
  const struct {
    const char* what;
    long call;
    Work run;
    const char* answer;
  } cases[] = {
      {"execShell", SYS_rt_sigaction,
       [](Report&) { return trueOrFalse(zn_lib::execShell("echo line >>trace")); }, "true"},
      {"childProcess", SYS_rt_sigprocmask,
       [](Report&) { return std::to_string(zn_lib::childProcess("/bin/sh", "script", true)); },
       "0"},
  };
  for (const auto& c : cases) {
    makeContents({{"script", "echo line >>trace\n"}});
    bool hasFailed = false;
    const Ended ended = runTraced(c.run, [&](long call) -> Intervention {
      if (call != c.call || hasFailed) return {};
      hasFailed = true;
      return {EPERM};
    });
    EXPECT_TRUE(hasFailed) << c.what;
    EXPECT_EQ(ended.answer, c.answer) << c.what;
    EXPECT_EQ(readFile("trace"), "line\n") << c.what;
  }
}

// The child that is to become the program makes this call.
TEST_F(FailingCalls, ProgramsThatCannotBeStartedChangeNothing) {
  const struct {
    const char* function;
    std::function<std::string()> run;
    const char* answer;
  } cases[] = {{"childProcess",
                [] { return std::to_string(zn_lib::childProcess("/bin/sh", "script", true)); },
                "0, no program"},
               {"execShell", [] { return trueOrFalse(zn_lib::execShell("echo line >>trace")); },
                "false, command has not run"}};
  for (const auto& c : cases) {
    for (const SystemCallError& error : errorsOf(SYS_execve)) {
      SCOPED_TRACE(std::string(c.function) + ": " + error.name);
      makeContents({{"script", "echo line >>trace\n"}});
      const int status = statusOfChild([&] {
        dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        if (!forbidCall(SYS_execve, error.number)) _exit(kCannotPrepare);
        const std::string answer = c.answer;
        EXPECT_EQ(c.run(), answer.substr(0, answer.find(',')));
        EXPECT_FALSE(isThere("trace"));
      });
      if (status == kCannotPrepare) GTEST_SKIP() << "no call can be forbidden here";
      EXPECT_EQ(status, 0);
      FailingFunctions::all().addCall(c.function, "execve", true);
      FailingFunctions::all().addFailure(c.function, "execve", error.name, c.answer, 1);
    }
    FailingFunctions::all().addOperation(static_cast<int>(errorsOf(SYS_execve).size()));
  }
}

#else

TEST(FailingCalls, NeedLinuxOnX8664) {
  GTEST_SKIP() << "FailingCalls.* need x86-64, since they change its registers";
}

#endif

// ---- A disk that is full

class FullDisk : public InTemporaryDirectory {};

/// Mounts a file system of 64 KiB on the working directory, in the mount namespace of this process.
bool mountSmallDisk() {
  const std::string here = std::filesystem::current_path();
  return unshareMounts() && mount("none", here.c_str(), "tmpfs", 0, "size=64k") == 0 &&
         chdir(here.c_str()) == 0;
}

TEST_F(FullDisk, CopiesFillTheDisk) {
  for (const std::size_t size : {100000u, 300000u}) {
    const std::string text(size, 'x');
    writeFile("source", text);
    const std::string source = std::filesystem::absolute("source");
    const int status = statusOfChild([&] {
      // The open file is beneath the mount, where names no longer reach it.
      const std::string outside =
          "/proc/self/fd/" + std::to_string(open(source.c_str(), O_RDONLY | O_CLOEXEC));
      if (!mountSmallDisk()) _exit(kCannotPrepare);
      EXPECT_TRUE(zn_lib::fileCopy(outside, "copy", true));
      const std::string copy = readFile("copy");
      EXPECT_TRUE(copy == text.substr(0, copy.size()));
      EXPECT_FALSE(std::ofstream("more") << "x" << std::flush) << "there is no space left";
      EXPECT_GT(copy.size(), 50000u);
      EXPECT_EQ(copy.size() % 4096, 0u) << "the last page is full";
    });
    if (status == kCannotPrepare) GTEST_SKIP() << "no file system can be mounted here";
    EXPECT_EQ(status, 0);
  }
}

TEST_F(FullDisk, SavesKeepFileAndBackup) {
  constexpr int saves = 20;
  const int status = statusOfChild([] {
    if (!mountSmallDisk()) _exit(kCannotPrepare);
    const Contents before = {{"config.xml", filledXml()}, {"config.xml~", "older"}};
    makeContents(before);
    for (int i = 0; i < saves; ++i) {
      Configuration store;
      store.load();
      store.set("large", std::string(100000, 'x'));
      EXPECT_TRUE(store.save()) << "a full disk is not reported";
      EXPECT_FALSE(store.changed);
    }
    EXPECT_TRUE(contents() == before);
    Configuration store;
    store.load();
    store.set("small", "1");
    EXPECT_TRUE(store.save());
    EXPECT_TRUE(readFile("config.xml") == xmlOf(store)) << "settings that fit are saved";
  });
  if (status == kCannotPrepare) GTEST_SKIP() << "no file system can be mounted here";
  EXPECT_EQ(status, 0);
  RecordProperty("incomplete_saves", saves);
}

// ---- No descriptors

class Descriptors : public InTemporaryDirectory {};

const Contents kFiles = {{"config.xml", "<C><a x='t'>1</a></C>"},
                         {"dir", "/"},
                         {"dir/f", "text"},
                         {"errors.xml", "<E>" + errorXml("1", "m") + "</E>"},
                         {"script", "echo line >trace\n"}};

/// Returns `kFiles` and one more file.
Contents filesAnd(const std::string& name, const std::string& bytes) {
  Contents all = kFiles;
  all[name] = bytes;
  return all;
}

/// Returns `kFiles` with the settings moved to the name of their backup.
Contents filesWithBackup() {
  Contents all = filesAnd("config.xml~", kFiles.at("config.xml"));
  all.erase("config.xml");
  return all;
}

/// An operation that runs without descriptors, and then with them.
struct DescriptorCase {
  const char* what;
  std::function<bool()> run;
  bool succeedsWithoutDescriptors;
  Contents contentsWithoutDescriptors;
};

bool saves() {
  Configuration store;
  store.set("b", "2");
  const bool result = store.save();
  EXPECT_EQ(store.changed, !result);
  store.changed = false;
  return result;
}

bool loads() {
  Configuration store;
  EXPECT_TRUE(store.load());
  return store.get("a").value == "1";
}

bool lists() {
  Names names = {"mine"};
  const bool result = zn_lib::listDir("dir", "", true, names);
  EXPECT_EQ(names, result ? (Names{"mine", "f"}) : Names{"mine"});
  return result;
}

bool copiesDirectory() {
  std::string from = "dir", to = "to";
  return zn_lib::copyDir(from, to);
}

bool numbers() {
  std::string name = "dir/f.t";
  zn_lib::sequentialFile(name);
  EXPECT_TRUE(name == "dir/f-1.t" || name == "dir/f.t") << name;
  return name == "dir/f-1.t";
}

bool reads() {
  zn_lib::ReadFile file;
  std::string name = "dir/f";
  file.setFileName(name);
  return file.fileOpen();
}

bool writes() {
  zn_lib::WriteFile file;
  std::string name = "dir/f";
  file.setFileName(name);
  return file.fileOpen();
}

bool readsCatalog() {
  Catalog catalog;
  EXPECT_TRUE(zn_lib::readErrorFile("errors.xml", catalog));
  return catalog.size() == 1;
}

TEST_F(Descriptors, OperationsFailWithoutDescriptors) {
  // UndefinedBehaviorSanitizer examines objects by means of a pipe. The presets run it together
  // with AddressSanitizer, and g++ 12 does not show the program that it is enabled.
  if (kHasAddressSanitizer) GTEST_SKIP() << "the sanitizer needs descriptors";
  const DescriptorCase cases[] = {
      {"save", saves, false, kFiles},
      {"load", loads, false, kFiles},
      {"fileCopy", [] { return zn_lib::fileCopy("dir/f", "copy", false) && isThere("copy"); },
       false, kFiles},
      {"createBackup", [] { return zn_lib::createBackup("config.xml"); }, true, filesWithBackup()},
      {"fileRename", [] { return zn_lib::fileRename("config.xml", "config.xml~", false); }, true,
       filesWithBackup()},
      {"hexDump", [] { return zn_lib::hexDump("dir/f", 0); }, false, kFiles},
      {"listDir", lists, false, kFiles},
      {"copyDir", [] { return copiesDirectory() && isThere("to/f"); }, false, filesAnd("to", "/")},
      {"sequentialFile", numbers, false, kFiles},
      {"ReadFile", reads, false, kFiles},
      {"WriteFile", writes, false, kFiles},
      {"readErrorFile", readsCatalog, false, kFiles},
      {"execShell", [] { return zn_lib::execShell("exit 0"); }, false, kFiles},
      {"childProcess",
       [] { return zn_lib::childProcess("/bin/sh", "script", true) == 0 && isThere("trace"); },
       false, kFiles},
  };
  for (const DescriptorCase& c : cases) {
    SCOPED_TRACE(c.what);
    const int status = statusOfChild([&] {
      // Programs that cannot load their libraries print a message.
      dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
      makeContents(kFiles);
      bool succeeds;
      {
        const DescriptorLimit none(0);
        succeeds = c.run();
      }
      EXPECT_EQ(succeeds, c.succeedsWithoutDescriptors);
      EXPECT_EQ(contents(), c.contentsWithoutDescriptors);
      makeContents(kFiles);
      EXPECT_TRUE(c.run()) << "with descriptors again";
    });
    EXPECT_EQ(status, 0);
  }
  RecordProperty("without_descriptors", static_cast<int>(std::size(cases)));
}

}  // namespace
