#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zn_output.h>
#include <zn_readfile.h>

#include <string>

#include "output_capture.h"
#include "temporary_files.h"

namespace {

using namespace std::string_literals;

class ReadFileTest : public InTemporaryDirectory {};

/// Gives the object its name, which it takes by reference.
void open(zn_lib::ReadFile& file, std::string name) {
  file.setFileName(name);
  ASSERT_TRUE(file.fileOpen()) << name;
}

TEST_F(ReadFileTest, HeaderExample) {
  const Home home(directory.c_str());
  writeFile("notes.txt", "one\ntwo");
  zn_lib::ReadFile notes;
  std::string name = "~/notes.txt";
  notes.setFileName(name);
  EXPECT_EQ(written([&] {
              if (notes.fileOpen()) notes.cat();
            }).out,
            "one\ntwo\n");
}

TEST_F(ReadFileTest, IsClosedAtFirst) {
  zn_lib::ReadFile file;
  EXPECT_FALSE(file.binary);
  EXPECT_FALSE(file.file.is_open());
  file.fileClose();
  EXPECT_TRUE(file.file.good()) << "closing what is not open does nothing";
  EXPECT_EQ(written([&] { EXPECT_FALSE(file.cat()); }).out, "");
}

TEST_F(ReadFileTest, OpensInEitherMode) {
  writeFile("a", "x\r\ny\0z"s);
  for (const bool binary : {false, true}) {
    zn_lib::ReadFile file;
    file.binary = binary;
    open(file, "a");
    const std::string text{std::istreambuf_iterator<char>(file.file), {}};
    EXPECT_EQ(text, "x\r\ny\0z"s);
    file.fileClose();
    EXPECT_FALSE(file.file.is_open());
  }
}

TEST_F(ReadFileTest, SaysNothingAboutAMissingFile) {
  zn_lib::setVerbose(true);
  zn_lib::ReadFile file;
  std::string name = "missing";
  file.setFileName(name);
  const Written text = written([&] { EXPECT_FALSE(file.fileOpen()); });
  zn_lib::setVerbose(false);
  EXPECT_EQ(text.out + text.err, "");
  writeFile("missing", "x");
  EXPECT_TRUE(file.fileOpen()) << "a later try starts afresh";
  EXPECT_TRUE(file.file.good());
}

TEST_F(ReadFileTest, KeepsAnOpenFile) {
  writeFile("a", "first");
  writeFile("b", "second");
  zn_lib::ReadFile file;
  open(file, "a");
  std::string name = "b";
  file.setFileName(name);
  EXPECT_TRUE(file.fileOpen());
  EXPECT_TRUE(file.file.fail());
  file.file.clear();
  std::string text;
  file.file >> text;
  EXPECT_EQ(text, "first");
}

TEST_F(ReadFileTest, Cat) {
  const std::string longest(1023, 'x');
  const struct {
    const char* what;
    std::string text, printed;
  } cases[] = {
      {"no newline at the end", "one\ntwo", "one\ntwo\n"},
      {"a newline at the end", "one\ntwo\n", "one\ntwo\n\n"},
      {"an empty file", "", "\n"},
      {"empty lines", "\n\n", "\n\n\n"},
      {"the longest line", longest + "\nnext", longest + "\nnext\n"},
      {"a line too long", longest + "y\nnext", longest + "\n"},
      {"a line too long at the end", longest + "y", longest + "\n"},
      {"the longest line at the end", longest, longest + "\n"},
      {"a NUL", "ab\0cd\nef"s, "ab\nef\n"},
      {"carriage returns", "a\r\nb", "a\r\nb\n"},
  };
  for (const auto& c : cases) {
    writeFile("a", c.text);
    zn_lib::ReadFile file;
    open(file, "a");
    bool result = false;
    EXPECT_EQ(written([&] { result = file.cat(); }).out, c.printed) << c.what;
    EXPECT_TRUE(result) << c.what;
    EXPECT_EQ(written([&] { result = file.cat(); }).out, "") << c.what << ", again";
    EXPECT_TRUE(result) << c.what << ", again";
  }
}

TEST_F(ReadFileTest, CatPrintsTheRest) {
  writeFile("a", "one\ntwo\nthree");
  zn_lib::ReadFile file;
  open(file, "a");
  std::string line;
  std::getline(file.file, line);
  EXPECT_EQ(written([&] { file.cat(); }).out, "two\nthree\n");
}

TEST_F(ReadFileTest, CatOfADirectoryEndsAsThatOfAnEmptyFile) {
  zn_lib::ReadFile file;
  open(file, ".");
  EXPECT_EQ(written([&] { EXPECT_TRUE(file.cat()); }).out, "\n");
}

}  // namespace
