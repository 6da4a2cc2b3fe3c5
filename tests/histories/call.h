/// Histories: random sequences of calls of the library, each compared with a model.
///
/// A call is the list of the decisions that it takes: which function, which of the names in a small
/// pool, which flag. A random source takes them, or a recorded list does; decisions beyond its end
/// are 0, and every list is a possible call. A failing history is therefore shortened by leaving
/// out calls and by making decisions smaller, without knowing what they decide.
#ifndef HISTORIES_CALL_H
#define HISTORIES_CALL_H

#include <cstddef>
#include <initializer_list>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "shown.h"

namespace histories {

using Decisions = std::vector<unsigned>;

/// The decisions of one call, which are taken at random or repeated.
class Chooser {
 public:
  explicit Chooser(std::mt19937_64& random) : random_(&random) {}
  explicit Chooser(Decisions recorded) : decisions_(std::move(recorded)) {}

  /// Returns a number below `limit`. No expression uses two of them, since compilers evaluate
  /// arguments in different orders.
  unsigned below(unsigned limit) {
    if (random_ != nullptr) {
      decisions_.push_back(static_cast<unsigned>((*random_)() % limit));
    } else if (at_ == decisions_.size()) {
      decisions_.push_back(0);
    }
    return decisions_[at_++] % limit;
  }

  bool flag() { return below(2) == 1; }

  template <class T>
  T one(std::initializer_list<T> all) {
    return *(all.begin() + below(static_cast<unsigned>(all.size())));
  }

  template <class T>
  const T& one(const std::vector<T>& all) {
    return all[below(static_cast<unsigned>(all.size()))];
  }

  const Decisions& decisions() const { return decisions_; }

 private:
  std::mt19937_64* random_ = nullptr;
  Decisions decisions_;
  std::size_t at_ = 0;
};

class World;

/// One call while it is made.
class Step {
 public:
  Step(World& of, Chooser& by) : world(of), choose(by) {}

  World& world;
  Chooser& choose;

  /// Says which function is called with which arguments.
  template <class... Arguments>
  void call(const std::string& function, const Arguments&... arguments) {
    text = function + "(";
    [[maybe_unused]] const char* separator = "";
    ((text += separator + shown(arguments), separator = ", "), ...);
    text += ")";
  }

  /// Compares a part of the answer with what the model says.
  template <class Expected, class Actual>
  void same(const Expected& byModel, const Actual& byLibrary) {
    add(shown(byModel), shown(byLibrary));
  }

  /// As `same`, for results that differ between machines or file systems.
  template <class Expected, class Actual>
  void sameHere(const Expected& byModel, const Actual& byLibrary) {
    add(shown(byModel), shown(byLibrary), false);
  }

  /// Has the files compared after this call.
  void touchesFiles() { hasTouchedFiles = true; }

  std::size_t kind = 0;          ///< the index of the kind of call
  std::string text;              ///< the call as source code
  std::string expected, actual;  ///< the answers of the model and of the library
  std::string answer;            ///< the part of the answer that is the same on every machine
  bool hasTouchedFiles = false;
  bool printsOfThisMachine = false;  ///< the output differs between machines

  void add(const std::string& byModel, const std::string& byLibrary, bool everywhere = true) {
    if (!expected.empty()) expected += ' ';
    if (!actual.empty()) actual += ' ';
    expected += byModel;
    actual += byLibrary;
    if (everywhere) answer += (answer.empty() ? "" : " ") + byLibrary;
  }
};

/// A kind of call. `names` are the functions of the library that it reaches.
struct Kind {
  std::string names;
  void (*make)(Step&);
  unsigned weight = 8;  ///< how often the call is chosen
};

using Kinds = std::vector<Kind>;

/// The kinds of calls of each family.
void addStrings(Kinds& kinds);
void addTokens(Kinds& kinds);
void addOutput(Kinds& kinds);
void addPlatform(Kinds& kinds);
void addNames(Kinds& kinds);
void addFiles(Kinds& kinds);
void addFileObjects(Kinds& kinds);
void addDirectories(Kinds& kinds);
void addParsers(Kinds& kinds);
void addSettings(Kinds& kinds);
void addErrors(Kinds& kinds);
void addDates(Kinds& kinds);
void addSky(Kinds& kinds);
void addAddresses(Kinds& kinds);

}  // namespace histories

#endif  // HISTORIES_CALL_H
