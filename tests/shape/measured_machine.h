// A still machine that counts the bytes of memory that the library holds, and gives no more than a budget.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <unordered_map>

#include "shape/still_machine.h"

namespace kest::testing {

class MeasuredMachine : public StillMachine {
 public:
  using StillMachine::StillMachine;

  // In bytes: what all blocks together may hold; none is larger beyond that.
  std::size_t budget = std::numeric_limits<std::size_t>::max();

  std::size_t Live() const { return live; }
  // The most that was held at one time, and the sum of all blocks, since Restart; the largest single block.
  std::size_t Peak() const { return peak; }
  std::size_t Allocated() const { return allocated; }
  std::size_t LargestBlock() const { return largest; }
  void Restart() {
    peak = live;
    allocated = largest = 0;
  }

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    largest = std::max(largest, bytes);
    if (live >= budget || bytes > budget - live) return nullptr;
    void* block = StillMachine::GlobalAlloc(flags, bytes);
    if (block == nullptr) return nullptr;
    sizes[block] = bytes;
    live += bytes;
    allocated += bytes;
    peak = std::max(peak, live);
    return block;
  }
  void GlobalFree(void* block) override {
    const auto found = sizes.find(block);
    if (found != sizes.end()) {
      live -= found->second;
      sizes.erase(found);
    }
    StillMachine::GlobalFree(block);
  }

 private:
  std::unordered_map<void*, std::size_t> sizes;
  std::size_t live = 0, peak = 0, allocated = 0, largest = 0;
};

}  // namespace kest::testing
