#include "core/byte_buffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "core/exception.h"
#include "support/allocation_system.h"
#include "support/storage_recorder.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::StorageRecorder;
using testing::SystemInForce;

std::string Content(const ByteBuffer& buffer) {
  return buffer.IsEmpty() ? std::string()
                          : std::string(reinterpret_cast<const char*>(buffer.Bytes()), buffer.Length());
}

ByteBuffer Buffer(const std::string& bytes) {
  return ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

// On storage of its own.

TEST(ByteBuffer, IsEmptyWithoutStorageFromTheStart) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const ByteBuffer buffer;
  EXPECT_EQ(nullptr, buffer.Bytes());
  EXPECT_EQ(0u, buffer.Length());
  EXPECT_TRUE(buffer.IsEmpty());
  EXPECT_EQ(0u, memory.Allocations());
}

TEST(ByteBuffer, BytesAreTakenAsTheyAre) {
  const ByteBuffer buffer("a\0\xFF", 3);
  EXPECT_EQ(std::string("a\0\xFF", 3), Content(buffer));
  EXPECT_EQ(0xFF, buffer.At(2));
}

TEST(ByteBuffer, AppendingGrowsByStepsOfFifty) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  ByteBuffer buffer;
  for (int i = 0; i < 100; ++i) buffer.Append(static_cast<std::uint8_t>(i));
  EXPECT_EQ(3u, memory.Allocations());
  EXPECT_EQ(100u, buffer.Length());
  EXPECT_EQ(99, buffer.At(99));
}

TEST(ByteBuffer, AppendingNothingChangesNothing) {
  ByteBuffer buffer;
  buffer.Append(nullptr, 0);
  buffer.AppendCopies(7, 0);
  EXPECT_EQ(nullptr, buffer.Bytes());
}

TEST(ByteBuffer, CopiesOfOneByteAreAppended) {
  ByteBuffer buffer = Buffer("ab");
  buffer.AppendCopies('x', 60);
  EXPECT_EQ("ab" + std::string(60, 'x'), Content(buffer));
}

TEST(ByteBuffer, ItsOwnBytesAreAppended) {
  const std::string bytes = "0123456789012345678901234567890123456789";
  ByteBuffer buffer = Buffer(bytes);
  buffer.Append(buffer.Bytes(), buffer.Length());
  EXPECT_EQ(bytes + bytes, Content(buffer));
  buffer.Append(buffer.Bytes() + 5, 3);
  EXPECT_EQ(bytes + bytes + "567", Content(buffer));
}

TEST(ByteBuffer, TheBytesOfASharedBlockAreAppended) {
  const ByteBuffer other = Buffer("abc");
  ByteBuffer buffer(other);
  buffer.Append(other.Bytes(), 3);
  EXPECT_EQ("abcabc", Content(buffer));
  EXPECT_EQ("abc", Content(other));
}

TEST(ByteBuffer, ItsOwnBytesAreAppendedInPlaceWhereThereIsRoom) {
  ByteBuffer buffer = Buffer("abc");
  buffer.Reserve(200);
  const std::uint8_t* block = buffer.Bytes();
  buffer.Append(buffer.Bytes(), 3);
  EXPECT_EQ(block, buffer.Bytes());
  EXPECT_EQ("abcabc", Content(buffer));
}

TEST(ByteBuffer, SettingAByteCopiesASharedBlockFirst) {
  const ByteBuffer other = Buffer("abc");
  ByteBuffer buffer(other);
  EXPECT_EQ(other.Bytes(), buffer.Bytes());
  buffer.SetAt(1, 'x');
  EXPECT_EQ("abc", Content(other));
  EXPECT_EQ("axc", Content(buffer));
}

TEST(ByteBuffer, SettingAZeroByteCutsNothing) {
  ByteBuffer buffer = Buffer("abc");
  buffer.SetAt(1, 0);
  EXPECT_EQ(std::string("a\0c", 3), Content(buffer));
}

TEST(ByteBuffer, ASoleOwnerIsWrittenInPlace) {
  ByteBuffer buffer = Buffer("abc");
  const std::uint8_t* block = buffer.Bytes();
  buffer.SetAt(0, 'x');
  buffer.Append('d');
  EXPECT_EQ(block, buffer.Bytes());
  EXPECT_EQ("xbcd", Content(buffer));
}

TEST(ByteBuffer, SettingTheLengthKeepsWhatFits) {
  ByteBuffer buffer = Buffer("abcdef");
  buffer.SetLength(3);
  EXPECT_EQ("abc", Content(buffer));
  buffer.SetLength(60);
  EXPECT_EQ(60u, buffer.Length());
  EXPECT_EQ("abc", Content(buffer).substr(0, 3));
}

