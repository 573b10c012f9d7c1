#include "core/object_array.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/exception.h"
#include "core/string.h"
#include "support/allocation_system.h"
#include "support/storage_recorder.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::StorageRecorder;
using testing::SystemInForce;
using Failing = AllocationSystem::Failing;

std::vector<std::string>* journal = nullptr;

void Note(const char* what, int number) {
  if (journal != nullptr) journal->push_back(what + std::to_string(number));
}

// Can be moved without memory.
class Movable {
 public:
  explicit Movable(int value = -1) : number(value) {}
  Movable(const Movable& other) : number(other.number) { Note("copy ", number); }
  Movable(Movable&& other) noexcept : number(other.number) { Note("move ", number); }
  Movable& operator=(const Movable&) = default;
  virtual ~Movable() { Note("destroy ", number); }
  int number;
};

// Can only be copied, which takes memory.
class Copyable {
 public:
  explicit Copyable(int value) : number(value), text("abc") { text.TakeBuffer(3); }
  Copyable(const Copyable& other) : number(other.number), text(other.text) { text.TakeBuffer(3); }
  virtual ~Copyable() = default;
  int number;

 private:
  String text;  // its buffer is taken, so every copy allocates
};

class Journal {
 public:
  Journal() { journal = &entries; }
  ~Journal() { journal = nullptr; }
  std::vector<std::string> entries;
};

template <typename Element>
ObjectArray<Element> Numbered(int count) {
  ObjectArray<Element> array;
  for (int i = 0; i < count; ++i) array.Append(Element(i));
  return array;
}

template <typename Element>
void ExpectNumbered(const ObjectArray<Element>& array, std::uint32_t count) {
  ASSERT_EQ(count, array.Count());
  for (std::uint32_t i = 0; i < count; ++i) EXPECT_EQ(static_cast<int>(i), array.At(i).number);
}

TEST(ObjectArray, BeginsWithoutStorage) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const ObjectArray<Movable> array;
  EXPECT_EQ(0u, array.Count());
  EXPECT_EQ(0u, array.Capacity());
  EXPECT_EQ(0u, memory.Allocations());
}

TEST(ObjectArray, TheFirstElementMakesRoomForThirtyTwo) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  ObjectArray<Movable> array;
  EXPECT_TRUE(array.Append(Movable(0)));
  EXPECT_EQ(32u, array.Capacity());
  EXPECT_EQ(32 * sizeof(Movable), recorder.LastSize());
}

TEST(ObjectArray, TheThirtyThirdElementMovesTheArrayToSixtyFour) {
  ObjectArray<Movable> array = Numbered<Movable>(32);
  EXPECT_EQ(32u, array.Capacity());
  array.Append(Movable(32));
  EXPECT_EQ(64u, array.Capacity());
  ExpectNumbered(array, 33);
}

TEST(ObjectArray, GrowthIsLinear) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const ObjectArray<Movable> array = Numbered<Movable>(1000);
  EXPECT_EQ(1024u, array.Capacity());
  EXPECT_EQ(32u, memory.Allocations());
}

TEST(ObjectArray, AnotherStepIsKept) {
  ObjectArray<Movable> array(5);
  for (int i = 0; i < 6; ++i) array.Append(Movable(i));
  EXPECT_EQ(10u, array.Capacity());
  const ObjectArray<Movable> copy(array);
  EXPECT_EQ(10u, copy.Capacity());
}

TEST(ObjectArray, GrowthConstructsThenDestroysInIndexOrder) {
  ObjectArray<Movable> array(2);
  array.Append(Movable(0));
  array.Append(Movable(1));
  const Movable third(2);
  Journal seen;
  array.Append(third);
  EXPECT_EQ((std::vector<std::string>{"copy 2", "move 0", "destroy 0", "move 1", "destroy 1", "move 2", "destroy 2"}),
            seen.entries);
}

TEST(ObjectArray, AppendingWithinTheCapacityCopiesOnce) {
  ObjectArray<Movable> array = Numbered<Movable>(1);
  const Movable second(1);
  Journal seen;
  array.Append(second);
  EXPECT_EQ(std::vector<std::string>{"copy 1"}, seen.entries);
}

