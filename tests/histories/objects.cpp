// Calls of the file objects, which stay open while other calls change their files.
#include <algorithm>
#include <cstring>
#include <string>

#include "model_names.h"
#include "model_output.h"
#include "pools.h"

namespace histories {
namespace {

// Streams read in blocks of different sizes. A host reads single lines of shorter files only, which
// every stream takes in one block.
constexpr std::size_t kOneBlock = 4000;

template <class Object>
void setName(Object& object, const std::string& name) {
  const reference::Parts parts = reference::split(name);
  object.path = parts.path;
  object.name = parts.name;
  object.extension = parts.extension;
}

/// Reads one character, or returns -1 at the end of the file.
int next(ModelReader& reader) {
  if (reader.buffer.empty() && !reader.file->isDirectory) {
    const std::string& bytes = reader.file->bytes;
    reader.buffer = bytes.substr(std::min(reader.at, bytes.size()));
    reader.at += reader.buffer.size();
  }
  if (reader.buffer.empty()) return -1;
  const int c = static_cast<unsigned char>(reader.buffer[0]);
  reader.buffer.erase(0, 1);
  return c;
}

void nameReader(Step& step) {
  const unsigned object = anyObject(step.choose);
  zn_lib::ReadFile& own = *step.world.readers[object];
  ModelReader& model = step.world.model.readers[object];
  std::string name = fileName(step.choose);
  step.call("setFileName" + std::to_string(object), name);
  setName(model, name);
  own.setFileName(name);
  step.same(fullName(step.world.model, model), own.getFileName());
}

void openReader(Step& step) {
  const unsigned object = anyObject(step.choose);
  zn_lib::ReadFile& own = *step.world.readers[object];
  ModelReader& model = step.world.model.readers[object];
  own.binary = step.choose.flag();
  step.call("ReadFile::fileOpen" + std::to_string(object), fullName(step.world.model, model));
  if (model.file != nullptr) {
    model.hasFailed = true;
  } else {
    model.file = step.world.model.disk.openForReading(fullName(step.world.model, model));
    model.hasFailed = model.file == nullptr;
    if (model.file != nullptr) model.hasEnded = false;
    model.at = 0;
    model.buffer.clear();
  }
  step.same(model.file != nullptr, own.fileOpen());
  step.same(model.hasFailed, own.file.fail());
}

void readLine(Step& step) {
  const unsigned object = anyObject(step.choose);
  zn_lib::ReadFile& own = *step.world.readers[object];
  ModelReader& model = step.world.model.readers[object];
  step.call("std::getline" + std::to_string(object));
  if (model.file == nullptr || model.file->isDirectory || model.file->bytes.size() > kOneBlock ||
      model.hasFailed || model.hasEnded) {
    return;
  }
  std::string expected;
  int c;
  while ((c = next(model)) >= 0 && c != '\n') expected += static_cast<char>(c);
  model.hasEnded = c < 0;
  model.hasFailed = c < 0 && expected.empty();
  std::string actual;
  std::getline(own.file, actual);
  step.same(expected, actual);
}

void cat(Step& step) {
  constexpr std::size_t longestLine = 1023;
  const unsigned object = anyObject(step.choose);
  zn_lib::ReadFile& own = *step.world.readers[object];
  ModelReader& model = step.world.model.readers[object];
  step.call("cat" + std::to_string(object));
  const bool isOpen = model.file != nullptr;
  while (isOpen && !model.hasEnded && !model.hasFailed) {
    std::string line;
    int c = 0;
    while (line.size() < longestLine && (c = next(model)) >= 0 && c != '\n') {
      line += static_cast<char>(c);
    }
    if (line.size() == longestLine) {
      // The line may end here all the same.
      c = next(model);
      if (c >= 0 && c != '\n') {
        model.buffer.insert(0, 1, static_cast<char>(c));
        model.hasFailed = true;
      }
    }
    model.hasEnded = c < 0;
    if (c < 0 && line.empty()) model.hasFailed = true;
    step.world.model.out += std::string(line.c_str()) + "\n";
  }
  step.same(isOpen, own.cat());
}

void closeReader(Step& step) {
  const unsigned object = anyObject(step.choose);
  std::unique_ptr<zn_lib::ReadFile>& own = step.world.readers[object];
  ModelReader& model = step.world.model.readers[object];
  if (step.choose.flag()) {
    step.call("~ReadFile" + std::to_string(object));
    model = ModelReader();
    own = std::make_unique<zn_lib::ReadFile>();
    step.same(false, own->binary);
    step.same("", own->getFileName());
  } else {
    step.call("ReadFile::fileClose" + std::to_string(object));
    model.file = nullptr;
    own->fileClose();
  }
  step.same(false, own->file.is_open());
}

void nameWriter(Step& step) {
  const unsigned object = anyObject(step.choose);
  zn_lib::WriteFile& own = *step.world.writers[object];
  ModelWriter& model = step.world.model.writers[object];
  std::string name = fileName(step.choose);
  step.call("setFileName" + std::to_string(object), name);
  setName(model, name);
  own.setFileName(name);
  step.same(fullName(step.world.model, model), own.getFileName());
}

void openWriter(Step& step) {
  const unsigned object = anyObject(step.choose);
  zn_lib::WriteFile& own = *step.world.writers[object];
  ModelWriter& model = step.world.model.writers[object];
  const std::string name = fullName(step.world.model, model);
  own.append = model.append = step.choose.flag();
  if (step.choose.flag()) own.overwrite = model.overwrite = false;
  step.call("WriteFile::fileOpen" + std::to_string(object), name, model.append, model.overwrite);
  step.touchesFiles();
  if (model.append) {
    model.overwrite = true;
  } else if (!model.overwrite && step.world.model.disk.exists(name)) {
    errorMessage(step.world.model, "File name exists");
  }
  if (model.file != nullptr) {
    model.hasFailed = true;
  } else {
    model.file = step.world.model.disk.openForWriting(name, model.append);
    model.hasFailed = model.file == nullptr;
    model.isAppending = model.append;
    model.at = 0;
  }
  step.same(model.file != nullptr, own.fileOpen());
  step.same(model.hasFailed, own.file.fail());
  step.same(model.overwrite, own.overwrite);
}

void writeText(Step& step) {
  const unsigned object = anyObject(step.choose);
  zn_lib::WriteFile& own = *step.world.writers[object];
  ModelWriter& model = step.world.model.writers[object];
  const std::string text = contents(step.choose);
  step.call("write" + std::to_string(object), text);
  step.touchesFiles();
  if (model.file == nullptr && !text.empty()) model.hasFailed = true;
  if (model.file != nullptr && !model.hasFailed && !text.empty()) {
    std::string& bytes = model.file->bytes;
    if (model.isAppending) model.at = bytes.size();
    // Another call may have emptied the file. Zeros take the place of what was before.
    bytes.resize(std::max(bytes.size(), model.at + text.size()));
    bytes.replace(model.at, text.size(), text);
    model.at += text.size();
  }
  own.file.write(text.data(), static_cast<std::streamsize>(text.size()));
  own.file.flush();
  step.same(model.hasFailed, own.file.fail());
}

void closeWriter(Step& step) {
  const unsigned object = anyObject(step.choose);
  std::unique_ptr<zn_lib::WriteFile>& own = step.world.writers[object];
  ModelWriter& model = step.world.model.writers[object];
  step.touchesFiles();
  if (step.choose.flag()) {
    step.call("~WriteFile" + std::to_string(object));
    model = ModelWriter();
    own = std::make_unique<zn_lib::WriteFile>();
    step.same(false, own->append);
    step.same(true, own->overwrite);
    step.same("", own->getFileName());
  } else {
    step.call("WriteFile::fileClose" + std::to_string(object));
    model.file = nullptr;
    own->fileClose();
    step.same(model.hasFailed, own->file.fail());
  }
  step.same(false, own->file.is_open());
}

}  // namespace

void addFileObjects(Kinds& kinds) {
  kinds.push_back({"FileName::setFileName FileName::getFileName", nameReader});
  kinds.push_back({"ReadFile::fileOpen", openReader, 12});
  kinds.push_back({"", readLine});
  kinds.push_back({"ReadFile::cat", cat});
  kinds.push_back(
      {"ReadFile::fileClose ReadFile::ReadFile ReadFile::~ReadFile "
       "FileName::FileName FileName::~FileName",
       closeReader, 5});
  kinds.push_back({"FileName::setFileName", nameWriter});
  kinds.push_back({"WriteFile::fileOpen", openWriter, 10});
  kinds.push_back({"", writeText, 12});
  kinds.push_back(
      {"WriteFile::fileClose WriteFile::WriteFile WriteFile::~WriteFile", closeWriter, 5});
}

}  // namespace histories
