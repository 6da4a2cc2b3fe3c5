/// Failing system calls of functions that print, ask, read or write by streams, or ask the system
/// for its name or the time. A part of `failing_calls_test`.
#if defined(__linux__) && defined(__x86_64__)

#include <fcntl.h>
#include <gtest/gtest.h>
#include <tokenizer.h>
#include <unistd.h>
#include <zn_datetime.h>
#include <zn_dir.h>
#include <zn_error.h>
#include <zn_output.h>
#include <zn_platform.h>
#include <zn_readfile.h>
#include <zn_setcfg.h>
#include <zn_writefile.h>
#include <zn_xmlparser.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include "fault_injection.h"
#include "sanitizers.h"
#include "stored_xml.h"

namespace {

std::string trueOrFalse(bool result) { return result ? "true" : "false"; }

bool beginsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

/// Returns more text than a stream has room for.
std::string longText() {
  std::string text;
  for (int line = 0; text.size() < 9000; ++line) text += "line " + std::to_string(line) + "\n";
  return text;
}

/// Runs `work` while the test intervenes. The calls around it are not those of the function.
template <class Function>
auto watched(Report& report, Function work) {
  report.watch(true);
  const auto result = work();
  report.watch(false);
  return result;
}

class FailingStreams : public FaultInjection {
 protected:
  /// Returns what an operation prints without faults.
  std::string outputOf(const Work& work) {
    TracedChild child(withOutput(work));
    const Fault none = {"no fault", 0, Share::kAll, {}, true};
    return outcomeOf(child, {}, none, 1, false).output;
  }