TEST(ObjectArray, OneOfItsOwnElementsIsAppended) {
  ObjectArray<Movable> array = Numbered<Movable>(32);
  array.Append(array.At(5));
  array.Append(array.At(6));
  EXPECT_EQ(5, array.At(32).number);
  EXPECT_EQ(6, array.At(33).number);
}

TEST(ObjectArray, ClearingDestroysFromTheLastToTheFirstAndKeepsTheRoom) {
  ObjectArray<Movable> array = Numbered<Movable>(3);
  Journal seen;
  array.Clear();
  EXPECT_EQ((std::vector<std::string>{"destroy 2", "destroy 1", "destroy 0"}), seen.entries);
  EXPECT_EQ(0u, array.Count());
  EXPECT_EQ(32u, array.Capacity());
}

TEST(ObjectArray, AfterClearingNothingIsAllocatedUntilTheOldCapacityIsUsedUp) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  ObjectArray<Movable> array = Numbered<Movable>(40);
  array.Clear();
  memory.Restart();
  for (int i = 0; i < 64; ++i) array.Append(Movable(i));
  EXPECT_EQ(0u, memory.Allocations());
  array.Append(Movable(64));
  EXPECT_EQ(1u, memory.Allocations());
  EXPECT_EQ(96u, array.Capacity());
}

TEST(ObjectArray, TheCountIsZeroBeforeTheFirstDestructorRuns) {
  class Watching {
   public:
    Watching(const ObjectArray<Watching>* array, std::vector<std::uint32_t>* counts) : owner(array), seen(counts) {}
    virtual ~Watching() {
      if (seen != nullptr) seen->push_back(owner->Count());
    }
    Watching(const Watching&) = default;
    const ObjectArray<Watching>* owner;
    std::vector<std::uint32_t>* seen;
  };
  ObjectArray<Watching> array;
  std::vector<std::uint32_t> counts;
  for (int i = 0; i < 2; ++i) array.Append(Watching(&array, nullptr));
  for (std::uint32_t i = 0; i < 2; ++i) array.At(i).seen = &counts;
  array.Clear();
  EXPECT_EQ(std::vector<std::uint32_t>({0, 0}), counts);
}

TEST(ObjectArray, DestroyingDestroysFromTheLastToTheFirstAndFreesTheStorage) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  Journal seen;
  {
    ObjectArray<Movable> array = Numbered<Movable>(2);
    seen.entries.clear();
  }
  EXPECT_EQ((std::vector<std::string>{"destroy 1", "destroy 0"}), seen.entries);
  EXPECT_EQ(0, memory.Outstanding());
}

TEST(ObjectArray, ElementsAreDestroyedThroughTheirVirtualDestructor) {
  class Derived : public Movable {
   public:
    explicit Derived(int value) : Movable(value) {}
    ~Derived() override { Note("derived ", number); }
  };
  ObjectArray<Movable> array = Numbered<Movable>(1);
  // An object of the same size that a host put in the element's place.
  static_assert(sizeof(Derived) == sizeof(Movable), "it fits");
  Movable* place = &array.At(0);
  place->~Movable();
  ::new (static_cast<void*>(place)) Derived(7);
  Journal seen;
  array.Clear();
  EXPECT_EQ((std::vector<std::string>{"derived 7", "destroy 7"}), seen.entries);
}

TEST(ObjectArray, ANewElementIsMadeBehindTheLast) {
  ObjectArray<Movable> array = Numbered<Movable>(32);
  EXPECT_EQ(-1, array.AppendNew().number);
  EXPECT_EQ(33u, array.Count());
  EXPECT_EQ(64u, array.Capacity());
}

TEST(ObjectArray, ReserveMakesRoomInWholeSteps) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  ObjectArray<Movable> array;
  array.Reserve(0);
  EXPECT_EQ(0u, memory.Allocations());
  array.Reserve(32);
  EXPECT_EQ(32u, array.Capacity());
  array.Reserve(33);
  EXPECT_EQ(64u, array.Capacity());
  array.Reserve(1);
  EXPECT_EQ(64u, array.Capacity());
  EXPECT_EQ(2u, memory.Allocations());
}

TEST(ObjectArray, ACopyHasElementsOfItsOwnInOneAllocation) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const ObjectArray<Movable> array = Numbered<Movable>(100);
  memory.Restart();
  ObjectArray<Movable> copy(array);
  EXPECT_EQ(1u, memory.Allocations());
  copy.At(0).number = 7;
  ExpectNumbered(array, 100);
  EXPECT_EQ(100u, copy.Count());
}

