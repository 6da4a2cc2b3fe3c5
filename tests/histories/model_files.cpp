#include "model_files.h"

#include <algorithm>
#include <iterator>

namespace histories {
namespace {

constexpr std::size_t kLongestName = 255;

void collect(const Node& directory, const std::string& prefix,
             std::map<std::string, std::string>& all) {
  for (const auto& [name, node] : directory.entries) {
    all[prefix + name] = node->isDirectory ? "/" : node->bytes;
    if (node->isDirectory) collect(*node, prefix + name + "/", all);
  }
}

NodePointer makeNode(Node* parent, bool isDirectory) {
  const auto node = std::make_shared<Node>();
  node->isDirectory = isDirectory;
  if (isDirectory) node->parent = parent;
  return node;
}

bool isDots(const std::string& name) { return name == "." || name == ".."; }

}  // namespace

Disk::Disk() : top_(makeNode(nullptr, true)) {
  const NodePointer work = makeNode(top_.get(), true);
  top_->entries["work"] = work;
  working_ = work.get();
}

NodePointer Disk::share(Node* directory) const {
  if (directory->parent == nullptr) return top_;
  for (const auto& entry : directory->parent->entries) {
    if (entry.second.get() == directory) return entry.second;
  }
  return nullptr;
}

Disk::Place Disk::placeOf(const std::string& name) const {
  const std::string text = name.c_str();  // system calls read up to the first NUL
  Place place;
  if (text.empty()) return place;
  place.directory = working_;
  place.node = share(working_);
  place.name = ".";
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t slash = std::min(text.find('/', at), text.size());
    const std::string part = text.substr(at, slash - at);
    at = slash + 1;
    if (part.empty()) continue;
    if (place.node == nullptr || !place.node->isDirectory || part.size() > kLongestName) {
      return {};
    }
    Node* const directory = place.node.get();
    place.directory = directory;
    place.name = part;
    if (part == ".") {
      place.node = share(directory);
    } else if (part == "..") {
      place.node = share(directory->parent);
    } else {
      const auto entry = directory->entries.find(part);
      place.node = entry == directory->entries.end() ? nullptr : entry->second;
    }
  }
  place.mustBeDirectory = text.back() == '/';
  return place;
}

NodePointer Disk::find(const std::string& name) const {
  const Place place = placeOf(name);
  if (place.node != nullptr && place.mustBeDirectory && !place.node->isDirectory) return nullptr;
  return place.node;
}

NodePointer Disk::openForWriting(const std::string& name, bool append) {
  const Place place = placeOf(name);
  if (place.directory == nullptr || place.mustBeDirectory) return nullptr;
  if (place.node == nullptr) {
    return place.directory->entries[place.name] = makeNode(place.directory, false);
  }
  if (place.node->isDirectory) return nullptr;
  if (!append) place.node->bytes.clear();
  return place.node;
}

bool Disk::remove(const std::string& name) {
  const Place place = placeOf(name);
  if (place.node == nullptr || isDots(place.name)) return false;
  if (place.mustBeDirectory && !place.node->isDirectory) return false;
  if (!place.node->entries.empty()) return false;
  place.directory->entries.erase(place.name);
  return true;
}

bool Disk::rename(const std::string& from, const std::string& to) {
  const Place source = placeOf(from);
  const Place target = placeOf(to);
  if (source.node == nullptr || target.directory == nullptr) return false;
  if (isDots(source.name) || isDots(target.name)) return false;
  const bool isDirectory = source.node->isDirectory;
  if ((source.mustBeDirectory || target.mustBeDirectory) && !isDirectory) return false;
  for (const Node* above = target.directory; above != nullptr; above = above->parent) {
    if (above == source.node.get()) return false;
  }
  if (target.node == source.node) return true;
  if (target.node != nullptr) {
    if (target.node->isDirectory != isDirectory || !target.node->entries.empty()) return false;
  }
  source.directory->entries.erase(source.name);
  target.directory->entries[target.name] = source.node;
  if (isDirectory) source.node->parent = target.directory;
  return true;
}

bool Disk::makeDirectory(const std::string& name) {
  const Place place = placeOf(name);
  if (place.directory == nullptr || place.node != nullptr) return false;
  place.directory->entries[place.name] = makeNode(place.directory, true);
  return true;
}

bool Disk::changeDirectory(const std::string& name) {
  const NodePointer node = find(name);
  if (node == nullptr || !node->isDirectory) return false;
  working_ = node.get();
  return true;
}

void Disk::keepOnlyWorkingDirectory() {
  const Node* kept = nullptr;
  for (Node* node = working_; node != nullptr; node = node->parent) {
    for (auto entry = node->entries.begin(); entry != node->entries.end();) {
      entry = entry->second.get() == kept ? std::next(entry) : node->entries.erase(entry);
    }
    kept = node;
  }
}

int Disk::depth() const {
  int depth = 0;
  for (const Node* node = working_; node->parent != nullptr; node = node->parent) ++depth;
  return depth;
}

std::map<std::string, std::string> Disk::contents() const {
  std::map<std::string, std::string> all;
  collect(*top_, "", all);
  return all;
}

}  // namespace histories
