#include "core/string.h"

#include <gtest/gtest.h>

#include "core/product_record.h"

namespace kest {
namespace {

TEST(String, EmptyAndEmptyTextCompareUnequal) {
  EXPECT_EQ(0, String().Compare(nullptr));
  EXPECT_NE(0, String().Compare(""));
}

TEST(ProductRecord, PairWithoutColonInTheMiddleJoinsTheNextName) {
  ProductRecord record;
  record.Parse("a:1^xyz^b:2");
  ASSERT_EQ(2u, record.Fields().Count());
  EXPECT_STREQ("xyz^b", record.Fields().At(1).Name().Text());
  EXPECT_STREQ("KEST-Product: a:1^xyz^b:2\r\n", record.Format().Text());
}

}  // namespace
}  // namespace kest
