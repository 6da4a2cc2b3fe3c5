// Messages: silent at first, then on standard output and standard error.
#include <zn_output.h>

int main() {
  // Nothing appears before a host turns the verbose flag on, error messages included.
  zn_lib::message("not shown");
  zn_lib::errorMessage("not shown either");

  // But for this one.
  zn_lib::debugMessage("always shown");

  zn_lib::setVerbose(true);
  zn_lib::processTitle("Copy");

  // display writes no newline, so that several calls build one line.
  zn_lib::display("3 files");
  zn_lib::display(", 2 directories");
  zn_lib::message(" copied");

  // Goes to standard error: ERROR: disk full
  zn_lib::errorMessage("disk full");
}
