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

// The prompts ignore the verbose flag. Each reads one line with libedit's `readline`, which shows
// the prompt and lets the user edit when standard input is a terminal, and only reads when it is
// not. The first character of the answer counts, untrimmed, in either case; the rest is ignored.
// The end of input is an empty answer.

/// Asks `Press <Enter> to continue ` and waits for the line.
ZN_UDF_API void pauseKey();

/// Asks "Press Q to quit, any other key to continue ". False when the answer begins with q or Q,
/// else true, for an empty answer too.
ZN_UDF_API bool more();

/// Asks `prompt`, as given. True when the answer begins with y or Y, else false, for an empty
/// answer too.
ZN_UDF_API bool yesOrNo(const std::string& prompt);

}  // namespace zn_lib

#endif  // ZN_OUTPUT_H
