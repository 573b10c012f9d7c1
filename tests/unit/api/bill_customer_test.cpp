#include "api/bill_customer.h"

#include <gtest/gtest.h>

#include "api/library_state.h"
#include "core/exception.h"
#include "store/receipts.h"
#include "support/sale_fixture.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::SealedServer;
using testing::ServerRequest;

class BillCustomerTest : public testing::SaleTest {
 protected:
  BillCustomerTest() {
    SetApplicationGuid("guid-1");
    server.replyFields = {{"KEST-Error", "0"},          {"KEST-TxN", "T-7"},    {"KEST-TotalAmount", "21.95"},
                          {"KEST-TaxAmount", "2.00"},   {"KEST-Merchant", "M"}, {"KEST-CCard-Number", "41**1111"},
                          {"KEST-Product", "SKU:1042^Name:Tool^Price:19.95"}};
    checkout.Set("KEST-CCard-Number", "378282246310005");
    checkout.AddOrderLine(1042, 2);
  }
  ~BillCustomerTest() override {
    SetApplicationGuid(nullptr);
    State().resellerList.Empty();
  }

  bool Bill() {
    CommerceCall call;
    return BillCustomer(call, checkout);
  }
  bool BillWithoutBookkeeping() {
    CommerceCall call;
    call.SetLocalBookkeeping(false);
    return BillCustomer(call, checkout);
  }
  void FailTheExchange() {
    server.answer = [](SealedServer&, const ServerRequest&) { return SealedServer::Http("", "HTTP/1.0 500 Error"); };
  }
  void Answer(const std::string& name, const std::string& value) {
    for (auto& field : server.replyFields) {
      if (field.first == name) {
        field.second = value;
        return;
      }
    }
    server.replyFields.emplace_back(name, value);
  }
  void AnswerWithout(const std::string& name) {
    testing::Fields kept;
    for (const auto& field : server.replyFields) {
      if (field.first != name) kept.push_back(field);
    }
    server.replyFields = kept;
  }
  std::string Sent() { return server.OpenRequest(server.requests.back()); }
  std::string CardTypeOfReceipt() {
    FieldSet receipt;
    EXPECT_TRUE(FindReceipt("guid-1", receipt));
    return receipt.Get("KEST-Receipt-Card").Text();
  }
  // The path of the only receipt.
  std::string ReceiptPath() {
    const std::string receipts = "HKCU\\Software\\Veltrix\\KEST\\Receipts";
    EXPECT_EQ(1u, registry.Subkeys(receipts).size());
    return receipts + "\\" + registry.Subkeys(receipts).at(0) + "\\1";
  }
  bool HasReceipt() {
    FieldSet receipt;
    return FindReceipt("guid-1", receipt);
  }

  Checkout checkout;
};

TEST_F(BillCustomerTest, TheRequestIsTheCheckoutsFieldsAndThenItsOrder) {
  checkout.AddOrderLine(7, 1);
  ASSERT_TRUE(Bill());
  EXPECT_EQ(0u, Sent().find("KEST-CCard-Number: 378282246310005\r\nKEST-Reseller-List: \r\nKEST-Service: BillCustomer\r\n"
                            "KEST-Product: SKU:1042^Quantity:2\r\nKEST-Product: SKU:7^Quantity:1\r\nKEST-Auth-"));
  EXPECT_EQ(0u, server.requests.back().head.find("GET /BillCustomer HTTP/1.0\r\n"));
}

TEST_F(BillCustomerTest, TheResellerListGoesAlong) {
  State().resellerList = "R1,R2";
  ASSERT_TRUE(Bill());
  EXPECT_NE(std::string::npos, Sent().find("KEST-Reseller-List: R1,R2\r\n"));
}

TEST_F(BillCustomerTest, ThePurchaseHoldsEveryFieldOfTheReplyInItsOrder) {
  checkout.PurchaseOf().Add("of the sale before", "1");
  ASSERT_TRUE(Bill());
  const NameValueList& fields = checkout.PurchaseOf().Fields();
  // Behind the fields of the sealed exchange.
  std::uint32_t first = 0;
  while (std::string(fields.At(first).Name().Text()).rfind("KEST-Auth-", 0) == 0 ||
         fields.At(first).Name().EqualsIgnoringCase("KEST-Protocol-Version")) {
    ++first;
  }
  ASSERT_EQ(first + server.replyFields.size(), fields.Count());
  for (std::uint32_t i = 0; i < server.replyFields.size(); ++i) {
    EXPECT_STREQ(server.replyFields[i].first.c_str(), fields.At(first + i).Name().Text());
    EXPECT_STREQ(server.replyFields[i].second.c_str(), fields.At(first + i).Value().Text());
  }
  EXPECT_STREQ("1.0", checkout.PurchaseOf().Version().Text());
}

