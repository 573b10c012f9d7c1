// String: construction, assignment, access, comparison, raw buffers.
#include "core/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

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

// Construction.

TEST(StringConstruction, ANullTextGivesNoStorage) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const String text(nullptr);
  EXPECT_EQ(nullptr, text.Characters());
  EXPECT_STREQ("", text.Text());
  EXPECT_EQ(0u, text.Length());
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_EQ(0u, memory.Allocations());
}

TEST(StringConstruction, AnEmptyTextGivesABlockOfLengthZero) {
  const String text("");
  ASSERT_NE(nullptr, text.Characters());
  EXPECT_STREQ("", text.Characters());
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_EQ(50u, CapacityOf(text));
}

TEST(StringConstruction, ATextIsCopied) {
  char source[] = "abc";
  const String text(source);
  source[0] = 'x';
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(3u, text.Length());
  EXPECT_EQ(1u, ReferencesOf(text));
}

TEST(StringConstruction, BytesAreTakenAsTheyAreAndEnded) {
  const String text("a\0b\0", 4);
  EXPECT_EQ(std::string("a\0b\0", 4), Content(text));
  EXPECT_EQ('\0', text.Characters()[4]);
}

TEST(StringConstruction, NoBytesGiveABlockOfLengthZero) {
  const String text("abc", 0);
  ASSERT_NE(nullptr, text.Characters());
  EXPECT_STREQ("", text.Characters());
}

TEST(StringConstruction, ACopySharesTheBlock) {
  const String source("abc");
  const String copy(source);
  EXPECT_EQ(source.Characters(), copy.Characters());
  EXPECT_EQ(2u, ReferencesOf(source));
}

TEST(StringConstruction, ACopyOfAnEmptyBlockSharesItToo) {
  const String source("");
  const String copy(source);
  EXPECT_EQ(source.Characters(), copy.Characters());
}

TEST(StringConstruction, ACopyOfNothingIsNothing) { EXPECT_EQ(nullptr, String(String()).Characters()); }

TEST(StringConstruction, AMovedTextLeavesNothingBehind) {
  String source("abc");
  const char* block = source.Characters();
  const String target(std::move(source));
  EXPECT_EQ(block, target.Characters());
  EXPECT_EQ(nullptr, source.Characters());
}

// Assignment from a String.

TEST(StringAssignment, ATextThatIsMovedToItselfStays) {
  String text("abc");
  String& same = text;
  text = std::move(same);
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(text));
}

TEST(StringAssignment, ATextIsSharedAndTheOwnBlockReleased) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const String source("abc");
  String target("xyz");
  target = source;
  EXPECT_EQ(source.Characters(), target.Characters());
  EXPECT_EQ(2u, ReferencesOf(source));
  EXPECT_EQ(1, memory.Outstanding());
}

TEST(StringAssignment, TheOtherOwnersOfAReleasedBlockKeepIt) {
  const String source("abc");
  const String old("xyz");
  String target(old);
  target = source;
  EXPECT_STREQ("xyz", old.Characters());
  EXPECT_EQ(1u, ReferencesOf(old));
}

TEST(StringAssignment, AnEmptySourceLetsASoleOwnerKeepItsBlock) {
  String target("abc");
  const char* block = target.Characters();
  target = String();
  EXPECT_EQ(block, target.Characters());
  EXPECT_STREQ("", target.Characters());
  EXPECT_EQ(0u, target.Length());
}

TEST(StringAssignment, AnEmptySourceReleasesASharedBlock) {
  const String other("abc");
  String target(other);
  target = String("");
  EXPECT_EQ(nullptr, target.Characters());
  EXPECT_STREQ("abc", other.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringAssignment, AnEmptySourceLeavesAnEmptyTargetAlone) {
  const String empty("");
  String null;
  null = empty;
  EXPECT_EQ(nullptr, null.Characters());
  String block("");
  const char* before = block.Characters();
  block = String();
  EXPECT_EQ(before, block.Characters());
}

TEST(StringAssignment, AnEmptySourceLeavesASharedEmptyBlockAlone) {
  const String empty("");
  String target(empty);
  target = String();
  EXPECT_EQ(empty.Characters(), target.Characters());
}

TEST(StringAssignment, ItselfIsHarmless) {
  String text("abc");
  const String& itself = text;
  text = itself;
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(text));
}