TEST(ByteBuffer, SettingTheLengthLeavesASharedBlockAlone) {
  const ByteBuffer other = Buffer("abcdef");
  ByteBuffer buffer(other);
  buffer.SetLength(3);
  EXPECT_EQ("abcdef", Content(other));
  EXPECT_EQ("abc", Content(buffer));
}

TEST(ByteBuffer, AssignmentSharesTheBlock) {
  const ByteBuffer source = Buffer("abc");
  ByteBuffer target = Buffer("xyz");
  target = source;
  EXPECT_EQ(source.Bytes(), target.Bytes());
}

TEST(ByteBuffer, AssigningAnEmptyBufferKeepsASoleOwnersBlock) {
  ByteBuffer buffer = Buffer("abc");
  const std::uint8_t* block = buffer.Bytes();
  buffer = ByteBuffer();
  EXPECT_TRUE(buffer.IsEmpty());
  EXPECT_EQ(block, buffer.Bytes());
}

TEST(ByteBuffer, AssigningItselfIsHarmless) {
  ByteBuffer buffer = Buffer("abc");
  const ByteBuffer& itself = buffer;
  buffer = itself;
  EXPECT_EQ("abc", Content(buffer));
}

TEST(ByteBuffer, MovingTakesTheBlockAlong) {
  ByteBuffer source = Buffer("abc");
  const std::uint8_t* block = source.Bytes();
  const ByteBuffer target(std::move(source));
  EXPECT_EQ(block, target.Bytes());
  EXPECT_EQ(nullptr, source.Bytes());
}

TEST(ByteBuffer, EqualMeansTheSameBytes) {
  EXPECT_TRUE(Buffer("abc") == Buffer("abc"));
  EXPECT_TRUE(Buffer("abc") != Buffer("abd"));
  EXPECT_TRUE(Buffer("abc") != Buffer("ab"));
  EXPECT_TRUE(ByteBuffer() == Buffer(""));
}

// Raw buffers.

TEST(ByteBuffer, ATakenBufferIsNotShared) {
  ByteBuffer source = Buffer("abc");
  std::uint8_t* raw = source.TakeBuffer(3);
  const ByteBuffer copy(source);
  ByteBuffer assigned;
  assigned = source;
  raw[0] = 'x';
  EXPECT_EQ("xbc", Content(source));
  EXPECT_EQ("abc", Content(copy));
  EXPECT_EQ("abc", Content(assigned));
}

TEST(ByteBuffer, ATakenBufferIsCopiedIntoTheTargetsBlock) {
  ByteBuffer source = Buffer("abc"), target = Buffer("xyz");
  source.TakeBuffer(3);
  const std::uint8_t* block = target.Bytes();
  target = source;
  EXPECT_EQ(block, target.Bytes());
  EXPECT_EQ("abc", Content(target));
}

TEST(ByteBuffer, AReturnedBufferIsSharedAgain) {
  ByteBuffer source;
  std::memcpy(source.TakeBuffer(3), "abc", 3);
  source.ReturnBuffer();
  const ByteBuffer copy(source);
  EXPECT_EQ(source.Bytes(), copy.Bytes());
}

TEST(ByteBuffer, ReturningWhatWasNotTakenChangesNothing) {
  ByteBuffer buffer = Buffer("abc");
  const ByteBuffer copy(buffer);
  buffer.ReturnBuffer();
  EXPECT_EQ(copy.Bytes(), buffer.Bytes());
  buffer.SetAt(0, 'x');
  EXPECT_EQ("abc", Content(copy));
}

TEST(ByteBuffer, BytesAreWipedBeforeTheirBlockIsFreed) {
  StorageRecorder recorder;
  SystemInForce inForce(recorder);
  {
    ByteBuffer buffer = Buffer("secret");
    buffer.AppendCopies('x', 100);
    buffer.SetLength(0);
  }
  EXPECT_EQ(2, recorder.Freed());
  EXPECT_EQ(0, recorder.Unwiped());
}

TEST(ByteBuffer, LengthsBeyondThirtyTwoBitsAreRefusedWithoutAskingForMemory) {
  ByteBuffer buffer = Buffer("abc");
  AllocationSystem memory;
  {
    SystemInForce inForce(memory);
    EXPECT_THROW(buffer.Append("x", 0xFFFFFFFFu), Qor::MemoryException);
    EXPECT_THROW(buffer.Append("x", 0xFFFFFFFCu), Qor::MemoryException);
    EXPECT_THROW(buffer.AppendCopies(0, 0xFFFFFFFDu), Qor::MemoryException);
    EXPECT_THROW(buffer.SetLength(0xFFFFFFFFu), Qor::MemoryException);
    EXPECT_THROW(buffer.Reserve(0xFFFFFFFFu), Qor::MemoryException);
    EXPECT_THROW(buffer.TakeBuffer(0xFFFFFFFFu), Qor::MemoryException);
    EXPECT_EQ(0u, memory.Allocations());
  }
  EXPECT_EQ("abc", Content(buffer));
}

