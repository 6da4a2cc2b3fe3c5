#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zn_output.h>
#include <zn_readfile.h>

#include <ios>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "output_capture.h"
#include "temporary_files.h"
#include "unprivileged.h"

namespace {

using namespace std::string_literals;

class ReadFileTest : public InTemporaryDirectory {};

/// Opens `file` on `name`.
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

TEST_F(ReadFileTest, IsInitiallyClosed) {
  zn_lib::ReadFile file;
  EXPECT_FALSE(file.binary);
  EXPECT_FALSE(file.file.is_open());
  file.fileClose();
  EXPECT_TRUE(file.file.good()) << "closing a closed file does nothing";
  EXPECT_EQ(written([&] { EXPECT_FALSE(file.cat()); }).out, "");
}

TEST_F(ReadFileTest, HasANameAFlagAndAStream) {
  static_assert(std::is_base_of_v<zn_lib::FileName, zn_lib::ReadFile>);
  static_assert(std::has_virtual_destructor_v<zn_lib::ReadFile>);
  const zn_lib::ReadFile file;
  const auto* const flag = reinterpret_cast<const char*>(&file.binary);
  EXPECT_LT(reinterpret_cast<const char*>(&file.nameParts), flag);
  EXPECT_LT(flag, reinterpret_cast<const char*>(&file.file));
  EXPECT_EQ(file.nameParts.path + file.nameParts.name + file.nameParts.extension, "");
}

TEST_F(ReadFileTest, DestructorClosesTheFile) {
  writeFile("a", "x");
  const int descriptor = nextDescriptor();
  {
    zn_lib::ReadFile file;
    open(file, "a");
    EXPECT_NE(nextDescriptor(), descriptor);
  }
  EXPECT_EQ(nextDescriptor(), descriptor);
}

/// Opens a file whose close fails, and enables the exceptions of its stream.
void openToFail(zn_lib::ReadFile& file) {
  writeFile("a", "x");
  const int descriptor = nextDescriptor();
  open(file, "a");
  file.file.exceptions(std::ios_base::badbit | std::ios_base::failbit);
  ASSERT_EQ(close(descriptor), 0) << "so that the stream cannot close it";
}

TEST_F(ReadFileTest, DestructorDoesNotThrow) {
  zn_lib::ReadFile file;
  openToFail(file);
}

TEST_F(ReadFileTest, DestructorDoesNotThrowWhileAnExceptionUnwinds) {
  const auto read = [] {
    zn_lib::ReadFile file;
    openToFail(file);
    throw std::runtime_error("the host's own");
  };
  EXPECT_THROW(read(), std::runtime_error);
}

TEST_F(ReadFileTest, CloseThrowsIfTheHostEnablesExceptions) {
  zn_lib::ReadFile file;
  openToFail(file);
  EXPECT_THROW(file.fileClose(), std::ios_base::failure);
}

TEST_F(ReadFileTest, AFailedCloseSetsTheStateOfTheStream) {
  writeFile("a", "x");
  const int descriptor = nextDescriptor();
  zn_lib::ReadFile file;
  open(file, "a");
  const Written text = written([&] {
    EXPECT_EQ(close(descriptor), 0) << "so that the stream cannot close it";
    file.fileClose();
  });
  EXPECT_EQ(text.out + text.err, "");
  EXPECT_TRUE(file.file.fail());
  EXPECT_FALSE(file.file.is_open());
}

TEST_F(ReadFileTest, ComposesTheNameEachTimeItOpens) {
  std::string name = "~/notes.txt";
  zn_lib::ReadFile file;
  file.setFileName(name);
  for (const std::string home : {"one", "two"}) {
    ASSERT_EQ(mkdir(home.c_str(), 0700), 0);
    writeFile(home + "/notes.txt", "at " + home);
    const Home inHome(home.c_str());
    EXPECT_TRUE(file.fileOpen());
    EXPECT_EQ(written([&] { file.cat(); }).out, "at " + home + "\n");
    file.fileClose();
    file.file.clear();
  }
}

TEST_F(ReadFileTest, DoesNotOpenUnreadableFiles) {
  writeFile("secret", "x");
  ASSERT_EQ(chmod("secret", 0), 0);
  ASSERT_EQ(chmod(".", 0755), 0);
  EXPECT_EQ(withoutPrivileges([] {
              zn_lib::ReadFile file;
              std::string name = "secret";
              file.setFileName(name);
              return file.fileOpen() || file.cat() ? 1 : 0;
            }),
            0);
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

TEST_F(ReadFileTest, PrintsNothingAboutAMissingFile) {
  zn_lib::setVerbose(true);
  zn_lib::ReadFile file;
  std::string name = "missing";
  file.setFileName(name);
  const Written text = written([&] { EXPECT_FALSE(file.fileOpen()); });
  zn_lib::setVerbose(false);
  EXPECT_EQ(text.out + text.err, "");
  writeFile("missing", "x");
  EXPECT_TRUE(file.fileOpen()) << "the next attempt starts afresh";
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

TEST_F(ReadFileTest, CatOfADirectoryPrintsAnEmptyFile) {
  zn_lib::ReadFile file;
  open(file, ".");
  EXPECT_EQ(written([&] { EXPECT_TRUE(file.cat()); }).out, "\n");
}

}  // namespace