TEST(StringAssignment, ItselfIsHarmlessWhileTheBufferIsTaken) {
  String text("abc");
  text.TakeBuffer(3);
  const String& itself = text;
  text = itself;
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(0u, ReferencesOf(text));
}

TEST(StringAssignment, AnExclusiveSourceIsCopiedIntoTheOwnBlock) {
  String source("abc");
  source.TakeBuffer(3);
  String target("wxyz");
  const char* block = target.Characters();
  target = source;
  EXPECT_EQ(block, target.Characters());
  EXPECT_STREQ("abc", target.Characters());
  EXPECT_EQ(3u, target.Length());
  EXPECT_EQ(0u, ReferencesOf(source));
}

TEST(StringAssignment, AnExclusiveSourceIsCopiedWithItsZeroBytes) {
  String source("a\0b", 3);
  source.TakeBuffer(3);
  String target;
  target = source;
  EXPECT_EQ(std::string("a\0b", 3), Content(target));
}

TEST(StringAssignment, AMovedTextReplacesTheOwnBlock) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  String source("abc");
  const char* block = source.Characters();
  String target("xyz");
  target = std::move(source);
  EXPECT_EQ(block, target.Characters());
  EXPECT_EQ(nullptr, source.Characters());
  EXPECT_EQ(1, memory.Outstanding());
  target = String();
  EXPECT_EQ(block, target.Characters());
  EXPECT_TRUE(target.IsEmpty());
}

// Assignment from a NUL-terminated text.

TEST(StringAssignment, AnEmptyTextAllocates) {
  String text;
  text = "";
  ASSERT_NE(nullptr, text.Characters());
  EXPECT_EQ(0u, text.Length());
  EXPECT_EQ(50u, CapacityOf(text));
}

TEST(StringAssignment, ANullTextDoesNotAllocate) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  String text;
  text = static_cast<const char*>(nullptr);
  EXPECT_EQ(nullptr, text.Characters());
  EXPECT_EQ(0u, memory.Allocations());
}

TEST(StringAssignment, ANullTextEmptiesByTheRulesOfEmpty) {
  String sole("abc");
  sole = static_cast<const char*>(nullptr);
  EXPECT_STREQ("", sole.Characters());
  const String other("abc");
  String shared(other);
  shared = static_cast<const char*>(nullptr);
  EXPECT_EQ(nullptr, shared.Characters());
  EXPECT_STREQ("abc", other.Characters());
}

TEST(StringAssignment, ATextThatFitsIsWrittenInPlace) {
  String text(Sample(120).c_str());
  const char* block = text.Characters();
  text = "abc";
  EXPECT_EQ(block, text.Characters());
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(150u, CapacityOf(text));
}

