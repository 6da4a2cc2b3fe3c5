/// \file
/// Shell commands.
///
///     zn_lib::execShell("sort names.txt > sorted.txt")  ->  true
///     zn_lib::execShell("exit 3")                       ->  true
#ifndef ZN_SHELL_H
#define ZN_SHELL_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Runs `command`, up to its first NUL, in the system's shell and waits for it to end. True when
/// the shell could be started. The command's own exit status is never examined: a command that
/// fails, or does not exist, gives true as well, and so do the empty one and, with glibc, one that
/// is longer than the system passes on (Linux: 128 KiB), which does not run.
///
/// False after a line on standard error, whatever the verbose flag and without "ERROR: ":
///
///     No command processor available     there is no shell, or it cannot be started
///     Problem executing command          how the shell ended cannot be told
///
/// A process that ignores SIGCHLD always gets false, since the end of the shell is then hidden from
/// it.
///
/// The shell shares the host's standard streams; flush what should stand before the command's own
/// output. While it runs, the host ignores SIGINT and SIGQUIT and holds SIGCHLD back.
ZN_UDF_API bool execShell(std::string command);

}  // namespace zn_lib

#endif  // ZN_SHELL_H
