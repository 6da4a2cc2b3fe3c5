// A plugin that links one major version of the library. ZN_UDF_TEST_ANSWER names its function.
#include <zn_file.h>
#include <zn_str.h>

#include <string>

namespace {

// Its virtual table refers to the library's.
class Name : public zn_lib::FileName {};

}  // namespace

extern "C" void ZN_UDF_TEST_ANSWER(std::string& answer) {
  std::string text = "name";
  Name name;
  name.setFileName(text);
  answer = zn_lib::stringToUpper("text") + ", " + name.getFileName();
}