TEST(StringAssignment, ATextOverASharedBlockGetsABlockOfItsOwn) {
  const String other("abc");
  String text(other);
  text = "xyz";
  EXPECT_STREQ("abc", other.Characters());
  EXPECT_STREQ("xyz", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
  EXPECT_EQ(1u, ReferencesOf(text));
}

TEST(StringAssignment, ATextFromItsOwnMiddleIsTaken) {
  String text("abcdef");
  text = text.Characters() + 2;
  EXPECT_STREQ("cdef", text.Characters());
  EXPECT_EQ(4u, text.Length());
}

TEST(StringAssignment, ATextFromTheMiddleOfASharedBlockIsTaken) {
  const String other("abcdef");
  String text(other);
  text = other.Characters() + 4;
  EXPECT_STREQ("ef", text.Characters());
  EXPECT_STREQ("abcdef", other.Characters());
}

// Empty.

TEST(StringEmpty, ASoleOwnerKeepsItsBlock) {
  String text("abc");
  const char* block = text.Characters();
  text.Empty();
  EXPECT_EQ(block, text.Characters());
  EXPECT_EQ('\0', *text.Characters());
  EXPECT_EQ(0u, text.Length());
}

TEST(StringEmpty, ASharedBlockIsLetGo) {
  const String other("abc");
  String text(other);
  text.Empty();
  EXPECT_EQ(nullptr, text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringEmpty, WithoutStorageNothingHappens) {
  String text;
  text.Empty();
  EXPECT_EQ(nullptr, text.Characters());
}

// Single characters.

TEST(StringSetAt, ANulInTheMiddleCutsTheText) {
  String text("abcdef");
  text.SetAt(3, '\0');
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(3u, text.Length());
}

TEST(StringSetAt, ASharedBlockIsCopiedFirst) {
  const String other(Sample(60).c_str());
  String text(other);
  text.SetAt(0, 'x');
  EXPECT_EQ(Sample(60), Content(other));
  EXPECT_EQ('x', text.At(0));
  EXPECT_EQ(60u, text.Length());
  EXPECT_EQ(100u, CapacityOf(text));
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringSetAt, ASoleOwnerIsWrittenInPlace) {
  String text("abc");
  const char* block = text.Characters();
  text.SetAt(2, 'x');
  EXPECT_EQ(block, text.Characters());
  EXPECT_STREQ("abx", text.Characters());
}

TEST(StringSetAt, AnExclusiveOwnerIsWrittenInPlaceAndStaysExclusive) {
  String text("abc");
  char* raw = text.TakeBuffer(3);
  text.SetAt(0, 'x');
  EXPECT_EQ(raw, text.Characters());
  EXPECT_STREQ("xbc", raw);
  EXPECT_EQ(0u, ReferencesOf(text));
}

// Raw buffers.

TEST(StringBuffer, ACopyOfATakenBufferIsIndependent) {
  String source("abc");
  char* raw = source.TakeBuffer(3);
  const String copy(source);
  EXPECT_NE(source.Characters(), copy.Characters());
  raw[0] = 'x';
  EXPECT_STREQ("abc", copy.Characters());
  EXPECT_STREQ("xbc", source.Characters());
  EXPECT_EQ(0u, ReferencesOf(source));
  EXPECT_EQ(1u, ReferencesOf(copy));
}

TEST(StringBuffer, AReturnedBufferIsSharedAgain) {
  String source("abc");
  source.TakeBuffer(3);
  source.ReturnBuffer();
  const String copy(source);
  EXPECT_EQ(source.Characters(), copy.Characters());
  EXPECT_EQ(2u, ReferencesOf(source));
}

TEST(StringBuffer, TakingASharedBlockLeavesTheOtherOwnersTheirs) {
  const String other("abc");
  String text(other);
  text.TakeBuffer(3)[0] = 'x';
  text.ReturnBuffer();
  EXPECT_STREQ("abc", other.Characters());
  EXPECT_STREQ("xbc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringBuffer, TheBufferHasTheLengthAskedForAndKeepsTheText) {
  String text("abc");
  char* raw = text.TakeBuffer(60);
  EXPECT_EQ(0, std::memcmp(raw, "abc", 3));
  EXPECT_EQ('\0', raw[60]);
  EXPECT_EQ(60u, text.Length());
  text.ReturnBuffer();
  text.TakeBuffer(2);
  text.ReturnBuffer();
  EXPECT_STREQ("ab", text.Characters());
}

TEST(StringBuffer, ReturningWhatWasNotTakenChangesNothing) {
  String text("abc");
  const String copy(text);
  text.ReturnBuffer();
  EXPECT_EQ(2u, ReferencesOf(text));
  String().ReturnBuffer();
}

TEST(StringBuffer, OutgrowingATakenBufferGivesAnOrdinaryBlock) {
  String text("abc");
  text.TakeBuffer(3);
  text.Append(Sample(60).c_str());
  EXPECT_EQ(1u, ReferencesOf(text));
  EXPECT_EQ("abc" + Sample(60), Content(text));
}

// Comparison.

TEST(StringCompare, AnEmptyStringEqualsANullText) {
  EXPECT_EQ(0, String().Compare(nullptr));
  EXPECT_EQ(0, String("").Compare(nullptr));
}

TEST(StringCompare, AnEmptyStringDoesNotEqualAnEmptyText) {
  EXPECT_NE(0, String().Compare(""));
  EXPECT_NE(0, String("").Compare(""));
}

TEST(StringCompare, ATextDoesNotEqualANullText) { EXPECT_NE(0, String("a").Compare(nullptr)); }

TEST(StringCompare, LetterCaseCounts) {
  EXPECT_EQ(0, String("abc").Compare("abc"));
  EXPECT_NE(0, String("abc").Compare("abC"));
  EXPECT_NE(0, String("abc").Compare("abcd"));
  EXPECT_NE(0, String("abc").Compare("ab"));
  EXPECT_NE(0, String("abc").Compare(""));
}

TEST(StringEquals, WholeLengthsAreComparedAndEmptyIsEmpty) {
  EXPECT_TRUE(String() == String(""));
  EXPECT_TRUE(String("a\0b", 3) == String("a\0b", 3));
  EXPECT_TRUE(String("a\0b", 3) != String("a\0c", 3));
  EXPECT_TRUE(String("a") != String("a\0", 2));
}

TEST(StringEqualsIgnoringCase, OnlyTheLettersAToZAreFolded) {
  EXPECT_TRUE(String("KEST-TxN").EqualsIgnoringCase("kest-txn"));
  EXPECT_TRUE(String("az09").EqualsIgnoringCase("AZ09"));
  EXPECT_FALSE(String("\xC4").EqualsIgnoringCase("\xE4"));
  EXPECT_FALSE(String("[").EqualsIgnoringCase("{"));
  EXPECT_FALSE(String("@").EqualsIgnoringCase("`"));
}

TEST(StringEqualsIgnoringCase, LengthsMustAgree) {
  EXPECT_FALSE(String("abc").EqualsIgnoringCase("ab"));
  EXPECT_FALSE(String("ab").EqualsIgnoringCase("abc"));
}

TEST(StringEqualsIgnoringCase, EmptyEqualsEmptyAndNothingElse) {
  EXPECT_TRUE(String().EqualsIgnoringCase(nullptr));
  EXPECT_TRUE(String().EqualsIgnoringCase(""));
  EXPECT_TRUE(String("").EqualsIgnoringCase(nullptr));
  EXPECT_FALSE(String("a").EqualsIgnoringCase(""));
  EXPECT_FALSE(String("a").EqualsIgnoringCase(nullptr));
  EXPECT_FALSE(String().EqualsIgnoringCase("a"));
  EXPECT_FALSE(String("\0", 1).EqualsIgnoringCase(""));
}

TEST(StringMiddle, IsCutToTheText) {
  const String text("abcdef");
  EXPECT_STREQ("cd", text.Middle(2, 2).Text());
  EXPECT_STREQ("ef", text.Middle(4, 100).Text());
  EXPECT_STREQ("ef", text.Middle(4, 0xFFFFFFFFu).Text());
  EXPECT_TRUE(text.Middle(6, 1).IsEmpty());
  EXPECT_TRUE(text.Middle(0, 0).IsEmpty());
  EXPECT_TRUE(String().Middle(0, 1).IsEmpty());
}

}  // namespace
}  // namespace kest
