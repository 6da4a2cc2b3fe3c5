#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zn_output.h>
#include <zn_readfile.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <functional>
#include <ios>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "child_status.h"
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

/// Prints the rest of `in` as `cat` is defined: line by line.
void printLines(std::istream& in) {
  std::array<char, 1024> line;
  while (in.good()) {
    in.getline(line.data(), line.size());
    std::cout << line.data() << "\n";
  }
}

/// Returns everything that `print` leaves in the two streams.
std::string stateAfter(zn_lib::ReadFile& file, const std::function<void()>& print) {
  std::ostringstream state;
  try {
    print();
  } catch (const std::ios_base::failure&) {
    state << "failure, ";
  }
  state << file.file.rdstate() << ' ' << file.file.gcount() << ' ' << std::cout.rdstate() << ' '
        << std::cout.width();
  file.file.exceptions(std::ios_base::goodbit);
  file.file.clear();
  state << ' ' << file.file.tellg();
  std::cout.exceptions(std::ios_base::goodbit);
  std::cout.clear();
  std::cout.width(0);
  return state.str();
}

TEST_F(ReadFileTest, CatAgreesWithItsDefinition) {
  const auto repeated = [](const std::string& part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += part;
    return text;
  };
  const std::string line = "a line of text, as long as those of most files are\n";
  const std::string longest = std::string(1023, 'x') + '\n';
  const std::string tooLong = std::string(1024, 'y') + '\n';
  const struct {
    const char* what;
    std::string text;
  } texts[] = {
      {"nothing", ""},
      {"short lines", repeated(line, 20000)},
      {"no end of the last line", repeated(line, 20000) + "end"},
      {"a single character", "x"},
      {"two characters", "x\n"},
      {"empty lines", std::string(300000, '\n')},
      {"the longest lines", repeated(longest, 300)},
      {"a line that is too long", repeated(line, 400) + tooLong + repeated(line, 400)},
      {"words in a line that is too long", repeated("a ~ word, ", 120) + '\n'},
      {"a line that is too long at the start", tooLong + repeated(line, 400)},
      {"a NUL in each line", repeated("ab\0cd\n"s, 50000)},
      {"a NUL in some lines", repeated(repeated(line, 30) + "ab\0cd\n\0\n"s, 300)},
      {"NULs only", std::string(1000, '\0')},
      {"as long as a buffer", std::string(1000, 'x') + '\n' + std::string(3095, 'x')},
  };
  constexpr auto failbit = std::ios_base::failbit;
  const struct {
    const char* what;
    std::function<void(std::ifstream&)> run;
  } preparations[] = {
      {"as opened", [](std::ifstream&) {}},
      {"after a line", [](std::ifstream& in) { in.ignore(1000, '\n'); }},
      {"after a look ahead", [](std::ifstream& in) { in.peek(); }},
      {"after a character put back", [](std::ifstream& in) { in.get(), in.unget(); }},
      {"with a width", [](std::ifstream&) { std::cout.width(70); }},
      {"with exceptions of the file", [](std::ifstream& in) { in.exceptions(failbit); }},
      {"with exceptions of the output", [](std::ifstream&) { std::cout.exceptions(failbit); }},
      {"with a bad output", [](std::ifstream&) { std::cout.setstate(std::ios_base::badbit); }},
      {"with flushes", [](std::ifstream&) { std::cout << std::unitbuf; }},
      {"with a stream that each read flushes", [](std::ifstream& in) { in.tie(&std::cout); }},
  };
  for (const auto& c : texts) {
    writeFile("a", c.text);
    for (const auto& preparation : preparations) {
      const auto printed = [&](bool byLibrary) {
        zn_lib::ReadFile file;
        open(file, "a");
        std::string state;
        const std::string out =
            written([&] {
              try {
                preparation.run(file.file);
              } catch (const std::ios_base::failure&) {
              }
              state = stateAfter(
                  file, [&] { byLibrary ? static_cast<void>(file.cat()) : printLines(file.file); });
              std::cout << std::nounitbuf;
            }).out;
        return state + '\n' + out;
      };
      EXPECT_TRUE(printed(true) == printed(false)) << c.what << ", " << preparation.what;
    }
  }
}