// In memory that the caller lent.

class LentBuffer : public ::testing::Test {
 protected:
  std::uint8_t memory[8] = {};
  AllocationSystem system;
  SystemInForce inForce{system};
  ByteBuffer buffer = ByteBuffer::External(memory, sizeof memory);
};

TEST_F(LentBuffer, BeginsEmptyAtTheCallersMemory) {
  EXPECT_EQ(0u, buffer.Length());
  EXPECT_EQ(memory, buffer.Bytes());
}

TEST_F(LentBuffer, WritesIntoTheCallersMemoryAndNeverAllocates) {
  buffer.Append('a');
  buffer.Append("bc", 2);
  buffer.AppendCopies('x', 3);
  buffer.SetAt(1, 'B');
  buffer.Reserve(8);
  EXPECT_EQ(6u, buffer.Length());
  EXPECT_EQ("aBcxxx", Content(buffer));
  EXPECT_EQ(0, std::memcmp(memory, "aBcxxx\0\0", 8));
  buffer.SetLength(2);
  EXPECT_EQ("aB", Content(buffer));
  EXPECT_EQ('c', memory[2]);
  EXPECT_EQ(0u, system.Allocations());
}

TEST_F(LentBuffer, ExactlyItsCapacityFits) {
  buffer.Append("12345678", 8);
  EXPECT_EQ(8u, buffer.Length());
}

TEST_F(LentBuffer, MoreThanItsCapacityIsRefusedAndNothingChanges) {
  buffer.Append("1234567", 7);
  EXPECT_THROW(buffer.Append("89", 2), Qor::MemoryException);
  EXPECT_THROW(buffer.AppendCopies('x', 2), Qor::MemoryException);
  EXPECT_THROW(buffer.Append("x", 0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(buffer.SetLength(9), Qor::MemoryException);
  EXPECT_THROW(buffer.Reserve(9), Qor::MemoryException);
  EXPECT_THROW(buffer.TakeBuffer(9), Qor::MemoryException);
  EXPECT_EQ("1234567", Content(buffer));
  EXPECT_EQ(0, memory[7]);
}

TEST_F(LentBuffer, TheRawBufferIsTheCallersMemory) {
  EXPECT_EQ(memory, buffer.TakeBuffer(4));
  EXPECT_EQ(4u, buffer.Length());
  buffer.ReturnBuffer();
  EXPECT_EQ(4u, buffer.Length());
}

TEST_F(LentBuffer, AssignmentCopiesTheBytesIntoTheCallersMemory) {
  buffer.Append("zzzz", 4);
  buffer = Buffer("abc");
  EXPECT_EQ(3u, buffer.Length());
  EXPECT_EQ(0, std::memcmp(memory, "abcz", 4));
  buffer = ByteBuffer();
  EXPECT_EQ(0u, buffer.Length());
  EXPECT_EQ(memory, buffer.Bytes());
}

TEST_F(LentBuffer, AssignmentDoesNotLookAtTheCapacity) {
  ByteBuffer narrow = ByteBuffer::External(memory, 2);
  narrow = Buffer("abcdef");
  EXPECT_EQ(6u, narrow.Length());
  EXPECT_EQ(0, std::memcmp(memory, "abcdef", 6));
}

TEST_F(LentBuffer, ACopyHasStorageOfItsOwn) {
  buffer.Append("abc", 3);
  const ByteBuffer copy(buffer);
  ByteBuffer assigned;
  assigned = buffer;
  memory[0] = 'x';
  EXPECT_EQ("abc", Content(copy));
  EXPECT_EQ("abc", Content(assigned));
}

TEST_F(LentBuffer, ItsOwnBytesAreAppended) {
  buffer.Append("abc", 3);
  buffer.Append(buffer.Bytes() + 1, 2);
  EXPECT_EQ("abcbc", Content(buffer));
}

TEST_F(LentBuffer, AssigningFromOverlappingMemoryMovesTheBytes) {
  std::memcpy(memory, "abcdef", 6);
  ByteBuffer tail = ByteBuffer::External(memory + 2, 6);
  tail.SetLength(4);
  buffer = tail;
  EXPECT_EQ("cdef", Content(buffer));
}

TEST_F(LentBuffer, MovingLendsTheMemoryOn) {
  buffer.Append("abc", 3);
  ByteBuffer target(std::move(buffer));
  EXPECT_EQ(memory, target.Bytes());
  EXPECT_EQ(nullptr, buffer.Bytes());
  target.Append('d');
  EXPECT_EQ('d', memory[3]);
}

}  // namespace
}  // namespace kest
