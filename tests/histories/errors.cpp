// Calls of the error catalogs and of their readers.
#include <zn_error.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <string>

#include "model_names.h"
#include "model_output.h"
#include "model_readers.h"
#include "pools.h"

namespace histories {
namespace {

using Catalog = std::map<int, std::string, zn_lib::error_order>;

std::map<int, std::string> messagesOf(const Catalog& catalog) {
  return {catalog.begin(), catalog.end()};
}

void readCatalog(Step& step) {
  const unsigned object = anyObject(step.choose);
  const std::string name = fileName(step.choose);
  std::map<int, std::string>& expected = step.world.model.catalogs[object];
  Catalog& actual = step.world.catalogs[object];
  step.call("readErrorFile", name, object);
  CatalogEvents events;
  readFile(step.world.model, name, events);
  for (const auto& [id, message] : events.data) expected[id] = message;
  step.same(true, zn_lib::readErrorFile(name, actual));
  step.same(expected, messagesOf(actual));
}

void readByReader(Step& step) {
  std::string name = fileName(step.choose);
  step.call("ReadXml<ErrorEvent>::parseFile", name);
  CatalogEvents events;
  const bool expected = readFile(step.world.model, name, events);
  zn_lib::ReadXml<zn_lib::ErrorEvent> reader;
  reader.setFileName(name);
  step.same(expected, reader.parseFile());
  step.same(events.data, messagesOf(reader.event->data));
}

void showMessage(Step& step) {
  const unsigned object = anyObject(step.choose);
  const int id = step.choose.one({1, 2, -3, 0, 7});
  std::map<int, std::string>& expected = step.world.model.catalogs[object];
  step.call("showErrorMessage", id, object);
  errorMessage(step.world.model, "#" + std::to_string(id) + "\t" + expected[id]);
  zn_lib::showErrorMessage(step.world.catalogs[object], id);
  step.same(expected, messagesOf(step.world.catalogs[object]));
}

void showList(Step& step) {
  const unsigned object = anyObject(step.choose);
  step.call("showErrorList", object);
  const std::string line = std::string(70, '-') + "\n";
  std::string text = "Error list\n" + line;
  for (const auto& [id, message] : step.world.model.catalogs[object]) {
    text += std::to_string(id) + " " + message.c_str() + "\n";
  }
  display(step.world.model, text + line);
  zn_lib::showErrorList(step.world.catalogs[object]);
}

void systemError(Step& step) {
  const int number = step.choose.one({ENOENT, 0, EACCES, EISDIR, 9999, -1});
  step.call("systemError", number);
  errorMessage(step.world.model,
               "System error #" + std::to_string(number) + ". " + std::strerror(number));
  errno = number;
  zn_lib::systemError();
}

void sendEvent(Step& step) {
  CatalogEvents& model = step.world.model.catalogEvents;
  zn_lib::ErrorEvent& own = step.world.catalogEvents;
  const std::string text =
      step.choose.one({"ERROR"s, "ID"s, "MESSAGE"s, " 7"s, "-12x"s, ""s, "4294967298"s, "x"s});
  const int length = static_cast<int>(text.size());
  switch (step.choose.below(5)) {
    case 0:
      step.call("ErrorEvent::OnStartElement", text);
      model.start(text, nullptr);
      own.OnStartElement(text.c_str(), nullptr);
      break;
    case 1:
      step.call("ErrorEvent::OnEndElement", text);
      model.end(text);
      own.OnEndElement(text.c_str());
      break;
    case 2:
      step.call("ErrorEvent::OnCharacterData", text, length);
      model.text(text.c_str(), length);
      own.OnCharacterData(text.c_str(), length);
      break;
    case 3: {
      step.call("ErrorEvent::exportData");
      Catalog target = {{7, "old"}, {-100, "old"}};
      std::map<int, std::string> expected = messagesOf(target);
      for (const auto& [id, message] : model.data) expected[id] = message;
      own.exportData(target);
      step.same(expected, messagesOf(target));
      break;
    }
    default:
      step.call("skipWhiteSpace", text, length);
      step.same(withoutIndentation(text.c_str(), length), own.skipWhiteSpace(text.c_str(), length));
  }
  step.same(model.tag, own.tag);
  step.same(model.id, own.id);
  step.same(model.message, own.message);
  step.same(model.data, messagesOf(own.data));
}

void compareNumbers(Step& step) {
  const int a = anyInt(step.choose);
  const int b = anyInt(step.choose);
  step.call("error_order", a, b);
  step.same(a < b, zn_lib::error_order()(a, b));
}

}  // namespace

void addErrors(Kinds& kinds) {
  kinds.push_back({"readErrorFile", readCatalog, 12});
  kinds.push_back({"ReadXml::ReadXml ReadXml::parseFile ReadXml::~ReadXml", readByReader, 4});
  kinds.push_back({"showErrorMessage", showMessage, 6});
  kinds.push_back({"showErrorList", showList, 4});
  kinds.push_back({"systemError", systemError, 3});
  kinds.push_back(
      {"ErrorEvent::OnStartElement ErrorEvent::OnEndElement "
       "ErrorEvent::OnCharacterData ErrorEvent::exportData XmlEvent::skipWhiteSpace "
       "ErrorEvent::ErrorEvent",
       sendEvent});
  kinds.push_back({"error_order::operator()", compareNumbers, 2});
}

}  // namespace histories
