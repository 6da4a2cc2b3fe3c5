/// Power cuts while a process changes the working directory.
#ifndef POWER_CUTS_H
#define POWER_CUTS_H

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <set>

#include "directory_contents.h"
#include "disk_model.h"
#include "tracee.h"

/// Runs `work` in a child and returns each state in which a power cut may leave the working
/// directory at any time of the run. Returns nothing if no process can be traced.
inline std::optional<std::set<Contents>> statesAfterPowerCuts(const std::function<void()>& work) {
  Disk disk(contents());
  std::set<Contents> states;
  CallTracer tracer;
  const auto follow = [&](const SystemCall& call) {
    disk.apply(tracer, call);
    disk.forEachCut([&](const Contents& state) { states.insert(state); });
  };
  if (!tracer.run(work, follow)) return {};
  EXPECT_EQ(disk.files(), contents()) << "the model has not followed all changes";
  return states;
}

#endif  // POWER_CUTS_H
