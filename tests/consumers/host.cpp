// A host that uses a function of most families, with the library's own object for XML among them.
#include <tokenizer.h>
#include <zn_common.h>
#include <zn_datetime.h>
#include <zn_daylength.h>
#include <zn_file.h>
#include <zn_ip.h>
#include <zn_setcfg.h>
#include <zn_str.h>
#include <zn_xmlparser.h>

#include <iostream>

namespace {

class Elements : public XMLEvtHandler {
 public:
  void OnStartElement(const XML_Char* name, const XML_Char**) override {
    std::cout << "element " << name << '\n';
  }
};

}  // namespace

int main() {
  std::cout << "version " << zn_udf_1VersionNumber << '\n';
  std::cout << zn_lib::stringToUpper("text") << '\n';
  std::cout << zn_lib::Tokenizer("a,b,c", ",").tokens.size() << " tokens\n";
  std::string name = "dir/name.txt";
  std::cout << "extension " << zn_lib::splitFileName(name).extension << '\n';
  zn_lib::DayLength day;
  day.julian = zn_lib::dateToJulian("2024-06-21");
  day.latitude = 52.37;
  std::cout << zn_lib::julianToISO(day.julian) << ' ' << zn_lib::hourFormat(day.compute()) << '\n';
  zn_lib::IPv4 address;
  std::cout << (address.set("10.0.0.1") ? address.text() : "refused") << '\n';
  zn_lib::Configuration settings("HOST", "");
  settings.set("key", "value");
  settings.changed = false;
  std::cout << settings.get("key").value << '\n';
  Elements elements;
  XMLParser parser(&elements);
  parser.Create(nullptr, nullptr);
  parser.EnableStartElementHandler(true);
  parser.Parse("<root><leaf/></root>", true);
}
