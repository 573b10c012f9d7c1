#include "api/get_bill.h"

#include <gtest/gtest.h>

#include "api/post_process_reply.h"
#include "core/exception.h"
#include "store/receipts.h"
#include "support/sale_fixture.h"

namespace kest {
namespace {

using testing::SealedServer;
using testing::ServerRequest;

class GetBillTest : public testing::SaleTest {
 protected:
  GetBillTest() {
    server.replyFields = {{"KEST-Error", "0"}, {"KEST-TxN", "T-8"}, {"kest-product", "SKU:1"}, {"Note", "n"},
                          {"KEST-Product", "SKU:2"}};
    checkout.Set("KEST-TxN", "T-7");
  }

  bool Get() {
    CommerceCall call;
    return GetBill(call, checkout);
  }
  void FailTheExchange() {
    server.answer = [](SealedServer&, const ServerRequest&) { return SealedServer::Http("", "HTTP/1.0 500 Error"); };
  }

  Checkout checkout;
};

TEST_F(GetBillTest, TheRequestNamesTheTransaction) {
  ASSERT_TRUE(Get());
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back())
                    .find("KEST-TxN: T-7\r\nKEST-Reseller-List: \r\nKEST-Service: GetBill\r\nKEST-Auth-"));
  EXPECT_EQ(0u, server.requests.back().head.find("GET /GetBill HTTP/1.0\r\n"));
}

TEST_F(GetBillTest, TheBillHoldsProductsAndFieldsOfTheReply) {
  checkout.BillOf().Add("of the bill before", "1");
  checkout.BillOf().Records().AppendNew();
  ASSERT_TRUE(Get());
  ASSERT_EQ(2u, checkout.BillOf().Records().Count());
  EXPECT_STREQ("1", checkout.BillOf().Records().At(0).Get("SKU").Text());
  EXPECT_STREQ("2", checkout.BillOf().Records().At(1).Get("SKU").Text());
  EXPECT_STREQ("n", checkout.BillOf().Get("Note").Text());
  EXPECT_EQ(-1, checkout.BillOf().Fields().Find("KEST-Product"));
  EXPECT_EQ(-1, checkout.BillOf().Fields().Find("of the bill before"));
}

TEST_F(GetBillTest, TheBillsNumberIsCopiedIntoTheCheckout) {
  ASSERT_TRUE(Get());
  EXPECT_STREQ("T-8", checkout.Get("KEST-TxN").Text());
}

TEST_F(GetBillTest, ABillWithoutANumberEmptiesTheCheckouts) {
  server.replyFields = {{"Note", "n"}};
  ASSERT_TRUE(Get());
  EXPECT_EQ(0, checkout.Fields().Find("KEST-TxN"));
  EXPECT_STREQ("", checkout.Get("KEST-TxN").Text());
}

TEST_F(GetBillTest, ARefusalLeavesItsCodeAndCopiesTheNumberAllTheSame) {
  server.replyFields = {{"KEST-Error", "12"}, {"KEST-TxN", "T-9"}};
  EXPECT_FALSE(Get());
  EXPECT_EQ(12, checkout.ErrorCode());
  EXPECT_STREQ("T-9", checkout.Get("KEST-TxN").Text());
}

TEST_F(GetBillTest, AFailedExchangeLeavesCode102TheNumberAndTheBillBefore) {
  ASSERT_TRUE(Get());
  checkout.Set("KEST-TxN", "T-7");
  FailTheExchange();
  EXPECT_FALSE(Get());
  EXPECT_EQ(102, checkout.ErrorCode());
  EXPECT_STREQ("T-7", checkout.Get("KEST-TxN").Text());
  EXPECT_EQ(2u, checkout.BillOf().Records().Count());
}

TEST_F(GetBillTest, ThePurchaseIsNotLookedAt) {
  checkout.PurchaseOf().Add("KEST-Error", "5");
  checkout.PurchaseOf().Add("KEST-Host", "other.example");
  EXPECT_TRUE(Get());
  EXPECT_TRUE(checkout.Get("KEST-Host").IsEmpty());
}

TEST_F(GetBillTest, TheProductsAreMarkedAsUpdatedButNoReceiptIsStored) {
  ASSERT_TRUE(Get());
  EXPECT_EQ(1u, Writes());
  EXPECT_STREQ("1", registry.Data("HKCU\\Software\\Veltrix\\KEST\\Products", "Update").c_str());
}

TEST_F(GetBillTest, WithoutBookkeepingNothingIsWrittenAndNoCommonFieldSent) {
  CommerceCall call;
  call.SetLocalBookkeeping(false);
  ASSERT_TRUE(GetBill(call, checkout));
  EXPECT_EQ(0u, Writes());
  EXPECT_EQ(-1, checkout.Fields().Find("KEST-Reseller-List"));
}

TEST_F(GetBillTest, MemoryThatEndsLeavesTheBillBeforeOrTheNewOneWhole) {
  ASSERT_TRUE(Get());
  server.replyFields = {{"KEST-TxN", "T-9"}, {"KEST-Product", "SKU:3"}};
  bool isDone = false;
  std::uint64_t old = 0;
  for (std::uint64_t point = 1; !isDone; ++point) {
    Checkout fresh;
    fresh.BillOf().Records().AppendNew().Parse("SKU:1");
    fresh.BillOf().Add("before", "1");
    CommerceCall call;
    memory.FailAt(point, testing::AllocationSystem::Failing::once);
    try {
      isDone = GetBill(call, fresh);
    } catch (const Qor::MemoryException&) {
    }
    memory.FailNever();
    ASSERT_EQ(1u, fresh.BillOf().Records().Count()) << point;
    const bool isOld = fresh.BillOf().Fields().Find("before") >= 0;
    EXPECT_STREQ(isOld ? "1" : "3", fresh.BillOf().Records().At(0).Get("SKU").Text()) << point;
    EXPECT_TRUE(!isDone || !isOld);
    EXPECT_EQ(0u, registry.OpenHandles());
    old += isOld ? 1 : 0;
  }
  EXPECT_GT(old, 50u);
}

TEST_F(GetBillTest, MemoryThatEndsBehindARefusalDoesNotHideItsCode) {
  server.replyFields = {{"KEST-Error", "12"}, {"KEST-TxN", "T-9"}, {"KEST-User-IDEx", "me"}};
  ExpectNoMemoryHidesCode12(GetBill, [](Checkout& asked) -> const FieldSet& { return asked.BillOf(); });
}

}  // namespace
}  // namespace kest
