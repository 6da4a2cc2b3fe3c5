/// Model of the XML readers and of the parser binding: expat alone.
#ifndef HISTORIES_MODEL_XML_H
#define HISTORIES_MODEL_XML_H

#include <expat.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace histories {

struct Setting {
  std::string value;
  std::string type = "TEXT";
  std::string describe;
};

std::string shown(const Setting& setting);

/// Returns the text of a callback without its leading whitespace. It ends at its first NUL.
std::string withoutIndentation(const char* text, int length);

/// What a reader of settings does at each event.
struct SettingsEvents {
  std::map<std::string, Setting> data;
  std::string element, lastElement;

  void start(const std::string& name, const XML_Char** attributes);
  void end(const std::string& name);
  void text(const XML_Char* bytes, int length);
};

/// What a reader of error catalogs does at each event.
struct CatalogEvents {
  std::map<int, std::string> data;
  std::string tag, message;
  int id = 0;

  void start(const std::string& name, const XML_Char** attributes);
  void end(const std::string& name);
  void text(const XML_Char* bytes, int length);
};

/// Lets expat read `bytes` in the blocks in which the library reads a file.
void readBy(SettingsEvents& events, const std::string& bytes);
void readBy(CatalogEvents& events, const std::string& bytes);

}  // namespace histories

#endif  // HISTORIES_MODEL_XML_H
