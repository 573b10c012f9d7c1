#include "api/product_list.h"

#include <gtest/gtest.h>

#include <memory>

#include "support/allocation_system.h"

namespace kest {
namespace {

FieldSet ReplyWithThreeProducts() {
  FieldSet reply;
  reply.Add("KEST-Product", "SKU:1");
  reply.Add("Note", "between");
  reply.Add("kest-product", "SKU:2");
  reply.Add("KEST-PRODUCT", "SKU:3");
  return reply;
}

TEST(ProductList, AFreshListIsSafeToRead) {
  // On the heap, where the unset cursor holds whatever was there.
  const std::unique_ptr<ProductList> list(new ProductList);
  EXPECT_EQ(nullptr, list->Next());
  EXPECT_EQ(nullptr, list->Next());
}

TEST(ProductList, ProductsComeInReplyOrderThenNullForGood) {
  ProductList list;
  list.Load(ReplyWithThreeProducts());
  for (const char* sku : {"1", "2", "3"}) {
    FieldSet* product = list.Next();
    ASSERT_NE(nullptr, product);
    EXPECT_STREQ(sku, product->Get("SKU").Text());
  }
  EXPECT_EQ(nullptr, list.Next());
  EXPECT_EQ(nullptr, list.Next());
}

TEST(ProductList, RoomForAllLinesIsMadeAtOnce) {
  const auto allocations = [](int products) {
    FieldSet reply;
    for (int i = 0; i < products; ++i) reply.Add("KEST-Product", "SKU:12345^Name:x");
    ProductList list;
    list.Load(reply);
    testing::AllocationSystem memory;
    const testing::SystemInForce inForce(memory);
    EXPECT_FALSE(list.Format().IsEmpty());
    return memory.Allocations();
  };
  EXPECT_EQ(allocations(10), allocations(100));
}

TEST(ProductList, OtherReplyFieldsBecomeItsOwn) {
  ProductList list;
  list.Set("GUID", "request");
  list.Load(ReplyWithThreeProducts());
  ASSERT_EQ(1u, list.Fields().Count());
  EXPECT_STREQ("between", list.Get("Note").Text());
}

TEST(ProductList, LoadingAgainReplacesEverythingAndRewinds) {
  ProductList list;
  list.Load(ReplyWithThreeProducts());
  list.Next();
  FieldSet second;
  second.Add("KEST-Product", "SKU:9");
  list.Load(second);
  EXPECT_STREQ("9", list.Next()->Get("SKU").Text());
  EXPECT_EQ(nullptr, list.Next());
  EXPECT_EQ(0u, list.Fields().Count());
}

TEST(ProductList, AReplyWithoutProductsGivesAnEmptyList) {
  ProductList list;
  list.Load(FieldSet());
  EXPECT_EQ(nullptr, list.Next());
}

TEST(ProductList, FormatRendersFieldsThenRecords) {
  ProductList list;
  list.Load(ReplyWithThreeProducts());
  EXPECT_STREQ("Note: between\r\nKEST-Product: SKU:1\r\nKEST-Product: SKU:2\r\nKEST-Product: SKU:3\r\n",
               list.Format().Text());
}

TEST(ProductList, ClearEmptiesItAndKeepsTheErrorCode) {
  ProductList list;
  list.Load(ReplyWithThreeProducts());
  list.SetErrorCode(102);
  list.Clear();
  EXPECT_EQ(0u, list.Records().Count());
  EXPECT_EQ(0u, list.Fields().Count());
  EXPECT_EQ(102, list.ErrorCode());
  EXPECT_EQ(2, list.Kind());
}

}  // namespace
}  // namespace kest
