// How blocks grow, are shared, locked and freed.
#include "core/shared_storage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "core/exception.h"
#include "core/string.h"
#include "support/allocation_system.h"
#include "support/storage_inspection.h"
#include "support/storage_recorder.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::BlockOf;
using testing::CapacityOf;
using testing::Content;
using testing::ReferencesOf;
using testing::Sample;
using testing::StorageRecorder;
using testing::SystemInForce;

String Text(std::uint32_t length) { return String(Sample(length).data(), length); }

TEST(SharedStorage, DefaultConstructionDoesNotAllocate) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const SharedStorage storage;
  EXPECT_TRUE(storage.IsNull());
  EXPECT_EQ(nullptr, storage.Characters());
  EXPECT_EQ(0u, memory.Allocations());
}

TEST(SharedStorage, WithoutABlockThereIsNoRoomAndNoOwner) {
  const SharedStorage storage;
  EXPECT_EQ(0u, storage.Length());
  EXPECT_EQ(0u, storage.Capacity());
  EXPECT_FALSE(storage.IsShared());
  EXPECT_FALSE(storage.IsExclusive());
}

TEST(SharedStorage, CapacityIsTheNextMultipleOfFiftyAboveTheLength) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  for (std::uint32_t length = 0; length <= 1000; ++length) {
    const String text = Text(length);
    EXPECT_EQ((length / 50 + 1) * 50, CapacityOf(text)) << length;
    EXPECT_EQ(length, text.Length());
    EXPECT_EQ('\0', text.Characters()[length]);
  }
}

// Every byte behind the text of a block that held a longer one.
void ExpectNothingBehind(const String& text, std::uint32_t lengthBefore) {
  for (std::uint32_t i = text.Length(); i <= lengthBefore; ++i) EXPECT_EQ('\0', text.Characters()[i]) << i;
}

TEST(SharedStorage, WhatAnEmptiedTextSaidIsGone) {
  String text = Text(40);
  text.Empty();
  ExpectNothingBehind(text, 40);
  text = Text(40).Characters();
  text = String();
  ExpectNothingBehind(text, 40);
}

TEST(SharedStorage, WhatAShortenedTextSaidBehindItsEndIsGone) {
  String text = Text(40);
  text.SetAt(30, '\0');
  ExpectNothingBehind(text, 40);
  EXPECT_EQ(Sample(30), Content(text));
  text = "short";
  ExpectNothingBehind(text, 40);
  text.TakeBuffer(2);
  text.ReturnBuffer();
  ExpectNothingBehind(text, 40);
  EXPECT_EQ("sh", Content(text));
}

TEST(SharedStorage, ABlockIsTheHeaderAndItsCapacity) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  const String text = Text(50);
  EXPECT_EQ(sizeof(StringData) + 100, recorder.LastSize());
}

TEST(SharedStorage, FortyNineCharactersFitFiftyBytesAndFiftyDoNot) {
  String text = Text(48);
  const char* before = text.Characters();
  text.Append('x');
  EXPECT_EQ(before, text.Characters());
  EXPECT_EQ(50u, CapacityOf(text));
  text.Append('y');
  EXPECT_EQ(100u, CapacityOf(text));
  EXPECT_EQ(Sample(48) + "xy", Content(text));
}

TEST(SharedStorage, GrowthNeverDoubles) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  String text;
  for (int i = 0; i < 500; ++i) text.Append('x');
  EXPECT_EQ(550u, CapacityOf(text));
  EXPECT_EQ(11u, memory.Allocations());
}

TEST(SharedStorage, AShrunkenSoleOwnerKeepsItsBlock) {
  SharedStorage storage;
  storage.EnsureLengthDiscard(120);
  const char* before = storage.Characters();
  storage.EnsureLengthKeep(3);
  EXPECT_EQ(before, storage.Characters());
  EXPECT_EQ(150u, storage.Capacity());
  EXPECT_EQ(3u, storage.Length());
}

TEST(SharedStorage, EnsuringALengthInPlaceWritesNoNul) {
  SharedStorage storage;
  storage.EnsureLengthDiscard(5);
  std::memcpy(storage.Characters(), "abcde", 6);
  storage.EnsureLengthKeep(2);
  // Behind the place of the NUL the old text is wiped.
  EXPECT_EQ(0, std::memcmp("abc\0\0", storage.Characters(), 6));
  EXPECT_EQ(2u, storage.Length());
}

TEST(SharedStorage, KeepingCarriesTheTextOverAndEndsTheNewLength) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  SharedStorage storage;
  storage.EnsureLengthDiscard(4);
  std::memcpy(storage.Characters(), "abcd", 5);
  storage.EnsureLengthKeep(60);
  EXPECT_EQ(0, std::memcmp(storage.Characters(), "abcd", 4));
  EXPECT_EQ('\0', storage.Characters()[60]);
  EXPECT_EQ(60u, storage.Length());
}

TEST(SharedStorage, DiscardingWritesANulInFront) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  SharedStorage storage;
  storage.EnsureLengthDiscard(4);
  std::memcpy(storage.Characters(), "abcd", 5);
  storage.EnsureLengthDiscard(60);
  EXPECT_EQ('\0', storage.Characters()[0]);
  EXPECT_EQ(60u, storage.Length());
}

TEST(SharedStorage, KeepingASharedBlockForAShorterLengthCopiesThatMuchIntoASmallerBlock) {
  const String owner = Text(120);
  SharedStorage storage(owner.Storage());
  storage.EnsureLengthKeep(10);
  EXPECT_EQ(50u, storage.Capacity());
  EXPECT_EQ(Sample(10), std::string(storage.Characters()));
  EXPECT_EQ(1u, ReferencesOf(owner));
  EXPECT_EQ(Sample(120), Content(owner));
}

