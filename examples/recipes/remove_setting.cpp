// Removes a setting from the store and from its file.
#include <zn_setcfg.h>

#include <iostream>

int main() {
  zn_lib::Configuration settings("TOOL", "tool");
  settings.set("colour", "blue");
  settings.set("size", "7");
  settings.save();

  // A store that is destroyed saves itself only if `changed` is set.
  if (settings.elements.erase("colour") > 0) settings.changed = true;
  const bool isWritten = settings.save();

  // `load` only adds settings, so read the file into a new store. The backup, tool.cfg~, still
  // contains the colour.
  zn_lib::Configuration stored("TOOL", "tool");
  stored.load();
  if (!isWritten || stored.elements.size() != settings.elements.size()) {
    std::cerr << "Cannot save " << settings.getConfigurationFile() << '\n';
    return 1;
  }

  // UPDATE is the date of the first save.
  for (const auto& [key, setting] : stored.elements) std::cout << key << '\n';
}
