// Ordinals 515, 517 and 523 as a host calls them.
#include <gtest/gtest.h>
#include <kestapi.h>

#include "support/sale_fixture.h"
#include "support/wipe_recorder.h"

namespace kest {
namespace {

class SaleExports : public testing::SaleTest {
 protected:
  SaleExports() {
    KestSetApplicationGuid("guid-1");
    server.replyFields = {{"KEST-TxN", "T-7"}, {"KEST-TotalAmount", "21.95"}, {"KEST-TaxAmount", "2.00"}};
    KestAddOrderLine(checkout, 1042, 1);
  }
  ~SaleExports() override {
    KestFreeFieldSet(receipt);
    KestDestroyCheckout(checkout);
    KestSetApplicationGuid(nullptr);
  }
  std::int32_t Code() { return KestGetErrorCode(KEST_FIELDS(checkout)); }

  KestCheckout* checkout = KestCreateCheckout();
  KestFieldSet* receipt = KestCreateFieldSet();
};

TEST_F(SaleExports, NoCheckoutAndNoTargetFail) {
  EXPECT_EQ(nullptr, KestBillCustomer(nullptr));
  EXPECT_EQ(nullptr, KestGetBill(nullptr));
  EXPECT_EQ(0, KestLoadReceipt(nullptr, "guid-1"));
}

TEST_F(SaleExports, APurchaseIsThatOfTheCheckout) {
  KestPurchase* purchase = KestBillCustomer(checkout);
  ASSERT_NE(nullptr, purchase);
  EXPECT_STREQ("T-7", KestGetField(KEST_FIELDS(purchase), "KEST-TxN"));
  EXPECT_EQ(purchase, KestBillCustomer(checkout));
}

TEST_F(SaleExports, ABillIsThatOfTheCheckout) {
  server.replyFields.push_back({"KEST-Product", "SKU:1"});
  KestBill* bill = KestGetBill(checkout);
  ASSERT_NE(nullptr, bill);
  EXPECT_EQ(1, KestGetBillProductCount(bill));
  EXPECT_STREQ("21.95", KestGetField(KEST_FIELDS(bill), "KEST-TotalAmount"));
  EXPECT_STREQ("T-7", KestGetField(KEST_FIELDS(checkout), "KEST-TxN"));
}

TEST_F(SaleExports, EveryCallOfTheServerWipesTheStackBehindItself) {
  testing::WipeRecorder wiped;
  KestBillCustomer(checkout);
  EXPECT_EQ(1, wiped.Stacks());
  KestGetBill(checkout);
  EXPECT_EQ(1, wiped.Stacks());
  KestProductList* list = KestCreateProductList();
  KestGetProductList(list, "1.0");
  EXPECT_EQ(1, wiped.Stacks());
  server.answer = [](testing::SealedServer&, const testing::ServerRequest&) { return std::string(); };
  KestGetProductList(list, "1.0");
  EXPECT_EQ(1, wiped.Stacks());
  KestDestroyProductList(list);
}

TEST_F(SaleExports, FailuresAreNullWithTheCodeInTheCheckout) {
  server.replyFields.push_back({"KEST-Error", "12"});
  EXPECT_EQ(nullptr, KestBillCustomer(checkout));
  EXPECT_EQ(12, Code());
  EXPECT_EQ(nullptr, KestGetBill(checkout));
  KestSetServer("shop.example", 8080, "no key");
  EXPECT_EQ(nullptr, KestBillCustomer(checkout));
  EXPECT_EQ(KEST_ERROR_EXCHANGE, Code());
  EXPECT_EQ(nullptr, KestGetBill(checkout));
}

TEST_F(SaleExports, AReceiptIsLoadedByTheStoredGuid) {
  EXPECT_EQ(0, KestLoadReceipt(receipt, "guid-1"));
  ASSERT_NE(nullptr, KestBillCustomer(checkout));
  EXPECT_EQ(1, KestLoadReceipt(receipt, "guid-1"));
  EXPECT_STREQ("19.95", KestGetField(receipt, "KEST-Receipt-Price"));
  EXPECT_EQ(0, KestLoadReceipt(receipt, "GUID-1"));
  EXPECT_EQ(0, KestLoadReceipt(receipt, ""));
  EXPECT_EQ(0, KestLoadReceipt(receipt, nullptr));
}

TEST_F(SaleExports, OnlyNullFindsAReceiptWithoutAGuid) {
  KestSetApplicationGuid(nullptr);
  ASSERT_NE(nullptr, KestBillCustomer(checkout));
  EXPECT_EQ(0, KestLoadReceipt(receipt, ""));
  EXPECT_EQ(1, KestLoadReceipt(receipt, nullptr));
}

TEST_F(SaleExports, EveryFailedAllocationOfALoadedReceiptIsFalseAndLeaksNothing) {
  ASSERT_NE(nullptr, KestBillCustomer(checkout));
  for (const auto how : {testing::AllocationSystem::Failing::once, testing::AllocationSystem::Failing::fromThenOn}) {
    const std::int64_t before = memory.Outstanding();
    bool isDone = false;
    std::uint64_t failures = 0;
    for (std::uint64_t point = 1; !isDone; ++point) {
      KestFieldSet* target = KestCreateFieldSet();
      memory.FailAt(point, how);
      isDone = KestLoadReceipt(target, "guid-1") == 1;
      memory.FailNever();
      KestFreeFieldSet(target);
      failures += isDone ? 0 : 1;
      EXPECT_EQ(before, memory.Outstanding()) << point;
      EXPECT_EQ(0u, registry.OpenHandles()) << point;
    }
    EXPECT_GT(failures, 10u);
  }
}

TEST_F(SaleExports, EveryFailedAllocationOfASaleLeaksNothing) {
  KeepOneReceipt();
  ASSERT_NE(nullptr, KestBillCustomer(checkout));
  for (const auto how : {testing::AllocationSystem::Failing::once, testing::AllocationSystem::Failing::fromThenOn}) {
    const std::int64_t before = memory.Outstanding();
    for (std::uint64_t point = 1;; ++point) {
      KestCheckout* other = KestCreateCheckout();
      KestAddOrderLine(other, 1, 1);
      memory.FailAt(point, how);
      KestBillCustomer(other);
      const bool isOver = memory.Allocations() < point;
      memory.FailNever();
      KestDestroyCheckout(other);
      EXPECT_EQ(before, memory.Outstanding()) << point;
      EXPECT_EQ(0u, registry.OpenHandles()) << point;
      if (isOver) break;
      ASSERT_LT(point, 5000u);
    }
  }
}

}  // namespace
}  // namespace kest
