// String: trimming.
#include <gtest/gtest.h>

#include <string>

#include "core/string.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::CapacityOf;
using testing::Content;
using testing::ReferencesOf;
using testing::Sample;

TEST(StringTrim, WhiteSpaceIsExactlyFiveCharacters) {
  for (int code = 0; code < 256; ++code) {
    const auto character = static_cast<char>(code);
    const bool expected = code == 32 || code == 9 || code == 13 || code == 10 || code == 12;
    EXPECT_EQ(expected, String::IsSpace(character)) << code;
  }
}

TEST(StringTrimLeft, LeadingWhiteSpaceGoes) {
  String text(" \t\r\n\fabc \t");
  text.TrimLeft();
  EXPECT_STREQ("abc \t", text.Characters());
  EXPECT_EQ(5u, text.Length());
}

TEST(StringTrimLeft, AVerticalTabStays) {
  String text("\vabc");
  text.TrimLeft();
  EXPECT_STREQ("\vabc", text.Characters());
}

TEST(StringTrimLeft, WithoutWhiteSpaceASharedBlockStaysShared) {
  const String other("abc ");
  String text(other);
  text.TrimLeft();
  EXPECT_EQ(other.Characters(), text.Characters());
}

TEST(StringTrimLeft, ASharedBlockStaysAsItIs) {
  const String other("  abc");
  String text(other);
  text.TrimLeft();
  EXPECT_STREQ("  abc", other.Characters());
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
  EXPECT_EQ(1u, ReferencesOf(text));
}

TEST(StringTrimLeft, TheCopyOfASharedBlockHasTheRoomOfTheShorterText) {
  const String other((std::string(60, ' ') + "abc").c_str());
  String text(other);
  text.TrimLeft();
  EXPECT_EQ(50u, CapacityOf(text));
  EXPECT_STREQ("abc", text.Characters());
}

TEST(StringTrimLeft, ASoleOwnerIsTrimmedInPlace) {
  String text((" " + Sample(60)).c_str());
  const char* block = text.Characters();
  text.TrimLeft();
  EXPECT_EQ(block, text.Characters());
  EXPECT_EQ(Sample(60), Content(text));
}

TEST(StringTrimLeft, WhiteSpaceOnlyGivesLengthZeroWithStorage) {
  String text(" \t");
  text.TrimLeft();
  ASSERT_NE(nullptr, text.Characters());
  EXPECT_STREQ("", text.Characters());
  EXPECT_EQ(0u, text.Length());
  const String other(" ");
  String shared(other);
  shared.TrimLeft();
  ASSERT_NE(nullptr, shared.Characters());
  EXPECT_EQ(0u, shared.Length());
}

TEST(StringTrimRight, TrailingWhiteSpaceGoes) {
  String text("\t abc \t\r\n\f");
  text.TrimRight();
  EXPECT_STREQ("\t abc", text.Characters());
  EXPECT_EQ(5u, text.Length());
}

TEST(StringTrimRight, OneTabGivesAnEmptyText) {
  String text("\t");
  text.TrimRight();
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_STREQ("", text.Characters());
}

TEST(StringTrimRight, AVerticalTabStays) {
  String text("abc\v");
  text.TrimRight();
  EXPECT_STREQ("abc\v", text.Characters());
}

TEST(StringTrimRight, WithoutWhiteSpaceASharedBlockStaysShared) {
  const String other(" abc");
  String text(other);
  text.TrimRight();
  EXPECT_EQ(other.Characters(), text.Characters());
}

TEST(StringTrimRight, ASharedBlockStaysAsItIs) {
  const String other("abc  ");
  String text(other);
  text.TrimRight();
  EXPECT_STREQ("abc  ", other.Characters());
  EXPECT_STREQ("abc", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringTrimRight, ASoleOwnerIsTrimmedInPlace) {
  String text("abc ");
  const char* block = text.Characters();
  text.TrimRight();
  EXPECT_EQ(block, text.Characters());
  EXPECT_STREQ("abc", text.Characters());
}

TEST(StringTrim, BothEndsGo) {
  String text(" \t a b \r\n");
  text.Trim();
  EXPECT_STREQ("a b", text.Characters());
}

TEST(StringTrim, NothingIsTrimmedWithoutStorage) {
  String text;
  text.TrimLeft();
  text.TrimRight();
  text.Trim();
  EXPECT_EQ(nullptr, text.Characters());
}

}  // namespace
}  // namespace kest
