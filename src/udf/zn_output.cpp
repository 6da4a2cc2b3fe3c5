#include "zn_output.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#if __has_include(<editline/readline.h>)
#include <editline/readline.h>
#else  // FreeBSD's base system
#include <edit/readline/readline.h>
#endif

#include "internal/text.h"

namespace zn_lib {
namespace {

bool verbose_;

bool isShown(const std::string& text) { return verbose_ && !text.empty(); }

/// Returns true if the bytes of `prompt` are valid characters in the C library's current locale.
bool isDecodable(const std::string& prompt) {
  // ASCII is valid in every locale.
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::all_of(prompt.begin(), prompt.end(), isAscii)) return true;
  return std::mbstowcs(nullptr, prompt.c_str(), 0) != static_cast<std::size_t>(-1);
}

/// Reads one line and returns its first character in upper case, or NUL for an empty answer and at
/// the end of input.
char promptForKey(std::string prompt) {
  // libedit writes to the C library's `stdout`, which has its own buffer.
  std::cout.flush();
  // libedit crashes on a prompt that it cannot decode, such as UTF-8 in a program that never called
  // setlocale. If its first prompt was at a terminal, it crashes even if standard input is no
  // longer one.
  if (!isDecodable(prompt)) {
    if (isatty(STDIN_FILENO) != 0) {
      std::fputs(prompt.c_str(), stdout);
      std::fflush(stdout);
    }
    prompt.clear();
  }
  char* const line = readline(prompt.c_str());
  if (line == nullptr) return '\0';
  const char first = internal::toUpper(*line);
  std::free(line);
  return first;
}

}  // namespace

void setVerbose(bool on) { verbose_ = on; }

bool isVerbose() { return verbose_; }

// Texts end at their first NUL. The library's inserter for strings would end them there too, but
// copies them.

void display(const std::string& text) {
  if (isShown(text)) std::cout << text.c_str();
}

void message(const std::string& text) {
  if (isShown(text)) std::cout << text.c_str() << std::endl;
}

void errorMessage(const std::string& text) {
  if (isShown(text)) std::cerr << "ERROR: " << text.c_str() << std::endl;
}

void debugMessage(const std::string& text) { std::cout << "DEBUG: " << text.c_str() << std::endl; }

void processTitle(const std::string& text) {
  if (isShown(text)) std::cout << '[' << text.c_str() << ']' << std::endl;
}

void pauseKey() { promptForKey("Press <Enter> to continue "); }

bool more() { return promptForKey("Press Q to quit, any other key to continue ") != 'Q'; }

bool yesOrNo(const std::string& prompt) { return promptForKey(prompt) == 'Y'; }

}  // namespace zn_lib
