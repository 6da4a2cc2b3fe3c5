/// \file
/// \ingroup family_setcfg
/// Keeps settings in an XML file.
///
///     zn_lib::Configuration settings("TOOL", "tool");   // tool.cfg in the working directory
///     settings.load()                ->  true           // a missing file is not a failure
///     settings.set("colour", "blue");                   // a new key describes itself
///     settings.get("colour").value   ->  "blue"
///     settings.save()                ->  true
///
/// A store that was changed saves itself when it is destroyed. Each entry is a line of the file:
///
/// ```xml
/// <?xml version="1.0" encoding="UTF-8"?>
/// <CONFIGURATION type='TOOL'>
/// <UPDATE data_type='DATE' describe='Date of update in ISO9601'>2024-03-05 14:07:09</UPDATE>
/// <colour data_type='TEXT' describe='colour'>blue</colour>
/// </CONFIGURATION>
/// ```
///
/// Nothing is escaped, so keys must be XML names. A value with a bare "<" or "&", a description or
/// type with an apostrophe, or a key with whitespace makes the file malformed. The next `load` then
/// reads at most the beginning of that entry, and none of those that follow it, without a message.
/// The key "CONFIGURATION" is written but not read. The spelling "ISO9601" is fixed.
///
/// Only `listConfiguration` prints.
#ifndef ZN_SETCFG_H
#define ZN_SETCFG_H

#include <map>
#include <string>

#include "zn_common.h"
#include "zn_readxml.h"

// Event handlers have no virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace zn_lib {

/// Orders keys byte by byte as unsigned values, and a prefix before the longer key.
///
///     map_key<std::string>()("Size", "colour")  ->  true
template <class T>
struct ZN_UDF_API map_key {
  bool operator()(T a, T b) const;  ///< true for `a` before `b`
};

template <class T>
bool map_key<T>::operator()(T a, T b) const {
  return a < b;
}

extern template struct map_key<std::string>;

/// Stores one setting. `type` and `describe` are labels that the store keeps but does not
/// interpret.
class ZN_UDF_API ConfigElement {
 public:
  /// Creates an empty setting of the type "TEXT".
  ///
  ///     ConfigElement().type  ->  "TEXT"
  ConfigElement();

  std::string value;     ///< the value of the setting
  std::string type;      ///< the `data_type` in the file
  std::string describe;  ///< the description, for people
};

/// Maps keys to settings.
using config_map = std::map<std::string, ConfigElement, map_key<std::string>>;

extern template class XmlEvent<config_map>;

/// Fills a map of settings while a file is parsed. A handler is a value: its whole state is `data`,
/// `element` and `lastElement`, which a host may change between events.
///
/// Every element with attributes or text is a setting, at any depth, unless it is called
/// "CONFIGURATION". Its first attribute is the type and its second the description, whatever they
/// are called. Text that the parser delivers in pieces is joined, and each piece loses its leading
/// whitespace: "a &amp; b" is read as "a &b". With an XMLParser of your own, switch on the
/// callbacks for elements and for character data.
///
///     ConfigEvent handler;
///     const XML_Char* attributes[] = {"data_type", "NUMBER", nullptr};
///     handler.OnStartElement("size", attributes); handler.data["size"].type  ->  "NUMBER"
///     handler.OnCharacterData(" 7", 2); handler.data["size"].value           ->  "7"
///     handler.OnEndElement("size"); handler.element                          ->  ""
class ZN_UDF_API ConfigEvent final : public XmlEvent<config_map> {
 public:
  /// Creates a handler that has read nothing.
  ConfigEvent();

  /// Starts a setting, and stores it if there are attributes.
  void OnStartElement(const XML_Char* name, const XML_Char** attributes) override;

  /// Ends the element. Text of the enclosing element that follows is ignored.
  void OnEndElement(const XML_Char* name) override;

  /// Stores the value of a setting, or a piece of it.
  void OnCharacterData(const XML_Char* text, int length) override;

  /// Copies the settings read into `target`. They replace settings with the same key.
  ///
  ///     ConfigEvent handler;
  ///     handler.data["size"].value = "7";
  ///     config_map target;
  ///     handler.exportData(target); target["size"].value  ->  "7"
  void exportData(config_map& target);
};

extern template class ReadXml<ConfigEvent>;

/// Stores settings by key. Functions throw only when memory runs out; the destructor never throws.
class ZN_UDF_API Configuration {
 public:
  /// Creates an empty store of the type "SYSTEM" for the file "config.xml". Reads nothing.
  Configuration();

