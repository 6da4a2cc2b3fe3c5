/// \file
/// Child processes.
///
///     zn_lib::childProcess("~/bin/report", "2026-06-01", true);   // runs it, waits for it to end
#ifndef ZN_PROCESS_H
#define ZN_PROCESS_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Runs `program` in a child process with the one argument `argument`, which is passed even when it
/// is empty. Returns 0, in every case in which it returns.
///
/// `program` loses its leading blanks, and its first "~" becomes the home directory
/// (`checkHomePath`). It must then name the file itself, since PATH is not searched: "/bin/ls", not
/// "ls". That path is the program's argument 0. Program and argument end at their first NUL.
///
/// A program that cannot be started - no such file, not executable, the argument too long - looks
/// like one that succeeded: the child ends with status 0, and no message appears.
///
/// When no child process can be created, the CALLING process ends at once with status 1, after the
/// error message "Cannot create subprocess" (verbose only): no exit handler runs, and output that
/// is still buffered is lost. In verbose mode the message flushes `std::cout` first.
///
/// With `wait`, the message "Waiting for child process #4242 to complete..." appears (verbose
/// only), and the call waits for one child of the process to end: ANY one. In a host with several
/// children it may reap another one, and return while `program` is still running. A signal ends the
/// wait early, the child unreaped, if its handler was installed without SA_RESTART. The program's
/// exit status is lost.
///
/// Without `wait` nothing is printed, and the child stays a zombie until the host reaps it with
/// `waitpid`.
///
/// Where the host ignores SIGCHLD, the system reaps all children by itself: with `wait`, the call
/// returns when ALL of them have ended, and without it no zombie stays.
///
/// The child shares the host's standard streams and its other descriptors that are not
/// close-on-exec. It writes none of the host's buffered output; flush what should stand before the
/// program's own. In verbose mode, the message about waiting flushes `std::cout` while the program
/// is running already.
ZN_UDF_API int childProcess(std::string program, const std::string& argument, bool wait);

}  // namespace zn_lib

#endif  // ZN_PROCESS_H
