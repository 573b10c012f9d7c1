#include "api/checkout.h"

#include <gtest/gtest.h>

#include "core/exception.h"
#include "support/allocation_system.h"

namespace kest {
namespace {

TEST(Checkout, ASkuAddedAgainReplacesItsLineInPlace) {
  Checkout checkout;
  checkout.AddOrderLine(7, 1);
  checkout.AddOrderLine(9, 1);
  checkout.AddOrderLine(7, 3);
  EXPECT_STREQ("KEST-Product: SKU:7^Quantity:3\r\nKEST-Product: SKU:9^Quantity:1\r\n", checkout.Format().Text());
}

TEST(Checkout, FormatRendersOwnFieldsThenTheOrder) {
  Checkout checkout;
  checkout.Set("KEST-TxN", "T1");
  checkout.AddOrderLine(1042, 2);
  checkout.BillOf().Set("hidden", "bill");
  checkout.PurchaseOf().Set("hidden", "purchase");
  EXPECT_STREQ("KEST-TxN: T1\r\nKEST-Product: SKU:1042^Quantity:2\r\n", checkout.Format().Text());
}

TEST(Checkout, NumbersAreTakenToTheirLimits) {
  Checkout checkout;
  checkout.AddOrderLine(4294967295u, 65535);
  EXPECT_STREQ("KEST-Product: SKU:4294967295^Quantity:65535\r\n", checkout.Format().Text());
}

TEST(Checkout, ClearingTheOrderLeavesTheRest) {
  Checkout checkout;
  checkout.Set("a", "1");
  checkout.AddOrderLine(7, 1);
  checkout.ClearOrder();
  EXPECT_EQ(0u, checkout.Order().Count());
  EXPECT_STREQ("a: 1\r\n", checkout.Format().Text());
}

TEST(Checkout, ClearEmptiesEveryMember) {
  Checkout checkout;
  checkout.Set("a", "1");
  checkout.AddOrderLine(7, 1);
  checkout.BillOf().Set("b", "2");
  checkout.BillOf().Records().AppendNew();
  checkout.PurchaseOf().Set("c", "3");
  checkout.SetErrorCode(12);
  checkout.Clear();
  EXPECT_STREQ("", checkout.Format().Text());
  EXPECT_EQ(0u, checkout.BillOf().Fields().Count());
  EXPECT_EQ(0u, checkout.BillOf().Records().Count());
  EXPECT_EQ(0u, checkout.PurchaseOf().Fields().Count());
  EXPECT_EQ(12, checkout.ErrorCode());
}

TEST(Checkout, AnOrderLineThatFindsNoMemoryChangesNothing) {
  testing::AllocationSystem memory;
  testing::SystemInForce inForce(memory);
  for (const auto how : {testing::AllocationSystem::Failing::once, testing::AllocationSystem::Failing::fromThenOn}) {
    for (const std::uint32_t sku : {7u, 8u}) {  // one to replace, one to append
      bool isDone = false;
      for (std::uint64_t point = 1; !isDone; ++point) {
        Checkout checkout;
        checkout.AddOrderLine(7, 1);
        memory.FailAt(point, how);
        try {
          checkout.AddOrderLine(sku, 3);
          isDone = true;
          EXPECT_GT(point, 3u);
        } catch (const Qor::MemoryException&) {
          memory.FailNever();
          EXPECT_STREQ("KEST-Product: SKU:7^Quantity:1\r\n", checkout.Format().Text()) << point;
        }
        memory.FailNever();
      }
    }
  }
  EXPECT_EQ(0, memory.Outstanding());
}

TEST(Bill, FormatRendersFieldsThenRecords) {
  Bill bill;
  bill.Set("KEST-TxN", "T1");
  bill.Records().AppendNew().Parse("SKU:1^Name:Tool");
  EXPECT_STREQ("KEST-TxN: T1\r\nKEST-Product: SKU:1^Name:Tool\r\n", bill.Format().Text());
}

TEST(CheckoutOrder, ALineInTheMiddleIsReplacedInItsPlace) {
  Checkout checkout;
  for (const std::uint32_t sku : {7u, 9u, 11u}) checkout.AddOrderLine(sku, 1);
  checkout.AddOrderLine(9, 3);
  EXPECT_STREQ("KEST-Product: SKU:7^Quantity:1\r\nKEST-Product: SKU:9^Quantity:3\r\nKEST-Product: SKU:11^Quantity:1\r\n",
               checkout.Format().Text());
}

}  // namespace
}  // namespace kest
