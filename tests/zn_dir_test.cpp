#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zn_dir.h>
#include <zn_output.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <functional>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "../src/udf/internal/patterns.h"
#include "next_definition.h"
#include "output_capture.h"
#include "reference_engine.h"
#include "samples.h"
#include "temporary_files.h"

using namespace std::string_literals;

namespace {

bool typesAreUnknown = false;
const char* vanishingEntry = nullptr;
int entriesUntilError = INT_MAX;

/// The name under which the headers declare readdir with 64-bit inode numbers.
constexpr const char* kReaddir = sizeof(long) == 4 ? "readdir64" : "readdir";

}  // namespace

/// Replaces the function of the C library, for the library under test too, so that it can omit the
/// types of entries, remove an empty directory that it has read, or fail.
extern "C" __attribute__((visibility("default"))) dirent* readdir(DIR* directory) {
  static const auto next = nextDefinition<dirent* (*)(DIR*)>(kReaddir);
  if (entriesUntilError == 0) {
    errno = EIO;
    return nullptr;
  }
  --entriesUntilError;
  dirent* const entry = next(directory);
  if (entry != nullptr && typesAreUnknown) entry->d_type = DT_UNKNOWN;
  if (entry != nullptr && vanishingEntry != nullptr) rmdir(vanishingEntry);
  return entry;
}

namespace {

using Names = std::vector<std::string>;

class Directories : public InTemporaryDirectory {
 protected:
  Directories() { zn_lib::setVerbose(true); }
  ~Directories() override { zn_lib::setVerbose(false); }

