/// \file
/// \ingroup family_output
/// Prints messages and prompts on the console.
///
///     zn_lib::setVerbose(true);
///     zn_lib::message("3 files copied");   // standard output: 3 files copied
///     zn_lib::errorMessage("disk full");   // standard error:  ERROR: disk full
///
/// One process-wide flag decides whether messages appear, the library's own and error messages
/// included. It is off by default. It has no lock, so set it once, at the start. Texts end at their
/// first NUL. "As a line" means with a newline and a flush of the stream.
#ifndef ZN_OUTPUT_H
#define ZN_OUTPUT_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Turns the verbose flag on or off. The library never calls this function.
///
///     setVerbose(true); isVerbose()  ->  true
ZN_UDF_API void setVerbose(bool on);

/// Returns the verbose flag.
ZN_UDF_API bool isVerbose();

/// Writes `text` to standard output if the verbose flag is on. There is no newline and no flush, so
/// several calls can build one line.
///
///     display("3 files"); display(", 2 directories");   // standard output: 3 files, 2 directories
ZN_UDF_API void display(const std::string& text);

/// Writes `text` as a line to standard output if the verbose flag is on and `text` is not empty.
///
///     message("3 files");   // standard output: 3 files
ZN_UDF_API void message(const std::string& text);

/// Writes "ERROR: " and `text` as a line to standard error if the verbose flag is on and `text` is
/// not empty.
///
///     errorMessage("disk full");   // standard error: ERROR: disk full
ZN_UDF_API void errorMessage(const std::string& text);

/// Writes "DEBUG: " and `text` as a line to standard output, whatever the verbose flag and even if
/// `text` is empty.
///
///     debugMessage("x = 3");   // standard output: DEBUG: x = 3
ZN_UDF_API void debugMessage(const std::string& text);

/// Writes `text` in square brackets as a line to standard output if the verbose flag is on and
/// `text` is not empty.
///
///     processTitle("Copy");   // standard output: [Copy]
ZN_UDF_API void processTitle(const std::string& text);

/// \file
/// All prompts ignore the verbose flag. Each one flushes `std::cout` and reads one line with
/// libedit's `readline`. At a terminal, libedit shows the prompt, and the user can edit the line.
/// Elsewhere it only reads the line. Only the first character of the answer counts, and it is not
/// trimmed. The end of input and a failed read count as an empty answer.
///
/// Text of the prompt: it ends at its first NUL. An older libedit, such as that of Debian 12, omits
/// tabs, line breaks, other control characters and combining marks: "\x1b[31mStop?" appears as
/// "[31mStop?". The libedit of Debian 13 writes them unchanged. Both versions send the text between
/// a byte 1 and a byte 2 to the terminal unchanged: "\1\x1b[31m\2Stop?" appears in red. A prompt
/// that the current locale cannot decode is written unchanged, and only at a terminal.
///
/// Redirected input: libedit checks only at the first prompt whether standard input is a terminal.
/// If it is, and standard input is redirected from a file or pipe later, the later prompts read
/// nothing and get an empty answer. If it is not, all prompts read their line but are never shown.
///
/// `std::cin`: prompts read from the descriptor and never change the state of `std::cin`. They miss
/// input that `std::cin` has already buffered: after `std::getline` on a pipe, the next prompt may
/// meet the end of input at once. If you use both, call `std::setvbuf(stdin, nullptr, _IONBF, 0)`
/// before the first read, and leave `std::cin` synchronized with the C library.
///
/// Signals: at a terminal, libedit catches SIGINT, SIGQUIT, SIGTERM, SIGHUP and SIGTSTP. It resets
/// the terminal and sends the signal again to the whole process group, so the other processes of
/// the group get it a second time. If the host handles or ignores the signal, the prompt ends with
/// an empty answer; `more` is therefore true after a handled Ctrl-C. Any other signal ends the
/// prompt in the same way if its handler was installed without SA_RESTART. If standard input is not
/// a terminal, libedit catches no signal.

/// Asks `Press <Enter> to continue ` and waits for a line.
///
///     pauseKey();   // returns at the end of input, too
ZN_UDF_API void pauseKey();

/// Asks "Press Q to quit, any other key to continue ". Returns false if the answer begins with q or
/// Q, and true otherwise. An empty answer is also true, so `while (more())` continues at the end
/// of input.
///
///     more()  ->  true   // at the end of input
ZN_UDF_API bool more();

/// Asks `prompt`, exactly as given. Returns true if the answer begins with y or Y, and false
/// otherwise. An empty answer is also false.
///
///     yesOrNo("Overwrite? ")  ->  false   // at the end of input
ZN_UDF_API bool yesOrNo(const std::string& prompt);

}  // namespace zn_lib

#endif  // ZN_OUTPUT_H
