/// \file
/// \ingroup family_process
/// Runs shell commands.
///
///     zn_lib::execShell("sort names.txt > sorted.txt")  ->  true
///     zn_lib::execShell("exit 3")                       ->  true
#ifndef ZN_SHELL_H
#define ZN_SHELL_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Runs `command`, up to its first NUL, in the system's shell and waits for it to end.
///
/// Returns true if the shell could be started. The command's exit status is never examined, so the
/// result is also true for the empty command and for one that fails or does not exist. With glibc
/// it is true even for a command that is longer than the system accepts (128 KiB on Linux) and
/// therefore does not run.
///
/// Returns false after printing a line to standard error, whatever the verbose flag and without
/// "ERROR: ":
///
/// | Line | Reason |
/// | --- | --- |
/// | No command processor available | there is no shell, or it cannot be started |
/// | Problem executing command | the status of the shell is not available |
///
/// The result is always false in a process that ignores SIGCHLD, since the system then reaps the
/// shell itself. With glibc, the command does not run in such a process.
///
/// The shell shares the host's standard streams, so flush any output that must precede the
/// command's. While the command runs, the host ignores SIGINT and SIGQUIT and blocks SIGCHLD.
ZN_UDF_API bool execShell(std::string command);

}  // namespace zn_lib

#endif  // ZN_SHELL_H