  /// Creates two files, a hidden file, a link, and two directories, one of them hidden.
  void fill() {
    writeFile("one.txt", "1");
    writeFile("two.cpp", "22");
    writeFile(".hidden", "333");
    std::filesystem::create_directory("sub");
    std::filesystem::create_directory(".hiddensub");
    std::filesystem::create_directory_symlink("sub", "link");
  }
};

/// Returns the names that `listDir` lists, sorted.
Names listed(const std::string& dir, const std::string& filter, bool skipHidden) {
  Names names;
  EXPECT_TRUE(zn_lib::listDir(dir, filter, skipHidden, names)) << dir << ' ' << filter;
  std::sort(names.begin(), names.end());
  return names;
}

/// Expects that `call` fails. Returns what it prints on standard error.
std::string messageOf(const std::function<bool()>& call) {
  const Written text = written([&] { EXPECT_FALSE(call()); });
  EXPECT_EQ(text.out, "");
  return text.err;
}

TEST_F(Directories, HeaderExamples) {
  fill();
  Names entries;
  EXPECT_TRUE(zn_lib::listDir(".", "\\.cpp$", true, entries));
  EXPECT_EQ(entries, Names{"two.cpp"});
  EXPECT_TRUE(zn_lib::listDir("", "<dir>", true, entries));
  EXPECT_EQ(entries, (Names{"two.cpp", "sub"}));
}

TEST_F(Directories, ChangeAndCreate) {
  EXPECT_TRUE(zn_lib::createDir("a"));
  EXPECT_FALSE(zn_lib::createDir("a"));
  EXPECT_FALSE(zn_lib::createDir("b/c")) << "no parents";
  EXPECT_FALSE(zn_lib::createDir(""));
  EXPECT_TRUE(zn_lib::changeDir("a"));
  EXPECT_EQ(std::filesystem::current_path(), directory / "a");
  EXPECT_FALSE(zn_lib::changeDir("missing"));
  EXPECT_FALSE(zn_lib::changeDir("~")) << "no home directory here";
  EXPECT_EQ(std::filesystem::current_path(), directory / "a");
}

TEST_F(Directories, ChangeAndCreateDoNotExpandNames) {
  const Home home(directory.c_str());
  for (const std::string name : {"~", "~/a", "a\\b", " x "}) {
    EXPECT_TRUE(zn_lib::createDir(name)) << name;
    EXPECT_TRUE(std::filesystem::is_directory(directory / name)) << name;
    EXPECT_TRUE(zn_lib::changeDir(name)) << name;
    EXPECT_EQ(std::filesystem::current_path(), directory / name);
    std::filesystem::current_path(directory);
  }
  writeFile("file", "");
  const Written text = written([] {
    EXPECT_FALSE(zn_lib::changeDir("file"));
    EXPECT_FALSE(zn_lib::createDir("file"));
    EXPECT_FALSE(zn_lib::createDir("missing/d"));
  });
  EXPECT_EQ(text.out + text.err, "") << "no message in verbose mode either";
}

TEST_F(Directories, CreateGrantsAccessToOwnerAndGroup) {
  struct stat status;
  for (const mode_t mask : {mode_t{0}, mode_t{0027}}) {
    const mode_t before = umask(mask);
    EXPECT_TRUE(zn_lib::createDir("d"));
    umask(before);
    ASSERT_EQ(stat("d", &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode_t{0770} & ~mask);
    std::filesystem::remove("d");

    std::string source = ".";
    std::string target = "copy";
    const mode_t again = umask(mask);
    EXPECT_TRUE(zn_lib::copyDir(source, target));
    umask(again);
    ASSERT_EQ(stat("copy", &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode_t{0770} & ~mask) << "the target of a copy";
    std::filesystem::remove_all("copy");
  }
}

TEST_F(Directories, ListAppliesFilters) {
  fill();
  const struct {
    const char* filter;
    bool skipHidden;
    Names names;
  } cases[] = {
      {"", false, {".", "..", ".hidden", ".hiddensub", "link", "one.txt", "sub", "two.cpp"}},
      {"", true, {"link", "one.txt", "sub", "two.cpp"}},
      {"<dir>", false, {".hiddensub", "sub"}},
      {"<dir>", true, {"sub"}},
      {"t", true, {"one.txt", "two.cpp"}},
      {"txt$", true, {"one.txt"}},
      {"^t", true, {"two.cpp"}},
      {"o.e", true, {"one.txt"}},
      {"o|k", true, {"link", "one.txt", "two.cpp"}},
      {"hiddensub", false, {".hiddensub"}},
      {"(c|x)pp$", true, {"two.cpp"}},
      {"[\\.-z]ne", true, {"one.txt"}},
      {"(x|)$", true, {"link", "one.txt", "sub", "two.cpp"}},
      {"^(x|)$", true, {}},
      {"b+$", true, {"sub"}},
      {"]", true, {}},
      {"T", true, {}},
      {"<dir> ", true, {}},
  };
  for (const auto& c : cases) EXPECT_EQ(listed(".", c.filter, c.skipHidden), c.names) << c.filter;
}

TEST_F(Directories, ListSelectsDirectoriesWithoutEntryTypes) {
  fill();
  typesAreUnknown = true;
  EXPECT_EQ(listed(".", "<dir>", false), (Names{".hiddensub", "sub"})) << "links are not followed";
  EXPECT_EQ(listed("./", "<dir>", true), Names{"sub"});
  EXPECT_EQ(listed(directory, "<dir>", true), Names{"sub"});
  EXPECT_EQ(listed(".", "", true), (Names{"link", "one.txt", "sub", "two.cpp"}));
  typesAreUnknown = false;
}

TEST_F(Directories, ListOmitsADirectoryThatVanishes) {
  fill();
  std::filesystem::create_directory("gone");
  typesAreUnknown = true;
  vanishingEntry = "gone";
  EXPECT_EQ(listed(".", "<dir>", true), Names{"sub"});
  typesAreUnknown = false;
  vanishingEntry = nullptr;
}

TEST_F(Directories, ListKeepsTheOrderOfTheSystem) {
  for (int i = 0; i < 40; ++i) writeFile(std::to_string(i * 7919 % 1000), "");
  const Names inOrder = namesInSystemOrder(".");
  ASSERT_FALSE(std::is_sorted(inOrder.begin(), inOrder.end())) << "this file system sorts names";
  Names names;
  EXPECT_TRUE(zn_lib::listDir("", "", false, names));
  EXPECT_EQ(names, inOrder);
}

TEST_F(Directories, ListDoesNotChangeTheCallersName) {
  const Home home(directory.c_str());
  const std::string dir = " ~";
  Names names;
  EXPECT_TRUE(zn_lib::listDir(dir, "", true, names));
  EXPECT_EQ(dir, " ~");
}

TEST_F(Directories, ListAppends) {
  fill();
  Names names = {"before"};
  EXPECT_TRUE(zn_lib::listDir("sub", "", false, names));
  EXPECT_TRUE(zn_lib::listDir("sub", "", false, names));
  ASSERT_EQ(names.size(), 5u);
  EXPECT_EQ(names[0], "before");
  names = {"sub", "t"};
  EXPECT_TRUE(zn_lib::listDir(".", names[1], true, names))
      << "the filter is an element of the list";
  EXPECT_EQ(names.size(), 4u);
}

TEST_F(Directories, ListExpandsTheHomeDirectory) {
  fill();
  const Home home(directory.c_str());
  writeFile("sub/x", "");
  EXPECT_EQ(listed("~/sub", "", true), Names{"x"});
  EXPECT_EQ(listed(" ~/sub/", "", true), Names{"x"});
}

TEST_F(Directories, ListFailures) {
  fill();
  Names names = {"before"};
  const auto list = [&](const std::string& dir, const std::string& filter) {
    return messageOf([&] { return zn_lib::listDir(dir, filter, false, names); });
  };
  EXPECT_EQ(list("missing", ""), "ERROR: Couldn't open the directory\n");
  EXPECT_EQ(list("one.txt", ""), "ERROR: Couldn't open the directory\n");
  EXPECT_EQ(list("  ", ""), "ERROR: Couldn't open the directory\n");
  EXPECT_EQ(list(".", "("), "ERROR: Invalid filter\n");
  EXPECT_EQ(list("missing", "["), "ERROR: Invalid filter\n");
  EXPECT_EQ(names, Names{"before"});

  std::filesystem::create_directory("gone");
  std::filesystem::current_path("gone");
  std::filesystem::remove("../gone");
  EXPECT_EQ(list("", ""), "ERROR: Couldn't open the directory\n")
      << "a working directory without a name";
  std::filesystem::current_path(directory);
}

TEST_F(Directories, ListFailsIfReadingFails) {
  fill();
  for (const int entries : {0, 1, 3, 8}) {  // of eight entries
    for (const char* const filter : {"", "<dir>", "t"}) {
      Names names = {"before"};
      const std::string message = messageOf([&] {
        entriesUntilError = entries;
        const bool isListed = zn_lib::listDir(".", filter, false, names);
        entriesUntilError = INT_MAX;
        return isListed;
      });
      EXPECT_EQ(message, "ERROR: Couldn't open the directory\n") << entries << filter;
      EXPECT_EQ(names, Names{"before"}) << entries << filter;
    }
  }
}

TEST_F(Directories, ListPreservesErrno) {
  fill();
  typesAreUnknown = true;
  for (const int error : {0, ENOENT}) {
    Names names;
    errno = error;
    EXPECT_TRUE(zn_lib::listDir(".", "<dir>", false, names));
    EXPECT_EQ(errno, error);
  }
  typesAreUnknown = false;
}

#ifndef _LIBCPP_VERSION
// The engine asks only for the values of characters that it takes for digits.
TEST(Patterns, KnowTheDigitsOfABase) {
  const zn_lib::internal::ClassicTraits traits;
  EXPECT_EQ(traits.value('7', 8), 7);
  EXPECT_EQ(traits.value('8', 8), -1);
  EXPECT_EQ(traits.value('F', 16), 15);
  EXPECT_EQ(traits.value('g', 16), -1);
}
#endif

TEST_F(Directories, FiltersAgreeWithTheEngine) {
  std::mt19937 random(20240305);
  const std::string alphabet = "ab.+-7\xE4\n";
  forEveryText(alphabet, 2, [](const std::string& name) {
    if (!name.empty() && name != "." && name != "..") writeFile(name, "");
  });
  for (std::size_t i = 0; i < 40; ++i)
    writeFile(randomText(random, alphabet + "ab", 3 + i % 6), "");
  const Names all = listed(".", "", false);
  ASSERT_GT(all.size(), 100u);
  const auto agrees = [&](const std::string& filter) {
    Names expected;
    try {
      const reference::Engine pattern = reference::engine(filter);
      std::copy_if(all.begin(), all.end(), std::back_inserter(expected),
                   [&](const std::string& name) { return reference::contains(name, pattern); });
    } catch (const std::regex_error&) {
      EXPECT_EQ(messageOf([&] {
                  Names none;
                  return zn_lib::listDir(".", filter, false, none);
                }),
                "ERROR: Invalid filter\n");
      return;
    }
    ASSERT_EQ(listed(".", filter, false), expected) << filter;
  };
  forEveryText("ab.+^$\\", 3, agrees);
  // Filters that combine text that every match contains with parts that may match nothing.
  const Names pieces = {"a",   "b",     "ab",    "7",    ".",   "]",    "*",    "+",
                        "?",   "{2}",   "{,}",   "^",    "$",   "\\.",  "\\+",  "\\d",
                        "\\W", "\\x61", "\\b",   "[ab]", "[]",  "[7]",  "[^a]", "(ab)",
                        "(b",  ")",     "(?!b)", "b|",   "\0"s, "\\\0"s};
  std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
  for (int i = 0; i < 4000; ++i) {
    std::string filter;
    for (int count = 2 + i % 4; count > 0; --count) filter += pieces[pick(random)];
    ASSERT_NO_FATAL_FAILURE(agrees(filter));
  }
}

TEST_F(Directories, LongFiltersSelectNothing) {
  fill();
  EXPECT_EQ(listed(".", std::string(kLongText, 'x'), false), Names{});
  EXPECT_EQ(listed(".", std::string(kLongText, '.'), false), Names{});
  EXPECT_EQ(listed(".", std::string(255, '.'), false), Names{});
}

// Compiling such a filter would exhaust the stack.
TEST_F(Directories, LongFiltersWithOperatorsAreInvalid) {
  fill();
  constexpr std::size_t longest = 10000;
  const std::string set(longest, 'x');
  const struct {
    const char* what;
    std::string filter;
    bool isValid;
  } cases[] = {
      {"the longest filter with an operator", std::string(longest - 1, 'x') + "|", true},
      {"a longer filter with an operator", std::string(longest, 'x') + "|", false},
      {"a longer filter with an escaped dot", std::string(longest, 'x') + "\\.", false},
      {"a longer filter for the start of a name", "^" + std::string(longest, 'x'), false},
      {"a longer filter with a NUL", std::string(longest, 'x') + '\0', false},
      {"a longer filter of plain characters and dots", std::string(longest, 'x') + ".", true},
      {"a set", "[" + set + "]", true},
      {"a negated set", "[^" + set + "]", true},
      {"a set with an escaped bracket", "[" + set + "\\]]", false},
      {"a set and a character", "[" + set + "]x", false},
      {"a character and a set", "x[" + set + "]", false},
      {"parentheses", std::string(longest + 1, '('), false},
      {"many parentheses", std::string(kLongText, '('), false},
      {"many backslashes", std::string(kLongText, '\\'), false},
  };
  for (const auto& c : cases) {
    Names names = {"before"};
    EXPECT_EQ(zn_lib::listDir(".", c.filter, false, names), c.isValid) << c.what;
    EXPECT_EQ(names.front(), "before") << c.what;
    EXPECT_TRUE(c.isValid || names.size() == 1) << c.what;
  }
}

// ---- Copying

TEST_F(Directories, CopyCreatesTheTarget) {
  fill();
  std::filesystem::rename("link", "sub/link");
  writeFile("sub/file", "text");
  writeFile("sub/.hidden", "");
  std::filesystem::create_directory("sub/deeper");
  writeFile("sub/deeper/x", "");
  std::string source = "sub";
  std::string target = "copy";
  const Written text = written([&] { EXPECT_TRUE(zn_lib::copyDir(source, target)); });
  EXPECT_EQ(text.out + text.err, "");
  EXPECT_EQ(listed("copy", "", false), (Names{".", "..", "deeper", "file"}))
      << "the link dangles in the copy";
  EXPECT_EQ(readFile("copy/file"), "text");
  EXPECT_TRUE(std::filesystem::is_regular_file("copy/deeper")) << "not entered";
  EXPECT_EQ(readFile("copy/deeper"), "");
}

TEST_F(Directories, CopyOfAPlainFileSucceeds) {
  fill();
  std::string source = "one.txt";
  std::string target = "copy";
  const Written text = written([&] { EXPECT_TRUE(zn_lib::copyDir(source, target)); });
  EXPECT_EQ(text.out, "");
  EXPECT_EQ(text.err, "ERROR: Couldn't open the directory\n");
  EXPECT_EQ(listed("copy", "", true), Names{});
}

TEST_F(Directories, CopyIsEmptyIfListingFails) {
  fill();
  writeFile("sub/file", "text");
  std::string source = "sub";
  std::string target = "copy";
  const Written text = written([&] {
    entriesUntilError = 3;  // all entries of the directory
    EXPECT_TRUE(zn_lib::copyDir(source, target));
    entriesUntilError = INT_MAX;
  });
  EXPECT_EQ(text.out + text.err, "ERROR: Couldn't open the directory\n");
  EXPECT_EQ(listed("copy", "", true), Names{});
}

TEST_F(Directories, CopyKeepsExistingFiles) {
  fill();
  std::filesystem::create_directory("copy");
  writeFile("copy/file", "kept");
  writeFile("sub/file", "new");
  writeFile("sub/more", "more");
  std::string source = "sub/";
  std::string target = "copy/";
  for (int run = 0; run < 2; ++run) {
    EXPECT_TRUE(zn_lib::copyDir(source, target));
    EXPECT_EQ(readFile("copy/file"), "kept");
    EXPECT_EQ(readFile("copy/more"), "more");
  }
}

TEST_F(Directories, CopySucceedsEvenIfFilesCannotBeCopied) {
  fill();
  writeFile("sub/file", "text");
  std::string source = "sub";
  std::string target = "one.txt";
  const auto copy = [&] { EXPECT_TRUE(zn_lib::copyDir(source, target)); };
  EXPECT_EQ(written(copy).err, "") << "the target is a file";
  EXPECT_EQ(readFile("one.txt"), "1");

  target = "sub/within";
  EXPECT_EQ(written(copy).err, "");
  EXPECT_EQ(listed("sub/within", "", true), (Names{"file", "within"})) << "the target itself, too";
  EXPECT_EQ(readFile("sub/within/within"), "");
  target = "sub";
  EXPECT_EQ(written(copy).err, "") << "onto itself";
  EXPECT_EQ(readFile("sub/file"), "text");
}

TEST_F(Directories, CopyExpandsTheHomeDirectoryInTheCallersNames) {
  fill();
  const Home home(directory.c_str());
  std::string source = " ~/sub";
  std::string target = "~/copy";
  EXPECT_TRUE(zn_lib::copyDir(source, target));
  EXPECT_EQ(source, directory / "sub");
  EXPECT_EQ(target, directory / "copy");
}

TEST_F(Directories, CopyFailures) {
  fill();
  const auto copy = [](std::string source, std::string target) {
    return messageOf([&] { return zn_lib::copyDir(source, target); });
  };
  EXPECT_EQ(copy("", "b"), "ERROR: No target and/or destination provided\n");
  EXPECT_EQ(copy("a", ""), "ERROR: No target and/or destination provided\n");
  EXPECT_EQ(copy("missing", "b"), "ERROR: missing does not exist\n");
  EXPECT_EQ(copy("sub", "b/c"), "ERROR: Cannot create b/c\n");

  EXPECT_EQ(copy(" ", "b"), "ERROR:  does not exist\n");
  EXPECT_EQ(copy("sub", " "), "ERROR: Cannot create \n");
  EXPECT_FALSE(isThere("b"));
  {
    const Home home("/missing/home");
    EXPECT_EQ(copy("~", "b"), "ERROR: /missing/home does not exist\n");
    EXPECT_EQ(copy("sub", "~"), "ERROR: Cannot create /missing/home\n");
  }

  std::string source = "one.txt";
  std::string target = "of_a_file";
  const Written text = written([&] { EXPECT_TRUE(zn_lib::copyDir(source, target)); });
  EXPECT_EQ(text.err, "ERROR: Couldn't open the directory\n") << "the listing's own message";
  EXPECT_TRUE(isThere("of_a_file"));
}

}  // namespace
