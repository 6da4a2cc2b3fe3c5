/// A model of what a power cut leaves on the disk.
#ifndef DISK_MODEL_H
#define DISK_MODEL_H

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/uio.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tracee.h"

/// Model of the disk that holds the working directory of a process while that writes to it. A power
/// cut keeps the changes of the directory up to any one since it was synchronised. Of the bytes of
/// a file that were not synchronised, it keeps none, the first half or all. The process may also
/// use the absolute name of the directory.
class Disk {
 public:
  /// Starts with these files, which are on the disk.
  explicit Disk(const std::map<std::string, std::string>& files) {
    for (const auto& [name, text] : files) {
      directory_[name] = files_.size();
      files_.push_back({text, text});
    }
    atFirst_ = directory_;
  }

  /// Applies a system call that has returned.
  void apply(const CallTracer& tracer, const SystemCall& call) {
    if (call.result < 0) return;
    const auto& arguments = call.arguments;
    const auto text = [&](std::size_t i) { return nameHere(tracer.textAt(arguments[i])); };
    switch (call.number) {
#ifdef SYS_open
      case SYS_open:
        return open(text(0), arguments[1], call.result);
      case SYS_rename:
        return rename(text(0), text(1));
      case SYS_link:
        return link(text(0), text(1));
      case SYS_unlink:
        return unlink(text(0));
#endif
      case SYS_openat:
        return open(text(1), arguments[2], call.result);
#ifdef SYS_renameat
      case SYS_renameat:
#endif
      case SYS_renameat2:
        return rename(text(1), text(3));
      case SYS_linkat:
        return link(text(1), text(3));
      case SYS_unlinkat:
        return unlink(text(1));
      case SYS_write:
        return write(arguments[0],
                     tracer.bytesAt(arguments[1], static_cast<std::size_t>(call.result)));
      case SYS_writev:
        return writeParts(tracer, call);
      case SYS_ftruncate:
#ifdef SYS_ftruncate64
      case SYS_ftruncate64:
#endif
        return empty(arguments[0]);
      case SYS_fsync:
      case SYS_fdatasync:
        return sync(arguments[0]);
      case SYS_close:
        opened_.erase(arguments[0]);
        openedDirectories_.erase(arguments[0]);
        return;
      default:
        return;
    }
  }

  /// Returns the files as a process sees them.
  std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> all;
    for (const auto& [name, file] : directory_) all[name] = files_[file].written;
    return all;
  }

  /// Calls `look` with each state in which a power cut may now leave the disk.
  void forEachCut(
      const std::function<void(const std::map<std::string, std::string>&)>& look) const {
    Directory directory = atFirst_;
    for (std::size_t done = 0;; ++done) {
      std::map<std::string, std::string> state;
      forEachContent(directory.begin(), directory.end(), state, look);
      if (done == changes_.size()) return;
      changes_[done](directory);
    }
  }

 private:
  using Directory = std::map<std::string, std::size_t>;

  struct File {
    std::string onDisk;
    std::string written;
  };

  /// Returns the name as seen from the working directory, if the file is there.
  std::string nameHere(const std::string& name) const {
    if (name == here_) return ".";
    const std::string start = here_ + "/";
    return name.compare(0, start.size(), start) == 0 ? name.substr(start.size()) : name;
  }

  void change(const std::function<void(Directory&)>& change) {
    change(directory_);
    changes_.push_back(change);
  }

  void open(const std::string& name, unsigned long long flags, long long descriptor) {
    if (name == "." && (flags & O_DIRECTORY) != 0) {
      openedDirectories_.insert(static_cast<unsigned long long>(descriptor));
    }
    if (name.find('/') != std::string::npos || (flags & O_DIRECTORY) != 0) return;
    if (directory_.count(name) == 0) {
      files_.emplace_back();
      change([name, file = files_.size() - 1](Directory& entries) { entries[name] = file; });
    }
    const std::size_t file = directory_.at(name);
    opened_[static_cast<unsigned long long>(descriptor)] = file;
    if ((flags & O_TRUNC) != 0) files_[file] = File();
  }

  void rename(const std::string& from, const std::string& to) {
    change([from, to](Directory& entries) {
      if (entries.count(to) != 0 && entries.at(from) == entries.at(to)) return;
      entries[to] = entries.at(from);
      entries.erase(from);
    });
  }

  void link(const std::string& from, const std::string& to) {
    change([from, to](Directory& entries) { entries[to] = entries.at(from); });
  }

  void unlink(const std::string& name) {
    change([name](Directory& entries) { entries.erase(name); });
  }

  void write(unsigned long long descriptor, const std::string& bytes) {
    const auto file = opened_.find(descriptor);
    if (file != opened_.end()) files_[file->second].written += bytes;
  }

  void writeParts(const CallTracer& tracer, const SystemCall& call) {
    std::size_t left = static_cast<std::size_t>(call.result);
    for (std::size_t i = 0; i < call.arguments[2]; ++i) {
      iovec part;
      const std::string bytes = tracer.bytesAt(call.arguments[1] + i * sizeof(part), sizeof(part));
      std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(&part));
      const std::size_t size = std::min(left, part.iov_len);
      write(call.arguments[0],
            tracer.bytesAt(reinterpret_cast<unsigned long long>(part.iov_base), size));
      left -= size;
    }
  }

  /// No traced process truncates a file to another size than 0.
  void empty(unsigned long long descriptor) {
    const auto file = opened_.find(descriptor);
    if (file != opened_.end()) files_[file->second].written.clear();
  }

  void sync(unsigned long long descriptor) {
    if (openedDirectories_.count(descriptor) != 0) {
      atFirst_ = directory_;
      changes_.clear();
    }
    const auto file = opened_.find(descriptor);
    if (file != opened_.end()) files_[file->second].onDisk = files_[file->second].written;
  }

  void forEachContent(
      Directory::const_iterator entry, Directory::const_iterator end,
      std::map<std::string, std::string>& state,
      const std::function<void(const std::map<std::string, std::string>&)>& look) const {
    if (entry == end) return look(state);
    const auto& [onDisk, written] = files_[entry->second];
    const std::size_t half = (onDisk.size() + written.size()) / 2;
    for (const std::string& content :
         std::set<std::string>{onDisk, written.substr(0, half), written}) {
      state[entry->first] = content;
      forEachContent(std::next(entry), end, state, look);
    }
  }

  const std::string here_ = std::filesystem::current_path();
  std::vector<File> files_;
  Directory directory_;
  Directory atFirst_;  ///< at the last time when it was synchronised
  std::vector<std::function<void(Directory&)>> changes_;
  std::map<unsigned long long, std::size_t> opened_;
  std::set<unsigned long long> openedDirectories_;
};

#endif  // DISK_MODEL_H
