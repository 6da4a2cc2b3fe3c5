#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>
#include <zn_output.h>

#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>

#include "captured_stream.h"
#include "child_status.h"
#include "files.h"
#include "output_capture.h"

namespace {

using namespace std::string_literals;

class Output : public testing::Test {
 protected:
  ~Output() override { zn_lib::setVerbose(false); }
};

TEST_F(Output, HeaderExamples) {
  const Written text = written([] {
    zn_lib::setVerbose(true);
    zn_lib::message("3 files copied");
    zn_lib::errorMessage("disk full");
  });
  EXPECT_EQ(text.out, "3 files copied\n");
  EXPECT_EQ(text.err, "ERROR: disk full\n");
}

TEST_F(Output, IsSilentByDefaultExceptForDebugMessages) {
  EXPECT_FALSE(zn_lib::isVerbose());
  const Written text = written([] {
    zn_lib::display("a");
    zn_lib::message("b");
    zn_lib::errorMessage("c");
    zn_lib::processTitle("d");
    zn_lib::debugMessage("x");
    zn_lib::debugMessage("");
  });
  EXPECT_EQ(text.out, "DEBUG: x\nDEBUG: \n");
  EXPECT_EQ(text.err, "");
}

TEST_F(Output, FollowsTheFlag) {
  zn_lib::setVerbose(true);
  EXPECT_TRUE(zn_lib::isVerbose());
  zn_lib::setVerbose(false);
  EXPECT_FALSE(zn_lib::isVerbose());
  EXPECT_EQ(written([] { zn_lib::message("x"); }).out, "");
}

TEST_F(Output, WritesEachKindOfMessage) {
  const struct {
    const char* what;
    std::function<void()> run;
    std::string out, err;
  } cases[] = {
      {"display", [] { zn_lib::display("a"); }, "a", ""},
      {"message", [] { zn_lib::message("a"); }, "a\n", ""},
      {"errorMessage", [] { zn_lib::errorMessage("disk full"); }, "", "ERROR: disk full\n"},
      {"debugMessage", [] { zn_lib::debugMessage("a"); }, "DEBUG: a\n", ""},
      {"processTitle", [] { zn_lib::processTitle("Copy"); }, "[Copy]\n", ""},
      {"one line of several calls",
       [] {
         zn_lib::display("a");
         zn_lib::display("b");
         zn_lib::message("c");
       },
       "abc\n", ""},
      {"empty texts",
       [] {
         zn_lib::display("");
         zn_lib::message("");
         zn_lib::errorMessage("");
         zn_lib::processTitle("");
       },
       "", ""},
      {"texts with NULs",
       [] {
         zn_lib::display("ab\0cd"s);
         zn_lib::message("\0cd"s);
         zn_lib::errorMessage("ab\0cd"s);
         zn_lib::debugMessage("ab\0cd"s);
         zn_lib::processTitle("ab\0cd"s);
       },
       "ab\nDEBUG: ab\n[ab]\n", "ERROR: ab\n"},
  };
  for (const auto& c : cases) {
    zn_lib::setVerbose(true);
    const Written text = written(c.run);
    EXPECT_EQ(text.out, c.out) << c.what;
    EXPECT_EQ(text.err, c.err) << c.what;
  }
}

TEST_F(Output, FlushesLinesOnly) {
  // A buffer that counts its flushes replaces the terminal.
  class Counter : public std::streambuf {
   public:
    int flushes = 0;

   private:
    int overflow(int c) override { return c; }
    int sync() override { return ++flushes, 0; }
  } counter;
  const RedirectedStream redirected(std::cout, &counter);
  zn_lib::setVerbose(true);
  zn_lib::display("a");
  EXPECT_EQ(counter.flushes, 0);
  zn_lib::message("a");
  zn_lib::debugMessage("a");
  zn_lib::processTitle("a");
  EXPECT_EQ(counter.flushes, 3);
}

// ---- Prompts. Each runs in a child process with its own standard input.

void writeAll(int descriptor, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
    if (count <= 0) return;
    done += static_cast<std::size_t>(count);
  }
}

