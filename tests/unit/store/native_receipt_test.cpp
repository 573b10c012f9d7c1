// Does a receipt come back from the real registry as it was stored?
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "store/receipts.h"
#include "support/redirected_registry.h"
#include "support/storage_inspection.h"

namespace kest::testing {
namespace {

class NativeReceiptTest : public ::testing::Test {
 protected:
  ~NativeReceiptTest() override { EXPECT_EQ(0, registry.OpenHandles()); }

  void StoreFor(const char* guidText, const char* transaction) {
    const String guid(guidText), card("4111 1111 1111 1111");
    ProductRecords products;
    products.AppendNew().Set("Name", "Tool");
    products.At(0).Set("Price", "19.95");
    FieldSet purchase;
    purchase.Set("KEST-TotalAmount", "21.95");
    purchase.Set("KEST-TaxAmount", "2.00");
    purchase.Set("KEST-Merchant", "The Tool Shop");
    purchase.Set("KEST-TxN", transaction);
    StoreReceipt({guid, products, purchase, card});
  }

  RedirectedRegistry registry;
  SystemInForce inForce{registry};
};

TEST_F(NativeReceiptTest, SeveralStoredThenEachIsFoundByItsGuid) {
  StoreFor("first", "TX-1");
  StoreFor("second", "TX-2");
  StoreFor("third", "TX-3");
  for (const auto& [guid, transaction] : {std::pair("first", "TX-1"), {"third", "TX-3"}, {"second", "TX-2"}}) {
    FieldSet receipt;
    ASSERT_TRUE(FindReceipt(guid, receipt)) << guid;
    EXPECT_EQ(transaction, Content(receipt.Get("KEST-Receipt-TxN")));
    EXPECT_EQ("19.95", Content(receipt.Get("KEST-Receipt-Price")));
    EXPECT_EQ("2.00", Content(receipt.Get("KEST-Receipt-Tax")));
    EXPECT_EQ("21.95", Content(receipt.Get("KEST-Receipt-Total")));
    EXPECT_EQ("The Tool Shop", Content(receipt.Get("KEST-Receipt-Merchant")));
    EXPECT_EQ("4", Content(receipt.Get("KEST-Receipt-Card")));
  }
}

TEST_F(NativeReceiptTest, NothingStoredThenNothingIsFound) {
  FieldSet receipt;
  EXPECT_FALSE(FindReceipt("first", receipt));
  StoreFor("first", "TX-1");
  EXPECT_FALSE(FindReceipt("First", receipt));
}

}  // namespace
}  // namespace kest::testing
