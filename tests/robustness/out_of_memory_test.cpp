/// Allocations that fail, and how much memory a load takes. Each operation runs with its first
/// allocation failing, then with its second, and so on until it succeeds. It may throw
/// std::bad_alloc. It must keep files whole and close them, and AddressSanitizer finds leaks.
#include <gtest/gtest.h>
#include <malloc.h>
#include <tokenizer.h>
#include <zn_datetime.h>
#include <zn_dir.h>
#include <zn_error.h>
#include <zn_output.h>
#include <zn_readfile.h>
#include <zn_seqfile.h>
#include <zn_setcfg.h>
#include <zn_str.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <new>
#include <set>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "next_definition.h"
#include "output_capture.h"
#include "stored_xml.h"
#include "temporary_files.h"

namespace {

constexpr long kNever = -1;

/// Counts allocations and makes some of them fail.
struct Allocator {
  long done = 0;
  long failing = kNever;  // the number of the first allocation that fails
  bool failsOnce = true;  // whether only that allocation fails
  bool hasFailed = false;

  bool refuses() {
    ++done;
    if (failing == kNever || done < failing || (failsOnce && done > failing)) return false;
    hasFailed = true;
    return true;
  }
};

Allocator ours;    // for operator new of the whole process
Allocator expats;  // for parsers

/// What operator new has allocated, in bytes.
struct Allocated {
  std::size_t now = 0;
  std::size_t most = 0;
} allocated;

void* allocateOrNull(std::size_t size) {
  void* const memory = ours.refuses() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) return nullptr;
  allocated.now += malloc_usable_size(memory);
  allocated.most = std::max(allocated.most, allocated.now);
  return memory;
}

void* allocate(std::size_t size) {
  void* const memory = allocateOrNull(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void release(void* memory) {
  if (memory != nullptr) allocated.now -= malloc_usable_size(memory);
  std::free(memory);
}

}  // namespace

// These operators serve the library under test, too.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocateOrNull(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocateOrNull(size);
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }

/// Replaces the function of expat, and lets the allocations of each parser fail.
extern "C" __attribute__((visibility("default"))) XML_Parser XML_ParserCreate_MM(
    const XML_Char* encoding, const XML_Memory_Handling_Suite*, const XML_Char* separator) {
  static const auto next = nextDefinition<decltype(&XML_ParserCreate_MM)>("XML_ParserCreate_MM");
  static const XML_Memory_Handling_Suite suite = {
      [](std::size_t size) { return expats.refuses() ? nullptr : std::malloc(size); },
      [](void* memory, std::size_t size) {
        return expats.refuses() ? nullptr : std::realloc(memory, size);
      },
      std::free};
  // The library asserts that a parser can be created, so this allocation does not fail.
  const Allocator before = expats;
  expats = Allocator();
  const XML_Parser parser = next(encoding, &suite, separator);
  expats = before;
  return parser;
}

namespace {

class OutOfMemory : public InTemporaryDirectory {
 protected:
  ~OutOfMemory() override { zn_lib::setVerbose(false); }
};

constexpr long kMostTries = 100000;

/// Runs `run` with the first allocation of `allocator` failing, then with the second, and so on
/// until none fails. Does so twice: with this allocation failing, and with all later ones failing
/// too. Calls `prepare` before each run. Calls `check` after each run, with whether `run` returned.
/// Returns the number of allocations of a run that succeeds.
long failEach(Allocator& allocator, const std::function<void()>& prepare,
              const std::function<void()>& run, const std::function<void(bool)>& check) {
  long tries = 1;
  for (const bool once : {true, false}) {
    bool isOver = false;
    for (tries = 1; !isOver && tries < kMostTries; ++tries) {
      SCOPED_TRACE((once ? "at allocation " : "from allocation ") + std::to_string(tries));
      prepare();
      const int descriptor = nextDescriptor();
      bool wasThrown = false;
      allocator = Allocator();
      allocator.failing = tries;
      allocator.failsOnce = once;
      try {
        run();
      } catch (const std::bad_alloc&) {
        wasThrown = true;
      }
      isOver = !allocator.hasFailed;
      allocator = Allocator();
      EXPECT_FALSE(isOver && wasThrown);
      EXPECT_EQ(nextDescriptor(), descriptor) << "a file is left open";
      check(!wasThrown);
      if (testing::Test::HasFailure()) return 0;
    }
    EXPECT_TRUE(isOver);
  }
  return tries - 2;
}

const std::string kLong(200, 'x');

TEST(Allocators, ReachTheLibrary) {
  const long before = ours.done;
  const std::string upper = zn_lib::stringToUpper(kLong);
  EXPECT_GT(ours.done, before);

  ours = Allocator();
  ours.failing = 1;
  EXPECT_THROW(zn_lib::stringToUpper(kLong), std::bad_alloc);
  ours = Allocator();

  expats = Allocator();
  XMLEvtHandler handler;
  XMLParser parser(&handler);
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  EXPECT_TRUE(parser.Parse("<a><b c='d'/></a>", true));
  EXPECT_GT(expats.done, 0);
  expats = Allocator();
  ASSERT_TRUE(parser.Create(nullptr, nullptr));
  expats.failing = 1;
  EXPECT_FALSE(parser.Parse("<a><b c='d'/></a>", true));
  EXPECT_EQ(parser.GetErrorCode(), XML_ERROR_NO_MEMORY);
  expats = Allocator();
}

// ---- Settings

/// Returns a file of settings whose texts are long enough to be allocated.
std::string settingsFile(int count) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='T'>\n";
  for (int i = 0; i < count; ++i) {
    const std::string key = "key_that_takes_memory_" + std::to_string(i);
    xml += "<" + key + " data_type='" + kLong + "' describe='" + kLong + "'>" + kLong + "&amp;" +
           kLong + "</" + key + ">\n";
  }
  return xml + "</CONFIGURATION>\n";
}

