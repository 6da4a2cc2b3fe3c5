// A child process, a shell command, and what machine this is.
#include <zn_platform.h>
#include <zn_process.h>
#include <zn_shell.h>

#include <iostream>

int main() {
  // The program shares our standard output. PATH is not searched; there is one argument.
  zn_lib::childProcess("/bin/echo", "written by a child process", true);

  // A program that cannot be started looks like one that succeeded.
  std::cout << "childProcess returns " << zn_lib::childProcess("/no/such/program", "", true)
            << '\n';

  // What the shell writes comes after what is flushed before it.
  std::cout << "sorted:" << std::endl;
  const bool isStarted = zn_lib::execShell("printf 'b\\na\\n' | sort; exit 3");

  // True although the command ended with status 3.
  std::cout << "execShell returns " << std::boolalpha << isStarted << '\n';

  if (zn_lib::getOSName() != "unknown") std::cout << "The system tells its name\n";
  std::cout << "Big-endian: " << zn_lib::IsBigEndian() << '\n';
}
