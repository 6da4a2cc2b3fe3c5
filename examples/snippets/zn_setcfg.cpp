// Changes settings, has the store save itself, and reads them again.
#include <zn_setcfg.h>

#include <iostream>
#include <string>

int main() {
  {
    zn_lib::Configuration settings("TOOL", "tool");
    std::cout << settings.getConfigurationFile() << '\n';

    // There is no file yet, which is not a failure.
    settings.load();

    // A new key becomes its own description. Nothing is escaped, so values must not contain "<" or
    // "&".
    settings.set("colour", "blue");
    settings.set("size", "NUMBER", "7", "Size in millimetres");
  }

  // The store has saved itself. A second one reads the file.
  zn_lib::Configuration settings("TOOL", "tool");
  settings.load();
  const zn_lib::ConfigElement size = settings.get("size");
  std::cout << size.describe << ": " << size.value << " (" << size.type << ")\n";

  // A missing setting has an empty value, and reading it does not add it.
  std::cout << '"' << settings.get("weight").value << "\"\n";

  // The date of the first save is one of the settings.
  settings.set("UPDATE", "2024-03-05 14:07:09");
  settings.listConfiguration();
}