using Fields = std::map<std::string, std::string>;  // by key

TEST_F(OutOfMemory, Load) {
  writeFile("config.xml", settingsFile(4));
  zn_lib::Configuration expected;
  expected.load();
  const Fields all = fieldsOf(expected.elements);
  ASSERT_EQ(all.size(), 4u);
  for (Allocator* const allocator : {&ours, &expats}) {
    zn_lib::Configuration store;
    const long count = failEach(
        *allocator, [&] { store.elements.clear(); }, [&] { EXPECT_TRUE(store.load()); },
        [&](bool wasLoaded) {
          const Fields values = fieldsOf(store.elements);
          if (wasLoaded && allocator == &ours) {
            EXPECT_EQ(values, all);
          }
          for (const auto& [key, fields] : values) {
            EXPECT_EQ(all.count(key), 1u) << key;
          }
          EXPECT_TRUE(store.load()) << "the next load succeeds";
          EXPECT_EQ(fieldsOf(store.elements), all);
        });
    EXPECT_GT(count, 1);
  }
}

const std::string kLongFile = "a-store-with-a-name-that-takes-memory.xml";

/// Runs `save` on a changed store with each of its allocations failing.
void saveWithFailures(bool backup, const std::function<void(zn_lib::Configuration&)>& save) {
  const std::string older = settingsFile(1);
  const std::string old = settingsFile(2);
  std::string whole;
  const auto makeStore = [&](zn_lib::Configuration& store) {
    store.name = "a-store-with-a-name-that-takes-memory";
    store.backup = backup;
    store.load();
    store.set("UPDATE", "DATE", "today", kLong);
    store.set("changed", kLong);
  };
  const auto prepare = [&] {
    writeFile(kLongFile, old);
    writeFile(kLongFile + "~", older);
  };
  prepare();
  {
    zn_lib::Configuration store;
    makeStore(store);
    ASSERT_TRUE(store.save());
    whole = readFile(kLongFile);
    ASSERT_NE(whole, old);
  }
  zn_lib::setUseTime(false);
  const long count = failEach(
      ours, prepare,
      [&] {
        // Only the allocations of the save fail, not those of the store.
        const Allocator wanted = std::exchange(ours, Allocator());
        zn_lib::Configuration store;
        makeStore(store);
        ours = wanted;
        save(store);
        ours.failing = kNever;
        store.changed = false;
      },
      [&](bool) {
        EXPECT_FALSE(zn_lib::isUseTime()) << "the setting must be restored";
        const std::string file = readFile(kLongFile);
        const std::string kept = readFile(kLongFile + "~");
        const bool isNew = file == whole;
        EXPECT_TRUE(isNew || (backup && file == old)) << file;
        EXPECT_TRUE(kept == older || (backup && kept == old)) << kept;
        if (backup && isNew) {
          EXPECT_EQ(kept, old);
        }
        EXPECT_EQ(namesIn("."), (std::set<std::string>{kLongFile, kLongFile + "~"}));
      });
  EXPECT_GT(count, 0);
}

TEST_F(OutOfMemory, SaveKeepsFileAndBackupWhole) {
  saveWithFailures(true, [](zn_lib::Configuration& store) {
    try {
      EXPECT_TRUE(store.save());
      EXPECT_FALSE(store.changed);
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(store.changed);
      store.changed = false;
    }
  });
}

