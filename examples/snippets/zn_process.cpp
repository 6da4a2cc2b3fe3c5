// Runs a child process and a shell command, and describes the machine.
#include <zn_platform.h>
#include <zn_process.h>
#include <zn_shell.h>

#include <iostream>

int main() {
  // The program shares our standard output and receives one argument. PATH is not searched.
  zn_lib::childProcess("/bin/echo", "written by a child process", true);

  // A program that cannot be started is not reported.
  std::cout << "childProcess returns " << zn_lib::childProcess("/no/such/program", "", true)
            << '\n';

  // The flush puts our output before that of the shell.
  std::cout << "sorted:" << std::endl;
  const bool isStarted = zn_lib::execShell("printf 'b\\na\\n' | sort; exit 3");

  // The result is true although the command ended with status 3.
  std::cout << "execShell returns " << std::boolalpha << isStarted << '\n';

  if (zn_lib::getOSName() != "unknown") std::cout << "The system has a name\n";
  std::cout << "Big-endian: " << zn_lib::IsBigEndian() << '\n';
}
