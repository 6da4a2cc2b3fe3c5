#include <gtest/gtest.h>
#include <zn_dir.h>
#include <zn_output.h>
#include <zn_seqfile.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "output_capture.h"
#include "samples.h"
#include "temporary_files.h"

namespace {

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

TEST_F(SequentialFile, LooksIntoTheDirectoryOfTheName) {
  const Home home(directory.c_str());
  std::filesystem::create_directory("out");
  writeFile("out/rerun.log", "");
  EXPECT_EQ(sequential("out/run.log"), "out/rerun-1.log");
  EXPECT_EQ(sequential("out\\run.log"), "out/rerun-1.log");
  EXPECT_EQ(sequential("~/out/run.log"), "~/out/rerun-1.log") << "written back unexpanded";
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

TEST_F(SequentialFile, AgreesWithItsPattern) {
  const std::regex fileseq("(.+)[-](\\d+)?");
  // In an empty directory the base comes from the name alone; listing finds "." and ".." at most.
  forEveryText("a-1\n", 7, [&](const std::string& base) {
    if (base.empty() || base.find('\n') != std::string::npos) return;
    std::smatch match;
    const std::string stem = std::regex_match(base, match, fileseq) ? match.str(1) : base;
    ASSERT_EQ(sequential(base), stem + "-1.") << base;
  });
}

TEST_F(SequentialFile, StemsOfFilesAgreeWithItsPattern) {
  const std::regex fileseq("(.+)[-](\\d+)?");
  forEveryText("a-1\n", 4, [&](const std::string& tail) {
    const std::string file = "base" + tail;
    writeFile(file, "");
    const bool isNumbered = std::regex_match(file, fileseq);
    ASSERT_EQ(sequential("base.x"), (isNumbered ? "base" : file) + "-1.x") << file;
    std::filesystem::remove(file);
  });
}

TEST_F(SequentialFile, AnswersForNamesOfAnyLength) {
  const std::string a(kLongText, 'a');
  EXPECT_EQ(sequential(a + ".x"), a + "-1.x");
  EXPECT_EQ(sequential(a + "-77.x"), a + "-1.x");
  EXPECT_EQ(sequential(a + "." + a + ".x"), a + "." + a + "-1.x");
  EXPECT_EQ(sequential("a-" + std::string(kLongText, '7')), "a-1.");
  EXPECT_EQ(sequential(a + "+.x"), a + "+.x") << "too long for a pattern";
}

}  // namespace
