#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_file.h>
#include <zn_output.h>

#include <cstdio>
#include <functional>
#include <limits>
#include <regex>
#include <string>
#include <utility>

#include "output_capture.h"
#include "samples.h"
#include "temporary_files.h"

namespace {

using namespace std::string_literals;

class Files : public InTemporaryDirectory {
 protected:
  ~Files() override { zn_lib::setVerbose(false); }
};

TEST(ZnFile, HeaderExamples) {
  const Home home("/home/ada");
  std::string name = "C:\\tmp\\x.txt";
  const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
  EXPECT_EQ(parts.path, "C:/tmp/");
  EXPECT_EQ(parts.name, "x");
  EXPECT_EQ(parts.extension, "txt");
  EXPECT_EQ(name, "C:/tmp/x.txt");
  EXPECT_EQ(zn_lib::createFileName("~/conf", "app", "xml"), "/home/ada/conf/app.xml");
}

TEST(NameOfFile, IsEmptyAtFirstAndWhenMovedFrom) {
  zn_lib::name_of_file first;
  EXPECT_EQ(first.path + first.name + first.extension, "");
  for (const std::string& text : {"short"s, std::string(100, 'x')}) {
    zn_lib::name_of_file parts = {text, text, text};
    zn_lib::name_of_file built = std::move(parts);
    EXPECT_EQ(parts.path + parts.name + parts.extension, "");
    first = std::move(built);
    EXPECT_EQ(built.path + built.name + built.extension, "");
    EXPECT_EQ(first.path + first.name + first.extension, text + text + text);
    const zn_lib::name_of_file copy = first;
    EXPECT_EQ(copy.extension, first.extension);
  }
}

TEST(SplitFileName, Examples) {
  const struct {
    std::string text, path, name, extension;
  } cases[] = {
      {"/usr/local/lib/libz.a", "/usr/local/lib/", "libz", "a"},
      {"src/zn_str.cpp", "src/", "zn_str", "cpp"},
      {"README", "", "README", ""},
      {".bashrc", "", ".bashrc", ""},
      {"name.", "", "name.", ""},
      {"a.b.", "", "a", "b."},
      {"a..", "", "a", "."},
      {"..a", "", ".", "a"},
      {"dir/", "", "dir/", ""},
      {"a/b/", "a/", "b/", ""},
      {"/", "", "/", ""},
      {"//", "", "//", ""},
      {"//a", "//", "a", ""},
      {"/etc", "", "/etc", ""},
      {"", "", "", ""},
      {"dir.d/file", "", "dir", "d/file"},
      {"a/dir.d/file", "a/", "dir", "d/file"},
      {"src/.profile", "", "src/", "profile"},
      {"dir/file.tar.gz", "dir/", "file.tar", "gz"},
      {".", "", ".", ""},
      {"..", "", "..", ""},
      {"a\nb.c", "", "", ""},
      {"a.b\r", "", "", ""},
      {"\n", "", "", ""},
      {"a\0/b.c"s, "a\0/"s, "b", "c"},
      {"d/\xE4.\xFF", "d/", "\xE4", "\xFF"},
  };
  for (const auto& c : cases) {
    std::string text = c.text;
    const zn_lib::name_of_file parts = zn_lib::splitFileName(text);
    EXPECT_EQ(parts.path, c.path) << c.text;
    EXPECT_EQ(parts.name, c.name) << c.text;
    EXPECT_EQ(parts.extension, c.extension) << c.text;
    EXPECT_EQ(text, c.text);
  }
}

TEST(StripExtension, Examples) {
  const struct {
    std::string text, result, left;
  } cases[] = {
      {"dir/file.tar.gz", "dir/file.tar", "dir/file.tar.gz"},
      {"notes", "notes", "notes"},
      {"a\\b.c", "a/b", "a/b.c"},
      {".bashrc", ".bashrc", ".bashrc"},
      {"dir.d/file", "dir", "dir.d/file"},
      {"a.b\n", "a.b\n", "a.b\n"},
      {"", "", ""},
  };
  for (const auto& c : cases) {
    std::string text = c.text;
    EXPECT_EQ(zn_lib::stripExtension(text), c.result) << c.text;
    EXPECT_EQ(text, c.left);
  }
}

// ---- The patterns that define the parts.

TEST(SplitFileName, AgreesWithItsPatterns) {
  const std::regex lastExt("(.+)[\\.](.+)$");
  const std::regex fileSplit("(.+[\\/])?(.+)");
  const auto agrees = [&](const std::string& text) {
    std::string rest = text;
    std::string extension;
    std::smatch match;
    if (std::regex_match(text, match, lastExt)) {
      extension = match[2];
      rest = match[1];
    }
    std::smatch split;
    std::regex_match(rest, split, fileSplit);
    std::string name = text;
    const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
    ASSERT_EQ(parts.extension, extension) << text;
    ASSERT_EQ(parts.path, split.str(1)) << text;
    ASSERT_EQ(parts.name, split.str(2)) << text;
    ASSERT_EQ(zn_lib::stripExtension(name), rest) << text;
  };
  forEveryText("a./\n\r\0\xFF"s, 6, agrees);
  forEveryText("a./", 10, agrees);
  std::mt19937 random(6);
  for (std::size_t length = 10; length < 1500; length += 3) {
    agrees(randomText(random, "ab./-~ \xE4", length));
    agrees(randomText(random, "abcdefghij./", length) + (length % 2 == 0 ? "\n" : "") + "x.y");
  }
}

TEST(CreateFileName, Examples) {
  const Home home("/home/ada");
  const struct {
    std::string dir, name, ext, joined;
  } cases[] = {
      {"", "app", "", "app"},
      {"d\\e", "f", "", "d/e/f"},
      {"dir", "", "ext", "dir/.ext"},
      {"", "", "", ""},
      {"dir/", "f", "x", "dir/f.x"},
      {"", "a\\b", "c\\d", "a\\b.c\\d"},
      {"", "~", "", "~"},
      {"  ~", "f", "", "/home/ada/f"},
      {"  ", "f", "", "f"},
      {"~/a~", "f", "", "/home/ada/a~/f"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::createFileName(c.dir, c.name, c.ext), c.joined) << c.dir << c.name;
  }
}

TEST(AddEndSlash, AddsOneUnlessThereIsOne) {
  const char* const cases[][2] = {{"", ""}, {"a", "a/"}, {"a/", "a/"}, {"/", "/"}, {"a\\", "a\\/"}};
  for (const auto& c : cases) {
    std::string dir = c[0];
    zn_lib::addEndSlash(dir);
    EXPECT_EQ(dir, c[1]);
  }
}

TEST(CheckHomePath, ReplacesTheFirstTilde) {
  const auto checked = [](std::string name) {
    zn_lib::checkHomePath(name);
    return name;
  };
  {
    const Home home("/home/ada");
    EXPECT_EQ(checked("  ~/x"), "/home/ada/x");
    EXPECT_EQ(checked("x"), "x");
    EXPECT_EQ(checked("a~b"), "a/home/adab");
    EXPECT_EQ(checked("~"), "/home/ada");
    EXPECT_EQ(checked("~/~"), "/home/ada/~");
    EXPECT_EQ(checked(""), "");
    EXPECT_EQ(checked(" x "), "x ");
  }
  {
    const Home home(nullptr);
    EXPECT_EQ(checked("  ~/x"), "~/x");
  }
  {
    const Home home("");
    EXPECT_EQ(checked("~/x"), "/x");
  }
}

TEST(LongNames, AreAnswered) {
  const Home home("/home/ada");
  const std::string a(kLongText, 'a');
  std::string name = a + "\\" + a + "." + a;
  const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
  EXPECT_EQ(parts.path, a + "/");
  EXPECT_EQ(parts.name, a);
  EXPECT_EQ(parts.extension, a);
  EXPECT_EQ(zn_lib::stripExtension(name), a + "/" + a);
  EXPECT_EQ(zn_lib::createFileName(a, a, a), name);
  for (const char c : {'.', '/', '\\', '\n', ' ', '~', '\0'}) {
    const bool isBreak = c == '\n';
    std::string same(kLongText, c);
    const zn_lib::name_of_file split = zn_lib::splitFileName(same);
    EXPECT_EQ(split.path.size() + split.name.size() + split.extension.size(),
              isBreak ? 0 : kLongText - (c == '.' ? 1 : 0))
        << c;
  }
  std::string broken = a + "\n" + a;
  EXPECT_EQ(zn_lib::splitFileName(broken).name, "");
  EXPECT_EQ(zn_lib::stripExtension(broken), broken);
  zn_lib::checkHomePath(broken);
  zn_lib::addEndSlash(broken);
  EXPECT_EQ(broken, a + "\n" + a + "/");
}

// ---- Files

TEST_F(Files, CopyCopiesBytes) {
  for (const std::string& bytes : {""s, everyByte(), std::string(300000, '\n')}) {
    writeFile("a", bytes);
    EXPECT_TRUE(zn_lib::fileCopy("a", "b", true));
    EXPECT_TRUE(isThere("b"));
    EXPECT_EQ(readFile("b"), bytes);
    EXPECT_EQ(readFile("a"), bytes);
  }
}

TEST_F(Files, CopyRefusesAnExistingTarget) {
  writeFile("a", "new");
  writeFile("b", "old");
  EXPECT_FALSE(zn_lib::fileCopy("a", "b", false));
  EXPECT_EQ(readFile("b"), "old");
  EXPECT_FALSE(zn_lib::fileCopy("missing", "b", true));
  EXPECT_EQ(readFile("b"), "old");
  EXPECT_FALSE(zn_lib::fileCopy("", "c", true));
}

TEST_F(Files, CopyRemovesTheTargetFirst) {
  writeFile("a", "new");
  writeFile("b", "old");
  ASSERT_EQ(link("b", "c"), 0);
  EXPECT_TRUE(zn_lib::fileCopy("a", "b", true));
  EXPECT_EQ(readFile("b"), "new");
  EXPECT_EQ(readFile("c"), "old") << "the other name keeps the old file";
  ASSERT_EQ(mkdir("full", 0700), 0);
  writeFile("full/x", "");
  EXPECT_FALSE(zn_lib::fileCopy("a", "full", true)) << "cannot be removed";
}

TEST_F(Files, CopyIsTrueOnceItWasAttempted) {
  writeFile("a", "text");
  EXPECT_TRUE(zn_lib::fileCopy("a", "missing/b", true));
  EXPECT_FALSE(isThere("missing"));
  EXPECT_TRUE(zn_lib::fileCopy(".", "of_a_directory", false));
  EXPECT_TRUE(isThere("of_a_directory"));
  EXPECT_EQ(readFile("of_a_directory"), "");
  EXPECT_TRUE(zn_lib::fileCopy("a", "a", true)) << "onto itself";
  EXPECT_EQ(readFile("a"), "");
}

/// Runs `test` in a child without root's privileges and gives its exit status.
int withoutPrivileges(const std::function<int()>& test) {
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(99);
    _exit(test());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

TEST_F(Files, CopyOfAnUnreadableFileIsEmpty) {
  writeFile("a", "text");
  ASSERT_EQ(chmod("a", 0), 0);
  ASSERT_EQ(chmod(".", 0777), 0);
  EXPECT_EQ(withoutPrivileges([] { return zn_lib::fileCopy("a", "b", false) ? 1 : 0; }), 1);
  EXPECT_TRUE(isThere("b"));
  EXPECT_EQ(readFile("b"), "");
}

TEST_F(Files, Rename) {
  writeFile("a", "new");
  writeFile("b", "old");
  EXPECT_FALSE(zn_lib::fileRename("a", "b", false));
  EXPECT_EQ(readFile("b"), "old");
  EXPECT_TRUE(zn_lib::fileRename("a", "b", true));
  EXPECT_EQ(readFile("b"), "new");
  EXPECT_FALSE(isThere("a"));
  EXPECT_TRUE(zn_lib::fileRename("b", "c", false));
  EXPECT_FALSE(zn_lib::fileRename("missing", "c", true));
  EXPECT_EQ(readFile("c"), "new");
  EXPECT_FALSE(zn_lib::fileRename("c", "missing/d", true));
  EXPECT_EQ(readFile("c"), "new");
  EXPECT_FALSE(zn_lib::fileRename("c", "c", true)) << "onto itself";
  EXPECT_FALSE(isThere("c"));
}

TEST_F(Files, BackupMovesTheFile) {
  writeFile("a.cfg", "one");
  EXPECT_TRUE(zn_lib::createBackup("a.cfg"));
  EXPECT_FALSE(isThere("a.cfg"));
  EXPECT_EQ(readFile("a.cfg~"), "one");
  EXPECT_FALSE(zn_lib::createBackup("a.cfg"));
  EXPECT_EQ(readFile("a.cfg~"), "one");
  writeFile("a.cfg", "two");
  EXPECT_TRUE(zn_lib::createBackup("a.cfg"));
  EXPECT_EQ(readFile("a.cfg~"), "two");
  writeFile("a.cfg", "three");
  EXPECT_TRUE(zn_lib::createBackup("a.cfg\0junk"s)) << "a name ends at its first NUL";
  EXPECT_EQ(readFile("a.cfg~"), "three");
}

TEST_F(Files, NoOperationPrints) {
  zn_lib::setVerbose(true);
  const Written text = written([] {
    writeFile("a", "");
    zn_lib::fileCopy("missing", "b", true);
    zn_lib::fileCopy("a", "b", true);
    zn_lib::fileRename("missing", "b", true);
    zn_lib::createBackup("missing");
    zn_lib::hexDump("missing", 16);
  });
  EXPECT_EQ(text.out, "");
  EXPECT_EQ(text.err, "");
}

// ---- Dumps

/// A dump by the letter of its definition.
std::string dumpOf(const std::string& bytes, int width) {
  std::string text;
  std::string row;
  int counter = 0;
  for (std::size_t i = 0; i <= bytes.size(); ++i) {
    const int value = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : -1;
    char hex[16];
    snprintf(hex, sizeof hex, "%02x ", static_cast<unsigned>(value));
    text += hex;
    row += value >= 32 && value < 127 ? static_cast<char>(value) : '.';
    if (counter == width - 1) text += " ";
    if (counter >= width - 1) {
      text += " " + row + "\n";
      row.clear();
      counter = 0;
    } else {
      ++counter;
    }
  }
  return text + "\n";
}

std::string headerOf(int width) {
  std::string text;
  for (int i = 0; i < width; ++i) text += (i < 10 ? " " : "") + std::to_string(i) + " ";
  text += "  ";
  for (int i = 0; i < width; ++i) text += std::to_string(i % 10);
  return text + "\n\n";
}

TEST_F(Files, HexDumpExample) {
  writeFile("a", "Hello");
  zn_lib::setVerbose(true);
  bool result = false;
  EXPECT_EQ(written([&] { result = zn_lib::hexDump("a", 4); }).out,
            " 0  1  2  3   0123\n\n48 65 6c 6c   Hell\n6f ffffffff \n");
  EXPECT_TRUE(result);
}

TEST_F(Files, HexDumpOfEveryLengthAndWidth) {
  zn_lib::setVerbose(true);
  for (const int width : {-5, 0, 1, 2, 3, 16, 17, 101, 120}) {
    for (std::size_t length = 0; length <= 40; ++length) {
      const std::string bytes = everyByte().substr(length * 5, length);
      writeFile("a", bytes);
      ASSERT_EQ(written([&] { zn_lib::hexDump("a", width); }).out,
                headerOf(width) + dumpOf(bytes, width))
          << width << ' ' << length;
    }
  }
}

TEST_F(Files, HexDumpPrintsOnlyTheHeaderWhenNotVerbose) {
  writeFile("a", "Hello");
  const Written text = written([] { EXPECT_TRUE(zn_lib::hexDump("a", 3)); });
  EXPECT_EQ(text.out, " 0  1  2   012\n\n");
  EXPECT_EQ(text.err, "");
}

TEST_F(Files, HexDumpOfWhatCannotBeRead) {
  zn_lib::setVerbose(true);
  EXPECT_FALSE(zn_lib::hexDump("missing", 16));
  EXPECT_EQ(written([] { EXPECT_TRUE(zn_lib::hexDump(".", 2)); }).out, headerOf(2) + "ffffffff \n");
}

TEST_F(Files, HexDumpOfALargeFile) {
  zn_lib::setVerbose(true);
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes += everyByte();
  writeFile("a", bytes);
  EXPECT_EQ(written([] { zn_lib::hexDump("a", 16); }).out, headerOf(16) + dumpOf(bytes, 16));
}

TEST_F(Files, HexDumpOfAnyWidth) {
  writeFile("a", "x");
  EXPECT_EQ(written([] { zn_lib::hexDump("a", 100000); }).out, headerOf(100000));
  EXPECT_EQ(written([] { zn_lib::hexDump("a", std::numeric_limits<int>::min()); }).out, "  \n\n");
}

}  // namespace
