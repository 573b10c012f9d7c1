#include "core/memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <new>

#include "core/exception.h"
#include "core/object.h"
#include "support/allocation_system.h"
#include "support/storage_recorder.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::StorageRecorder;
using testing::SystemInForce;

TEST(Memory, ABlockIsAskedForWithItsBytesAndGivenBack) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  void* block = Allocate(123);
  EXPECT_EQ(123u, recorder.LastSize());
  Release(block);
  EXPECT_EQ("alloc, free", recorder.Events());
}

TEST(Memory, FlagsAreZero) {
  class FlagSystem : public testing::ForwardingSystem {
   public:
    std::uint32_t seen = 99;
    void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
      seen = flags;
      return ForwardingSystem::GlobalAlloc(flags, bytes);
    }
  } system;
  SystemInForce inForce(system);
  Release(Allocate(1));
  EXPECT_EQ(0u, system.seen);
}

TEST(Memory, ReleasingNullDoesNothing) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  Release(nullptr);
  EXPECT_EQ("", recorder.Events());
}

TEST(Memory, WithoutMemoryOneCallThrowsAndTheOtherAnswersNull) {
  AllocationSystem memory;
  memory.FailAt(1, AllocationSystem::Failing::fromThenOn);
  SystemInForce inForce(memory);
  EXPECT_THROW(Allocate(1), Qor::MemoryException);
  EXPECT_EQ(nullptr, AllocateOrNull(1));
}

TEST(Memory, MoreThanHalfTheAddressSpaceIsRefusedWithoutAsking) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const unsigned long long half = std::numeric_limits<std::size_t>::max() / 2;
  for (const unsigned long long bytes : {half + 1, half * 2, ~0ull}) {
    EXPECT_THROW(Allocate(bytes), Qor::MemoryException);
    EXPECT_EQ(nullptr, AllocateOrNull(bytes));
  }
  EXPECT_EQ(0u, memory.Allocations());
}

TEST(Memory, WipingZeroesExactlyTheBytesGiven) {
  char bytes[] = "abcdef";
  Wipe(bytes + 1, 3);
  EXPECT_EQ(0, std::memcmp(bytes, "a\0\0\0ef", 7));
  Wipe(bytes, 0);
  EXPECT_EQ('a', bytes[0]);
}

class Probe : public Object {
 public:
  explicit Probe(bool* flag) : destroyed(flag) {}
  ~Probe() override { *destroyed = true; }

 private:
  bool* destroyed;
};

TEST(Object, LivesInABlockWhoseAddressIsItsOwn) {
  class AddressSystem : public testing::ForwardingSystem {
   public:
    void* last = nullptr;
    void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
      return last = ForwardingSystem::GlobalAlloc(flags, bytes);
    }
  } system;
  SystemInForce inForce(system);
  bool destroyed = false;
  Object* object = new Probe(&destroyed);
  EXPECT_EQ(system.last, static_cast<void*>(object));
  delete object;
  EXPECT_TRUE(destroyed);
}

TEST(Object, DeletingThroughTheBaseGivesTheBlockBack) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  bool destroyed = false;
  Object* object = new Probe(&destroyed);
  EXPECT_EQ(1, memory.Outstanding());
  delete object;
  EXPECT_EQ(0, memory.Outstanding());
}

TEST(Object, WithoutMemoryMakingOneThrowsOrAnswersNull) {
  AllocationSystem memory;
  memory.FailAt(1, AllocationSystem::Failing::fromThenOn);
  SystemInForce inForce(memory);
  bool destroyed = false;
  EXPECT_THROW(new Probe(&destroyed), Qor::MemoryException);
  EXPECT_EQ(nullptr, new (std::nothrow) Probe(&destroyed));
}

TEST(Object, AConstructorThatThrowsLeavesNoBlock) {
  struct Failing : Object {
    Failing() { throw Qor::MemoryException(); }
  };
  AllocationSystem memory;
  SystemInForce inForce(memory);
  EXPECT_THROW(new Failing, Qor::MemoryException);
  EXPECT_THROW(new (std::nothrow) Failing, Qor::MemoryException);
  EXPECT_EQ(2u, memory.Allocations());
  EXPECT_EQ(0, memory.Outstanding());
}

}  // namespace
}  // namespace kest
