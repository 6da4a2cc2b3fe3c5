/// \file
/// A store of settings, kept in an XML file.
///
///     zn_lib::Configuration settings("TOOL", "tool");   // tool.cfg in the working directory
///     settings.load();                                  // a missing file is no failure
///     settings.set("colour", "blue");
///     settings.get("colour").value                      ->  "blue"
///
/// The store saves itself when it is destroyed, if it was changed. Each entry is a line of the
/// file:
///
///     <?xml version="1.0" encoding="UTF-8"?>
///     <CONFIGURATION type='TOOL'>
///     <UPDATE data_type='DATE' describe='Date of update in ISO9601'>2024-03-05 14:07:09</UPDATE>
///     <colour data_type='TEXT' describe='colour'>blue</colour>
///     </CONFIGURATION>
///
/// Nothing is escaped. Keys must be XML names; a value with "<" or "&", a description or type with
/// an apostrophe, or a key with a blank makes a file whose entries from there on are lost to the
/// next `load`, without a message.
#ifndef ZN_SETCFG_H
#define ZN_SETCFG_H

#include <map>
#include <string>

#include "zn_common.h"
#include "zn_readxml.h"

namespace zn_lib {

/// The order of keys: byte by byte as unsigned values, a prefix before the longer key.
template <class T>
struct ZN_UDF_API map_key {
  bool operator()(T a, T b) const;  ///< true for `a` before `b`
};

template <class T>
bool map_key<T>::operator()(T a, T b) const {
  return a < b;
}

extern template struct map_key<std::string>;

/// One setting. `type` and `describe` are labels, which the store keeps and does not read.
class ZN_UDF_API ConfigElement {
 public:
  /// An empty value of the type "TEXT".
  ConfigElement();

  std::string value;     ///< what is set
  std::string type;      ///< the `data_type` in the file
  std::string describe;  ///< for people
};

/// The settings by key.
using config_map = std::map<std::string, ConfigElement, map_key<std::string>>;

extern template class XmlEvent<config_map>;

/// Fills a map of settings while a file is parsed. It is a value: all its state is `data`,
/// `element` and `lastElement`, which a host may change between events. Every element with
/// attributes or text is a setting, at any depth, but for those called "CONFIGURATION": its first
/// attribute is the type and its second the description, whatever they are called. Text that the
/// parser delivers in pieces is joined, each piece without its leading blanks: "a &amp; b" is read
/// as "a &b".
class ZN_UDF_API ConfigEvent final : public XmlEvent<config_map> {
 public:
  /// Nothing read.
  ConfigEvent();

  /// A setting, when there are attributes.
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override;

  /// No element is being read after it, not the enclosing one either.
  void OnEndElement(const XML_Char* name) override;

  /// The value of a setting, or a piece of it.
  void OnCharacterData(const XML_Char* text, int length) override;

  /// Copies each setting that was read into `target`, in place of one with the same key.
  void exportData(config_map& target);
};

extern template class ReadXml<ConfigEvent>;

/// The store. Nothing is thrown, except when memory runs out; the destructor does not throw at all.
class ZN_UDF_API Configuration {
 public:
  /// An empty store of the type "SYSTEM" in "config.xml".
  Configuration();

  /// An empty store of the given type, in the file `name` with the extension "cfg".
  Configuration(const std::string& type, const std::string& name);

  /// Saves the store if it was changed; whether that succeeded is not told.
  virtual ~Configuration();

  /// Reads the file into the store, in place of settings with the same keys; others stay. False
  /// only when the store has no name: a file that is missing or malformed adds what could be read
  /// of it. The root element's type is not read.
  virtual bool load();

  /// Stores a setting under `key` without leading and trailing blanks, as all three do. Keys keep
  /// their case.
  void set(const std::string& key, ConfigElement element);

  /// A new key gets the type "TEXT" and itself as description; one that is there keeps both. A key
  /// given with blanks around it counts as new: it overwrites type and description of the trimmed
  /// one.
  void set(const std::string& key, const std::string& value);

  /// Note the order: the type comes before the value.
  void set(const std::string& key, const std::string& type, const std::string& value,
           const std::string& describe);

  /// A copy of the setting under `key`, leading and trailing blanks aside; a fresh element where
  /// there is none.
  ConfigElement get(const std::string& key);

  /// Removes leading and trailing blanks, and nothing else.
  void adjustKey(std::string& key);

  /// The name of the file; empty when `name` is.
  std::string getConfigurationFile();

  /// Writes the file. With `backup`, the file that was there becomes the backup, whose name ends in
  /// "~", in place of an older one. A store without the key "UPDATE" gets it, with the current date
  /// and time; later saves leave it as it is.
  ///
  /// Returns false when the store has no name, or when the file can be neither replaced nor opened.
  /// The store and `changed` are then as they were. A failure in writing, such as a full disk, is
  /// not reported: the result is true.
  ///
  /// The new text is written beside the file, brought to the disk, and renamed. The file holds the
  /// old settings or the new ones as a whole at every moment, also after a kill, a power cut or a
  /// failure in writing. The next save removes what a killed one left beside the file, if it may.
  /// If the old file cannot get a second name, it is moved to the backup before the renaming; a
  /// kill in between leaves only the backup.
  ///
  /// In these cases `save` writes the file in place, after it has moved the old one to the backup
  /// if it can. A kill or a full disk may then leave a part of the text:
  ///
  /// - the file is a link, a device or a mount point;
  /// - it belongs to another user and lies in a sticky directory;
  /// - its directory takes no new files, or is append-only;
  /// - its name is longer than 220 bytes.
  ///
  /// The new file has the permissions of the one that it replaces, and its owner and group if the
  /// process may set them. A file that was not there gets the permissions of new files.
  bool save();

  /// Prints descriptions and values as a table to standard output, whatever the verbose flag.
  void listConfiguration();

  config_map elements;    ///< the settings
  std::string path;       ///< directory of the file; empty at first
  std::string name;       ///< its base name
  std::string extension;  ///< its extension
  std::string type;       ///< what the store is called
  bool changed = false;   ///< set by `set`, cleared by `load` and `save`
  bool backup = true;     ///< whether `save` keeps the previous file as a backup
};

}  // namespace zn_lib

#endif  // ZN_SETCFG_H
