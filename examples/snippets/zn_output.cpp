// Prints messages, first in quiet mode and then in verbose mode.
#include <zn_output.h>

int main() {
  // No messages appear before a host turns the verbose flag on, error messages included.
  zn_lib::message("not shown");
  zn_lib::errorMessage("not shown either");

  // debugMessage ignores the flag.
  zn_lib::debugMessage("always shown");

  zn_lib::setVerbose(true);
  zn_lib::processTitle("Copy");

  // display writes no newline, so several calls can build one line.
  zn_lib::display("3 files");
  zn_lib::display(", 2 directories");
  zn_lib::message(" copied");

  // To standard error: ERROR: disk full
  zn_lib::errorMessage("disk full");
}
