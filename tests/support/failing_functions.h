/// What each function of the library answered when its system calls failed.
#ifndef FAILING_FUNCTIONS_H
#define FAILING_FUNCTIONS_H

#include <fstream>
#include <map>
#include <string>
#include <tuple>

/// The results of all tests of a process. `tools/failing_calls.py` makes a page of them.
class FailingFunctions {
 public:
  static FailingFunctions& all() {
    static FailingFunctions functions;
    return functions;
  }

  void addFunction(const std::string& function) { functions_[function]; }

  /// Adds a call that `function` made.
  void addCall(const std::string& function, const std::string& call, bool hasFailed) {
    bool& hasEverFailed = functions_[function][call];
    hasEverFailed = hasEverFailed || hasFailed;
  }

  /// Adds what `function` answered when only `call` failed, once or several times.
  void addFailure(const std::string& function, const std::string& call, const std::string& error,
                  const std::string& answer, int count) {
    failures_[{function, call, error, answer}] += count;
  }

  /// Adds an operation with `count` failed calls.
  void addOperation(int count) {
    ++operations_;
    failedCalls_ += count;
  }

  int operations() const { return operations_; }
  int failedCalls() const { return failedCalls_; }

  /// Returns the functions with the system calls that each made, and whether each call has failed.
  const std::map<std::string, std::map<std::string, bool>>& functions() const { return functions_; }

  /// Writes a line for each function without system calls, which is its name, and one for each
  /// answer: function, call, error, number of failures and answer, with tabs between them.
  void write(const std::string& name) const {
    std::ofstream file(name);
    for (const auto& [function, calls] : functions_) {
      if (calls.empty()) file << function << "\n";
    }
    for (const auto& [key, count] : failures_) {
      const auto& [function, call, error, answer] = key;
      file << function << '\t' << call << '\t' << error << '\t' << count << '\t' << answer << "\n";
    }
  }

 private:
  using Key = std::tuple<std::string, std::string, std::string, std::string>;

  std::map<std::string, std::map<std::string, bool>> functions_;
  std::map<Key, int> failures_;
  int operations_ = 0;
  int failedCalls_ = 0;
};

#endif  // FAILING_FUNCTIONS_H
