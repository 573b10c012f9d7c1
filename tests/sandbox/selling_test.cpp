// Does the program keep every sale that it answered, and no card number, whatever happens to it?
#include "sandbox/selling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>

#include "database.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string FileBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(Selling, NoFileAndNoLogHoldsTheNumberOfACard) {
  const std::string cards[] = {goodCard, "378282246310005", "4000000000000002", "4242424242424241", "4242424242424242"};
  const char* const outcomes[] = {"0", "0", "1403", "1402", "1407"};
  for (std::size_t i = 0; i < std::size(cards); i++) {
    EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(cards[i])), outcomes[i]);
    ErrorCodeOf("GetBill", {{"KEST-TxN", cards[i]}});
    ErrorCodeOf("BillCustomer", {{"KEST-CCard-Number", cards[i]}, {"KEST-Product", "SKU:" + cards[i] + "^Quantity:1"}});
  }
  // While it runs the sales stand in the write-ahead log, afterwards in the database itself.
  for (const bool running : {true, false}) {
    if (!running) {
      serve->Signal(SIGTERM);
      ASSERT_EQ(serve->Wait(), 0);
    }
    std::string all = serve->Log();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(shop)) all += FileBytes(entry.path());
    EXPECT_THAT(all, HasSubstr("41**********1111"));
    EXPECT_THAT(all, HasSubstr("40**********0002"));
    for (const std::string& card : cards) EXPECT_EQ(all.find(card), std::string::npos) << card;
  }
  EXPECT_THAT(serve->Log(), HasSubstr("transaction 100001"));
}

TEST_F(Selling, MemoryHoldsNoCardOfASaleThatWasMade) {
  const std::string spaced = "5555 5555-5555 4444";
  TestClient client = Client();
  ASSERT_TRUE(client.Handshake("BillCustomer"));
  EXPECT_EQ(client.Request("BillCustomer", OrderOf(spaced)).status, 200);
  EXPECT_FALSE(serve->HoldsInMemory(spaced));
  // Whoever takes freed memory back writes over its beginning.
  for (const char* half : {"55555555", "55554444", "5555 5555", "5555 4444"}) {
    EXPECT_FALSE(serve->HoldsInMemory(half)) << half;
  }
  EXPECT_TRUE(serve->HoldsInMemory("55**********4444")) << "the sale was not made, or the search itself fails";
}

TEST_F(Selling, DiskThatTakesNothingMoreFailsTheSaleAndNotTheServer) {
  EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(goodCard)), "0");
  LimitFiles(1);
  TestClient client = Client();
  ASSERT_TRUE(client.Handshake("BillCustomer"));
  EXPECT_EQ(client.Request("BillCustomer", OrderOf(goodCard)).status, 500);
  EXPECT_EQ(ErrorCodeOf("GetBill", {{"KEST-TxN", "100001"}}), "0");
  LimitFiles(RLIM_INFINITY);
  EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(goodCard)), "0");
  serve->Signal(SIGTERM);
  ASSERT_EQ(serve->Wait(), 0);
  std::size_t errors = 0;
  for (std::size_t at = serve->Log().find(" error "); at != std::string::npos;
       at = serve->Log().find(" error ", at + 1)) {
    errors++;
  }
  EXPECT_EQ(errors, 1u) << serve->Log();
}

TEST_F(Selling, SampleCatalogueSellsWithMerchantAndTax) {
  const Fields reply = Client().Call("BillCustomer", OrderOf(goodCard, 2)).value_or(Fields());
  EXPECT_EQ(Value(reply, "KEST-TotalAmount"), "10.72");  // 9.90 and 8.25 % of it: 0.81675
  EXPECT_EQ(Value(reply, "KEST-TaxAmount"), "0.82");
  EXPECT_EQ(Value(reply, "KEST-Merchant"), "Lantern Workshop");
  EXPECT_EQ(Value(reply, "KEST-Product"), "SKU:7^Name:Brush collection^Price:4.95^Quantity:2");
}

TEST_F(Selling, StopLeavesTheSalesInOneFile) {
  EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(goodCard)), "0");
  serve->Signal(SIGTERM);
  ASSERT_EQ(serve->Wait(), 0);
  EXPECT_TRUE(std::filesystem::exists(shop + "/sales.db"));
  EXPECT_FALSE(std::filesystem::exists(shop + "/sales.db-wal"));
  EXPECT_FALSE(std::filesystem::exists(shop + "/sales.db-shm"));
}

TEST_F(Selling, DatabaseOfAnotherVersionIsToldInWords) {
  serve->Signal(SIGTERM);
  ASSERT_EQ(serve->Wait(), 0);
  sandbox::Database(shop + "/sales.db", 0).Execute("PRAGMA user_version = 7");
  Process again({"serve", shop});
  EXPECT_EQ(again.Wait(), 1);
  EXPECT_EQ(again.Output(), "");
  EXPECT_THAT(again.Log(), HasSubstr("kest-sandbox: " + shop + "/sales.db cannot be used: it is of version 7"));
  EXPECT_THAT(again.Log(), Not(HasSubstr("terminate")));
}

}  // namespace
}  // namespace sandboxtest
