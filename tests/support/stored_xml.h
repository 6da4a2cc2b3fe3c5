/// Settings files and error catalogs as XML.
#ifndef STORED_XML_H
#define STORED_XML_H

#include <zn_error.h>
#include <zn_setcfg.h>

#include <map>
#include <string>

using Catalog = std::map<int, std::string, zn_lib::error_order>;

/// Returns value, type and description of a setting as one text.
inline std::string fieldsOf(const zn_lib::ConfigElement& element) {
  return element.value + "|" + element.type + "|" + element.describe;
}

/// Returns the fields of each setting by its key.
inline std::map<std::string, std::string> fieldsOf(const zn_lib::config_map& elements) {
  std::map<std::string, std::string> fields;
  for (const auto& [key, element] : elements) fields[key] = fieldsOf(element);
  return fields;
}

/// Returns the file that a store of this type saves. Every text in it ends at its first NUL.
inline std::string xmlOf(const std::string& type, const zn_lib::config_map& elements) {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION type='";
  xml.append(type.c_str()).append("'>\n");
  for (const auto& [key, element] : elements) {
    xml.append("<").append(key.c_str());
    xml.append(" data_type='").append(element.type.c_str());
    xml.append("' describe='").append(element.describe.c_str());
    xml.append("'>").append(element.value.c_str());
    xml.append("</").append(key.c_str()).append(">\n");
  }
  return xml + "</CONFIGURATION>\n";
}

/// Returns the file that `store` saves.
inline std::string xmlOf(const zn_lib::Configuration& store) {
  return xmlOf(store.type, store.elements);
}

/// Returns one error of a catalog, in the form that is read without loss.
inline std::string errorXml(const std::string& id, const std::string& message) {
  return "<ERROR><ID>" + id + "</ID><MESSAGE>" + message + "</MESSAGE></ERROR>";
}

/// Returns a document type for documents with the root `root`. It declares the entities a to i,
/// each of which but the first refers to its predecessor a hundred times.
inline std::string entityBomb(const std::string& root) {
  std::string xml = "<!DOCTYPE " + root + " [<!ENTITY a '" + std::string(1000, 'x') + "'>";
  for (char c = 'b'; c < 'j'; ++c) {
    xml += std::string("<!ENTITY ") + c + " '";
    for (int i = 0; i < 100; ++i) xml += std::string("&") + static_cast<char>(c - 1) + ";";
    xml += "'>";
  }
  return xml + "]>";
}

#endif  // STORED_XML_H
