// A system that counts allocations and can fail one of them, or all from one on. Memory that is not given back shows in
// `Outstanding`.
#pragma once

#include <cstdint>

#include "support/forwarding_system.h"

namespace kest::testing {

class AllocationSystem : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  enum class Failing { never, once, fromThenOn };

  // Fails the `point`-th allocation from now on, the first being 1.
  void FailAt(std::uint64_t point, Failing how) {
    allocations = 0;
    failPoint = point;
    failing = how;
  }
  void FailNever() { failing = Failing::never; }
  // Counts from here.
  void Restart() { allocations = 0; }

  std::uint64_t Allocations() const { return allocations; }
  std::int64_t Outstanding() const { return outstanding; }

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    ++allocations;
    if (failing == Failing::once && allocations == failPoint) return nullptr;
    if (failing == Failing::fromThenOn && allocations >= failPoint) return nullptr;
    void* block = ForwardingSystem::GlobalAlloc(flags, bytes);
    if (block != nullptr) ++outstanding;
    return block;
  }
  void GlobalFree(void* block) override {
    if (block != nullptr) --outstanding;
    ForwardingSystem::GlobalFree(block);
  }

 private:
  Failing failing = Failing::never;
  std::uint64_t failPoint = 0;
  std::uint64_t allocations = 0;
  std::int64_t outstanding = 0;
};

}  // namespace kest::testing