TEST(ObjectArray, AssignmentReplacesTheElements) {
  ObjectArray<Movable> array = Numbered<Movable>(3);
  array = Numbered<Movable>(40);
  ExpectNumbered(array, 40);
  const ObjectArray<Movable>& itself = array;
  array = itself;
  ExpectNumbered(array, 40);
  array = ObjectArray<Movable>();
  EXPECT_EQ(0u, array.Count());
}

TEST(ObjectArray, SizesBeyondTheAddressSpaceAreRefused) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  ObjectArray<Movable> array = Numbered<Movable>(3);
  recorder.Refuse(true);
  EXPECT_THROW(array.Reserve(0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(array.Reserve(0xFFFFFFE1u), Qor::MemoryException);
  EXPECT_THROW(array.Reserve(0x80000000u), Qor::MemoryException);
  EXPECT_EQ(32u, array.Capacity());
  ExpectNumbered(array, 3);
}

TEST(ObjectArray, ACapacityOfTwoToTheThirtyTwoIsRefusedWithoutAsking) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  ObjectArray<Movable> array;
  EXPECT_THROW(array.Reserve(0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_EQ("", recorder.Events());
}

// Running out of memory.

class ArrayOutOfMemory : public ::testing::TestWithParam<Failing> {
 protected:
  AllocationSystem memory;
  SystemInForce inForce{memory};
};

TEST_P(ArrayOutOfMemory, GrowthOfMovableElementsChangesNothing) {
  ObjectArray<Movable> array = Numbered<Movable>(32);
  memory.FailAt(1, GetParam());
  EXPECT_THROW(array.Append(Movable(32)), Qor::MemoryException);
  memory.FailAt(1, GetParam());
  EXPECT_THROW(array.AppendNew(), Qor::MemoryException);
  EXPECT_EQ(32u, array.Capacity());
  ExpectNumbered(array, 32);
}

TEST_P(ArrayOutOfMemory, GrowthOfCopiedElementsKeepsThemWhereverItStops) {
  for (std::uint64_t point = 1;; ++point) {
    {
      ObjectArray<Copyable> array = Numbered<Copyable>(32);
      const Copyable added(32);
      memory.FailAt(point, GetParam());
      bool failed = false;
      try {
        array.Append(added);
      } catch (const Qor::MemoryException&) {
        failed = true;
      }
      memory.FailNever();
      ExpectNumbered(array, failed ? 32 : 33);
      // The held copy, the block, 32 elements, the new element.
      EXPECT_EQ(point <= 35, failed) << point;
      if (!failed) break;
    }
    EXPECT_EQ(0, memory.Outstanding()) << point;
  }
  EXPECT_EQ(0, memory.Outstanding());
}

TEST_P(ArrayOutOfMemory, CopyingLeavesNothingBehindWhereverItStops) {
  const ObjectArray<Copyable> source = Numbered<Copyable>(5);
  const std::int64_t before = memory.Outstanding();
  for (std::uint64_t point = 1; point <= 6; ++point) {
    memory.FailAt(point, GetParam());
    EXPECT_THROW(ObjectArray<Copyable>{source}, Qor::MemoryException) << point;
    EXPECT_EQ(before, memory.Outstanding()) << point;
  }
  memory.FailNever();
}

TEST_P(ArrayOutOfMemory, AssignmentKeepsTheOldElementsWhereverItStops) {
  const ObjectArray<Copyable> source = Numbered<Copyable>(5);
  ObjectArray<Copyable> target = Numbered<Copyable>(3);
  for (std::uint64_t point = 1; point <= 6; ++point) {
    memory.FailAt(point, GetParam());
    EXPECT_THROW(target = source, Qor::MemoryException) << point;
    ExpectNumbered(target, 3);
  }
  memory.FailNever();
  target = source;
  ExpectNumbered(target, 5);
}

INSTANTIATE_TEST_SUITE_P(Failing, ArrayOutOfMemory, ::testing::Values(Failing::once, Failing::fromThenOn),
                         [](const auto& test) { return test.param == Failing::once ? "Once" : "FromThenOn"; });

}  // namespace
}  // namespace kest
