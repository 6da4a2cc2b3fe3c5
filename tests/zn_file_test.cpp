#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zn_file.h>
#include <zn_output.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>

#include "output_capture.h"
#include "reference_name_parts.h"
#include "reference_names.h"
#include "resource_limits.h"
#include "samples.h"
#include "temporary_files.h"
#include "unprivileged.h"

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

TEST(NameOfFile, IsEmptyInitiallyAndWhenMovedFrom) {
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
      {"../logs/x", "", ".", "/logs/x"},
      {"../logs/x.txt", "../logs/", "x", "txt"},
      {"../x", "", ".", "/x"},
      {"./x", "./", "x", ""},
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

// ---- The definitions of the parts

TEST(SplitFileName, AgreesWithItsDefinitions) {
  const auto agrees = [](const std::string& text) {
    const std::string slashed = reference::withSlashes(text);
    const reference::DefinedParts defined = reference::splitByDefinitions(text);
    std::string name = text;
    const zn_lib::name_of_file parts = zn_lib::splitFileName(name);
    ASSERT_TRUE(reference::isSame(parts, defined.parts)) << text;
    ASSERT_EQ(name, slashed);
    name = text;
    ASSERT_EQ(zn_lib::stripExtension(name), defined.stem) << text;
    ASSERT_EQ(name, slashed);

    // The model without patterns, which serves for long texts, is correct.
    ASSERT_TRUE(reference::isSame(reference::split(text), defined.parts)) << text;
    ASSERT_EQ(reference::stripExtension(text), defined.stem) << text;
  };
  forEveryText("./-1a\n\r\\", 5, agrees);
  forEveryText("a./\n\r\0\xFF"s, 5, agrees);
  forEveryText("a./", 10, agrees);
  std::mt19937 random(6);
  for (std::size_t length = 10; length < 1500; length += 3) {
    agrees(randomText(random, "ab./-~ \\\xE4", length));
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
      {"a ", " f", " x", "a / f. x"},
      {"a\n", "f", "", "a\n/f"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(zn_lib::createFileName(c.dir, c.name, c.ext), c.joined) << c.dir << c.name;
  }
}

TEST(CreateFileName, ConvertsBackslashesOfTheHomeDirectory) {
  const char* const cases[][2] = {
      {"\\\\srv\\ada", "//srv/ada/f"}, {"C:\\", "C:/f"}, {"", "f"}, {"~", "~/f"}};
  for (const auto& c : cases) {
    const Home home(c[0]);
    EXPECT_EQ(zn_lib::createFileName("~", "f", ""), c[1]) << c[0];
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

class Named : public zn_lib::FileName {};

// Long texts are compared with EXPECT_TRUE, since EXPECT_EQ would print them.
TEST(LongNames, AreSplitAndJoined) {
  const std::string home = "/home/ada";
  const Home inHome(home.c_str());
  std::mt19937 random(16);
  const std::string mixture = randomText(random, "ab./\\-17 ~", 1000);
  std::string mixtures;
  while (mixtures.size() < kLongText) mixtures += mixture;
  const std::string a(kLongText / 16, 'a');
  const struct {
    const char* what;
    std::string text;
  } cases[] = {
      {"letters", std::string(kLongText, 'a')},
      {"dots", std::string(kLongText, '.')},
      {"slashes", std::string(kLongText, '/')},
      {"backslashes", std::string(kLongText, '\\')},
      {"digits and hyphens", std::string(kLongText / 2, '7') + std::string(kLongText / 2, '-')},
      {"spaces", std::string(kLongText, ' ')},
      {"line feeds", std::string(kLongText, '\n')},
      {"tildes", std::string(kLongText, '~')},
      {"all but line breaks", mixtures},
      {"all of them", mixture + '\n' + mixture + a},
      {"carriage returns", std::string(kLongText / 16, '\r')},
      {"NULs", std::string(kLongText / 16, '\0')},
      {"bytes above 0x7F", std::string(kLongText / 16, '\xFF')},
      {"three long parts", a + "\\" + a + "." + a},
      {"a dot in front", "." + a},
      {"a dot at the end", a + "."},
      {"a slash in front", "/" + a},
      {"a slash at the end", a + "/"},
      {"a line break in the middle", a + ".\n" + a},
      {"tabs and a tilde", std::string(a.size(), '\t') + "~" + a + "/~"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string slashed = reference::withSlashes(c.text);
    const std::string homed = reference::withHome(c.text, home);
    const reference::Parts parts = reference::split(slashed);
    std::string name = c.text;
    EXPECT_TRUE(reference::isSame(zn_lib::splitFileName(name), parts));
    EXPECT_TRUE(name == slashed);
    name = c.text;
    EXPECT_TRUE(zn_lib::stripExtension(name) == reference::stripExtension(slashed));
    EXPECT_TRUE(name == slashed);
    EXPECT_TRUE(zn_lib::createFileName(c.text, "n", "x") ==
                reference::join({c.text, "n", "x"}, home));

    Named file;
    name = c.text;
    file.setFileName(name);
    EXPECT_TRUE(name == slashed);
    EXPECT_TRUE(reference::isSame(file.nameParts, parts));
    EXPECT_TRUE(file.getFileName() == reference::withHome(reference::join(parts, home), home));

    name = c.text;
    zn_lib::checkHomePath(name);
    EXPECT_TRUE(name == homed);
    name = c.text;
    zn_lib::addEndSlash(name);
    EXPECT_EQ(name.size(), c.text.size() + (c.text.back() == '/' ? 0 : 1));
    EXPECT_EQ(name.back(), '/');
    EXPECT_EQ(name.compare(0, c.text.size(), c.text), 0);
  }
  EXPECT_TRUE(zn_lib::createFileName(a, mixtures, a) == a + "/" + mixtures + "." + a);
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

TEST_F(Files, CopyOfEveryLength) {
  constexpr std::size_t kibibyte = 1024;
  const std::string bytes = everyByte();
  std::string text;
  while (text.size() < 40000 * kibibyte) text += bytes;
  for (const std::size_t power : {1u, 8u, 64u, 128u, 256u, 1024u, 16384u, 32768u}) {
    for (const std::size_t size : {power * kibibyte - 1, power * kibibyte, power * kibibyte + 1}) {
      const std::string part = text.substr(0, size);
      writeFile("a", part);
      EXPECT_TRUE(zn_lib::fileCopy("a", "b", true));
      EXPECT_TRUE(readFile("b") == part) << size;
    }
  }
}

TEST_F(Files, CopyOfASparseFile) {
  writeFile("a", "text");
  std::filesystem::resize_file("a", 1000000);
  EXPECT_TRUE(zn_lib::fileCopy("a", "b", true));
  EXPECT_TRUE(readFile("b") == "text" + std::string(999996, '\0'));
}

// The system copies only some of these itself.
TEST_F(Files, CopyOfSpecialFiles) {
  for (const std::string source : {"/proc/version", "/proc/self/cmdline", "/dev/null"}) {
    EXPECT_TRUE(zn_lib::fileCopy(source, "b", true)) << source;
    EXPECT_EQ(readFile("b"), readFile(source)) << source;
  }

  const std::string text(200000, 'x');
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const pid_t writer = fork();
  if (writer == 0) {
    writeFile("pipe", text);
    _exit(0);
  }
  EXPECT_TRUE(zn_lib::fileCopy("pipe", "b", true));
  EXPECT_EQ(waitForExit(writer), 0);
  EXPECT_TRUE(readFile("b") == text);
}

TEST_F(Files, CopyBetweenFileSystems) {
  struct stat here;
  struct stat there;
  ASSERT_EQ(stat(".", &here), 0);
  if (stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev || access("/dev/shm", W_OK) != 0)
    GTEST_SKIP() << "there is no second file system";
  const std::string other = "/dev/shm/zn_file_test." + std::to_string(getpid());
  for (const std::size_t size : {0u, 100u, 300000u, 20000000u}) {
    const std::string text(size, 'x');
    writeFile("a", text);
    EXPECT_TRUE(zn_lib::fileCopy("a", other, true));
    EXPECT_TRUE(readFile(other) == text) << size;
    EXPECT_TRUE(zn_lib::fileCopy(other, "b", true));
    EXPECT_TRUE(readFile("b") == text) << size;
  }
  EXPECT_EQ(unlink(other.c_str()), 0);
}

TEST_F(Files, CopyHasTheModeOfANewFile) {
  writeFile("a", "text");
  ASSERT_EQ(chmod("a", 0400), 0);
  const mode_t before = umask(027);
  EXPECT_TRUE(zn_lib::fileCopy("a", "b", false));
  umask(before);
  struct stat status;
  ASSERT_EQ(stat("b", &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(Files, CopyRejectsAnExistingTarget) {
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

TEST_F(Files, CopyEndsAfterAnEarlierInterruption) {
  writeFile("a", "new");
  writeFile("b", "old");
  errno = EINTR;  // of a call that the host made
  EXPECT_TRUE(zn_lib::fileCopy("a", "b", true));
  EXPECT_EQ(readFile("b"), "new");
}

TEST_F(Files, CopySucceedsOnceAttempted) {
  writeFile("a", "text");
  EXPECT_TRUE(zn_lib::fileCopy("a", "missing/b", true));
  EXPECT_FALSE(isThere("missing"));
  EXPECT_TRUE(zn_lib::fileCopy(".", "of_a_directory", false));
  EXPECT_TRUE(isThere("of_a_directory"));
  EXPECT_EQ(readFile("of_a_directory"), "");
  EXPECT_TRUE(zn_lib::fileCopy("a", "a", true)) << "onto itself";
  EXPECT_EQ(readFile("a"), "");
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

TEST_F(Files, NamesAreNotExpanded) {
  const Home home("/missing");
  for (const std::string& name : {"~"s, "a\\b"s, " x "s, "~\\~"s, "\xE4"s}) {
    writeFile(name, "text");
    EXPECT_TRUE(zn_lib::fileCopy(name, name + "2", false)) << name;
    EXPECT_EQ(readFile(name + "2"), "text") << name;
    EXPECT_TRUE(zn_lib::fileRename(name + "2", name + "3", false)) << name;
    EXPECT_EQ(readFile(name + "3"), "text") << name;
    EXPECT_NE(written([&] { EXPECT_TRUE(zn_lib::hexDump(name, 1)) << name; }).out, "");
    EXPECT_TRUE(zn_lib::createBackup(name)) << name;
    EXPECT_EQ(readFile(name + "~"), "text") << name;
  }
}

TEST_F(Files, AnEmptyDirectoryIsReplaced) {
  const auto makeDirectories = [] {
    std::filesystem::create_directories("empty");
    std::filesystem::create_directories("full/x");
    std::filesystem::create_directories("b~");
  };
  writeFile("a", "text");
  makeDirectories();
  EXPECT_TRUE(zn_lib::fileCopy("a", "empty", true));
  EXPECT_EQ(readFile("empty"), "text");
  EXPECT_TRUE(zn_lib::fileRename("empty", "b", true));
  makeDirectories();
  EXPECT_TRUE(zn_lib::createBackup("b"));
  EXPECT_EQ(readFile("b~"), "text");
  EXPECT_TRUE(zn_lib::fileRename("b~", "empty", true));
  EXPECT_EQ(readFile("empty"), "text");

  EXPECT_FALSE(zn_lib::fileRename("a", "full", true)) << "cannot be removed";
  EXPECT_TRUE(std::filesystem::is_directory("full/x"));
  EXPECT_EQ(readFile("a"), "text");
  EXPECT_TRUE(zn_lib::fileRename("full", "moved", false)) << "a directory is renamed like a file";
  EXPECT_TRUE(std::filesystem::is_directory("moved/x"));
}

TEST_F(Files, ADanglingLinkDoesNotExist) {
  std::filesystem::create_symlink("nowhere", "link");
  EXPECT_FALSE(zn_lib::fileCopy("link", "b", true));
  EXPECT_FALSE(zn_lib::fileRename("link", "b", true));
  EXPECT_FALSE(zn_lib::createBackup("link"));
  EXPECT_FALSE(isThere("b"));
  writeFile("a", "text");
  EXPECT_TRUE(zn_lib::fileCopy("a", "link", false)) << "the copy follows the link";
  EXPECT_EQ(readFile("nowhere"), "text");

  std::filesystem::create_symlink("missing", "dangling");
  EXPECT_TRUE(zn_lib::fileRename("a", "dangling", false)) << "the link is replaced";
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status("dangling")));
  EXPECT_TRUE(zn_lib::createBackup("link")) << "a link is moved itself";
  EXPECT_TRUE(std::filesystem::is_symlink("link~"));
  EXPECT_EQ(readFile("nowhere"), "text");
}

TEST_F(Files, OperationsWithoutPermission) {
  writeFile("a", "text");
  std::filesystem::create_directory("closed");
  writeFile("closed/b", "old");
  writeFile("secret", "text");
  ASSERT_EQ(chmod("closed", 0555), 0);
  ASSERT_EQ(chmod("secret", 0), 0);
  ASSERT_EQ(chmod(".", 0755), 0);
  const struct {
    const char* what;
    bool (*run)();
    bool result;
  } cases[] = {
      {"a copy that cannot be created", [] { return zn_lib::fileCopy("a", "closed/c", true); },
       true},
      {"a target that cannot be removed", [] { return zn_lib::fileCopy("a", "closed/b", true); },
       false},
      {"renaming there", [] { return zn_lib::fileRename("a", "closed/c", true); }, false},
      {"renaming over", [] { return zn_lib::fileRename("a", "closed/b", true); }, false},
      {"a backup", [] { return zn_lib::createBackup("closed/b"); }, false},
      {"a dump", [] { return zn_lib::hexDump("secret", 16); }, false},
  };
  zn_lib::setVerbose(true);
  for (const auto& c : cases) {
    int result = -1;
    const Written text =
        written([&] { result = withoutPrivileges([&] { return c.run() ? 1 : 0; }); });
    EXPECT_EQ(result, c.result ? 1 : 0) << c.what;
    EXPECT_EQ(text.out + text.err, "") << c.what;
  }
  EXPECT_EQ(readFile("a"), "text");
  ASSERT_EQ(chmod("closed", 0755), 0) << "the directory cannot be removed";
  EXPECT_EQ(readFile("closed/b"), "old");
  EXPECT_FALSE(isThere("closed/c"));
}

volatile std::sig_atomic_t sizeSignals;

TEST_F(Files, CopySucceedsOnAFullDisk) {
  ASSERT_EQ(chmod(".", 0777), 0);
  for (const std::size_t size : {100000u, 300000u, 20000000u}) {
    writeFile("a", std::string(size, 'x'));
    const int result = withoutPrivileges([] {
      if (!limitFileSize(5000)) return kCannotPrepare;
      std::signal(SIGXFSZ, [](int) { sizeSignals = sizeSignals + 1; });
      const bool isAttempted = zn_lib::fileCopy("a", "b", true);
      return isAttempted && sizeSignals == 1 ? 1 : 0;
    });
    EXPECT_EQ(result, 1) << size;
    EXPECT_EQ(readFile("b"), std::string(5000, 'x')) << size;
  }
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

/// Reference model of the rows of a dump.
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

/// Reference model of the header of a dump.
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

  writeFile("a", "Hello, world!\n");
  EXPECT_EQ(written([] { zn_lib::hexDump("a", 16); }).out,
            " 0  1  2  3  4  5  6  7  8  9 10 11 12 13 14 15   0123456789012345\n\n"
            "48 65 6c 6c 6f 2c 20 77 6f 72 6c 64 21 0a ffffffff \n");
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

TEST_F(Files, HexDumpOfUnreadableFiles) {
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