/// Reads to the end. A terminal reports an error as its end, once no process has it open.
std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer;
  for (ssize_t count; (count = read(descriptor, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

std::string readUntil(int descriptor, const std::string& end) {
  std::string text;
  for (char c; text.find(end) == std::string::npos && read(descriptor, &c, 1) == 1;) text += c;
  return text;
}

using Prompt = std::function<int()>;

int askMore() { return zn_lib::more(); }
int askToContinue() {
  zn_lib::pauseKey();
  return 7;
}
Prompt askYesOrNo(const std::string& prompt) {
  return [prompt] { return static_cast<int>(zn_lib::yesOrNo(prompt)); };
}

struct Answer {
  int result;          ///< of the prompt function
  std::string screen;  ///< the text on the terminal
};

/// Waits until libedit has switched off the echo of the terminal. Before that, input is shown
/// twice.
void awaitEditing(int terminal) {
  termios mode;
  for (int tries = 0; tries < 5000 && tcgetattr(terminal, &mode) == 0 && (mode.c_lflag & ECHO) != 0;
       ++tries) {
    usleep(1000);
  }
}

/// Waits until `process` sleeps, as it does while it reads from a terminal without input.
void awaitSleep(pid_t process) {
  const std::string status = "/proc/" + std::to_string(process) + "/stat";
  for (int tries = 0; tries < 5000; ++tries) {
    const std::string text = readFile(status);
    const std::size_t name = text.rfind(") ");
    if (name == std::string::npos || text[name + 2] == 'S') return;
    usleep(1000);
  }
}

enum class Editor { kLibedit, kTerminal };

constexpr char kInterrupt = '\x03';

/// Runs `prompt` on a new terminal and types `typed` once the terminal shows `shown`. Waits for
/// libedit first, if it edits the input. Types an interrupt at the end only once the process has
/// read the rest: a signal that arrives earlier interrupts no read.
Answer atTerminal(const Prompt& prompt, const std::string& shown, const std::string& typed,
                  Editor editor = Editor::kLibedit) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    setenv("TERM", "dumb", 1);
    unsetenv("HOME");
    _exit(prompt());
  }
  if (child < 0) {
    ADD_FAILURE() << "no pseudo-terminal is available (is /dev/pts mounted?)";
    return {-1, ""};
  }
  std::string screen = readUntil(terminal, shown);
  if (editor == Editor::kLibedit) awaitEditing(terminal);
  if (!typed.empty() && typed.back() == kInterrupt) {
    const std::string text = typed.substr(0, typed.size() - 1);
    writeAll(terminal, text);
    screen += readUntil(terminal, text);
    awaitSleep(child);
    writeAll(terminal, {kInterrupt});
  } else {
    writeAll(terminal, typed);
  }
  screen += readAll(terminal);
  close(terminal);
  return {waitForExit(child), screen};
}

TEST(Prompts, ShowTheirTextAndReadOneLine) {
  const std::string continueText = "Press <Enter> to continue ";
  const std::string moreText = "Press Q to quit, any other key to continue ";
  const struct {
    Prompt prompt;
    std::string shown, typed;
    int result;
  } cases[] = {
      {askToContinue, continueText, "", 7},
      {askToContinue, continueText, "anything", 7},
      {askMore, moreText, "q", 0},
      {askMore, moreText, "Quit", 0},
      {askMore, moreText, "", 1},
      {askMore, moreText, "x", 1},
      {askMore, moreText, " q", 1},
      {askYesOrNo("Overwrite?"), "Overwrite?", "Y", 1},
      {askYesOrNo("Overwrite? "), "Overwrite? ", "yup", 1},
      {askYesOrNo("?"), "?", "n", 0},
      {askYesOrNo("?"), "?", "", 0},
      {askYesOrNo("?"), "?", " yes", 0},
  };
  for (const auto& c : cases) {
    const Answer answer = atTerminal(c.prompt, c.shown, c.typed + "\n");
    EXPECT_EQ(answer.result, c.result) << c.shown << c.typed;
    EXPECT_EQ(answer.screen, c.shown + c.typed + "\r\n");
  }
}

TEST(Prompts, TreatTheEndOfInputAtATerminalAsAnEmptyAnswer) {
  EXPECT_EQ(atTerminal(askMore, "continue ", "\x04").result, 1);
  EXPECT_EQ(atTerminal(askYesOrNo("Sure?"), "Sure?", "\x04").result, 0);
  EXPECT_EQ(atTerminal(askToContinue, "continue ", "\x04").result, 7);
}

TEST(Prompts, ShowBytesThatTheLocaleCannotDecode) {
  for (const char* locale : {"C", "C.UTF-8"}) {
    for (const std::string text : {"\xC3\x9C"
                                   "berschreiben? ",
                                   "\xFF\xFE? ", "\x80? "}) {
      const Prompt ask = [&] {
        return std::setlocale(LC_ALL, locale) == nullptr ? 9 : int{zn_lib::yesOrNo(text)};
      };
      const Answer answer = atTerminal(ask, "? ", "y\n");
      EXPECT_EQ(answer.result, 1) << locale << ' ' << text;
      EXPECT_EQ(answer.screen, text + "y\r\n") << locale;
    }
  }
}

TEST(Prompts, ShowTheirTextInTheCurrentLocale) {
  const std::string text = "\xC3\x9C? ";
  const Prompt askInThreeLocales = [&] {
    int result = 0;
    for (const char* locale : {"C.UTF-8", "C", "C.UTF-8"}) {
      if (std::setlocale(LC_ALL, locale) == nullptr) return 99;
      result = 10 * result + zn_lib::yesOrNo(text);
    }
    return result;
  };
  const Answer answer = atTerminal(askInThreeLocales, text, "y\nn\ny\n");
  EXPECT_EQ(answer.result, 101);
  EXPECT_EQ(answer.screen, text + "y\r\n" + text + "n\r\n" + text + "y\r\n");
}

// Ways in which a host may replace standard input between two prompts.
void closeInput() { close(STDIN_FILENO); }
void takeInputFromNowhere() { dup2(open("/dev/null", O_RDONLY), STDIN_FILENO); }
void takeInputFromPipe() {
  int ends[2];
  if (pipe(ends) != 0) _exit(98);
  writeAll(ends[1], "y\ny\n");
  close(ends[1]);
  dup2(ends[0], STDIN_FILENO);
}

TEST(Prompts, ReturnIfStandardInputIsNoLongerTheTerminal) {
  const struct {
    const char* what;
    void (*change)();
  } changes[] = {
      {"closed", closeInput}, {"/dev/null", takeInputFromNowhere}, {"a pipe", takeInputFromPipe}};
  const struct {
    const char* what;
    std::string prompt, screen;
  } prompts[] = {
      {"an invalid character", "\xFF? ", ""},
      {"an invalid character after a NUL", "\0\xFF? "s, ""},
      {"an invalid character before a NUL", "\xFF\0? "s, ""},
      {"empty", "", ""},
      {"valid characters", "Still there? ", "Still there? "},
  };
  for (const auto& change : changes) {
    for (const auto& c : prompts) {
      const Prompt askTwice = [&] {
        if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) return 99;
        const int first = zn_lib::yesOrNo("First? ");
        change.change();
        const int second = zn_lib::yesOrNo(c.prompt);
        return 10 * first + second;
      };
      const Answer answer = atTerminal(askTwice, "First? ", "y\n");
      EXPECT_EQ(answer.result, 10) << change.what << ", " << c.what << ": an empty answer";
      EXPECT_EQ(answer.screen, "First? y\r\n" + c.screen) << change.what << ", " << c.what;
    }
  }
}

