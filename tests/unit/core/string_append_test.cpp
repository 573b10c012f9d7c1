// String: concatenation, insertion, path joining.
#include <gtest/gtest.h>

#include <string>

#include "core/exception.h"
#include "core/string.h"
#include "support/allocation_system.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::CapacityOf;
using testing::Content;
using testing::ReferencesOf;
using testing::Sample;
using testing::SystemInForce;

TEST(StringAppend, AStringGoesBehindTheText) {
  String text("abc");
  text.Append(String("def"));
  EXPECT_STREQ("abcdef", text.Characters());
  EXPECT_EQ(6u, text.Length());
}

TEST(StringAppend, AStringIsTakenWithItsZeroBytes) {
  String text("a");
  text.Append(String("b\0c", 3));
  EXPECT_EQ(std::string("ab\0c", 4), Content(text));
}

TEST(StringAppend, AnEmptyStringChangesNothingNotEvenSharing) {
  const String other("abc");
  String text(other);
  text.Append(String(""));
  text.Append(String());
  EXPECT_EQ(other.Characters(), text.Characters());
  EXPECT_EQ(2u, ReferencesOf(text));
}

TEST(StringAppend, ANullTextChangesNothingNotEvenSharing) {
  const String other("abc");
  String text(other);
  text.Append(static_cast<const char*>(nullptr));
  EXPECT_EQ(other.Characters(), text.Characters());
}

TEST(StringAppend, AnEmptyTextStillCopiesASharedBlock) {
  const String other("abc");
  String text(other);
  text.Append("");
  EXPECT_NE(other.Characters(), text.Characters());
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringAppend, ATextGoesBehindNothing) {
  String text;
  text.Append("abc");
  EXPECT_STREQ("abc", text.Characters());
}

TEST(StringAppend, ASharedBlockStaysAsItIs) {
  const String other("abc");
  String text(other);
  text.Append("def");
  EXPECT_STREQ("abc", other.Characters());
  EXPECT_STREQ("abcdef", text.Characters());
}

TEST(StringAppend, ACharacterIsEndedByANul) {
  String text;
  text.Append('a');
  text.Append('b');
  EXPECT_STREQ("ab", text.Characters());
  EXPECT_EQ(2u, text.Length());
}

TEST(StringAppend, TheTextItselfIsDoubled) {
  String text("abc");
  text.Append(text);
  EXPECT_STREQ("abcabc", text.Characters());
}

TEST(StringAppend, TheTextItselfIsDoubledWhereTheBlockMustGrow) {
  String text(Sample(49).c_str());
  text.Append(text);
  EXPECT_EQ(Sample(49) + Sample(49), Content(text));
  EXPECT_EQ(100u, CapacityOf(text));
}

TEST(StringAppend, TheTextItselfTakesOneAllocationAtTheMost) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  String text("abc");
  memory.Restart();
  text.Append(text);
  EXPECT_EQ(0u, memory.Allocations());
  text.Append(Sample(40).c_str());
  memory.Restart();
  text.Append(text);
  EXPECT_EQ(1u, memory.Allocations());
}

TEST(StringAppend, APieceOfTheTextItselfIsTaken) {
  String text(Sample(49).c_str());
  text.Append(text.Characters() + 40);
  EXPECT_EQ(Sample(49) + Sample(49).substr(40), Content(text));
  text = "abcdef";
  text.Append(text.Characters() + 1, 2);
  EXPECT_STREQ("abcdefbc", text.Characters());
}

TEST(StringAppend, APieceOfASharedBlockIsTaken) {
  const String other("abcdef");
  String text(other);
  text.Append(other.Characters() + 3);
  EXPECT_STREQ("abcdefdef", text.Characters());
  EXPECT_STREQ("abcdef", other.Characters());
}

TEST(StringAppend, ATakenBufferIsWrittenInPlace) {
  String text("abc");
  char* raw = text.TakeBuffer(3);
  text.Append("def");
  EXPECT_STREQ("abcdef", raw);
  EXPECT_EQ(0u, ReferencesOf(text));
}

