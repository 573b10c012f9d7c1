#include "core/name_value_list.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/allocation_system.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::SystemInForce;

// name=value;name=value;
std::string Content(const NameValueList& list) {
  std::string content;
  for (std::uint32_t i = 0; i < list.Count(); ++i) {
    content += testing::Content(list.At(i).Name()) + "=" + testing::Content(list.At(i).Value()) + ";";
  }
  return content;
}

TEST(NameValueList, AnEmptyListFindsNothing) {
  const NameValueList list;
  EXPECT_EQ(-1, list.Find("a"));
  EXPECT_EQ(-1, list.Find(""));
  EXPECT_EQ(-1, list.Find(nullptr));
  EXPECT_EQ(0u, list.Count());
}

TEST(NameValueList, SettingANameTwiceLeavesOnePairWithTheSecondValue) {
  NameValueList list;
  list.Set("KEST-TxN", "1");
  list.Set("KEST-TxN", "2");
  EXPECT_EQ("KEST-TxN=2;", Content(list));
}

TEST(NameValueList, SettingANameInLowerCaseReplacesThatPairsValueAndKeepsItsName) {
  NameValueList list;
  list.Set("KEST-TxN", "1");
  list.Set("kest-txn", "3");
  EXPECT_EQ("KEST-TxN=3;", Content(list));
}

TEST(NameValueList, SettingReplacesTheFirstOfSeveral) {
  NameValueList list;
  list.Add("a", "1");
  list.Add("A", "2");
  list.Set("A", "3");
  EXPECT_EQ("a=3;A=2;", Content(list));
}

TEST(NameValueList, TheOrderOfFirstInsertionIsKept) {
  NameValueList list;
  list.Set("b", "1");
  list.Set("a", "2");
  list.Set("c", "3");
  list.Set("b", "4");
  EXPECT_EQ("b=4;a=2;c=3;", Content(list));
}

TEST(NameValueList, AddingAppendsAlsoWhatIsThere) {
  NameValueList list;
  list.Add("a", "1");
  list.Add("a", "2");
  EXPECT_EQ("a=1;a=2;", Content(list));
  EXPECT_EQ(0, list.Find("a"));
  EXPECT_STREQ("1", list.Get("A").Text());
}

TEST(NameValueList, ALookUpIgnoresTheCaseOfAToZAlone) {
  NameValueList list;
  list.Add("\xC4", "1");
  list.Add("[x]", "2");
  EXPECT_EQ(-1, list.Find("\xE4"));
  EXPECT_EQ(1, list.Find("[X]"));
  EXPECT_EQ(-1, list.Find("{x}"));
}

TEST(NameValueList, AnEmptyNameFindsTheFirstEmptyName) {
  NameValueList list;
  list.Add("", "1");
  list.Add("a", "2");
  EXPECT_EQ(0, list.Find(""));
  EXPECT_EQ(0, list.Find(nullptr));
  NameValueList null;
  null.Add("a", "1");
  null.Add(String(), "2");
  EXPECT_EQ(1, null.Find(""));
}

TEST(NameValueList, AnEmptyNameFindsNoOtherName) {
  NameValueList list;
  list.Add("a", "1");
  EXPECT_EQ(-1, list.Find(""));
  EXPECT_EQ(-1, list.Find(nullptr));
}

TEST(NameValueList, GettingGivesTheFirstValueOrAnEmptyText) {
  NameValueList list;
  list.Add("a", "1");
  EXPECT_STREQ("1", list.Get("A").Text());
  EXPECT_TRUE(list.Get("b").IsEmpty());
}

TEST(NameValueList, ValuesAreShared) {
  const String value("abc");
  NameValueList list;
  list.Set("a", value);
  EXPECT_EQ(value.Characters(), list.At(0).Value().Characters());
  EXPECT_EQ(value.Characters(), list.Get("a").Characters());
}

TEST(NameValueList, NamesAndValuesOfItsOwnMayBePassed) {
  NameValueList list;
  for (int i = 0; i < 32; ++i) list.Add("a", "1");
  list.Add(list.At(0).Name(), list.At(0).Value());
  EXPECT_EQ("a", testing::Content(list.At(32).Name()));
  EXPECT_EQ("1", testing::Content(list.At(32).Value()));
  list.Set("b", list.At(0).Value());
  list.Set(list.At(33).Name().Text(), list.At(33).Name());
  EXPECT_EQ("b", testing::Content(list.At(33).Value()));
}

TEST(NameValueList, ClearingKeepsTheRoom) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  const String name("a"), value("1");
  NameValueList list;
  for (int i = 0; i < 33; ++i) list.Add(name, value);
  list.Clear();
  EXPECT_EQ(0u, list.Count());
  memory.Restart();
  for (int i = 0; i < 64; ++i) list.Add(name, value);
  EXPECT_EQ(0u, memory.Allocations());
  list.Add(name, value);
  EXPECT_EQ(1u, memory.Allocations());
}

TEST(NameValueList, ACopyIsIndependentAndSharesTheTexts) {
  NameValueList list;
  list.Add("a", "1");
  NameValueList copy(list);
  EXPECT_EQ(list.At(0).Name().Characters(), copy.At(0).Name().Characters());
  copy.Set("a", "2");
  EXPECT_EQ("a=1;", Content(list));
  EXPECT_EQ("a=2;", Content(copy));
}

TEST(NameValueList, AnAddedPairIsTakenOver) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  NameValueList list;
  list.Reserve(1);
  NameValuePair pair("a", "1");
  memory.Restart();
  list.Add(std::move(pair));
  EXPECT_EQ(0u, memory.Allocations());
  EXPECT_EQ("a=1;", Content(list));
}

TEST(HeaderLines, EveryFieldIsALineInListOrder) {
  NameValueList list;
  list.Add("b", "1");
  list.Add("", "");
  list.Add("a", "x y");
  String text("before ");
  AppendHeaderLines(list, text);
  EXPECT_STREQ("before b: 1\r\n: \r\na: x y\r\n", text.Text());
}

TEST(HeaderLines, TheirLengthIsKnownBeforehandAndAskedForOnce) {
  AllocationSystem memory;
  SystemInForce inForce(memory);
  NameValueList list;
  for (int i = 0; i < 100; ++i) list.Add("name", "value");
  EXPECT_EQ(1300u, HeaderLinesLength(list));
  memory.Restart();
  String text;
  AppendHeaderLines(list, text);
  EXPECT_EQ(1300u, text.Length());
  EXPECT_EQ(1u, memory.Allocations());
}

}  // namespace
}  // namespace kest