TEST_F(BillCustomerTest, AFailedExchangeLeavesCode102AndThePurchaseBefore) {
  ASSERT_TRUE(Bill());
  FailTheExchange();
  EXPECT_FALSE(Bill());
  EXPECT_EQ(102, checkout.ErrorCode());
  EXPECT_STREQ("T-7", checkout.PurchaseOf().Get("KEST-TxN").Text());
}

TEST_F(BillCustomerTest, AFailedExchangeLeavesNoReceipt) {
  FailTheExchange();
  EXPECT_FALSE(Bill());
  EXPECT_FALSE(HasReceipt());
}

TEST_F(BillCustomerTest, ARefusalLeavesItsCodeAndThePurchaseButNoReceipt) {
  Answer("KEST-Error", "12");
  EXPECT_FALSE(Bill());
  EXPECT_EQ(12, checkout.ErrorCode());
  EXPECT_STREQ("T-7", checkout.PurchaseOf().Get("KEST-TxN").Text());
  EXPECT_FALSE(HasReceipt());
}

TEST_F(BillCustomerTest, AReplyWithoutAnErrorFieldIsASale) {
  AnswerWithout("KEST-Error");
  EXPECT_TRUE(Bill());
  EXPECT_TRUE(HasReceipt());
}

TEST_F(BillCustomerTest, TheErrorIsReadWithoutValidation) {
  Answer("KEST-Error", "7x");
  EXPECT_FALSE(Bill());
  EXPECT_EQ(7 * 10 + ('x' - '0'), checkout.ErrorCode());
  Answer("KEST-Error", "4294967295");
  EXPECT_FALSE(Bill());
  EXPECT_EQ(-1, checkout.ErrorCode());
  Answer("KEST-Error", "4294967296");  // 2^32 wraps to 0
  EXPECT_TRUE(Bill());
}

TEST_F(BillCustomerTest, ASuccessDoesNotResetTheErrorCode) {
  checkout.SetErrorCode(12);
  EXPECT_TRUE(Bill());
  EXPECT_EQ(12, checkout.ErrorCode());
}

TEST_F(BillCustomerTest, IdentifierAndHostOfTheReplyGoOutWithTheNextRequest) {
  Answer("KEST-User-IDEx", "customer");
  Answer("KEST-Host", "other.example");
  ASSERT_TRUE(Bill());
  ASSERT_TRUE(Bill());
  EXPECT_NE(std::string::npos, Sent().find("KEST-User-IDEx: customer\r\nKEST-Host: other.example\r\n"));
  EXPECT_EQ(std::string::npos, Sent().find("KEST-User-ID:"));
}

TEST_F(BillCustomerTest, ARefusalKeepsTheIdentifierButNotTheHost) {
  Answer("KEST-User-IDEx", "customer");
  Answer("KEST-Host", "other.example");
  Answer("KEST-Error", "12");
  EXPECT_FALSE(Bill());
  EXPECT_STREQ("customer", checkout.Get("KEST-User-IDEx").Text());
  EXPECT_TRUE(checkout.Get("KEST-Host").IsEmpty());
}

TEST_F(BillCustomerTest, EmptyFieldsOfTheReplyChangeNothing) {
  checkout.Set("KEST-User-IDEx", "customer");
  checkout.Set("KEST-Host", "other.example");
  Answer("KEST-User-IDEx", "");
  Answer("KEST-Host", "");
  ASSERT_TRUE(Bill());
  EXPECT_STREQ("customer", checkout.Get("KEST-User-IDEx").Text());
  EXPECT_STREQ("other.example", checkout.Get("KEST-Host").Text());
}

TEST_F(BillCustomerTest, TheReceiptHoldsWhatTheReplySays) {
  ASSERT_TRUE(Bill());
  FieldSet receipt;
  ASSERT_TRUE(FindReceipt("guid-1", receipt));
  EXPECT_STREQ("19.95", receipt.Get("KEST-Receipt-Price").Text());
  EXPECT_STREQ("2.00", receipt.Get("KEST-Receipt-Tax").Text());
  EXPECT_STREQ("21.95", receipt.Get("KEST-Receipt-Total").Text());
  EXPECT_STREQ("M", receipt.Get("KEST-Receipt-Merchant").Text());
  EXPECT_STREQ("T-7", receipt.Get("KEST-Receipt-TxN").Text());
}

