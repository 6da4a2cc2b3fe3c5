#include "zn_writefile.h"

#include "internal/files.h"
#include "zn_output.h"

namespace zn_lib {

WriteFile::WriteFile() = default;

WriteFile::~WriteFile() {
  try {
    fileClose();
  } catch (...) {
    // The stream throws if the host enabled its exceptions. A destructor cannot report the failure.
  }
}

bool WriteFile::fileOpen() {
  const std::string name = getFileName();
  if (append) {
    overwrite = true;
  } else if (!overwrite && internal::exists(name)) {
    errorMessage("File name exists");
  }
  file.open(name, append ? std::ios_base::app : std::ios_base::trunc);
  return file.is_open();
}

void WriteFile::fileClose() {
  if (!file.is_open()) return;
  file.flush();
  file.close();
}

}  // namespace zn_lib