/// Runs `prompt` and hangs up its terminal while it waits. Returns what `waitForExit` does.
int whenTheTerminalHangsUp(const Prompt& prompt, const std::string& shown) {
  constexpr unsigned deadline = 10;  // seconds
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    // Programs that nohup starts ignore the signal.
    std::signal(SIGHUP, SIG_DFL);
    alarm(deadline);
    _exit(prompt());
  }
  if (child < 0) {
    ADD_FAILURE() << "no pseudo-terminal is available (is /dev/pts mounted?)";
    return -1;
  }
  readUntil(terminal, shown);
  awaitEditing(terminal);
  close(terminal);
  return waitForExit(child);
}

TEST(Prompts, EndWhenTheTerminalHangsUp) {
  const Prompt ignoring = [] {
    std::signal(SIGHUP, SIG_IGN);
    return 10 + askMore();
  };
  EXPECT_EQ(whenTheTerminalHangsUp(ignoring, "continue "), 11) << "as at the end of input";
  EXPECT_EQ(whenTheTerminalHangsUp(askMore, "continue "), kSignalled + SIGHUP)
      << "by the default action";
}

struct PipedAnswer {
  int result;
  std::string out;
  std::string rest;  ///< the input that the prompt did not read
};

/// Runs `prompt` with `input` in a pipe as standard input.
PipedAnswer throughPipe(const Prompt& prompt, const std::string& input) {
  int in[2], out[2], rest[2];
  if (pipe(in) != 0 || pipe(out) != 0 || pipe(rest) != 0) {
    ADD_FAILURE() << "no pipe is available";
    return {-1, "", ""};
  }
  const pid_t child = fork();
  if (child == 0) {
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    for (const int* ends : {in, out}) close(ends[0]), close(ends[1]);
    close(rest[0]);
    const int result = prompt();
    writeAll(rest[1], readAll(STDIN_FILENO));
    _exit(result);
  }
  close(in[0]);
  close(out[1]);
  close(rest[1]);
  writeAll(in[1], input);
  close(in[1]);
  PipedAnswer answer{0, readAll(out[0]), readAll(rest[0])};
  close(out[0]);
  close(rest[0]);
  answer.result = waitForExit(child);
  return answer;
}

