// Keeps settings in a directory below the user's home directory.
#include <zn_dir.h>
#include <zn_file.h>
#include <zn_setcfg.h>

#include <iostream>
#include <string>

int main() {
  zn_lib::Configuration settings("TOOL", "tool");
  settings.path = "~/.config/tool";

  // createDir creates no parents and does not expand "~". It returns false if the directory exists.
  for (std::string directory : {"~/.config", "~/.config/tool"}) {
    zn_lib::checkHomePath(directory);
    zn_lib::createDir(directory);
  }

  // At the first start there is no file yet.
  settings.load();
  settings.set("colour", "TEXT", "blue", "Colour of the curve");

  // A full disk is not reported, so read the file again.
  const bool isWritten = settings.save();
  zn_lib::Configuration stored("TOOL", "tool");
  stored.path = settings.path;
  stored.load();
  if (!isWritten || stored.get("colour").value != settings.get("colour").value) {
    std::cerr << "Cannot save " << settings.getConfigurationFile() << '\n';
    return 1;
  }
  std::cout << stored.get("colour").describe << ": " << stored.get("colour").value << '\n';
}
