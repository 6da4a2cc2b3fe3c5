#include <gtest/gtest.h>
#include <zn_dir.h>
#include <zn_output.h>
#include <zn_seqfile.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "output_capture.h"
#include "reference_name_parts.h"
#include "reference_names.h"
#include "samples.h"
#include "temporary_files.h"

namespace {

namespace definitions = zn_lib::internal::definitions;

class SequentialFile : public InTemporaryDirectory {
 protected:
  ~SequentialFile() override { zn_lib::setVerbose(false); }
};

std::string sequential(std::string name) {
  zn_lib::sequentialFile(name);
  return name;
}

TEST_F(SequentialFile, HeaderExamples) {
  writeFile("report.txt", "");
  std::string name = "report.txt";
  zn_lib::sequentialFile(name);
  EXPECT_EQ(name, "report-1.txt");
  EXPECT_EQ(sequential("report-7.txt"), "report-1.txt");
  EXPECT_EQ(sequential("notes"), "notes-1.");
}

TEST_F(SequentialFile, Examples) {
  const struct {
    const char* what;
    std::vector<std::string> files;
    std::string name, result;
  } cases[] = {
      {"one file", {"report.txt"}, "report.txt", "report-1.txt"},
      {"a numbered file alone", {"report-7.txt"}, "report-7.txt", "report-1.txt"},
      {"the number is always 1", {"a.txt", "a-1.txt", "a-2.txt"}, "a.txt", "a-1.txt"},
      {"numbered names are passed over", {"b-1.txt", "b-22", "b-"}, "b.txt", "b-1.txt"},
      {"nothing found", {"x"}, "data", "data-1."},
      {"no file at all", {}, "a.b.c", "a.b-1.c"},
      {"another file's stem", {"rerun.log"}, "run.log", "rerun-1.log"},
      {"the stem keeps its case", {"MyRun.txt"}, "Run.log", "MyRun-1.log"},
      {"a number without hyphen", {"run7.log"}, "run.log", "run7-1.log"},
      {"an empty number", {}, "log-", "log-1."},
      {"two numbers", {}, "a-1-2.x", "a-1-1.x"},
      {"a hyphen in front", {}, "-3.x", "-3-1.x"},
      {"the base as a pattern", {"aXc.d"}, "a.c.d", "aXc-1.d"},
      {"a dot file", {".profile"}, ".profile", ".profile-1."},
      {"a hidden file counts", {".run.log"}, "run.log", ".run-1.log"},
      {"a backslash in a file's name", {"run\\x.log"}, "run.log", "run/x-1.log"},
      {"two extensions", {"run.tar.gz"}, "run.log", "run.tar-1.log"},
      {"a line break in a file's name", {"run\n-7.log"}, "run.log", "run\n-7.log-1.log"},
  };
  for (const auto& c : cases) {
    std::filesystem::create_directory("case");
    std::filesystem::current_path("case");
    for (const std::string& file : c.files) writeFile(file, "");
    EXPECT_EQ(sequential(c.name), c.result) << c.what;
    std::filesystem::current_path("..");
    std::filesystem::remove_all("case");
  }
}

TEST_F(SequentialFile, TheLastStemWithoutNumberWins) {
  std::filesystem::create_directory("out");
  writeFile("out/run.log", "");
  writeFile("out/rerun.log", "");
  std::vector<std::string> order;
  ASSERT_TRUE(zn_lib::listDir("out", "run", false, order));
  const std::string last = order.back().substr(0, order.back().size() - 4);
  EXPECT_EQ(sequential("out/run.log"), "out/" + last + "-1.log");
}

TEST_F(SequentialFile, TreatsTheParentDirectoryAsABase) {
  writeFile("here", "");
  const std::string tail = "-1./logs/x";
  const std::string name = sequential("../logs/x");
  std::vector<std::string> entries;
  ASSERT_TRUE(zn_lib::listDir("", "", false, entries));
  EXPECT_EQ(name, entries.back() + tail) << "all names match, and the last one is the base";
}

TEST_F(SequentialFile, SearchesTheDirectoryOfTheName) {
  const Home home(directory.c_str());
  std::filesystem::create_directory("out");
  writeFile("out/rerun.log", "");
  EXPECT_EQ(sequential("out/run.log"), "out/rerun-1.log");
  EXPECT_EQ(sequential("out\\run.log"), "out/rerun-1.log");
  EXPECT_EQ(sequential("~/out/run.log"), "~/out/rerun-1.log") << "written back unexpanded";
}

TEST_F(SequentialFile, ALongBaseMatchesNamesAsAFilterDoes) {
  writeFile("rerun.log", "");
  for (const std::size_t length : {200u, 256u, 1000u, 9000u}) {
    const std::string base = "(" + std::string(length, 'a') + "|run)";
    std::vector<std::string> entries;
    EXPECT_TRUE(zn_lib::listDir("", base, false, entries));
    EXPECT_EQ(entries, std::vector<std::string>{"rerun.log"});
    EXPECT_EQ(sequential(base + ".x"), "rerun-1.x") << length;
  }
}

TEST_F(SequentialFile, KeepsANameWhoseDirectoryCannotBeListed) {
  zn_lib::setVerbose(true);
  const struct {
    std::string name, kept, message;
  } cases[] = {
      {"a\\b.txt", "a/b.txt", "ERROR: Couldn't open the directory\n"},
      {"missing/notes", "missing/notes", "ERROR: Couldn't open the directory\n"},
      {"a(b.txt", "a(b.txt", "ERROR: Invalid filter\n"},
      {"*.txt", "*.txt", "ERROR: Invalid filter\n"},
  };
  for (const auto& c : cases) {
    std::string result;
    const Written text = written([&] { result = sequential(c.name); });
    EXPECT_EQ(result, c.kept);
    EXPECT_EQ(text.err, c.message) << c.name;
    EXPECT_EQ(text.out, "");
  }
}

TEST_F(SequentialFile, AgreesWithItsDefinition) {
  const reference::Engine fileseq = reference::engine(definitions::fileseq);
  // In an empty directory only the name determines the base, as the listing has only "." and "..".
  forEveryText("a-1\n", 7, [&](const std::string& base) {
    if (base.empty() || base.find('\n') != std::string::npos) return;
    std::smatch match;
    const std::string stem = std::regex_match(base, match, fileseq) ? match.str(1) : base;
    ASSERT_EQ(sequential(base), stem + "-1.") << base;
  });
}

const reference::Engine fileseq = reference::engine(definitions::fileseq);

/// Reference model of `sequentialFile` by its definitions, without HOME.
std::string byDefinitions(const std::string& text) {
  const reference::Parts parts = reference::splitByDefinitions(text).parts;
  std::string base = parts.name;
  std::smatch number;
  if (std::regex_match(parts.name, number, fileseq)) base = number[1];
  const std::vector<std::string> entries = namesInSystemOrder(parts.path);
  if (entries.empty()) return reference::withSlashes(text);
  const reference::Engine filter = reference::engine(base);
  for (const std::string& entry : entries) {
    if (!reference::contains(entry, filter)) continue;
    const std::string stem = reference::splitByDefinitions(entry).stem;
    if (!std::regex_match(stem, fileseq)) base = stem;
  }
  return parts.path + base + "-1." + parts.extension;
}

TEST_F(SequentialFile, AgreesWithAllItsDefinitions) {
  std::filesystem::create_directory("work");
  std::filesystem::current_path("work");
  for (const char* file : {"a", "a.x", "1-a", "a-1", "-", "--1", "aa.1", "a\\.-", ".a", "a\n-1"}) {
    writeFile(file, "");
  }
  std::filesystem::create_directory("1");
  writeFile("1/a1.x", "");
  forEveryText("./-1a\n\r\\", 4, [](const std::string& name) {
    ASSERT_EQ(sequential(name), byDefinitions(name)) << name;
  });
  forEveryText("./-1a", 6, [](const std::string& name) {
    ASSERT_EQ(sequential(name), byDefinitions(name)) << name;
  });
  std::filesystem::current_path("..");
}

TEST_F(SequentialFile, StemsOfFilesAgreeWithItsDefinition) {
  forEveryText("a-1.\n\r\\", 4, [&](const std::string& tail) {
    const std::string file = "base" + tail;
    writeFile(file, "");
    const std::string stem = reference::splitByDefinitions(file).stem;
    const bool isNumbered = std::regex_match(stem, fileseq);
    ASSERT_EQ(reference::beforeNumber(stem).empty(), !isNumbered) << stem;
    ASSERT_EQ(sequential("base.x"), (isNumbered ? "base" : stem) + "-1.x") << file;
    std::filesystem::remove(file);
  });
}

// EXPECT_EQ would print both texts.
TEST_F(SequentialFile, AcceptsNamesOfAnyLength) {
  const auto all = [](char c) { return std::string(kLongText, c); };
  const std::string a(kLongText / 16, 'a');
  std::mt19937 random(35);
  const std::string part = randomText(random, "ab.-17 ~", 1000);
  std::string mixture = "x";
  while (mixture.size() < kLongText) mixture += part;
  // An empty base matches all entries, which are "." and "..".
  const std::string lastDots = namesInSystemOrder(".").back();
  const struct {
    const char* what;
    std::string name, result;
  } cases[] = {
      {"letters", all('a'), all('a') + "-1."},
      {"dots", all('.'), std::string(kLongText - 2, '.') + "-1.."},
      {"slashes", all('/'), all('/')},
      {"backslashes", all('\\'), all('/')},
      {"hyphens", all('-'), all('-') + "1."},
      {"digits", all('7'), all('7') + "-1."},
      {"spaces", all(' '), all(' ') + "-1."},
      {"line feeds", all('\n'), lastDots + "-1."},
      {"tildes", all('~'), all('~') + "-1."},
      {"a mixture", mixture + "z.x", mixture + "z-1.x"},
      {"a numbered mixture", mixture + "z-77.x", mixture + "z-1.x"},
      {"a mixture as a directory", mixture + "\\z.x", mixture + "/z.x"},
      {"a line feed after a mixture", mixture + "\n", lastDots + "-1."},
      {"an extension", a + ".x", a + "-1.x"},
      {"a number", a + "-77.x", a + "-1.x"},
      {"two dots", a + "." + a + ".x", a + "." + a + "-1.x"},
      {"a long number", "a-" + std::string(a.size(), '7'), "a-1."},
      {"a pattern longer than any name", std::string(255, 'a') + "+.x",
       std::string(255, 'a') + "+-1.x"},
      {"the longest pattern", std::string(9999, 'a') + "+.x", std::string(9999, 'a') + "+-1.x"},
      {"too long for a pattern", std::string(10000, 'a') + "+.x", std::string(10000, 'a') + "+.x"},
      {"a set of any length", "[" + a + "].x", "[" + a + "]-1.x"},
      {"a malformed pattern", std::string(300, '(') + ".x", std::string(300, '(') + ".x"},
      {"far too long for a pattern", a + "+.x", a + "+.x"},
  };
  for (const auto& c : cases) EXPECT_TRUE(sequential(c.name) == c.result) << c.what;
}

}  // namespace