TEST_F(BillCustomerTest, TheProductsOfTheReplyAreRecordedAndNotTheOrder) {
  Answer("KEST-Product", "SKU:1042^Name:Tool^Price:19.95");
  server.replyFields.emplace_back("kest-product", "Name:Box^Price:2.00");
  ASSERT_TRUE(Bill());
  const auto values = registry.Values(ReceiptPath() + "\\Products");
  ASSERT_EQ(2u, values.size());
  EXPECT_EQ("Box", values[0].name);
  EXPECT_EQ(std::string("2.00\0", 5), values[0].data);
  EXPECT_EQ("Tool", values[1].name);
  EXPECT_EQ(std::string("19.95\0", 6), values[1].data);
}

TEST_F(BillCustomerTest, WithoutProductsInTheReplyTheOrderIsRecordedUnderTheDefaultValue) {
  AnswerWithout("KEST-Product");
  ASSERT_TRUE(Bill());
  const auto values = registry.Values(ReceiptPath() + "\\Products");
  ASSERT_EQ(1u, values.size());
  EXPECT_EQ("", values[0].name);
  EXPECT_EQ(std::string(1, '\0'), values[0].data);
}

TEST_F(BillCustomerTest, WithoutProductsAndOrderNoProductIsRecorded) {
  AnswerWithout("KEST-Product");
  checkout.ClearOrder();
  ASSERT_TRUE(Bill());
  EXPECT_TRUE(registry.Values(ReceiptPath() + "\\Products").empty());
}

TEST_F(BillCustomerTest, TheCardTypeComesFromThePurchaseElseFromTheCheckout) {
  ASSERT_TRUE(Bill());
  EXPECT_EQ("4", CardTypeOfReceipt());
}

TEST_F(BillCustomerTest, WithoutACardInThePurchaseTheCheckoutsOwnCounts) {
  AnswerWithout("KEST-CCard-Number");
  ASSERT_TRUE(Bill());
  EXPECT_EQ("0", CardTypeOfReceipt());
}

TEST_F(BillCustomerTest, WithoutBookkeepingThereIsNoCommonFieldNoMarkerAndNoReceipt) {
  ASSERT_TRUE(BillWithoutBookkeeping());
  EXPECT_EQ(std::string::npos, Sent().find("KEST-Reseller-List"));
  EXPECT_EQ(0u, Writes());
  EXPECT_STREQ("T-7", checkout.PurchaseOf().Get("KEST-TxN").Text());
}

TEST_F(BillCustomerTest, ARegistryThatCannotBeWrittenDoesNotUndoTheSale) {
  RefuseToMakeKeys();
  EXPECT_TRUE(Bill());
  EXPECT_EQ(0, checkout.ErrorCode());
  EXPECT_EQ(0u, Writes());
}

// Once the purchase is loaded the card has been charged: nothing that fails then may hide it.
TEST_F(BillCustomerTest, MemoryThatEndsBehindTheReplyDoesNotUndoTheSale) {
  KeepOneReceipt();
  Answer("KEST-User-IDEx", "customer");
  Answer("KEST-Host", "other.example");
  for (const auto how : {AllocationSystem::Failing::once, AllocationSystem::Failing::fromThenOn}) {
    std::uint64_t sold = 0;
    for (std::uint64_t point = 1;; ++point) {
      Checkout fresh;
      fresh.AddOrderLine(1042, 2);
      CommerceCall call;
      bool isSold = false;
      memory.FailAt(point, how);
      try {
        isSold = BillCustomer(call, fresh);
      } catch (const Qor::MemoryException&) {
      }
      const bool isOver = memory.Allocations() < point;
      memory.FailNever();
      EXPECT_EQ(fresh.PurchaseOf().Fields().Count() != 0, isSold) << point;
      EXPECT_TRUE(isSold ? fresh.ErrorCode() == 0 : fresh.ErrorCode() == 0 || fresh.ErrorCode() == 102) << point;
      EXPECT_EQ(0u, registry.OpenHandles());
      if (isOver) break;
      sold += isSold ? 1 : 0;
    }
    EXPECT_GT(sold, 10u);
  }
}

TEST_F(BillCustomerTest, MemoryThatEndsBehindARefusalDoesNotHideItsCode) {
  Answer("KEST-User-IDEx", "customer");
  Answer("KEST-Error", "12");
  ExpectNoMemoryHidesCode12(BillCustomer, [](Checkout& asked) -> const FieldSet& { return asked.PurchaseOf(); });
}

}  // namespace
}  // namespace kest