TEST(Prompts, ReadOneLineFromAPipe) {
  const struct {
    Prompt prompt;
    std::string input;
    int result;
    std::string rest;
  } cases[] = {
      {askMore, "quit\nnext\n", 0, "next\n"},
      {askMore, "\nq\n", 1, "q\n"},
      {askMore, "", 1, ""},
      {askMore, "q", 0, ""},
      {askYesOrNo("Sure? "), "yes\n", 1, ""},
      {askYesOrNo("Sure? "), "y", 1, ""},
      {askYesOrNo("Sure? "), "", 0, ""},
      {askYesOrNo("Sure? "), "\0y\nz"s, 0, "z"},
      {askYesOrNo("\xFF? "), "y\n", 1, ""},
      {askYesOrNo("Sure? "), std::string(1 << 20, 'y') + "\nz", 1, "z"},
      {askYesOrNo("Sure? "), std::string(1 << 20, 'y'), 1, ""},
      {askYesOrNo("Sure? "), "y\xFF\nz", 1, "z"},
      {askMore, "\xC3\x28q\n", 1, ""},
      {askToContinue, "x\ny\n", 7, "y\n"},
      {askToContinue, "", 7, ""},
  };
  for (const auto& c : cases) {
    const PipedAnswer answer = throughPipe(c.prompt, c.input);
    EXPECT_EQ(answer.result, c.result) << c.input.substr(0, 20);
    EXPECT_EQ(answer.rest, c.rest) << c.input.substr(0, 20);
    EXPECT_EQ(answer.out, "") << "libedit shows a prompt on terminals only";
  }
}

