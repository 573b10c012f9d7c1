// A child process whose system calls are watched: it can be killed at any of them, and any of them can be made to fail.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace os {

struct TracedCall {
  long number;  // SYS_...
  std::uint64_t arguments[6];
  std::string file;  // of a call whose first argument is a descriptor: what that leads to
};

// What is to be done to the child; 0 stands for nothing.
struct Meddling {
  int killAtStop = 0;  // counted from 1; each call has a stop in front of it and one behind
  // The call, counted from 1 among those of `fallible` on descriptors that lead to `place` or below, that is not made
  // but answers `error`. A sanitizer makes calls of its own on others.
  int failCall = 0;
  int error = 0;
  std::vector<long> fallible;
  std::string place;
  bool isLasting = false;  // those behind `failCall` fail as well
  // What others do in front of a call, while the child stands still.
  std::function<void(const TracedCall&)> before = {};
};

struct TracedRun {
  std::string refusal;            // why nothing could be traced; empty when all went well
  bool wasKilled = false;         // else the child ended by itself
  long refused = -1;              // the call that was made to fail, when it was reached
  int result = -1;                // what `work` answered, 0 to 255
  std::vector<TracedCall> calls;  // of `work` alone
};

// Runs `work` in a child and waits for its end.
TracedRun RunTraced(const std::function<int()>& work, const Meddling& meddling = {});

// Ends a test whose child could not be traced: not every system and processor lets a process watch another.
#define KEST_TRACED_OR_SKIP(run) \
  if (!(run).refusal.empty()) GTEST_SKIP() << "the child could not be traced: " << (run).refusal

// Runs `work` in a child that nobody watches; answers its process number.
int Start(const std::function<int()>& work);

// Waits for a child's end; answers its result, -1 when it was killed.
int WaitFor(int process);

}  // namespace os
