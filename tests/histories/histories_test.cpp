/// Random histories of calls of all families, compared with the model.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <string>

#include "history.h"
#include "long_run.h"
#include "world.h"

namespace {

using namespace histories;

/// Returns the seed of ZN_UDF_HISTORY_SEED, which repeats a history. Without it, each long run has
/// another seed, and daily runs are all the same.
std::uint64_t firstSeed() {
  const char* const given = std::getenv("ZN_UDF_HISTORY_SEED");
  if (given != nullptr) return std::strtoull(given, nullptr, 10);
  return isLongRun() ? std::random_device{}() : 1;
}

TEST(Histories, AnswerAsTheModelDoes) {
  const std::size_t count = isLongRun() ? 1 : 10;
  const std::size_t callsOfHistory = isLongRun() ? 1000000 : 2000;
  const std::uint64_t seed = firstSeed();
  std::cout << "ZN_UDF_HISTORY_SEED=" << seed << std::endl;
  RecordProperty("seed", std::to_string(seed));
  std::set<std::size_t> reached;
  std::size_t calls = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Outcome outcome = runRandom(allKinds(), seed + i, callsOfHistory);
    calls += outcome.history.size();
    reached.insert(outcome.reached.begin(), outcome.reached.end());
    ASSERT_FALSE(outcome.hasFailed)
        << "ZN_UDF_HISTORY_SEED=" << seed + i << " repeats this. The shortest history:\n"
        << shortest(allKinds(), outcome.history);
  }
  EXPECT_EQ(reached.size(), allKinds().size()) << "some calls are never made";
  RecordProperty("histories", std::to_string(count));
  RecordProperty("calls", std::to_string(calls));
  RecordProperty("functions", std::to_string(namesOf(allKinds()).size()));
}

/// Returns the name of a function without its namespace, template arguments and parameters, and an
/// empty text for what is no function.
std::string functionOf(const std::string& symbol) {
  const std::string space = "zn_lib::";
  for (const char* special : {"vtable for ", "typeinfo for ", "typeinfo name for "}) {
    if (symbol.rfind(special, 0) == 0) return "";
  }
  if (symbol.rfind(space + "operator<<", 0) == 0) return "operator<<";
  std::string name;
  int depth = 0;  // of template arguments
  for (const char c : symbol) {
    if (c == '<') ++depth;
    if (depth == 0 && (c == '(' || c == '[')) break;
    if (depth == 0) name += c;
    if (c == '>') --depth;
  }
  const std::string own = name.rfind(space, 0) == 0 ? name.substr(space.size()) : name;
  return own.size() > 8 && own.substr(own.size() - 8) == "operator" ? own + "()" : own;
}

TEST(Histories, ReachEveryExportedFunction) {
  std::ifstream in(ZN_UDF_TEST_DATA "/exports.txt");
  std::set<std::string> exported;
  for (std::string symbol; std::getline(in, symbol);) {
    const std::string name = functionOf(symbol);
    if (!name.empty()) exported.insert(name);
  }
  ASSERT_GT(exported.size(), 150u);
  std::set<std::string> missing;
  const std::set<std::string> reached = namesOf(allKinds());
  for (const std::string& name : exported) {
    if (reached.count(name) == 0) missing.insert(name);
  }
  EXPECT_THAT(missing, testing::IsEmpty());
}

TEST(Histories, RepeatTheirAnswers) {
  std::string first, again;
  const auto add = [](std::string& lines) {
    return [&lines](const Step& step) { lines += lineOf(step) + "\n"; };
  };
  const Outcome outcome = runRandom(allKinds(), 1, 300, add(first));
  repeat(allKinds(), outcome.history, add(again));
  EXPECT_EQ(first, again);
}

// ---- Shrinking

/// Creates a file, and is wrong about numbers above 20 if the file exists already.
void addToFile(Step& step) {
  Model& model = step.world.model;
  const unsigned number = step.choose.below(100);
  step.call("add", number);
  const bool isWrong = model.disk.exists("sum") && number > 20;
  model.disk.openForWriting("sum", true);
  step.same(number, number + (isWrong ? 1 : 0));
}

void forgetFile(Step& step) {
  step.call("forget");
  step.world.model.disk.remove("sum");
}

void doNothing(Step& step) {
  const bool flag = step.choose.flag();
  step.call("nothing", flag);
}

const Kinds& wrongKinds() {
  static const Kinds kinds = {{"add", addToFile}, {"forget", forgetFile}, {"nothing", doNothing}};
  return kinds;
}

TEST(Shrinking, FindsTheSmallestFailure) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    const Outcome outcome = runRandom(wrongKinds(), seed, 500);
    ASSERT_TRUE(outcome.hasFailed);
    EXPECT_EQ(shortest(wrongKinds(), outcome.history),
              "add(0)\nadd(21)\n  model:   21\n  library: 22\n");
  }
}

TEST(Shrinking, KeepsAllCallsThatTheFailureNeeds) {
  // Fails if a 3 precedes a 5.
  const auto fails = [](const History& history) {
    bool hasThree = false;
    for (const auto& call : history) {
      if (call[1] >= 3 && call[1] < 5) hasThree = true;
      if (call[1] >= 5 && hasThree) return true;
    }
    return false;
  };
  const History history = {{0, 9}, {1, 1}, {0, 4}, {0, 2}, {2, 0}, {0, 77}, {0, 3}};
  ASSERT_TRUE(fails(history));
  EXPECT_EQ(shrink(history, fails), (History{{0, 3}, {0, 5}}));
}

}  // namespace
