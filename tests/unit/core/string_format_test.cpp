// String: formatting.
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
using testing::Sample;
using testing::SystemInForce;

TEST(StringFormat, ReplacesTheText) {
  String text("before");
  text.Format("%s-%d-%c", "abc", -7, 'x');
  EXPECT_STREQ("abc--7-x", text.Characters());
  EXPECT_EQ(8u, text.Length());
}

TEST(StringFormat, MoneyHasTwoDecimals) {
  String text;
  text.Format("%.2f", 19.9);
  EXPECT_STREQ("19.90", text.Characters());
}

TEST(StringFormat, AnEmptyFormatGivesAnEmptyText) {
  String text("before");
  text.Format("");
  EXPECT_TRUE(text.IsEmpty());
  text = "before";
  text.Format(nullptr);
  EXPECT_TRUE(text.IsEmpty());
}

TEST(StringFormat, TheBoundIsWhatTheBlockHasRoomFor) {
  String text;
  text.Format("%d", 1);
  EXPECT_EQ(50u, CapacityOf(text));
  text = String();
  text.Format("%f", 1.0);
  EXPECT_EQ(150u, CapacityOf(text));
  String precise;
  precise.Format("%.30f%d", 1.0, 1);
  EXPECT_EQ(200u, CapacityOf(precise));
}

TEST(StringFormat, ALongResultIsWhole) {
  String text;
  text.Format("%s%300d", Sample(500).c_str(), 7);
  EXPECT_EQ(Sample(500) + std::string(299, ' ') + "7", Content(text));
}

TEST(StringFormat, AResultLongerThanTheBoundIsWhole) {
  String text;
  text.Format("%f", 1e300);  // 301 digits and six decimals where 128 are reserved
  EXPECT_EQ(308u, text.Length());
  EXPECT_EQ(".000000", Content(text).substr(301));
  text.Format("%60.1s", "abc");
  EXPECT_EQ(std::string(59, ' ') + "a", Content(text));
}

TEST(StringFormat, AResultOfExactlyTheCapacityIsWhole) {
  String text;
  text.Format("%50.1s", "abc");  // one character is reserved, which gives a block of 50
  EXPECT_EQ(std::string(49, ' ') + "a", Content(text));
  EXPECT_EQ(100u, CapacityOf(text));
}

TEST(StringFormat, AConversionTheBoundDoesNotKnowIsWhole) {
  String text;
  text.Format("%E%s", 1.5, "x");
  EXPECT_EQ("1.500000E+00", Content(text).substr(0, 12));
}

TEST(StringFormat, WideTextIsNarrowed) {
  String text;
  text.Format("%ls|%S", L"abc", L"def");
  EXPECT_STREQ("abc|def", text.Characters());
}

TEST(StringFormat, AnArgumentMayBeTheTextItself) {
  String text("abc");
  text.Format("%s:%s", text.Characters(), text.Characters());
  EXPECT_STREQ("abc:abc", text.Characters());
}

TEST(StringFormat, TheFormatMayBeTheTextItself) {
  String text("%d items");
  text.Format(text.Characters(), 3);
  EXPECT_STREQ("3 items", text.Characters());
}

TEST(StringFormat, ASharedBlockStaysAsItIs) {
  const String other("abc");
  String text(other);
  text.Format("%d", 1);
  EXPECT_STREQ("abc", other.Characters());
  EXPECT_STREQ("1", text.Characters());
}

TEST(StringFormat, AnEmptyResultHasStorage) {
  String text;
  text.Format("%s", "");
  ASSERT_NE(nullptr, text.Characters());
  EXPECT_TRUE(text.IsEmpty());
}

TEST(StringFormat, AFailedConversionGivesAnEmptyText) {
  String text("before");
  text.Format("%ls", L"\xD800");  // half of a pair: no character in any locale
  EXPECT_TRUE(text.IsEmpty());
}

TEST(StringFormat, ABoundBeyondThirtyTwoBitsIsRefused) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  String text("abc");
  EXPECT_THROW(text.Format("%99999999999d", 1), Qor::MemoryException);
  EXPECT_STREQ("abc", text.Characters());
}

}  // namespace
}  // namespace kest
