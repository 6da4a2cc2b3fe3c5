#include "history.h"

#include <random>
#include <sstream>

#include "world.h"

namespace histories {
namespace {

Kinds collectKinds() {
  Kinds kinds;
  addStrings(kinds);
  addTokens(kinds);
  addOutput(kinds);
  addPlatform(kinds);
  addNames(kinds);
  addFiles(kinds);
  addFileObjects(kinds);
  addDirectories(kinds);
  addParsers(kinds);
  addSettings(kinds);
  addErrors(kinds);
  addDates(kinds);
  addSky(kinds);
  addAddresses(kinds);
  return kinds;
}

/// Makes a call. Returns whether its answer is that of the model.
bool make(const Kinds& kinds, World& world, Chooser& choose, Outcome& outcome, const Visit& visit) {
  const Step step = world.make(kinds, choose);
  outcome.history.push_back(choose.decisions());
  outcome.reached.insert(step.kind);
  outcome.hasFailed = step.expected != step.actual;
  if (visit) visit(step);
  return !outcome.hasFailed;
}

}  // namespace

const Kinds& allKinds() {
  static const Kinds kinds = collectKinds();
  return kinds;
}

std::set<std::string> namesOf(const Kinds& kinds) {
  std::set<std::string> names;
  for (const Kind& kind : kinds) {
    std::istringstream words(kind.names);
    for (std::string word; words >> word;) names.insert(word);
  }
  return names;
}

Outcome runRandom(const Kinds& kinds, std::uint64_t seed, std::size_t count, const Visit& visit) {
  std::mt19937_64 random(seed);
  World world;
  world.showsFiles = visit != nullptr;
  Outcome outcome;
  for (std::size_t i = 0; i < count; ++i) {
    Chooser choose(random);
    if (!make(kinds, world, choose, outcome, visit)) break;
  }
  return outcome;
}

Outcome repeat(const Kinds& kinds, const History& history, const Visit& visit) {
  World world;
  world.showsFiles = visit != nullptr;
  Outcome outcome;
  for (const Decisions& decisions : history) {
    Chooser choose(decisions);
    if (!make(kinds, world, choose, outcome, visit)) break;
  }
  return outcome;
}

std::string shortest(const Kinds& kinds, const History& failing) {
  const History history =
      shrink(failing, [&](const History& candidate) { return repeat(kinds, candidate).hasFailed; });
  std::string text;
  repeat(kinds, history, [&](const Step& step) {
    text += step.text + "\n";
    if (step.expected != step.actual) {
      text += "  model:   " + step.expected + "\n  library: " + step.actual + "\n";
    }
  });
  return text;
}

std::string lineOf(const Step& step) { return step.text + " = " + step.answer; }

}  // namespace histories
