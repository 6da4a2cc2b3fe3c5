#include "output.h"

#include <zn_file.h>
#include <zn_output.h>
#include <zn_seqfile.h>

#include <filesystem>
#include <iostream>
#include <system_error>

#include "errors.h"
#include "text.h"

namespace almanac {
namespace {

bool isFile(const std::string& name) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(name, ignored);
}

/// Moves an existing file to its backup, or asks the user whether to overwrite it.
void clear(const std::string& name, bool backUp) {
  if (backUp) {
    if (!zn_lib::createBackup(name)) throw Error(Problem::kCannotBackUp, {quote(name)});
  } else if (!zn_lib::yesOrNo(quote(name) + " exists. Overwrite it (y/n)? ")) {
    throw Error(Problem::kKept, {quote(name)});
  }
}

}  // namespace

OutputFile::OutputFile(const std::string& name, const Existing& existing) {
  std::string wanted = name;
  out_.setFileName(wanted);
  name_ = out_.getFileName();
  if (existing.number && isFile(name_)) {
    zn_lib::sequentialFile(name_);
    out_.setFileName(name_);
    std::cout << name_ << '\n';
  }
  if (isFile(name_)) clear(name_, existing.backUp);
  if (!out_.fileOpen()) throw Error(Problem::kCannotOpen, {quote(name_), systemReason()});
}

void OutputFile::close() {
  out_.fileClose();
  if (!out_.file) throw Error(Problem::kCannotWrite, {quote(name_)});
  zn_lib::message("Wrote " + quote(name_));
}

}  // namespace almanac