TEST(SharedStorage, ReserveMakesRoomAndKeepsTheText) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  String text("abc");
  text.Reserve(500);
  EXPECT_EQ(550u, CapacityOf(text));
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(3u, text.Length());
  memory.Restart();
  for (int i = 0; i < 497; ++i) text.Append('x');
  EXPECT_EQ(0u, memory.Allocations());
}

TEST(SharedStorage, ReservingLessThanThereIsChangesNothing) {
  String text = Text(120);
  const char* before = text.Characters();
  text.Reserve(3);
  EXPECT_EQ(before, text.Characters());
  EXPECT_EQ(Sample(120), Content(text));
}

// Which lock is entered when.

TEST(SharedStorageLocks, ACopyEntersTheSourcesLockOnce) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  const String source("abc");
  EXPECT_EQ("alloc, init A", recorder.Events());
  const String copy(source);
  EXPECT_EQ("enter A, leave A", recorder.Events());
  EXPECT_EQ(2u, ReferencesOf(source));
}

TEST(SharedStorageLocks, DroppingOneOfTwoOwnersOnlyCounts) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  const String source("abc");
  {
    const String copy(source);
    recorder.Events();
  }
  EXPECT_EQ("enter A, leave A", recorder.Events());
  EXPECT_EQ(1u, ReferencesOf(source));
}

TEST(SharedStorageLocks, TheLastOwnerLeavesThenDeletesTheLockThenFreesTheBlock) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  { const String source("abc"); }
  EXPECT_EQ("alloc, init A, enter A, leave A, delete A, free", recorder.Events());
}

TEST(SharedStorageLocks, AnExclusiveBlockIsFreedByItsOwner) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  {
    String source("abc");
    source.TakeBuffer(3);
    recorder.Events();
  }
  EXPECT_EQ("enter A, leave A, delete A, free", recorder.Events());
}

TEST(SharedStorageLocks, AssignmentSharesTheSourceBeforeItReleasesTheOwnBlock) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  const String source("abc");
  String target("xyz");
  recorder.Events();
  target = source;
  EXPECT_EQ("enter A, leave A, enter B, leave B, delete B, free", recorder.Events());
}

TEST(SharedStorageLocks, CopyOnWriteMakesTheNewBlockBeforeItReleasesTheOld) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  const String source("abc");
  String copy(source);
  recorder.Events();
  copy.SetAt(0, 'x');
  EXPECT_EQ("alloc, init B, enter A, leave A", recorder.Events());
  copy.SetAt(1, 'y');
  EXPECT_EQ("", recorder.Events());
}

TEST(SharedStorageLocks, TakingAndReturningTheBufferEachEnterTheLock) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  String text("abc");
  recorder.Events();
  text.TakeBuffer(3);
  EXPECT_EQ("enter A, leave A", recorder.Events());
  EXPECT_EQ(0u, ReferencesOf(text));
  text.ReturnBuffer();
  EXPECT_EQ("enter A, leave A", recorder.Events());
  EXPECT_EQ(1u, ReferencesOf(text));
}

TEST(SharedStorageLocks, CopyingAnExclusiveBlockAsksUnderItsLockAndThenAllocates) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  String text("abc");
  text.TakeBuffer(3);
  recorder.Events();
  const String copy(text);
  EXPECT_EQ("enter A, leave A, alloc, init B", recorder.Events());
}

TEST(SharedStorageLocks, MovingTouchesNoLock) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  String source("abc");
  recorder.Events();
  const String target(std::move(source));
  EXPECT_EQ("", recorder.Events());
  EXPECT_STREQ("abc", target.Characters());
}

TEST(SharedStorage, ATextIsWipedBeforeItsBlockIsFreed) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  {
    String text(Sample(49).c_str());
    text.Append(Sample(49).c_str());
    text.Empty();
  }
  EXPECT_EQ(2, recorder.Freed());
  EXPECT_EQ(0, recorder.Unwiped());
}

// The largest lengths, asked of a system that has no memory.

TEST(SharedStorageLimits, TheLargestLengthIsAskedForWithItsWholeCapacity) {
  StorageRecorder recorder;
  recorder.Refuse(true);
  SystemInForce inForce(recorder);
  SharedStorage storage;
  EXPECT_THROW(storage.EnsureLengthDiscard(2147483599u), Qor::MemoryException);
  EXPECT_EQ(sizeof(StringData) + 2147483600u, recorder.LastSize());
  EXPECT_TRUE(storage.IsNull());
}

TEST(SharedStorageLimits, LengthsBeyondItAreRefusedWithoutAsking) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  String text("abc");
  recorder.Events();
  for (const std::uint64_t length :
       {std::uint64_t{2147483600u}, std::uint64_t{0x7FFFFFFFu}, std::uint64_t{0x80000000u}, std::uint64_t{0xFFFFFFCDu},
        std::uint64_t{0xFFFFFFFFu}, std::uint64_t{1} << 32, ~std::uint64_t{0} - 49, ~std::uint64_t{0}}) {
    EXPECT_THROW(text.Reserve(length), Qor::MemoryException) << length;
    SharedStorage other(text.Storage());
    recorder.Events();
    EXPECT_THROW(other.EnsureLengthKeep(length), Qor::MemoryException) << length;
    EXPECT_THROW(other.EnsureLengthDiscard(length), Qor::MemoryException) << length;
    EXPECT_EQ("", recorder.Events()) << length;
  }
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(text));
}

}  // namespace
}  // namespace kest
