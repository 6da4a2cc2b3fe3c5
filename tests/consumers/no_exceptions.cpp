// A host that is compiled without exceptions. It prints the elements of an XML file, which it reads
// with an event handler of its own.
#include <zn_readxml.h>

#include <iostream>
#include <string>

namespace {

class Elements final : public zn_lib::XmlEvent<std::string> {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char**) override {
    std::cout << "element " << name << '\n';
  }
  void OnCharacterData(const XML_Char* text, int length) override {
    data += skipWhiteSpace(text, length);
  }
};

}  // namespace

int main(int argc, char** argv) {
  zn_lib::ReadXml<Elements> reader;
  std::string name = argc > 1 ? argv[1] : "";
  reader.setFileName(name);
  if (!reader.parseFile()) return 1;
  std::cout << "text " << reader.event->data << '\n';
}