TEST_F(ReadFileTest, CatPrintsToAFile) {
  writeFile("a", "one\ntwo\n");
  zn_lib::ReadFile file;
  open(file, "a");
  std::filebuf printed;
  ASSERT_NE(printed.open("printed", std::ios_base::out), nullptr);
  std::streambuf* const own = std::cout.rdbuf(&printed);
  EXPECT_TRUE(file.cat());
  std::cout.rdbuf(own);
  printed.close();
  EXPECT_EQ(readFile("printed"), "one\ntwo\n\n");
}

TEST_F(ReadFileTest, CatPrintsNothingWithoutABuffer) {
  writeFile("a", "one\ntwo\n");
  zn_lib::ReadFile file;
  open(file, "a");
  std::streambuf* const own = std::cout.rdbuf(nullptr);
  EXPECT_TRUE(file.cat());
  EXPECT_TRUE(std::cout.bad());
  std::cout.rdbuf(own);
  EXPECT_TRUE(file.file.eof()) << "the file is read";
}

/// Counts how often a stream writes several characters to it, or one.
template <class Buffer>
struct CountingBuffer : Buffer {
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    ++writes;
    return Buffer::xsputn(text, size);
  }

  int writes = 0;
};

TEST_F(ReadFileTest, CatPrintsLinesTogetherIfTheHostSeesNoDifference) {
  constexpr int lines = 1000;
  std::string text;
  for (int i = 0; i < lines; ++i) text += "a line\n";
  writeFile("a", text);
  const auto catTo = [](std::streambuf& printed) {
    zn_lib::ReadFile file;
    open(file, "a");
    std::streambuf* const own = std::cout.rdbuf(&printed);
    EXPECT_TRUE(file.cat());
    std::cout.rdbuf(own);
  };
  CountingBuffer<std::stringbuf> together;
  catTo(together);
  EXPECT_EQ(together.str(), text + '\n');
  EXPECT_LT(together.writes, lines / 10);

  CountingBuffer<std::stringbuf> flushed;
  std::cout << std::unitbuf;
  catTo(flushed);
  std::cout << std::nounitbuf;
  EXPECT_GT(flushed.writes, lines);

#ifndef _LIBCPP_VERSION
  // With libc++, the library has type information of its own, and does not recognise this buffer.
  CountingBuffer<std::filebuf> toFile;
  ASSERT_NE(toFile.open("printed", std::ios_base::out), nullptr);
  catTo(toFile);
  EXPECT_GT(toFile.writes, lines);
#endif
}

TEST_F(ReadFileTest, CatPrintsWhatAnotherStreamBufferReads) {
  writeFile("a", "of the file\n");
  zn_lib::ReadFile file;
  open(file, "a");
  std::stringbuf other("one\ntwo");
  std::istream& in = file.file;
  std::streambuf* const own = in.rdbuf(&other);
  EXPECT_EQ(written([&] { file.cat(); }).out, "one\ntwo\n");
  in.rdbuf(own);
}

TEST_F(ReadFileTest, CatPrintsLinesAsTheyArrive) {
#ifdef _LIBCPP_VERSION
  GTEST_SKIP() << "libc++ reads from a pipe until its buffer is full";
#endif
  ASSERT_EQ(mkfifo("in", 0600), 0);
  ASSERT_EQ(mkfifo("out", 0600), 0);
  const pid_t printer = fork();
  if (printer == 0) {
    dup2(::open("out", O_WRONLY), STDOUT_FILENO);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);  // as at a terminal
    zn_lib::ReadFile file;
    open(file, "in");
    file.cat();
    _exit(0);
  }
  std::ifstream out("out");
  std::ofstream in("in");
  std::string line;
  for (const std::string text : {"one", "two"}) {
    in << text << "\npart of" << std::flush;
    ASSERT_TRUE(std::getline(out, line)) << text;
    EXPECT_EQ(line, text == "one" ? "one" : "part oftwo");
  }
  in.close();
  EXPECT_TRUE(std::getline(out, line));
  EXPECT_EQ(line, "part of");
  EXPECT_FALSE(std::getline(out, line));
  EXPECT_EQ(waitForExit(printer), 0);
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
