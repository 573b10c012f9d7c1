// String: searching.
#include <gtest/gtest.h>

#include "core/string.h"

namespace kest {
namespace {

TEST(StringFind, GivesTheFirstIndexFromTheStartOn) {
  const String text("abcabc");
  EXPECT_EQ(1, text.Find('b'));
  EXPECT_EQ(1, text.Find('b', 1));
  EXPECT_EQ(4, text.Find('b', 2));
  EXPECT_EQ(-1, text.Find('b', 5));
  EXPECT_EQ(-1, text.Find('x'));
}

TEST(StringFind, AStartAtOrBehindTheEndFindsNothing) {
  const String text("abc");
  EXPECT_EQ(-1, text.Find('a', 3));
  EXPECT_EQ(-1, text.Find('a', 100));
  EXPECT_EQ(-1, text.Find('\0', 3));
}

TEST(StringFind, ANegativeStartIsTheFirstCharacter) { EXPECT_EQ(1, String("abcb").Find('b', -5)); }

TEST(StringFind, NothingInFrontOfTheTextIsFound) {
  const String text("a\0b", 3);
  EXPECT_EQ(1, text.Find('\0', -1));
}

TEST(StringFind, NothingIsFoundWithoutStorage) {
  EXPECT_EQ(-1, String().Find('a'));
  EXPECT_EQ(-1, String("").Find('\0'));
}

TEST(StringFind, ZeroBytesInsideTheTextAreFound) { EXPECT_EQ(1, String("a\0b", 3).Find('\0')); }

TEST(StringFind, CharactersAboveAsciiAreFound) { EXPECT_EQ(1, String("a\xE9").Find('\xE9')); }

TEST(StringFindFirstOf, GivesTheFirstMemberFromTheStartOn) {
  const String text("a:b^c:d");
  EXPECT_EQ(1, text.FindFirstOf("^:"));
  EXPECT_EQ(3, text.FindFirstOf("^:", 2));
  EXPECT_EQ(5, text.FindFirstOf("^:", 4));
  EXPECT_EQ(-1, text.FindFirstOf("^:", 6));
  EXPECT_EQ(-1, text.FindFirstOf("xyz"));
  EXPECT_EQ(-1, text.FindFirstOf(""));
}

TEST(StringFindFirstOf, AnEmptyStringHasNone) {
  EXPECT_EQ(-1, String().FindFirstOf("a"));
  EXPECT_EQ(-1, String("").FindFirstOf("a"));
}

TEST(StringFindFirstOf, NoSetHasNone) { EXPECT_EQ(-1, String("abc").FindFirstOf(nullptr)); }

TEST(StringFindFirstOf, TheScanEndsAtTheFirstZeroByte) { EXPECT_EQ(-1, String("a\0b", 3).FindFirstOf("b")); }

TEST(StringFindFirstOf, AStartAtTheEndFindsNothing) { EXPECT_EQ(-1, String("abc").FindFirstOf("abc", 3)); }

TEST(StringReverseFind, ScansDownFromTheStart) {
  const String text("abcabc");
  EXPECT_EQ(4, text.ReverseFind('b', 5));
  EXPECT_EQ(4, text.ReverseFind('b', 4));
  EXPECT_EQ(1, text.ReverseFind('b', 3));
  EXPECT_EQ(0, text.ReverseFind('a', 2));
  EXPECT_EQ(-1, text.ReverseFind('c', 1));
  EXPECT_EQ(-1, text.ReverseFind('x', 5));
}

TEST(StringReverseFind, ANegativeStartIsReturnedAsItIs) {
  EXPECT_EQ(-1, String("abc").ReverseFind('a', -1));
  EXPECT_EQ(-7, String("abc").ReverseFind('a', -7));
  EXPECT_EQ(-7, String().ReverseFind('a', -7));
}

TEST(StringReverseFind, AStartAtTheLengthLooksAtTheTerminator) {
  EXPECT_EQ(3, String("abc").ReverseFind('\0', 3));
  EXPECT_EQ(2, String("abc").ReverseFind('c', 3));
}

TEST(StringReverseFind, AStartBehindTheTextIsCutToIt) { EXPECT_EQ(2, String("abc").ReverseFind('c', 1000)); }

TEST(StringReverseFind, WithoutStorageNothingIsFound) { EXPECT_EQ(-1, String().ReverseFind('a', 3)); }

TEST(StringFindLastOf, ScansDownFromTheEndWhileAboveTheStart) {
  const String text("a/b\\c");
  EXPECT_EQ(3, text.FindLastOf("/\\", 0));
  EXPECT_EQ(1, text.FindLastOf("/", 0));
  EXPECT_EQ(3, text.FindLastOf("/\\", 2));
}

TEST(StringFindLastOf, TheStartItselfIsNotTestedAndIsTheAnswerWithoutAMatch) {
  const String text("a/b\\c");
  EXPECT_EQ(1, text.FindLastOf("/", 1));
  EXPECT_EQ(2, text.FindLastOf("/", 2));
  EXPECT_EQ(0, text.FindLastOf("x", 0));
  EXPECT_EQ(0, text.FindLastOf("", 0));
}

TEST(StringFindLastOf, AStartAtOrBehindTheLastIndexGivesTheLastIndexAtOnce) {
  const String text("abc");
  EXPECT_EQ(2, text.FindLastOf("a", 2));
  EXPECT_EQ(2, text.FindLastOf("a", 3));
  EXPECT_EQ(2, text.FindLastOf("a", 1000));
  EXPECT_EQ(-1, String().FindLastOf("a", 0));
  EXPECT_EQ(-1, String().FindLastOf("a", -1));
}

TEST(StringFindLastOf, ANegativeStartReachesTheFirstCharacter) {
  EXPECT_EQ(0, String("abc").FindLastOf("a", -1));
  EXPECT_EQ(-1, String("abc").FindLastOf("x", -1));
}

TEST(StringFindLastOf, AStartFurtherInFrontIsTheAnswerWithoutAMatch) {
  EXPECT_EQ(0, String("abc").FindLastOf("a", -3));
  EXPECT_EQ(-3, String("abc").FindLastOf("x", -3));
}

TEST(StringFindLastOf, NoSetHasNoMatch) { EXPECT_EQ(0, String("abc").FindLastOf(nullptr, 0)); }

TEST(StringFindLastOf, AZeroByteIsInNoSet) { EXPECT_EQ(0, String("a\0b", 3).FindLastOf("a", 0)); }

TEST(StringFindLastOf, TheLastCharacterIsTested) { EXPECT_EQ(2, String("abc").FindLastOf("c", 0)); }

}  // namespace
}  // namespace kest
