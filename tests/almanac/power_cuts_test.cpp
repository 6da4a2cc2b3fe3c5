/// Power cuts while almanac writes tables, pictures and its settings. Settings are complete at any
/// time. A table or picture is written in place: it may be torn, but a former one that is moved to
/// its backup is not lost, and no other file changes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "directory_contents.h"
#include "program.h"
#include "temporary_files.h"
#ifdef __linux__
#include "power_cuts.h"
#endif

namespace {

using Names = std::set<std::string>;

/// A run of the program in the directory that has its settings, too.
struct Case {
  const char* what;
  Contents before;
  std::vector<std::string> options;
  Names inPlace;         ///< files that are written in place
  Names atOnce;          ///< files that have their old text until they have their new one
  bool mayLose = false;  ///< whether an old file is lost with the new one
};

const std::string kOld = "an old table\n";
const std::string kOlder = "an older table\n";

std::vector<Case> cases() {
  const Contents none = {{"other.txt", "other"}};
  const Contents table = {{"other.txt", "other"}, {"t.txt", kOld}};
  const Contents tables = {{"other.txt", "other"}, {"t.txt", kOld}, {"t.txt~", kOlder}};
  const Contents picture = {{"other.txt", "other"}, {"y.svg", kOld}};
  return {
      {"a new table", none, {"--output", "t.txt"}, {"t.txt"}, {}},
      {"a table that is overwritten", table, {"--output", "t.txt"}, {"t.txt"}, {}, true},
      {"a table with a backup", table, {"--output", "t.txt", "--backup"}, {"t.txt"}, {"t.txt~"}},
      {"a table with a second backup",
       tables,
       {"--output", "t.txt", "--backup"},
       {"t.txt"},
       {"t.txt~"}},
      {"a table with a number", table, {"--output", "t.txt", "--number"}, {"t-1.txt"}, {}},
      {"a new picture", none, {"--svg", "y.svg"}, {"y.svg"}, {}},
      {"a picture that is overwritten", picture, {"--svg", "y.svg"}, {"y.svg"}, {}, true},
      {"a table and a picture with a backup",
       picture,
       {"--output", "t.txt", "--svg", "y.svg", "--backup"},
       {"t.txt", "y.svg"},
       {"y.svg~"}},
      {"settings", none, {"--save", "--settings"}, {}, {"almanac.cfg"}},
      {"changed settings",
       {{"almanac.cfg", "<CONFIGURATION type='ALMANAC'><place>Rome</place></CONFIGURATION>"},
        {"other.txt", "other"}},
       {"--save", "--settings"},
       {},
       {"almanac.cfg", "almanac.cfg~"}},
      {"changed settings with a backup of others, and a table",
       {{"almanac.cfg", "<CONFIGURATION type='ALMANAC'><order>dmy</order></CONFIGURATION>"},
        {"almanac.cfg~", "older"},
        {"other.txt", "other"}},
       {"--save", "--output", "t.txt"},
       {"t.txt"},
       {"almanac.cfg", "almanac.cfg~"}},
  };
}

class PowerCuts : public InTemporaryDirectory {
 protected:
  PowerCuts() {
    setenv("XDG_CONFIG_HOME", std::filesystem::current_path().c_str(), 1);
    writeFile(answer_, "y\n");
  }
  ~PowerCuts() override { unsetenv("XDG_CONFIG_HOME"); }

  /// Becomes the program, which may overwrite files.
  [[noreturn]] void execAlmanac(const Case& c) const {
    // Such a table takes several writes.
    std::vector<std::string> command = {ALMANAC,      "--latitude", "52.37", "--from",
                                        "2026-01-01", "--days",     "365"};
    command.insert(command.end(), c.options.begin(), c.options.end());
    const RedirectedDescriptor in(STDIN_FILENO, answer_.c_str(), O_RDONLY);
    execQuietly(command);
  }

 private:
  const TemporaryDirectory elsewhere_;
  const std::string answer_ = elsewhere_.file("answer");
};

#ifdef __linux__

bool has(const Contents& files, const std::string& name, const std::string& text) {
  const auto file = files.find(name);
  return file != files.end() && file->second == text;
}

/// Returns whether the file `name` is in `files` as it is in `state`, also if it is in neither.
bool isAsIn(const Contents& files, const Contents& state, const std::string& name) {
  const auto file = files.find(name);
  return file == files.end() ? state.count(name) == 0 : has(state, name, file->second);
}

/// Expects that each file in `state` is as the case says.
void expectState(const Case& c, const Contents& after, const Contents& state) {
  for (const auto& [name, text] : state) {
    SCOPED_TRACE(name);
    if (c.inPlace.count(name) != 0) {
      EXPECT_TRUE(isAsIn(c.before, state, name) ||
                  after.at(name).compare(0, text.size(), text) == 0)
          << "neither the old file nor the start of the new one";
    } else if (c.atOnce.count(name) == 0 && c.before.count(name) == 0) {
      // A temporary file of a save.
      EXPECT_EQ(after.count(name), 0u);
    }
  }
  for (const std::string& name : c.atOnce) {
    // A former backup of a table is removed before the table is moved.
    const bool isMissing = name.back() == '~' && state.count(name) == 0;
    EXPECT_TRUE(isMissing || isAsIn(c.before, state, name) || isAsIn(after, state, name)) << name;
  }
  for (const auto& [name, text] : c.before) {
    if (c.inPlace.count(name) != 0 || c.atOnce.count(name) != 0) continue;
    EXPECT_TRUE(has(state, name, text)) << name << " has changed";
  }
}

/// Returns whether `state` has neither the old text of a file nor its new one.
bool isLost(const Case& c, const Contents& after, const Contents& state) {
  return std::any_of(c.before.begin(), c.before.end(), [&](const auto& old) {
    const auto& [name, text] = old;
    return c.inPlace.count(name) != 0 && !has(state, name, text) && !has(state, name + "~", text) &&
           !isAsIn(after, state, name);
  });
}

TEST_F(PowerCuts, TearOnlyFilesThatAreWrittenInPlace) {
  const std::vector<Case> all = cases();
  std::size_t count = 0;
  for (const Case& c : all) {
    SCOPED_TRACE(c.what);
    makeContents(c.before);
    const auto states = statesAfterPowerCuts([&] { execAlmanac(c); });
    if (!states) GTEST_SKIP() << "no process can be traced here";
    ASSERT_FALSE(HasFailure());
    const Contents after = contents();
    for (const std::string& name : c.inPlace) EXPECT_GT(after.at(name).size(), 10000u) << name;
    for (const std::string& name : c.atOnce) EXPECT_FALSE(isAsIn(c.before, after, name));

    std::size_t lost = 0;
    for (const Contents& state : *states) {
      SCOPED_TRACE(testing::PrintToString(state));
      expectState(c, after, state);
      lost += isLost(c, after, state) ? 1 : 0;
    }
    EXPECT_EQ(lost > 0, c.mayLose) << lost << " states have neither the old file nor the new one";
    EXPECT_GT(states->size(), 2u);
    count += states->size();
    std::printf("%-55s %3zu states\n", c.what, states->size());
  }
  RecordProperty("power_cut_cases", static_cast<int>(all.size()));
  RecordProperty("power_cut_states", static_cast<int>(count));
}

#else

TEST_F(PowerCuts, NeedLinux) { GTEST_SKIP() << "only Linux describes the calls of a process"; }

#endif

}  // namespace