TEST_F(OutOfMemory, TheDestructorNeverThrows) {
  saveWithFailures(true, [](zn_lib::Configuration& store) {
    const Allocator wanted = std::exchange(ours, Allocator());
    auto* const doomed = new zn_lib::Configuration(store);
    ours = wanted;
    EXPECT_NO_THROW(delete doomed);
  });
}

TEST_F(OutOfMemory, TheFirstSave) {
  failEach(
      ours, [] { std::filesystem::remove("config.xml"); },
      [] {
        zn_lib::Configuration store;
        store.set("a", kLong);
        store.save();
      },
      [](bool) {
        const std::string file = readFile("config.xml");
        if (isThere("config.xml")) {
          EXPECT_NE(file.find("</CONFIGURATION>\n"), std::string::npos) << file;
        }
        EXPECT_LE(namesIn(".").size(), 2u);
        std::filesystem::remove("config.xml~");
      });
}

TEST_F(OutOfMemory, SetAndGet) {
  zn_lib::Configuration store("T", "");
  const long count = failEach(
      ours, [&] { store.elements.clear(); },
      [&] {
        store.set(" " + kLong, kLong);
        store.set(kLong + " ", kLong, kLong, kLong);
        store.get(kLong + "\n");
      },
      [&](bool isDone) {
        EXPECT_EQ(store.elements.size(),
                  isDone ? 1u : std::min<std::size_t>(store.elements.size(), 1));
      });
  EXPECT_GT(count, 1);
  store.changed = false;
}

// ---- Catalogs

TEST_F(OutOfMemory, ParseFile) {
  std::string xml = "<E>";
  for (int id = 1; id <= 5; ++id) {
    xml += errorXml(std::to_string(id), kLong + std::to_string(id)) + "\n";
  }
  writeFile("a_catalog_with_a_long_name.xml", xml + "</E>");
  for (Allocator* const allocator : {&ours, &expats}) {
    Catalog catalog;
    const long count = failEach(
        *allocator, [&] { catalog.clear(); },
        [&] {
          zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
          std::string name = "a_catalog_with_a_long_name.xml";
          reader.setFileName(name);
          EXPECT_TRUE(reader.parseFile());
          reader.event->exportData(catalog);
        },
        [&](bool isRead) {
          if (isRead && allocator == &ours) {
            EXPECT_EQ(catalog.size(), 5u);
          }
          for (const auto& [id, message] : catalog) {
            // An entry may exist before its text.
            EXPECT_TRUE(message.empty() || message == kLong + std::to_string(id)) << message;
          }
        });
    EXPECT_GT(count, 1);
  }
}

TEST_F(OutOfMemory, ReadingAndShowingACatalog) {
  writeFile("errors.xml", "<E>" + errorXml("1", kLong) + "</E>");
  zn_lib::setVerbose(true);
  const Written text = written([] {
    Catalog catalog;
    failEach(
        ours, [&] { catalog.clear(); },
        [&] {
          EXPECT_TRUE(zn_lib::readErrorFile("errors.xml", catalog));
          zn_lib::showErrorList(catalog);
          zn_lib::showErrorMessage(catalog, 7);
          zn_lib::systemError();
        },
        [&](bool isDone) {
          if (isDone) {
            EXPECT_EQ(catalog.size(), 2u);
          }
        });
  });
  EXPECT_NE(text.out.find(kLong), std::string::npos);
}

TEST_F(OutOfMemory, AListThatIsNotPrintedTakesNoMemory) {
  Catalog catalog = {{1, kLong}};
  const long before = ours.done;
  zn_lib::showErrorList(catalog);
  EXPECT_EQ(ours.done, before);
}

/// Keeps what is printed without allocating memory.
class FixedBuffer : public std::streambuf {
 public:
  void clear() { setp(text_.data(), text_.data() + text_.size()); }
  std::string text() const { return {pbase(), pptr()}; }

 private:
  std::array<char, 1000> text_;
};

TEST_F(OutOfMemory, PrintingAFile) {
  const std::string lines = kLong + "\n" + kLong + "\n";
  writeFile("a", lines);
  FixedBuffer printed;
  const long count = failEach(
      ours, [&] { printed.clear(); },
      [&] {
        zn_lib::ReadFile file;
        std::string name = "a";
        file.setFileName(name);
        ASSERT_TRUE(file.fileOpen());
        std::streambuf* const own = std::cout.rdbuf(&printed);
        EXPECT_TRUE(file.cat());
        std::cout.rdbuf(own);
      },
      [&](bool isDone) {
        if (isDone) {
          EXPECT_EQ(printed.text(), lines + "\n");
        }
      });
  EXPECT_GT(count, 1);
}

// ---- Directories

