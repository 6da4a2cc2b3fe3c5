/// Model of a file system: a tree of directories and files, as the calls of POSIX see it.
#ifndef HISTORIES_MODEL_FILES_H
#define HISTORIES_MODEL_FILES_H

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace histories {

/// A file or a directory. An open file keeps its node when the name is gone.
struct Node {
  bool isDirectory = false;
  std::string bytes;
  std::map<std::string, std::shared_ptr<Node>> entries;
  Node* parent = nullptr;  ///< of a directory; null at the top
};

using NodePointer = std::shared_ptr<Node>;

/// No name may lead above the top directory.
class Disk {
 public:
  /// Starts in a directory that contains nothing, which is the only one of the top directory.
  Disk();

  /// Returns what `name` leads to, or null.
  NodePointer find(const std::string& name) const;
  bool exists(const std::string& name) const { return find(name) != nullptr; }

  /// Opens a file as `fopen` does in the modes "r", "w" and "a". Returns null if that fails.
  NodePointer openForReading(const std::string& name) const { return find(name); }
  NodePointer openForWriting(const std::string& name, bool append);

  /// As the C functions of these names. Each returns whether it succeeds.
  bool remove(const std::string& name);
  bool rename(const std::string& from, const std::string& to);
  bool makeDirectory(const std::string& name);
  bool changeDirectory(const std::string& name);

  /// Removes everything but the working directory and those above it.
  void keepOnlyWorkingDirectory();

  /// Returns how many directories are above the working directory.
  int depth() const;

  /// Returns all files below the top directory: the bytes of each by its name, and "/" for each
  /// directory.
  std::map<std::string, std::string> contents() const;

 private:
  struct Place {
    Node* directory = nullptr;     // null if there is no such directory
    std::string name;              // of the entry; may be ".", ".." or missing in `directory`
    NodePointer node;              // null if there is no such entry
    bool mustBeDirectory = false;  // a slash follows the name
  };

  Place placeOf(const std::string& name) const;
  NodePointer share(Node* directory) const;

  NodePointer top_;
  Node* working_;
};

}  // namespace histories

#endif  // HISTORIES_MODEL_FILES_H