/// A buffer that is only written when it is flushed. `std::cout` has such a buffer in a host that
/// calls `sync_with_stdio(false)`.
class Unsynchronized : public std::stringbuf {
  int sync() override {
    writeAll(STDOUT_FILENO, str());
    str("");
    return 0;
  }
};

TEST(Prompts, FollowEarlierOutput) {
  const struct {
    const char* what;
    std::function<void()> print;
  } cases[] = {{"std::cout", [] { std::cout << "Before. "; }},
               {"std::printf", [] { std::printf("Before. "); }}};
  for (const auto& c : cases) {
    for (const std::string prompt : {"Sure? ", "\xFF? "}) {
      const Prompt ask = [&] {
        if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) return 99;
        Unsynchronized buffer;
        const RedirectedStream redirected(std::cout, &buffer);
        c.print();
        return int{zn_lib::yesOrNo(prompt)};
      };
      const Answer answer = atTerminal(ask, prompt, "y\n");
      EXPECT_EQ(answer.result, 1) << c.what << ' ' << prompt;
      EXPECT_EQ(answer.screen, "Before. " + prompt + "y\r\n") << c.what;
    }
  }
  const Prompt askQuietly = [] {
    Unsynchronized buffer;
    const RedirectedStream redirected(std::cout, &buffer);
    std::cout << "Before.";
    return zn_lib::more();
  };
  EXPECT_EQ(throughPipe(askQuietly, "q\n").out, "Before.") << "even if no prompt is shown";
}

TEST(Prompts, ReadInputThatTheStandardStreamHasNotBuffered) {
  const auto readLineThenAsk = [] {
    std::string line;
    std::getline(std::cin, line);
    return 10 * (line == "first") + zn_lib::yesOrNo("Sure? ");
  };
  const auto readByteByByte = [&] {
    std::setvbuf(stdin, nullptr, _IONBF, 0);
    return readLineThenAsk();
  };
  EXPECT_EQ(throughPipe(readLineThenAsk, "first\nyes\n").result, 10) << "the answer is lost";
  EXPECT_EQ(throughPipe(readByteByByte, "first\nyes\n").result, 11);
}

// A loop that prompts until std::cin fails therefore never ends.
TEST(Prompts, DoNotChangeTheStateOfTheStandardStream) {
  const Prompt untilTheStreamEnds = [] {
    constexpr int most = 50;
    int asked = 0;
    while (zn_lib::more() && std::cin && asked < most) ++asked;
    return asked;
  };
  EXPECT_EQ(throughPipe(untilTheStreamEnds, "x\n").result, 50);
  const Prompt whileTheAnswerIsYes = [] {
    int asked = 0;
    while (zn_lib::yesOrNo("Go on? ")) ++asked;
    return asked;
  };
  EXPECT_EQ(throughPipe(whileTheAnswerIsYes, "y\ny\n").result, 2);
}

void takeNoNotice(int) {}

TEST(Prompts, EndWithAnEmptyAnswerAtAHandledSignal) {
  const auto asking = [](void (*handler)(int)) {
    return [handler] {
      std::signal(SIGINT, handler);
      return askMore();
    };
  };
  const std::string interrupt = {'q', kInterrupt};
  EXPECT_EQ(atTerminal(asking(takeNoNotice), "continue ", interrupt).result, 1);
  EXPECT_EQ(atTerminal(asking(SIG_IGN), "continue ", interrupt).result, 1);
  EXPECT_EQ(atTerminal(asking(SIG_DFL), "continue ", interrupt).result, kSignalled + SIGINT);
}

