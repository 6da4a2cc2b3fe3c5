/// \file
/// Console output and prompts.
///
///     zn_lib::setVerbose(true);
///     zn_lib::message("3 files copied");   // standard output: 3 files copied
///     zn_lib::errorMessage("disk full");   // standard error:  ERROR: disk full
///
/// One process-wide flag, off by default, decides whether the library's own messages appear at all,
/// error messages included. It has no lock: set it once, at the start. Texts end at their first
/// NUL. "A line" is the text, a newline and a flush of the stream.
#ifndef ZN_OUTPUT_H
#define ZN_OUTPUT_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Turns the verbose flag on or off. Nothing in the library calls this.
ZN_UDF_API void setVerbose(bool on);

/// The verbose flag; false until `setVerbose(true)`.
ZN_UDF_API bool isVerbose();

/// When verbose and `text` is not empty: writes the text alone to standard output, without newline
/// or flush, so that several calls build one line.
ZN_UDF_API void display(const std::string& text);

/// When verbose and `text` is not empty: writes it as a line to standard output.
ZN_UDF_API void message(const std::string& text);

/// When verbose and `text` is not empty: writes "ERROR: " and the text as a line to standard error.
ZN_UDF_API void errorMessage(const std::string& text);

/// Always, whatever the flag, and for an empty text too: writes "DEBUG: " and the text as a line to
/// standard output.
ZN_UDF_API void debugMessage(const std::string& text);

/// When verbose and `text` is not empty: writes the text in square brackets as a line to standard
/// output.
ZN_UDF_API void processTitle(const std::string& text);

// The prompts ignore the verbose flag. Each one flushes `std::cout` and reads one line with
// libedit's `readline`. At a terminal, libedit shows the prompt and lets the user edit the line.
// Elsewhere it only reads. The first character of the answer counts, untrimmed; the rest of it is
// ignored. The end of input is an empty answer, and so is input that cannot be read.
//
// What a prompt shows: it ends at its first NUL. An older libedit, such as that of Debian 12, leaves
// out tabs, line breaks, all other control characters and combining marks, so that "\x1b[31mStop?"
// shows as "[31mStop?"; that of Debian 13 writes them as they are. Both send what stands between a
// byte 1 and a byte 2 to the terminal: "\1\x1b[31m\2Stop?" shows in red. A prompt that the current
// locale cannot decode is written as it is, at a terminal only.
//
// Where the answer comes from: libedit looks at standard input once, at the first prompt. If that
// is a terminal and standard input is none later, prompts then read nothing and get an empty
// answer. If it is no terminal, libedit shows no prompt later either, but reads the line.
//
// Prompts read the descriptor and never change the state of `std::cin`. What `std::cin` has read
// ahead does not reach them: after `std::getline` on a pipe, the next prompt may meet the end of
// input at once. A host that uses both calls `std::setvbuf(stdin, nullptr, _IONBF, 0)` before it
// reads, and leaves `std::cin` synchronized with the C library.
//
// Signals: at a terminal, libedit catches SIGINT, SIGQUIT, SIGTERM, SIGHUP and SIGTSTP. It resets
// the terminal and sends the signal again, to the whole process group: the other processes of the
// group get it once more. If the host handles or ignores the signal, the prompt ends with an empty
// answer, so that `more` is true after a handled Ctrl-C. A signal that libedit does not catch ends
// the prompt in the same way if its handler was installed without SA_RESTART. Where standard input
// is no terminal, it catches none.

/// Asks `Press <Enter> to continue ` and waits for the line.
ZN_UDF_API void pauseKey();

/// Asks "Press Q to quit, any other key to continue ". False when the answer begins with q or Q,
/// else true, for an empty answer too: a loop that only `more` ends does not end with the input.
ZN_UDF_API bool more();

/// Asks `prompt`, as given. True when the answer begins with y or Y, else false, for an empty
/// answer too.
ZN_UDF_API bool yesOrNo(const std::string& prompt);

}  // namespace zn_lib

#endif  // ZN_OUTPUT_H
