#include "world.h"

#include <unistd.h>
#include <zn_datetime.h>
#include <zn_output.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace {

std::time_t now = 0;

}  // namespace

/// Replaces the C library's function, so that histories give the same answers at any time.
extern "C" __attribute__((visibility("default"))) std::time_t time(std::time_t* result) noexcept {
  if (result != nullptr) *result = now;
  return now;
}

namespace histories {
namespace {

constexpr std::time_t kFirstTime = 1709647629;  // 2024-03-05 14:07:09 UTC

/// Returns the bytes of a file, in one piece: histories read many files.
std::string bytesOf(const std::filesystem::path& name) {
  const std::ifstream in(name, std::ios_base::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

/// Returns what is in `top` and below, in the form of `Disk::contents`.
std::map<std::string, std::string> contentsOf(const std::string& top) {
  std::map<std::string, std::string> all;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
    const std::string name = entry.path().string().substr(top.size() + 1);
    all[name] = entry.is_directory() ? "/" : bytesOf(entry.path());
  }
  return all;
}

/// Returns a number that changes with each byte of the text (FNV-1a).
std::uint64_t digest(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  return hash;
}

/// Returns the entries in which `one` differs from `other`.
std::map<std::string, std::string> difference(const std::map<std::string, std::string>& one,
                                              const std::map<std::string, std::string>& other) {
  std::map<std::string, std::string> rest;
  for (const auto& [name, bytes] : one) {
    const auto same = other.find(name);
    if (same == other.end() || same->second != bytes) rest[name] = bytes;
  }
  return rest;
}

/// Returns the directory for files that need not last. A save waits for the disk, which takes most
/// of the time of a history on a real one.
std::filesystem::path quickDirectory() {
  const std::filesystem::path memory = "/dev/shm";
  return access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

std::optional<std::string> valueOfHome() {
  const char* const home = std::getenv("HOME");
  return home == nullptr ? std::nullopt : std::optional<std::string>(home);
}

}  // namespace

std::time_t clockTime() { return now; }
void setClock(std::time_t time) { now = time; }

World::World()
    : directory_(quickDirectory()), home_(valueOfHome()), out_(std::cout), err_(std::cerr) {
  now = kFirstTime;
  setenv("HOME", model.home.c_str(), 1);
  zn_lib::setVerbose(false);
  const zn_lib::date_time_set zero{};
  zn_lib::setDateTimeFormat(zero.dateFormat, zero.monthFormat, '\0', '\0', '\0', false);
  std::filesystem::create_directory(directory_.file("work"));
  if (chdir(directory_.file("work").c_str()) != 0) throw std::runtime_error("no directory");
  for (unsigned i = 0; i < kObjects; ++i) {
    readers[i] = std::make_unique<zn_lib::ReadFile>();
    writers[i] = std::make_unique<zn_lib::WriteFile>();
    tokenizers[i] = std::make_unique<zn_lib::Tokenizer>();
    parsers[i] = std::make_unique<ParserUnderTest>();
    days[i].julian = 211813488000000;  // 2000
    days[i].latitude = 0;
  }
}

World::~World() {
  // A changed store saves itself.
  stores.clear();
  std::filesystem::current_path(before_);
  if (home_) setenv("HOME", home_->c_str(), 1);
}

Step World::make(const Kinds& kinds, Chooser& choose) {
  unsigned sum = 0;
  for (const Kind& kind : kinds) sum += kind.weight;
  unsigned at = choose.below(sum);
  const Kind* kind = kinds.data();
  for (; at >= kind->weight; ++kind) at -= kind->weight;

  Step step(*this, choose);
  step.kind = static_cast<std::size_t>(kind - kinds.data());
  kind->make(step);
  const std::string out = out_.text();
  const std::string err = err_.text();
  if (!out.empty() || !model.out.empty()) {
    step.add("prints " + shown(model.out), "prints " + shown(out), !step.printsOfThisMachine);
  }
  if (!err.empty() || !model.err.empty()) {
    step.add("complains " + shown(model.err), "complains " + shown(err));
  }
  model.out.clear();
  model.err.clear();
  if (step.hasTouchedFiles) {
    const auto expected = model.disk.contents();
    const auto actual = contentsOf(directory_.path());
    if (showsFiles) {
      char files[32];
      std::snprintf(files, sizeof files, "files %016llx",
                    static_cast<unsigned long long>(digest(shown(actual))));
      step.answer += std::string(step.answer.empty() ? "" : " ") + files;
    }
    if (expected != actual) {
      step.expected += " files " + shown(difference(expected, actual));
      step.actual += " files " + shown(difference(actual, expected));
    }
  }
  return step;
}

}  // namespace histories
