// Reads an XML file into a map with a handler of the host's own.
#include <zn_readxml.h>

#include <fstream>
#include <iostream>
#include <map>
#include <string>

namespace {

// Counts the elements of each name.
class CountEvent final : public zn_lib::XmlEvent<std::map<std::string, int>> {
 public:
  // An exception such as std::bad_alloc may leave this function. parseFile then throws it.
  void OnStartElement(const XML_Char* name, const XML_Char**) override { ++data[name]; }
};

}  // namespace

int main() {
  std::ofstream("menu.xml") << "<menu><tea/><cake/><tea/></menu>";

  zn_lib::ReadXml<CountEvent> reader;
  std::string name = "menu.xml";
  reader.setFileName(name);

  // The result is true if the file could be opened, whatever its contents.
  if (!reader.parseFile()) return 1;
  for (const auto& [element, count] : reader.event->data) {
    std::cout << element << ' ' << count << '\n';
  }
}
