/// Compares messages, listings of errors and answers to prompts with plain reference models, for
/// any text and any standard input.
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/mman.h>
#include <sys/utsname.h>
#include <tokenizer.h>
#include <unistd.h>
#include <zn_error.h>
#include <zn_output.h>
#include <zn_platform.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

#include "captured_stream.h"
#include "fuzz_check.h"

namespace {

using fuzz::expectSame;

using Catalog = std::map<int, std::string, zn_lib::error_order>;

/// Expects that `run` writes `out` to standard output and `err` to standard error.
void expectWritten(const char* what, const std::string& out, const std::string& err,
                   const std::function<void()>& run) {
  CapturedStream actualOut(std::cout);
  CapturedStream actualErr(std::cerr);
  run();
  expectSame(what, actualOut.text(), out);
  expectSame(what, actualErr.text(), err);
}

std::string errorLine(const std::string& text) { return "ERROR: " + text + "\n"; }

void messages(const std::string& text) {
  const std::string cut = text.c_str();
  const bool isShown = zn_lib::isVerbose() && !text.empty();
  const auto shown = [isShown](const std::string& line) { return isShown ? line : ""; };
  expectWritten("display", shown(cut), "", [&] { zn_lib::display(text); });
  expectWritten("message", shown(cut + "\n"), "", [&] { zn_lib::message(text); });
  expectWritten("errorMessage", "", shown(errorLine(cut)), [&] { zn_lib::errorMessage(text); });
  expectWritten("processTitle", shown("[" + cut + "]\n"), "", [&] { zn_lib::processTitle(text); });
  expectWritten("debugMessage", "DEBUG: " + cut + "\n", "", [&] { zn_lib::debugMessage(text); });
}

void errors(FuzzedDataProvider& input) {
  Catalog catalog;
  const int id = input.ConsumeIntegral<int>();
  const int number = input.ConsumeBool() ? id : input.ConsumeIntegral<unsigned char>();
  while (input.remaining_bytes() > 0) {
    catalog[input.ConsumeIntegral<signed char>()] = input.ConsumeRandomLengthString(64);
  }
  const bool isShown = zn_lib::isVerbose();
  const std::string line(70, '-');
  std::ostringstream list;
  list << "Error list\n" << line << '\n';
  const std::map<int, std::string> sorted(catalog.begin(), catalog.end());
  for (const auto& [key, text] : sorted) list << key << ' ' << text.c_str() << '\n';
  list << line << '\n';
  expectWritten("showErrorList", isShown ? list.str() : "", "",
                [&] { zn_lib::showErrorList(catalog); });

  Catalog expected = catalog;
  const std::string text = "#" + std::to_string(number) + "\t" + expected[number].c_str();
  expectWritten("showErrorMessage", "", isShown ? errorLine(text) : "",
                [&] { zn_lib::showErrorMessage(catalog, number); });
  fuzz::expect("a missing number is added", catalog == expected);

  const std::string last = "System error #" + std::to_string(id) + ". " + std::strerror(id);
  expectWritten("systemError", "", isShown ? errorLine(last) : "", [&] {
    errno = id;
    zn_lib::systemError();
  });
}

/// Makes `bytes` the standard input.
void setInput(const std::string& bytes) {
  static const int file = memfd_create("input", 0);
  static const bool isRedirected = dup2(file, STDIN_FILENO) == STDIN_FILENO;
  fuzz::expect("standard input is redirected", isRedirected);
  const auto size = static_cast<off_t>(bytes.size());
  fuzz::expect("standard input is written",
               ftruncate(file, 0) == 0 && pwrite(file, bytes.data(), bytes.size(), 0) == size &&
                   lseek(file, 0, SEEK_SET) == 0);
}

/// Asks until the input ends. The answers are compared if the input is plain text, since libedit
/// treats other bytes by the rules of its version. There are no NULs among them: libedit reads
/// beyond the end of its copy of a line that contains one.
void prompts(const std::string& prompt, std::string answers) {
  std::replace(answers.begin(), answers.end(), '\0', '0');
  setInput(answers);
  const bool isPlain = std::all_of(answers.begin(), answers.end(),
                                   [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); });
  constexpr int mostPrompts = 8;
  std::size_t at = 0;
  for (int i = 0; i < mostPrompts; ++i) {
    const std::size_t end = std::min(answers.find('\n', at), answers.size());
    const char first = end > at ? answers[at] : '\0';
    bool isSame = true;
    switch (i % 3) {
      case 0:
        isSame = zn_lib::yesOrNo(prompt) == (first == 'y' || first == 'Y');
        break;
      case 1:
        isSame = zn_lib::more() == (first != 'q' && first != 'Q');
        break;
      default:
        zn_lib::pauseKey();
        break;
    }
    fuzz::expect("the answer", isSame || !isPlain);
    at = std::min(end + 1, answers.size());
  }
}

void numbers(int value) {
  std::ostringstream decimal, hexadecimal, octal, expected;
  decimal << std::hex << zn_lib::setDecimal << value;
  hexadecimal << zn_lib::setHexadecimal << value;
  octal << zn_lib::setOctal << value;
  expectSame("setDecimal", decimal.str(), std::to_string(value));
  char text[16];
  std::snprintf(text, sizeof text, "%#X", static_cast<unsigned>(value));
  expectSame("setHexadecimal", hexadecimal.str(), std::string(text));
  std::snprintf(text, sizeof text, "%#o", static_cast<unsigned>(value));
  expectSame("setOctal", octal.str(), std::string(text));

  const short low = static_cast<short>(value);
  expectSame("rotate2b", zn_lib::rotate2b(low), low);
  expectSame("rotate4b", zn_lib::rotate4b(static_cast<unsigned>(value)),
             static_cast<unsigned>(value));
  expectSame("IsBigEndian", zn_lib::IsBigEndian(), false);
}

void platform() {
  utsname system;
  fuzz::expect("uname", uname(&system) == 0);
  const std::string name = system.sysname;
  const std::string release = system.release;
  expectSame("getOSName", zn_lib::getOSName(), name);
  expectSame("getOSRelease", zn_lib::getOSRelease(), release);
  const std::string out =
      "Platform information\n------------------------------\n"
      "Name of OS          : " +
      name + "\nRelease level       : " + release + "\nHardware type       : " + system.machine +
      "\nName of network node: " + system.nodename + "\n";
  expectWritten("platformInfo", out, "",
                [] { fuzz::expect("its result", zn_lib::platformInfo()); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  const int group = input.ConsumeIntegralInRange(0, 9);
  zn_lib::setVerbose(input.ConsumeBool());
  switch (group) {
    case 0:
    case 1:
    case 2:
      messages(input.ConsumeRemainingBytesAsString());
      break;
    case 3:
    case 4:
      errors(input);
      break;
    case 5:
    case 6:
    case 7: {
      const std::string prompt = input.ConsumeRandomLengthString(size);
      prompts(prompt, input.ConsumeRemainingBytesAsString());
      break;
    }
    case 8:
      numbers(input.ConsumeIntegral<int>());
      break;
    default:
      platform();
      break;
  }
  return 0;
}
