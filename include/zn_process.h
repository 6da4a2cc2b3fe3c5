/// \file
/// \ingroup family_process
/// Runs programs in child processes.
///
///     zn_lib::childProcess("/bin/echo", "done", true)  ->  0   // standard output: done
#ifndef ZN_PROCESS_H
#define ZN_PROCESS_H

#include <string>

#include "zn_common.h"

namespace zn_lib {

/// Runs `program` in a child process with one argument, `argument`, which is passed even if it is
/// empty. The return value is always 0.
///
/// The leading whitespace of `program` is removed, and its first "~" becomes the home directory
/// (see `checkHomePath`). The result must be the path of the program, "/bin/ls" rather than "ls",
/// since PATH is not searched. The path is also the program's argument 0. Program and argument end
/// at their first NUL.
///
/// If the program cannot be started, the child ends with status 0 and prints no message, as if the
/// program had succeeded. Examples are a missing file, a file that is not executable, and an
/// argument that is too long.
///
/// If no child process can be created, the CALLING process prints the error message "Cannot create
/// subprocess" (in verbose mode only) and ends at once with status 1. No exit handler runs, and
/// buffered output is lost. In verbose mode the message flushes `std::cout` first.
///
/// If `wait` is true, the call prints the message "Waiting for child process #4242 to complete..."
/// (in verbose mode only) and waits for one child of the process to end: ANY one. In a host with
/// several children it may reap another child and return while `program` is still running. A signal
/// whose handler was installed without SA_RESTART ends the wait early and leaves the child
/// unreaped. The program's exit status is lost.
///
/// If `wait` is false, nothing is printed. Once the program has ended, the child remains a zombie
/// until the host reaps it with `waitpid`.
///
/// If the host ignores SIGCHLD, the system reaps all children itself. A call with `wait` then
/// returns when ALL of them have ended, and a call without it leaves no zombie.
///
/// The child shares the host's standard streams and its other descriptors that are not
/// close-on-exec. It does not write the host's buffered output, so flush any output that must
/// precede the program's. In verbose mode, the message about waiting flushes `std::cout` while the
/// program is already running.
///
/// On Linux, starting the program takes the same time in a host of any size: the child uses the
/// host's memory until it runs the program, and the calling thread is suspended until then.
/// Handlers of `pthread_atfork` do not run.
ZN_UDF_API int childProcess(std::string program, const std::string& argument, bool wait);

}  // namespace zn_lib

#endif  // ZN_PROCESS_H