  /// Creates an empty store of the type `type` for the file `name` with the extension "cfg". Reads
  /// nothing.
  Configuration(const std::string& type, const std::string& name);

  /// Saves the store if it was changed. A failure is not reported.
  virtual ~Configuration();

  /// Reads the file into the store. Its settings replace those with the same keys; others stay. The
  /// type in the root element is not read.
  ///
  /// Returns false only if the store has no name. A malformed file adds the settings before the
  /// error, and a missing file adds none; the result is true.
  virtual bool load();

  /// Stores `element` under `key`. All three overloads remove leading and trailing whitespace from
  /// the key and keep its case.
  void set(const std::string& key, ConfigElement element);

  /// Stores `value` under `key`. A new key gets the type "TEXT" and itself as description; an
  /// existing key keeps its type and description. A key with whitespace around it counts as new, so
  /// the call overwrites the type and description of the trimmed key.
  void set(const std::string& key, const std::string& value);

  /// Stores a setting under `key`. Note the order: the type comes before the value.
  ///
  ///     Configuration other("TOOL", "other");
  ///     other.set("size", "NUMBER", "7", "Size in millimetres");
  ///     other.get("size").type  ->  "NUMBER"
  void set(const std::string& key, const std::string& type, const std::string& value,
           const std::string& describe);

  /// Returns a copy of the setting under the trimmed `key`. Returns an empty setting of the type
  /// "TEXT" if there is none.
  ///
  ///     settings.get(" colour ").value  ->  "blue"
  ///     settings.get("weight").value    ->  ""
  ConfigElement get(const std::string& key);

  /// Removes leading and trailing whitespace from `key`, and nothing else.
  ///
  ///     std::string key = " Size ";
  ///     settings.adjustKey(key); key  ->  "Size"
  void adjustKey(std::string& key);

  /// Returns the name of the file, or the empty text if `name` is empty.
  ///
  ///     settings.getConfigurationFile()  ->  "tool.cfg"
  std::string getConfigurationFile();

  /// Writes the file. If `backup` is set, the existing file becomes the backup, whose name ends in
  /// "~", and replaces an older one. A store without the key "UPDATE" gets it, with the current
  /// date and time; later saves leave it as it is.
  ///
  /// Returns false if the store has no name, or if the file can be neither replaced nor opened. The
  /// store and `changed` are then as they were. A failed write, such as on a full disk, is not
  /// reported: the result is true.
  ///
  /// The new text is written to a temporary file in the same directory, synced to the disk, and
  /// renamed. At every moment the file contains either the old settings or the new ones as a whole,
  /// even after a kill, a power cut or a failed write. The next save removes the temporary file of
  /// a killed save, if permissions allow.
  ///
  /// Before the renaming, the backup is created as a hard link to the old file. Where hard links
  /// are not possible, the old file is moved to the backup instead; a kill before the renaming then
  /// leaves only the backup.
  ///
  /// In the following cases `save` writes the text under the name of the file itself, without a
  /// temporary file. If `backup` is set, it first tries to move the old file to the backup. A kill
  /// or a full disk may leave part of the text:
  ///
  /// - the file is a symbolic link, a device or a mount point;
  /// - it belongs to another user and is in a sticky directory;
  /// - its directory accepts no new files, or is append-only;
  /// - its name is longer than about 220 bytes.
  ///
  /// The new file has the permissions of the one that it replaces, and its owner and group if the
  /// process may set them. A file that did not exist gets the default permissions.
  bool save();

  /// Prints descriptions and values as a table to standard output, whatever the verbose flag.
  ///
  ///     Configuration other("TOOL", "other");
  ///     other.set("size", "NUMBER", "7", "Size in millimetres");
  ///     other.listConfiguration();   // standard output:
  ///     //
  ///     // [ TOOL ]
  ///     // Description         Value
  ///     // -----------         -----
  ///     // Size in millimetres 7
  ///     //
  void listConfiguration();

  config_map elements;    ///< the settings
  std::string path;       ///< the directory of the file; empty by default
  std::string name;       ///< the base name of the file
  std::string extension;  ///< the extension of the file
  std::string type;       ///< the type of the store, written to the root element
  bool changed = false;   ///< set by `set`, cleared by `load` and `save`
  bool backup = true;     ///< whether `save` keeps the previous file as a backup
};

}  // namespace zn_lib

#pragma GCC diagnostic pop

#endif  // ZN_SETCFG_H
