#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zn_output.h>
#include <zn_writefile.h>

#include <ios>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "output_capture.h"
#include "temporary_files.h"

namespace {

class WriteFileTest : public InTemporaryDirectory {
 protected:
  WriteFileTest() { zn_lib::setVerbose(true); }
  ~WriteFileTest() override { zn_lib::setVerbose(false); }
};

/// Opens `file` on `name` and writes `text`. Returns what is printed meanwhile.
std::string printedByWriting(zn_lib::WriteFile& file, std::string name, const std::string& text) {
  file.setFileName(name);
  const Written printed = written([&] {
    EXPECT_TRUE(file.fileOpen()) << name;
    file.file << text;
    file.fileClose();
  });
  EXPECT_EQ(printed.out, "");
  return printed.err;
}

TEST_F(WriteFileTest, HeaderExample) {
  for (const char* expected : {"started\n", "started\nstarted\n"}) {
    zn_lib::WriteFile log;
    std::string name = "run.log";
    log.setFileName(name);
    log.append = true;
    if (log.fileOpen()) log.file << "started\n";
    log.fileClose();
    EXPECT_EQ(readFile("run.log"), expected);
  }
}

TEST_F(WriteFileTest, IsInitiallyClosed) {
  zn_lib::WriteFile file;
  EXPECT_FALSE(file.append);
  EXPECT_TRUE(file.overwrite);
  EXPECT_FALSE(file.file.is_open());
  file.fileClose();
  EXPECT_TRUE(file.file.good());
}

TEST_F(WriteFileTest, HasANameAStreamAndTwoFlags) {
  static_assert(std::is_base_of_v<zn_lib::FileName, zn_lib::WriteFile>);
  static_assert(std::has_virtual_destructor_v<zn_lib::WriteFile>);
  const zn_lib::WriteFile file;
  const auto* const stream = reinterpret_cast<const char*>(&file.file);
  EXPECT_LT(reinterpret_cast<const char*>(&file.nameParts), stream);
  EXPECT_LT(stream, reinterpret_cast<const char*>(&file.append));
  EXPECT_LT(&file.append, &file.overwrite);
  EXPECT_EQ(file.nameParts.path + file.nameParts.name + file.nameParts.extension, "");
}

TEST_F(WriteFileTest, EmptiesAnExistingFile) {
  writeFile("a", "old text");
  zn_lib::WriteFile file;
  EXPECT_EQ(printedByWriting(file, "a", "new"), "");
  EXPECT_EQ(readFile("a"), "new");
}

TEST_F(WriteFileTest, WarnsAndStillEmptiesTheFile) {
  writeFile("a", "old text");
  zn_lib::WriteFile file;
  file.overwrite = false;
  EXPECT_EQ(printedByWriting(file, "a", "new"), "ERROR: File name exists\n");
  EXPECT_EQ(readFile("a"), "new");
  EXPECT_FALSE(file.overwrite);
  EXPECT_EQ(printedByWriting(file, "b", "new"), "") << "no file to warn of";

  zn_lib::setVerbose(false);
  EXPECT_EQ(printedByWriting(file, "a", "newer"), "");
  EXPECT_EQ(readFile("a"), "newer");
}

TEST_F(WriteFileTest, AppendingNeverWarns) {
  writeFile("a", "old ");
  zn_lib::WriteFile file;
  file.overwrite = false;
  file.append = true;
  EXPECT_EQ(printedByWriting(file, "a", "new"), "");
  EXPECT_EQ(readFile("a"), "old new");
  EXPECT_TRUE(file.overwrite);
}

TEST_F(WriteFileTest, PrintsNothingIfItCannotOpen) {
  zn_lib::WriteFile file;
  std::string name = "missing/a";
  file.setFileName(name);
  const Written printed = written([&] { EXPECT_FALSE(file.fileOpen()); });
  EXPECT_EQ(printed.out + printed.err, "");
}

TEST_F(WriteFileTest, WarnsEvenIfItCannotOpen) {
  ASSERT_EQ(mkdir("d", 0700), 0);
  zn_lib::WriteFile file;
  std::string name = "d";
  file.setFileName(name);
  file.overwrite = false;
  const Written printed = written([&] { EXPECT_FALSE(file.fileOpen()); });
  EXPECT_EQ(printed.err, "ERROR: File name exists\n");
  EXPECT_EQ(printed.out, "");
}

TEST_F(WriteFileTest, ComposesTheNameEachTimeItOpens) {
  zn_lib::WriteFile file;
  std::string name = "~/a.txt";
  file.setFileName(name);
  for (const std::string home : {"one", "two"}) {
    ASSERT_EQ(mkdir(home.c_str(), 0700), 0);
    const Home inHome(home.c_str());
    ASSERT_TRUE(file.fileOpen());
    file.file << "at " << home;
    file.fileClose();
    EXPECT_EQ(readFile(home + "/a.txt"), "at " + home);
  }
}

TEST_F(WriteFileTest, KeepsAnOpenFile) {
  zn_lib::WriteFile file;
  std::string name = "a";
  file.setFileName(name);
  ASSERT_TRUE(file.fileOpen());
  name = "b";
  file.setFileName(name);
  EXPECT_TRUE(file.fileOpen());
  EXPECT_TRUE(file.file.fail());
  EXPECT_FALSE(isThere("b"));
}

TEST_F(WriteFileTest, DestructorWritesTheBuffer) {
  {
    zn_lib::WriteFile file;
    std::string name = "a";
    file.setFileName(name);
    ASSERT_TRUE(file.fileOpen());
    file.file << "text";
  }
  EXPECT_EQ(readFile("a"), "text");
}

/// Opens a device that is always full, enables the exceptions of its stream, and writes to its
/// buffer. The error occurs when the file is closed.
void writeToAFullDisk(zn_lib::WriteFile& file) {
  std::string name = "/dev/full";
  file.setFileName(name);
  ASSERT_TRUE(file.fileOpen());
  file.file.exceptions(std::ios_base::badbit | std::ios_base::failbit);
  file.file << "text";
}

TEST_F(WriteFileTest, DestructorDoesNotThrowOnAFullDisk) {
  const int descriptor = nextDescriptor();
  {
    zn_lib::WriteFile file;
    writeToAFullDisk(file);
    EXPECT_NE(nextDescriptor(), descriptor);
  }
  EXPECT_EQ(nextDescriptor(), descriptor) << "the file is closed nevertheless";
}

TEST_F(WriteFileTest, DestructorDoesNotThrowWhileAnExceptionUnwinds) {
  const auto write = [] {
    zn_lib::WriteFile file;
    writeToAFullDisk(file);
    throw std::runtime_error("the host's own");
  };
  EXPECT_THROW(write(), std::runtime_error);
}

TEST_F(WriteFileTest, CloseThrowsIfTheHostEnablesExceptions) {
  zn_lib::WriteFile file;
  writeToAFullDisk(file);
  EXPECT_THROW(file.fileClose(), std::ios_base::failure);
}

TEST_F(WriteFileTest, AFailedCloseSetsTheStateOfTheStream) {
  zn_lib::WriteFile file;
  std::string name = "/dev/full";
  file.setFileName(name);
  ASSERT_TRUE(file.fileOpen());
  file.file << "text";
  const Written printed = written([&] { file.fileClose(); });
  EXPECT_EQ(printed.out + printed.err, "");
  EXPECT_TRUE(file.file.fail());
  EXPECT_FALSE(file.file.is_open());
}

}  // namespace