TEST(Prompts, ResendASignalToTheWholeGroup) {
  // Another process of the group interrupts the prompt, and then waits for an interrupt itself.
  const Prompt ask = [] {
    std::signal(SIGINT, takeNoNotice);
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    const pid_t other = fork();
    if (other == 0) {
      sigprocmask(SIG_BLOCK, &interrupt, nullptr);
      awaitEditing(STDIN_FILENO);
      awaitSleep(getppid());
      kill(getppid(), SIGINT);
      constexpr timespec patience = {10, 0};
      _exit(sigtimedwait(&interrupt, nullptr, &patience) == SIGINT ? 7 : 8);
    }
    const int result = askMore();
    return 10 * result + waitForExit(other);
  };
  EXPECT_EQ(atTerminal(ask, "continue ", "", Editor::kTerminal).result, 17);
}

TEST(Prompts, ShowZeroWidthCharactersAsLibeditDoes) {
  const struct {
    std::string prompt, older, newer;
  } cases[] = {
      {"a\tb? ", "ab? ", "a\tb? "},
      {"a\nb? ", "ab? ", "a\r\nb? "},
      {"e\xCC\x81? ", "e? ", "e\xCC\x81? "},
      {"\x1b[31mStop? ", "[31mStop? ", "\x1b[31mStop? "},
      {"\1\x1b[31m\2Stop? ", "\x1b[31mStop? ", "\x1b[31mStop? "},
      {"Stop? \0Go? "s, "Stop? ", "Stop? "},
  };
  for (const auto& c : cases) {
    const Prompt ask = [&] {
      return std::setlocale(LC_ALL, "C.UTF-8") == nullptr ? 9 : int{zn_lib::yesOrNo(c.prompt)};
    };
    EXPECT_THAT(atTerminal(ask, "? ", "y\n").screen,
                testing::AnyOf(c.older + "y\r\n", c.newer + "y\r\n"));
  }
}

TEST(Prompts, StayHiddenIfTheFirstPromptHadNoTerminal) {
  const Prompt ask = [] {
    const int terminal = dup(STDIN_FILENO);
    takeInputFromPipe();
    const int first = zn_lib::yesOrNo("First? ");
    dup2(terminal, STDIN_FILENO);
    writeAll(STDOUT_FILENO, "ready\n");
    return 10 * first + zn_lib::yesOrNo("Sure? ");
  };
  const Answer answer = atTerminal(ask, "ready", "y\n", Editor::kTerminal);
  EXPECT_EQ(answer.result, 11);
  EXPECT_EQ(answer.screen.find('?'), std::string::npos) << answer.screen;
}

// libedit may drop bytes that it cannot decode, so either answer is correct.
TEST(Prompts, ReturnForInputThatTheLocaleCannotDecode) {
  for (const char* locale : {"C", "C.UTF-8"}) {
    for (const std::string typed : {"\xFFy", "\xC3\x28y", "\x80"}) {
      const Prompt ask = [&] {
        return std::setlocale(LC_ALL, locale) == nullptr ? 9 : int{zn_lib::yesOrNo("? ")};
      };
      EXPECT_LE(atTerminal(ask, "? ", typed + "\n").result, 1) << locale << ' ' << typed;
      EXPECT_LE(throughPipe(ask, typed + "\n").result, 1) << locale << ' ' << typed;
    }
  }
}

TEST(Prompts, TreatClosedStandardInputAsAnEmptyAnswer) {
  const auto closed = [](const Prompt& prompt) {
    return throughPipe([&] { return close(STDIN_FILENO), prompt(); }, "").result;
  };
  EXPECT_EQ(closed(askMore), 1);
  EXPECT_EQ(closed(askYesOrNo("Sure? ")), 0);
}

TEST(Prompts, IgnoreTheVerboseFlag) {
  const Prompt verbose = [] {
    zn_lib::setVerbose(true);
    return askMore();
  };
  EXPECT_EQ(atTerminal(verbose, "continue ", "q\n").screen,
            "Press Q to quit, any other key to continue q\r\n");
}

}  // namespace