TEST_F(OutOfMemory, Split) {
  const std::string text = kLong + "," + kLong + ";" + kLong;
  const std::vector<std::string> parts(3, kLong);
  const struct {
    const char* what;
    std::size_t (zn_lib::Tokenizer::*split)(const std::string&, const std::string&);
    std::string at;
  } cases[] = {
      {"at characters", &zn_lib::Tokenizer::split, ",;"},
#ifndef _LIBCPP_VERSION
      // The engine of libc++ frees memory twice if an allocation fails.
      {"at a set", &zn_lib::Tokenizer::split, "+-<"},
      {"at a pattern", &zn_lib::Tokenizer::splitMulti, "[,;]"},
#endif
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    zn_lib::Tokenizer tokenizer;
    const long allocations = failEach(
        ours, [&] { tokenizer.tokens = {"old"}; }, [&] { (tokenizer.*c.split)(text, c.at); },
        [&](bool isDone) {
          EXPECT_EQ(tokenizer.tokens, isDone ? parts : std::vector<std::string>());
        });
    EXPECT_GE(allocations, 3);
  }
}

// A compiled pattern takes hundreds of allocations.
TEST_F(OutOfMemory, PlainDelimitersNeedNoPattern) {
  for (const std::string delimiters : {",", ",;", "-,", ",-", " \t"}) {
    zn_lib::Tokenizer tokenizer;
    const long before = ours.done;
    tokenizer.split("a,b", delimiters);
    EXPECT_LT(ours.done, before + 10) << delimiters;
  }
}

TEST_F(OutOfMemory, ListDir) {
  for (int i = 0; i < 20; ++i) writeFile("a_file_with_a_long_name_" + std::to_string(i), "");
  std::vector<std::string> filters = {"", "name", "<dir>"};
#ifndef _LIBCPP_VERSION
  // The engine of libc++ frees memory twice if an allocation fails.
  filters.emplace_back("n[a-z]m?e_1+$");
#endif
  for (const std::string& filter : filters) {
    std::vector<std::string> all;
    ASSERT_TRUE(zn_lib::listDir("", filter, true, all));
    std::vector<std::string> names;
    failEach(
        ours, [&] { names = {"before"}; },
        [&] { EXPECT_TRUE(zn_lib::listDir("", filter, true, names)); },
        [&](bool isDone) {
          std::vector<std::string> expected = {"before"};
          if (isDone) expected.insert(expected.end(), all.begin(), all.end());
          EXPECT_EQ(names, expected) << filter;
        });
  }
}

TEST_F(OutOfMemory, CopyDir) {
  std::filesystem::create_directory("source");
  for (int i = 0; i < 3; ++i) writeFile("source/a_long_name_" + std::to_string(i), kLong);
  const long count = failEach(
      ours, [] { std::filesystem::remove_all("target"); },
      [] {
        std::string source = "source";
        std::string target = "target";
        EXPECT_TRUE(zn_lib::copyDir(source, target));
      },
      [](bool isDone) {
        for (int i = 0; i < 3; ++i) {
          const std::string name = "a_long_name_" + std::to_string(i);
          EXPECT_EQ(readFile("source/" + name), kLong);
          if (isDone) {
            EXPECT_EQ(readFile("target/" + name), kLong);
          }
        }
      });
  EXPECT_GT(count, 1);
}

// The memory of expat is not counted.
TEST_F(OutOfMemory, ALoadTakesLittleMemoryBesideTheSettings) {
  constexpr std::size_t kib = 1024;
  const std::string empty = "<" + std::string(1000, 'e') + "/>";
  const struct {
    const char* what;
    int elements;
    std::size_t most;
  } cases[] = {
      {"a few elements", 50, 160 * kib},
      {"many elements, of which no setting is left", 15000, 11 * kib * kib},
  };
  for (const auto& c : cases) {
    std::string xml = "<r><k a='t'>v</k>";
    for (int i = 0; i < c.elements; ++i) xml += empty;
    writeFile("config.xml", xml + "</r>");
    zn_lib::Configuration store;
    const std::size_t before = allocated.now;
    allocated.most = before;
    EXPECT_TRUE(store.load());
    EXPECT_LT(allocated.most - before, c.most) << c.what;
    EXPECT_EQ(store.elements.size(), 1u);
    EXPECT_EQ(store.get("k").value, "v");
  }
}

TEST_F(OutOfMemory, SequentialFile) {
  writeFile("a_file_with_a_long_name.txt", "");
  std::string name;
  failEach(
      ours, [&] { name = "a_file_with_a_long_name-7.txt"; }, [&] { zn_lib::sequentialFile(name); },
      [&](bool isDone) {
        EXPECT_EQ(name, isDone ? "a_file_with_a_long_name-1.txt" : "a_file_with_a_long_name-7.txt");
      });
}

}  // namespace
