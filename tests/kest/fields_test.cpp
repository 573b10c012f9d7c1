// The products of a purchase are read by the host itself, as the library reads those of a list.
#include "fields.h"

#include <gtest/gtest.h>

namespace kest_host {
namespace {

TEST(ParseProduct, PairsAreReadInTheirOrder) {
  EXPECT_EQ((Fields{{"SKU", "7"}, {"Name", "Jam"}, {"Price", ""}}), ParseProduct("SKU:7^Name:Jam^Price:"));
}

TEST(ParseProduct, AValueMayHoldColons) {
  EXPECT_EQ((Fields{{"a", "1"}, {"b", "2:3"}}), ParseProduct("a:1^b:2:3"));
}

TEST(ParseProduct, WhatIsNoPairAtTheEndIsDropped) {
  EXPECT_EQ((Fields{{"a", "1"}}), ParseProduct("a:1^b"));
  EXPECT_EQ((Fields{{"a", "1"}}), ParseProduct("a:1^"));
  EXPECT_EQ(Fields{}, ParseProduct("abc"));
  EXPECT_EQ(Fields{}, ParseProduct(""));
}

TEST(ParseProduct, WhatIsNoPairInTheMiddleBecomesPartOfTheNextName) {
  EXPECT_EQ((Fields{{"a", "1"}, {"xyz^b", "2"}}), ParseProduct("a:1^xyz^b:2"));
}

TEST(ParseProduct, ARepeatedNameIsKept) {
  EXPECT_EQ((Fields{{"a", "1"}, {"a", "2"}}), ParseProduct("a:1^a:2"));
}

TEST(TakeProducts, ProductsLeaveTheOtherFieldsInTheirOrder) {
  Fields fields = {
      {"A", "1"}, {"KEST-Product", "SKU:7"}, {"B", "2"}, {"kest-product", "SKU:9"}, {"KEST-Products", "x:y"}};
  EXPECT_EQ((std::vector<Fields>{{{"SKU", "7"}}, {{"SKU", "9"}}}), TakeProducts(fields));
  EXPECT_EQ((Fields{{"A", "1"}, {"B", "2"}, {"KEST-Products", "x:y"}}), fields);
}

TEST(FindField, LetterCaseIsIgnoredAndTheFirstCounts) {
  const Fields fields = {{"KEST-TxN", "1"}, {"kest-txn", "2"}};
  EXPECT_EQ(&fields[0].second, Find(fields, "KEST-TXN"));
  EXPECT_EQ(nullptr, Find(fields, "KEST-TxN2"));
}

TEST(ParseNumber, OnlyDigitsUpToTheGreatestAreANumber) {
  std::uint64_t number = 0;
  EXPECT_TRUE(ParseNumber("4294967295", UINT32_MAX, number));
  EXPECT_EQ(UINT32_MAX, number);
  EXPECT_TRUE(ParseNumber("0", 5, number));
  for (const char* text :
       {"", "4294967296", "-1", "+1", " 1", "1 ", "1x", "18446744073709551617", "99999999999999999999"}) {
    EXPECT_FALSE(ParseNumber(text, UINT32_MAX, number)) << text;
  }
}

}  // namespace
}  // namespace kest_host