TEST(StringAppend, LengthsBeyondThirtyTwoBitsAreRefusedWithoutAskingForMemory) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  String text("abc");
  memory.Restart();
  const char bytes[] = "x";
  EXPECT_THROW(text.Append(bytes, 0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(text.Append(bytes, 0xFFFFFFFDu), Qor::MemoryException);
  EXPECT_THROW(text.Insert(bytes, 1, 0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(text.AppendUnsigned(7, 0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(text.AppendSigned(-7, 0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(text.AppendHex(7, 0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(text.TakeBuffer(0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_THROW(String(bytes, 0xFFFFFFFFu), Qor::MemoryException);
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(text));
}

// Insertion.

TEST(StringInsert, BytesGoInFrontInTheMiddleAndAtTheEnd) {
  String text("bd");
  text.Insert("a", 0, 1);
  text.Insert("c", 2, 1);
  text.Insert("ef", 4, 2);
  EXPECT_STREQ("abcdef", text.Characters());
  EXPECT_EQ(6u, text.Length());
}

TEST(StringInsert, TheTailIsMovedThoughItOverlaps) {
  String text("0123456789");
  text.Insert("ab", 1, 2);
  EXPECT_STREQ("0ab123456789", text.Characters());
}

TEST(StringInsert, NoMoreBytesThanCountedAreTaken) {
  String text("ad");
  text.Insert("bcXX", 1, 2);
  EXPECT_STREQ("abcd", text.Characters());
}

TEST(StringInsert, ZeroBytesAreTakenAsTheyAre) {
  String text("ab");
  text.Insert("\0\0", 1, 2);
  EXPECT_EQ(std::string("a\0\0b", 4), Content(text));
}

TEST(StringInsert, ASharedBlockStaysAsItIs) {
  const String other("ac");
  String text(other);
  text.Insert("b", 1, 1);
  EXPECT_STREQ("ac", other.Characters());
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringInsert, BytesGoIntoNothing) {
  String text;
  text.Insert("abc", 0, 3);
  EXPECT_STREQ("abc", text.Characters());
}

TEST(StringInsert, TheBlockGrowsByTheSteps) {
  String text(Sample(49).c_str());
  text.Insert("x", 10, 1);
  EXPECT_EQ(Sample(49).insert(10, "x"), Content(text));
  EXPECT_EQ(100u, CapacityOf(text));
}

TEST(StringInsert, PiecesOfTheTextItselfAreTakenAsTheyWereBefore) {
  String text("abcdef");
  text.Insert(text.Characters() + 2, 3, 4);
  EXPECT_STREQ("abccdefdef", text.Characters());
  text = "abcdef";
  text.Insert(text.Characters() + 2, 0, 2);
  EXPECT_STREQ("cdabcdef", text.Characters());
}

TEST(StringInsert, PiecesOfTheTextItselfAreTakenAlsoWhereTheBlockMustGrow) {
  String text(Sample(49).c_str());
  text.Insert(text.Characters() + 10, 5, 20);
  EXPECT_EQ(Sample(49).insert(5, Sample(49).substr(10, 20)), Content(text));
}

// Path joining with a String.

TEST(StringJoinPath, ASeparatorGoesBetweenWhereNeitherSideHasOne) {
  String path("a");
  path.JoinPath(String("b"));
  EXPECT_STREQ("a\\b", path.Characters());
}

TEST(StringJoinPath, SeparatorsOnBothSidesAreBothKept) {
  String path("a\\");
  path.JoinPath(String("\\b"));
  EXPECT_STREQ("a\\\\b", path.Characters());
}

TEST(StringJoinPath, AStringsOwnSeparatorIsEnough) {
  String path("a");
  path.JoinPath(String("\\b"));
  EXPECT_STREQ("a\\b", path.Characters());
  path.JoinPath(String("/c"));
  EXPECT_STREQ("a\\b/c", path.Characters());
}

TEST(StringJoinPath, EitherSeparatorAtTheEndIsEnough) {
  String path("a/");
  path.JoinPath(String("b\\"));
  path.JoinPath(String("c"));
  EXPECT_STREQ("a/b\\c", path.Characters());
}

TEST(StringJoinPath, AnEmptyPathSharesTheString) {
  const String part("b");
  String path;
  path.JoinPath(part);
  EXPECT_EQ(part.Characters(), path.Characters());
}

TEST(StringJoinPath, AnEmptyStringChangesNothing) {
  String path("a");
  path.JoinPath(String());
  path.JoinPath(String(""));
  EXPECT_STREQ("a", path.Characters());
}

TEST(StringJoinPath, ItselfIsJoined) {
  String path("a");
  path.JoinPath(path);
  EXPECT_STREQ("a\\a", path.Characters());
  const String other(path);
  path.JoinPath(other);
  EXPECT_STREQ("a\\a\\a\\a", path.Characters());
}

// Path joining with a NUL-terminated text.

TEST(StringJoinPath, ATextsOwnSeparatorIsNotLookedAt) {
  String path("a");
  path.JoinPath("\\b");
  EXPECT_STREQ("a\\\\b", path.Characters());
}

TEST(StringJoinPath, ATextBehindASeparatorGetsNone) {
  String path("a/");
  path.JoinPath("b");
  EXPECT_STREQ("a/b", path.Characters());
  path = "a\\";
  path.JoinPath("\\b");
  EXPECT_STREQ("a\\\\b", path.Characters());
}

TEST(StringJoinPath, AnEmptyTextAddsASeparator) {
  String path("a");
  path.JoinPath("");
  EXPECT_STREQ("a\\", path.Characters());
}

TEST(StringJoinPath, ANullTextChangesNothing) {
  String path("a");
  path.JoinPath(static_cast<const char*>(nullptr));
  EXPECT_STREQ("a", path.Characters());
}

TEST(StringJoinPath, AnEmptyPathTakesTheText) {
  String path;
  path.JoinPath("b");
  EXPECT_STREQ("b", path.Characters());
  String null;
  null.JoinPath(static_cast<const char*>(nullptr));
  EXPECT_EQ(nullptr, null.Characters());
}

TEST(StringJoinPath, APieceOfThePathItselfIsJoined) {
  String path("ab");
  path.JoinPath(path.Characters() + 1);
  EXPECT_STREQ("ab\\b", path.Characters());
}

TEST(StringJoinPath, TheBlockGrowsToTheJoinedLengthAlone) {
  String path((Sample(40) + "/").c_str());
  const char* block = path.Characters();
  path.JoinPath("12345678");
  EXPECT_EQ(block, path.Characters());
  EXPECT_EQ(49u, path.Length());
}

}  // namespace
}  // namespace kest
