// Runs work on several threads that begin at the same moment.
#pragma once

#include <future>
#include <thread>
#include <vector>

namespace kest::testing {

constexpr int threadCount = 8;

// Calls work(0), work(1), ... each on a thread of its own, and waits for all of them.
template <typename Work>
void Together(Work work, int count = threadCount) {
  std::promise<void> gate;
  const std::shared_future<void> opened = gate.get_future().share();
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&work, opened, i] {
      opened.wait();
      work(i);
    });
  }
  gate.set_value();
  for (std::thread& thread : threads) thread.join();
}

}  // namespace kest::testing