  void withEveryFaultOf(const std::string& function, const Contents& before, const Work& work,
                        const std::function<void(const Outcome&)>& check) {
    withEveryFault({function, before, work, check, {}, function});
  }
};

// ---- Printing

struct Print {
  const char* function;
  std::function<bool()> run;  ///< returns what the function returns, or true
};

std::vector<Print> prints() {
  using namespace zn_lib;
  const auto silently = [](const std::function<void()>& run) {
    return [run] {
      run();
      return true;
    };
  };
  const std::string text = "A line of text";
  Catalog catalog;
  for (int i = 1; i <= 300; ++i) catalog[i] = "Message of " + std::to_string(i);
  return {
      {"display", silently([] { display(longText()); })},
      {"message", silently([text] { message(text); })},
      {"errorMessage", silently([text] { errorMessage(text); })},
      {"debugMessage", silently([text] { debugMessage(text); })},
      {"processTitle", silently([text] { processTitle(text); })},
      {"operator<<", silently([] { zn_lib::operator<<(std::cout, longText()); })},
      {"showErrorMessage", silently([catalog]() mutable { showErrorMessage(catalog, 7); })},
      {"showErrorList", silently([catalog]() mutable { showErrorList(catalog); })},
      {"systemError", silently([] {
         errno = ENOENT;
         systemError();
       })},
      {"Configuration::listConfiguration", silently([] {
         Configuration store;
         for (int i = 0; i < 300; ++i) store.set("key" + std::to_string(i), "value");
         store.listConfiguration();
         store.changed = false;  // so that the destructor saves nothing
       })},
      {"platformInfo", [] { return platformInfo(); }},
  };
}

TEST_F(FailingStreams, PrintTheStartOfTheText) {
  for (const Print& print : prints()) {
    const Work work = [&](Report&) {
      zn_lib::setVerbose(true);
      const bool result = print.run();
      return std::string(!result                                ? "false"
                         : std::cout.good() && std::cerr.good() ? "printed"
                                                                : "the stream fails");
    };
    const std::string whole = outputOf(work);
    EXPECT_FALSE(whole.empty());
    Operation operation = {print.function, {}, work, [&](const Outcome& outcome) {
                             if (outcome.hasFailed("uname")) {
                               EXPECT_EQ(outcome.answer(), "false");
                               EXPECT_EQ(outcome.output, "");
                             } else {
                               EXPECT_NE(outcome.answer(), "false");
                             }
                             EXPECT_TRUE(beginsWith(whole, outcome.output)) << outcome.output;
                             if (outcome.isHarmless()) {
                               EXPECT_EQ(outcome.output, whole);
                             }
                             // A failed write is never lost silently.
                             if (outcome.answer() == "printed") {
                               EXPECT_EQ(outcome.output, whole);
                             }
                           }};
    operation.function = print.function;
    operation.describe = [whole](const Outcome& outcome) {
      if (outcome.answer() == "false") return std::string("false, nothing printed");
      return outcome.answer() == "printed" ? "whole text printed"
                                           : outcome.answer() + ", part or nothing printed";
    };
    withEveryFault(operation);
  }
}

// ---- Prompts

/// Opens `name` as standard input, without calls that the test sees.
void takeInputFrom(const char* name) {
  const int input = open(name, O_RDONLY | O_CLOEXEC);
  dup2(input, STDIN_FILENO);
  close(input);
}

/// Makes a new terminal, at which `text` was typed, standard input. Returns the other end.
int typeAtTerminal(const std::string& text) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  grantpt(terminal);
  unlockpt(terminal);
  const int end = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
  dup2(end, STDIN_FILENO);
  close(end);
  EXPECT_EQ(write(terminal, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  return terminal;
}

TEST_F(FailingStreams, PromptsReturnTheAnswerOrThatOfNoInput) {
  using namespace zn_lib;
  const struct {
    const char* function;
    const char* typed;
    std::function<std::string()> run;
    const char* answer;
    const char* withoutInput;
  } cases[] = {
      {"pauseKey", "\n",
       [] {
         pauseKey();
         return std::string("returns");
       },
       "returns", "returns"},
      {"more", "q\n", [] { return trueOrFalse(more()); }, "false", "true"},
      {"yesOrNo", "y\n", [] { return trueOrFalse(yesOrNo("Sure? ")); }, "true", "false"},
  };
  for (const auto& c : cases) {
    for (const bool isAtTerminal : {false, true}) {
      // A process with AddressSanitizer takes long to fork.
      if (isAtTerminal && kHasAddressSanitizer && !isLongRun()) continue;
      Operation operation;
      operation.what = std::string(c.function) + (isAtTerminal ? " at a terminal" : " from a file");
      operation.before = {{"input", c.typed}};
      operation.run = [&, isAtTerminal](Report& report) {
        report.watch(false);
        int terminal = -1;
        if (isAtTerminal) {
          terminal = typeAtTerminal(c.typed);
        } else {
          takeInputFrom("input");
        }
        const std::string answer = watched(report, c.run);
        if (terminal != -1) close(terminal);
        takeInputFrom("/dev/null");
        return answer;
      };
      operation.check = [&](const Outcome& outcome) {
        EXPECT_TRUE(outcome.answer() == c.answer || outcome.answer() == c.withoutInput)
            << outcome.answer();
        if (outcome.isHarmless()) {
          EXPECT_EQ(outcome.answer(), c.answer);
        }
      };
      operation.describe = [&](const Outcome& outcome) -> std::string {
        if (c.answer == c.withoutInput) return "returns";
        return outcome.answer() +
               (outcome.answer() == c.answer ? ", as typed" : ", as without input");
      };
      operation.function = c.function;
      // libedit prepares itself at the first prompt.
      operation.isFresh = isAtTerminal;
      withEveryFault(operation);
    }
  }
}

// ---- The system

TEST_F(FailingStreams, TheSystemIsUnknownIfUnameFails) {
  using namespace zn_lib;
  const struct {
    const char* function;
    std::string (*run)();
  } cases[] = {{"getOSName", getOSName}, {"getOSRelease", getOSRelease}};
  for (const auto& c : cases) {
    withEveryFaultOf(
        c.function, {}, [&](Report&) { return c.run(); },
        [&](const Outcome& outcome) {
          EXPECT_EQ(outcome.answer(), outcome.hasFailed("uname") ? "unknown" : c.run());
        });
  }
}

/// Returns the minutes of the day in `record`.
int minutesIn(const zn_lib::date_time_record& record) { return record.hour * 60 + record.minute; }

/// Returns which time of now `record` is: that of a zone five and a half hours before UTC, or UTC.
std::string nameOfTime(const zn_lib::date_time_record& record) {
  constexpr int day = 24 * 60;
  constexpr int offset = 330;
  const std::time_t now = std::time(nullptr);
  std::tm utc;
  gmtime_r(&now, &utc);
  const int difference = (utc.tm_hour * 60 + utc.tm_min - minutesIn(record) + day) % day;
  if (difference <= 1) return "UTC";
  return (difference + offset) % day <= 1 ? "local time" : "another time";
}

TEST_F(FailingStreams, TodayIsInLocalTimeOrUtc) {
  using namespace zn_lib;
  const struct {
    const char* function;
    std::function<date_time_record()> run;
  } cases[] = {{"getToday",
                [] {
                  date_time_record record{};
                  getToday(record);
                  return record;
                }},
               {"getTodayAsISO", [] {
                  date_time_record record{};
                  setUseTime(true);
                  parseISOdate(getTodayAsISO(), record);
                  return record;
                }}};
  for (const auto& c : cases) {
    withEveryFaultOf(
        c.function, {},
        [&](Report& report) {
          report.watch(false);
          // The C library reads the file of a zone once it changes.
          setenv("TZ", "UTC0", 1);
          tzset();
          setenv("TZ", "Asia/Kolkata", 1);
          return nameOfTime(watched(report, c.run));
        },
        [&](const Outcome& outcome) {
          EXPECT_TRUE(outcome.answer() == "local time" || outcome.answer() == "UTC")
              << outcome.answer();
          if (outcome.isHarmless()) {
            EXPECT_EQ(outcome.answer(), "local time");
          }
        });
  }
}

// ---- Directories

TEST_F(FailingStreams, DirectoriesAreCreatedAndEnteredOrNot) {
  withEveryFaultOf(
      "createDir", {}, [](Report&) { return trueOrFalse(zn_lib::createDir("dir")); },
      [](const Outcome& outcome) {
        EXPECT_EQ(outcome.answer(), trueOrFalse(outcome.isHarmless()));
        EXPECT_EQ(contents(), outcome.isHarmless() ? (Contents{{"dir", "/"}}) : Contents());
      });
  withEveryFaultOf(
      "changeDir", {{"dir", "/"}},
      [](Report& report) {
        report.watch(false);
        const auto before = std::filesystem::current_path();
        const bool result = watched(report, [] { return zn_lib::changeDir("dir"); });
        const bool isChanged = std::filesystem::current_path() != before;
        std::filesystem::current_path(before);
        return result == isChanged ? trueOrFalse(result) : "a wrong result";
      },
      [](const Outcome& outcome) {
        EXPECT_EQ(outcome.answer(), trueOrFalse(outcome.isHarmless()));
      });
}

// ---- Streams of files

template <class File>
void setName(File& file, std::string name) {
  file.setFileName(name);
}

TEST_F(FailingStreams, ReadersOpenAndClose) {
  const Contents before = {{"file.txt", longText()}};
  withEveryFaultOf(
      "ReadFile::fileOpen", before,
      [](Report& report) {
        report.watch(false);
        zn_lib::ReadFile file;
        setName(file, "file.txt");
        return trueOrFalse(watched(report, [&] { return file.fileOpen(); }));
      },
      [](const Outcome& outcome) {
        EXPECT_EQ(outcome.answer(), trueOrFalse(!outcome.hasFailed("open")));
      });
  withEveryFaultOf(
      "ReadFile::fileClose", before,
      [](Report& report) {
        report.watch(false);
        zn_lib::ReadFile file;
        setName(file, "file.txt");
        file.fileOpen();
        const bool hasFailed = watched(report, [&] {
          file.fileClose();
          return file.file.fail();
        });
        EXPECT_FALSE(file.file.is_open());
        return std::string(hasFailed ? "closed, the stream fails" : "closed");
      },
      [](const Outcome& outcome) {
        const bool hasFailed = outcome.answer() == "closed, the stream fails";
        EXPECT_TRUE(hasFailed || outcome.answer() == "closed");
        EXPECT_TRUE(hasFailed || !outcome.hasFailed("close"));
        EXPECT_FALSE(hasFailed && outcome.isHarmless());
      });
}

/// Describes how a destructor ends.
template <class File>
Work destruction(void (*prepare)(File&)) {
  return [prepare](Report& report) {
    report.watch(false);
    auto file = std::make_unique<File>();
    setName(*file, "file.txt");
    file->fileOpen();
    prepare(*file);
    watched(report, [&] {
      file.reset();
      return 0;
    });
    return std::string("closed");
  };
}

TEST_F(FailingStreams, DestructorsClose) {
  const Contents before = {{"file.txt", "old"}};
  const auto unchanged = [&](const Outcome& outcome) {
    EXPECT_EQ(outcome.answer(), "closed");
    EXPECT_EQ(contents(), before);
  };
  withEveryFaultOf("ReadFile::~ReadFile", before,
                   destruction<zn_lib::ReadFile>([](zn_lib::ReadFile&) {}), unchanged);
  withEveryFaultOf(
      "ReadXml::~ReadXml", before,
      destruction<zn_lib::ReadXml<zn_lib::ErrorEvent>>([](zn_lib::ReadXml<zn_lib::ErrorEvent>&) {}),
      unchanged);
  Operation write = {
      "WriteFile::~WriteFile", before,
      destruction<zn_lib::WriteFile>([](zn_lib::WriteFile& file) { file.file << "new text"; }),
      [](const Outcome& outcome) {
        EXPECT_EQ(outcome.answer(), "closed");
        const std::string bytes = readFile("file.txt");
        EXPECT_TRUE(beginsWith("new text", bytes));
        if (!outcome.hasFailed("write") || outcome.isHarmless()) {
          EXPECT_EQ(bytes, "new text");
        }
      }};
  write.function = write.what;
  write.describe = [](const Outcome&) {
    return readFile("file.txt") == "new text" ? "closed, whole text written"
                                              : "closed, part of the text written";
  };
  withEveryFault(write);
}

TEST_F(FailingStreams, WritersOpenAndClose) {
  const struct {
    const char* what;
    bool append, overwrite;
  } modes[] = {{"over a file", false, true},
               {"over a file, with a warning", false, false},
               {"at the end of a file", true, true}};
  for (const auto& mode : modes) {
    Operation open = {mode.what,
                      {{"file.txt", "old"}},
                      [&](Report& report) {
                        report.watch(false);
                        zn_lib::WriteFile file;
                        setName(file, "file.txt");
                        file.append = mode.append;
                        file.overwrite = mode.overwrite;
                        return trueOrFalse(watched(report, [&] { return file.fileOpen(); }));
                      },
                      [&](const Outcome& outcome) {
                        const bool isOpen = outcome.answer() == "true";
                        // The stream seeks the end of the file to append.
                        const bool mayFail =
                            outcome.hasFailed("open") || outcome.hasFailed("lseek");
                        EXPECT_TRUE(isOpen || mayFail);
                        EXPECT_EQ(readFile("file.txt"), isOpen && !mode.append ? "" : "old");
                      }};
    open.function = "WriteFile::fileOpen";
    withEveryFault(open);
  }
  Operation close = {"WriteFile::fileClose",
                     {},
                     [](Report& report) {
                       report.watch(false);
                       zn_lib::WriteFile file;
                       setName(file, "file.txt");
                       file.fileOpen();
                       file.file << "new text";
                       const bool hasFailed = watched(report, [&] {
                         file.fileClose();
                         return file.file.fail();
                       });
                       EXPECT_FALSE(file.file.is_open());
                       return std::string(hasFailed ? "the stream fails" : "closed");
                     },
                     [](const Outcome& outcome) {
                       const std::string bytes = readFile("file.txt");
                       EXPECT_TRUE(beginsWith("new text", bytes));
                       if (outcome.answer() == "closed") {
                         EXPECT_EQ(bytes, "new text");
                         EXPECT_FALSE(outcome.hasFailed("close"));
                       }
                       if (outcome.isHarmless()) {
                         EXPECT_EQ(outcome.answer(), "closed");
                       }
                     }};
  close.function = close.what;
  close.describe = [](const Outcome& outcome) {
    const bool isWhole = readFile("file.txt") == "new text";
    return outcome.answer() +
           (isWhole ? ", whole text written" : ", part or nothing of the text written");
  };
  withEveryFault(close);
}

TEST_F(FailingStreams, FilesArePrintedUpToTheFailure) {
  const std::string text = longText();
  const Contents before = {{"file.txt", text}};
  Operation cat = {"ReadFile::cat", before,
                   [](Report& report) {
                     report.watch(false);
                     zn_lib::ReadFile file;
                     setName(file, "file.txt");
                     file.fileOpen();
                     return trueOrFalse(watched(report, [&] {
                       const bool result = file.cat();
                       std::cout.flush();
                       return result;
                     }));
                   },
                   [&](const Outcome& outcome) {
                     EXPECT_EQ(outcome.answer(), "true");
                     // The output ends with the line in which a read fails, and a line break.
                     std::string output = outcome.output;
                     if (!beginsWith(text + "\n", output) && !output.empty()) output.pop_back();
                     EXPECT_TRUE(beginsWith(text + "\n", output));
                     if (outcome.isHarmless()) {
                       EXPECT_EQ(outcome.output, text + "\n");
                     }
                   }};
  cat.function = cat.what;
  cat.describe = [text](const Outcome& outcome) {
    return outcome.answer() +
           (outcome.output == text + "\n" ? ", whole file printed" : ", part or nothing printed");
  };
  withEveryFault(cat);
  // The C++ library has three ways to ask how much can be read at once.
  for (const Lacking& lacking :
       {Lacking{{"ioctl", EINVAL}}, Lacking{{"ioctl", EINVAL}, {"poll", EINVAL}}}) {
    cat.lacking = lacking;
    withEveryFault(cat);
  }
}

// ---- XML

TEST_F(FailingStreams, ParsersReadUpToTheFailure) {
  std::string xml = "<ERRORS>";
  for (int i = 1; i <= 200; ++i) xml += errorXml(std::to_string(i), "Text") + "\n";
  xml += "</ERRORS>";
  const Contents before = {{"file.xml", xml}};
  Operation parse = {"ReadXml::parseFile", before,
                     [](Report& report) -> std::string {
                       report.watch(false);
                       zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
                       setName(reader, "file.xml");
                       const bool result = watched(report, [&] { return reader.parseFile(); });
                       if (reader.event->data.size() == 200) return trueOrFalse(result) + ", all";
                       return trueOrFalse(result);
                     },
                     [&](const Outcome& outcome) {
                       const bool isOpen = !outcome.hasFailed("open");
                       const bool isWhole = outcome.answer() == "true, all";
                       EXPECT_TRUE(isWhole || outcome.answer() == trueOrFalse(isOpen))
                           << outcome.answer();
                       if (outcome.isHarmless()) {
                         EXPECT_TRUE(isWhole);
                       }
                     }};
  parse.function = parse.what;
  parse.describe = [](const Outcome& outcome) -> std::string {
    if (outcome.answer() == "false") return "false, nothing read";
    return outcome.answer() == "true" ? "true, part or nothing read" : "true, whole file read";
  };
  withEveryFault(parse);

  withEveryFaultOf(
      "XMLParser::Parse", {},
      [](Report&) {
        XMLEvtHandler handler;
        XMLParser parser(&handler);
        parser.Create("UTF-8", nullptr);
        const std::string text = "<a>text</a>";
        bool result = parser.Parse(text.c_str(), false) && parser.Parse("", 0, true);
        parser.Create("UTF-8", nullptr);
        text.copy(static_cast<char*>(parser.GetBuffer(text.size())), text.size());
        result = parser.Parse(text.size(), true) && result;
        return trueOrFalse(result);
      },
      [](const Outcome& outcome) { EXPECT_EQ(outcome.answer(), "true"); });
}

}  // namespace

#endif
