// Refuses a malformed settings file, so that no save discards its remaining contents.
#include <zn_setcfg.h>
#include <zn_xmlparser.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

// Returns the message and the position of the first error in the file, or the empty text.
std::string errorIn(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file.is_open()) return "";  // a store without a file is new
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  if (file.bad()) return "cannot be read";
  XMLEvtHandler nothing;
  XMLParser parser(&nothing);
  if (!parser.Create("UTF-8", nullptr)) return "cannot be checked";
  if (parser.Parse(text.data(), text.size(), true)) return "";
  return "line " + std::to_string(parser.GetCurrentLineNumber()) + ": " + parser.GetErrorString();
}

}  // namespace

int main() {
  std::ofstream("tool.cfg") << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                               "<CONFIGURATION type='TOOL'>\n"
                               "<colour data_type='TEXT' describe='colour'>blue</colour>\n"
                               "<name data_type='TEXT' describe='name'>Tom & Ann</name>\n"
                               "</CONFIGURATION>\n";

  const std::string error = errorIn("tool.cfg");
  if (!error.empty()) {
    std::cout << "tool.cfg, " << error << '\n';
    return 0;  // a real program returns 1
  }
  zn_lib::Configuration settings("TOOL", "tool");
  settings.load();
  std::cout << settings.get("colour").value << '\n';
}
