// A host sells through the exports of the built library, to a live server, and keeps receipts in the real registry.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <thread>

#include "road/sale_road.h"

namespace kest_road {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

TEST_F(SaleRoad, APurchaseTellsTransactionAmountsMerchantAndCard) {
  library.KestAddOrderLine(checkout, 1042, 2);
  library.KestAddOrderLine(checkout, 7, 1);
  KestPurchase* purchase = library.KestBillCustomer(checkout);
  ASSERT_NE(nullptr, purchase);
  KestFieldSet* fields = KEST_FIELDS(purchase);
  EXPECT_EQ("31.85", FieldOf(fields, "KEST-TotalAmount"));
  EXPECT_EQ("2.90", FieldOf(fields, "KEST-TaxAmount"));
  EXPECT_EQ("Orchard Kitchen", FieldOf(fields, "KEST-Merchant"));
  EXPECT_EQ("41**********1111", FieldOf(fields, "KEST-CCard-Number"));
  EXPECT_EQ("0", FieldOf(fields, "KEST-Error"));
  EXPECT_NE("", FieldOf(fields, "KEST-TxN"));
  EXPECT_EQ(0, Code());
  EXPECT_EQ(1u, admin.Sales());
}

TEST_F(SaleRoad, AReceiptIsStoredWithExactlyItsValues) {
  library.KestAddOrderLine(checkout, 1042, 2);
  library.KestAddOrderLine(checkout, 7, 1);
  KestPurchase* purchase = library.KestBillCustomer(checkout);
  ASSERT_NE(nullptr, purchase);
  const std::vector<StoredReceipt> receipts = ReceiptsOf(guid);
  ASSERT_THAT(receipts, SizeIs(1));
  EXPECT_THAT(receipts[0].values,
              ElementsAre(TextValue("Amount", "31.85"), NumberValue("CardType", 4), TextValue("Guid", guid),
                          TextValue("Merchant", "Orchard Kitchen"), TextValue("TXN", TransactionOf(purchase)),
                          TextValue("Tax", "2.90")));
  EXPECT_THAT(receipts[0].products, ElementsAre(TextValue("Bl\xC3\xA5" "b\xC3\xA4rssylt", "19.95"), TextValue("Plum Jam", "4.50")));
  EXPECT_THAT(ValuesOf("Software\\Veltrix\\KEST\\Receipts"), ElementsAre(TextValue("Update", "1")));
  EXPECT_THAT(ValuesOf("Software\\Veltrix\\KEST\\Products"), ElementsAre(TextValue("Update", "1")));
}

TEST_F(SaleRoad, AReceiptIsFoundAgainByTheApplicationsGuid) {
  library.KestAddOrderLine(checkout, 1042, 2);
  library.KestAddOrderLine(checkout, 7, 1);
  KestPurchase* purchase = library.KestBillCustomer(checkout);
  ASSERT_NE(nullptr, purchase);
  KestFieldSet* receipt = library.KestCreateFieldSet();
  ASSERT_EQ(1, library.KestLoadReceipt(receipt, guid.c_str()));
  EXPECT_EQ(7, library.KestGetFieldCount(receipt));
  EXPECT_EQ(ReceiptsOf(guid).at(0).date, FieldOf(receipt, "KEST-Receipt-Date"));
  EXPECT_EQ("28.95", FieldOf(receipt, "KEST-Receipt-Price"));
  EXPECT_EQ("2.90", FieldOf(receipt, "KEST-Receipt-Tax"));
  EXPECT_EQ("31.85", FieldOf(receipt, "KEST-Receipt-Total"));
  EXPECT_EQ("Orchard Kitchen", FieldOf(receipt, "KEST-Receipt-Merchant"));
  EXPECT_EQ("4", FieldOf(receipt, "KEST-Receipt-Card"));
  EXPECT_EQ(TransactionOf(purchase), FieldOf(receipt, "KEST-Receipt-TxN"));
  library.KestFreeFieldSet(receipt);
}

TEST_F(SaleRoad, AnotherGuidFindsNoReceipt) {
  ASSERT_NE(nullptr, BuyOne());
  KestFieldSet* receipt = library.KestCreateFieldSet();
  std::string other = guid;
  other[1] = other[1] == '1' ? '2' : '1';
  EXPECT_EQ(0, library.KestLoadReceipt(receipt, other.c_str()));
  EXPECT_EQ(0, library.KestLoadReceipt(receipt, (guid + "x").c_str()));
  EXPECT_EQ(0, library.KestLoadReceipt(receipt, ""));
  EXPECT_EQ(0, library.KestGetFieldCount(receipt));
  library.KestFreeFieldSet(receipt);
}

TEST_F(SaleRoad, TheCardTypeFollowsTheNumber) {
  const std::pair<const char*, std::uint32_t> cards[] = {{"4111 1111 1111 1111", 4},
                                                         {"5555-5555-5555-4444", 2},
                                                         {"6011111111111117", 1},
                                                         {"378282246310005", 0},
                                                         {"30569309025904", 3}};
  std::uint32_t sales = 0;
  for (const auto& [number, type] : cards) {
    SetField("KEST-CCard-Number", number);
    KestPurchase* purchase = BuyOne();
    ASSERT_NE(nullptr, purchase) << number << " " << Code();
    std::vector<StoredReceipt> receipts = ReceiptsOf(guid);
    ASSERT_THAT(receipts, SizeIs(++sales));
    const std::string transaction = TransactionOf(purchase);
    const auto isThisOne = [&transaction](const StoredReceipt& one) {
      return std::find(one.values.begin(), one.values.end(), TextValue("TXN", transaction)) != one.values.end();
    };
    const auto stored = std::find_if(receipts.begin(), receipts.end(), isThisOne);
    ASSERT_NE(receipts.end(), stored);
    EXPECT_THAT(stored->values, ::testing::Contains(NumberValue("CardType", type))) << number;
  }
}

TEST_F(SaleRoad, ARefusedCardGivesTheServersCodeAndNoReceipt) {
  const std::pair<const char*, std::int32_t> cards[] = {{"4000000000000002", 1403}, {"4000000000009995", 1404},
                                                        {"4000000000000069", 1405}, {"4242424242424241", 1402},
                                                        {"4000000000000119", 1406}, {"", 1401}};
  for (const auto& [number, code] : cards) {
    SetField("KEST-CCard-Number", number);
    EXPECT_EQ(nullptr, BuyOne());
    EXPECT_EQ(code, Code()) << number;
  }
  EXPECT_THAT(ReceiptsOf(guid), IsEmpty());
  EXPECT_EQ(0u, admin.Sales());
}

TEST_F(SaleRoad, AnOrderThatCannotBeSoldIsRefused) {
  EXPECT_EQ(nullptr, library.KestBillCustomer(checkout));
  EXPECT_EQ(1201, Code());
  library.KestAddOrderLine(checkout, 12345, 1);
  EXPECT_EQ(nullptr, library.KestBillCustomer(checkout));
  EXPECT_EQ(1202, Code());
  library.KestClearOrder(checkout);
  library.KestAddOrderLine(checkout, 7, 65536);
  EXPECT_EQ(nullptr, library.KestBillCustomer(checkout));
  EXPECT_EQ(1203, Code());
  EXPECT_THAT(ReceiptsOf(guid), IsEmpty());
}

TEST_F(SaleRoad, ASaleAfterARefusalSucceedsAndLeavesTheCode) {
  SetField("KEST-CCard-Number", declinedCard);
  ASSERT_EQ(nullptr, BuyOne());
  SetField("KEST-CCard-Number", goodCard);
  EXPECT_NE(nullptr, BuyOne());
  EXPECT_EQ(1403, Code());
  EXPECT_THAT(ReceiptsOf(guid), SizeIs(1));
}

TEST_F(SaleRoad, ABillShowsTheSaleAgain) {
  library.KestAddOrderLine(checkout, 1042, 2);
  library.KestAddOrderLine(checkout, 7, 1);
  const std::string transaction = TransactionOf(library.KestBillCustomer(checkout));
  SetField("KEST-TxN", transaction.c_str());
  KestBill* bill = library.KestGetBill(checkout);
  ASSERT_NE(nullptr, bill);
  EXPECT_EQ(transaction, FieldOf(KEST_FIELDS(bill), "KEST-TxN"));
  EXPECT_EQ("31.85", FieldOf(KEST_FIELDS(bill), "KEST-TotalAmount"));
  EXPECT_EQ("41**********1111", FieldOf(KEST_FIELDS(bill), "KEST-CCard-Number"));
  ASSERT_EQ(2, library.KestGetBillProductCount(bill));
  EXPECT_EQ("1042", FieldOf(library.KestGetBillProduct(bill, 0), "SKU"));
  EXPECT_EQ("2", FieldOf(library.KestGetBillProduct(bill, 0), "Quantity"));
  EXPECT_EQ("Plum Jam", FieldOf(library.KestGetBillProduct(bill, 0), "Name"));
  EXPECT_EQ("19.95", FieldOf(library.KestGetBillProduct(bill, 1), "Price"));
  EXPECT_EQ(transaction, Field("KEST-TxN"));
  EXPECT_THAT(ReceiptsOf(guid), SizeIs(1));
}

TEST_F(SaleRoad, AnUnknownTransactionGivesTheServersCodeAndEmptiesTheNumber) {
  SetField("KEST-TxN", "1");
  EXPECT_EQ(nullptr, library.KestGetBill(checkout));
  EXPECT_EQ(1301, Code());
  EXPECT_EQ("", Field("KEST-TxN"));
  EXPECT_EQ(nullptr, library.KestGetBill(checkout));
  EXPECT_EQ(1302, Code());
}

TEST_F(SaleRoad, ABillLeftInTheCheckoutDoesNotDisturbTheNextSale) {
  const std::string first = TransactionOf(BuyOne());
  SetField("KEST-TxN", first.c_str());
  ASSERT_NE(nullptr, library.KestGetBill(checkout));
  const std::string second = TransactionOf(BuyOne());
  EXPECT_NE(first, second);
  EXPECT_EQ(2u, admin.Sales());
  EXPECT_THAT(ReceiptsOf(guid), SizeIs(2));
}

TEST_F(SaleRoad, HostAndIdentifierOfAReplyGoOutWithLaterRequests) {
  AskForField("KEST-User-IDEx", "customer-5");
  ASSERT_NE(nullptr, BuyOne());
  AskForField("KEST-Host", "localhost");
  ASSERT_NE(nullptr, BuyOne());
  EXPECT_EQ("customer-5", Field("KEST-User-IDEx"));
  EXPECT_EQ("localhost", Field("KEST-Host"));
  ASSERT_NE(nullptr, BuyOne());
  const nlohmann::json requests = admin.Get("/requests").at("requests");
  const std::string last = requests.back().at("request").dump();
  EXPECT_NE(std::string::npos, last.find(R"(["KEST-User-IDEx","customer-5"])")) << last;
  EXPECT_NE(std::string::npos, last.find(R"(["KEST-Host","localhost"])")) << last;
  EXPECT_NE(std::string::npos, last.find(R"(["KEST-Reseller-List",""])")) << last;
  EXPECT_EQ(std::string::npos, last.find("\"KEST-User-ID\"")) << last;
}

// The files of the server that hold `text`: its database, its log and, where the registry is files, the registry.
std::vector<std::string> FilesWith(const std::string& text) {
  std::vector<std::string> holding;
  int files = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Environment("KEST_SANDBOX_DIR"))) {
    if (!entry.is_regular_file()) continue;
    ++files;
    if (ReadFile(entry.path().string()).find(text) != std::string::npos) holding.push_back(entry.path().string());
  }
  EXPECT_GE(files, 5) << "the server's files are elsewhere";
  return holding;
}

TEST_F(SaleRoad, TheCardNumberStandsInNoRegistryValueNoFileAndNoRecordOfTheServer) {
  const std::string transaction = TransactionOf(BuyOne());
  SetField("KEST-CCard-Number", declinedCard);
  ASSERT_EQ(nullptr, BuyOne());
  for (const std::string number : {goodCard, declinedCard}) {
    EXPECT_FALSE(RegistryHolds(number));
    EXPECT_THAT(FilesWith(number), IsEmpty());
    EXPECT_EQ(std::string::npos, admin.Get("/requests").dump().find(number));
  }
  // What is looked for would be found where it is.
  EXPECT_TRUE(RegistryHolds(guid));
  EXPECT_THAT(FilesWith(transaction), Not(IsEmpty()));
}

TEST_F(SaleRoad, ThreadsWithCheckoutsOfTheirOwnSellSideBySide) {
  constexpr int threadCount = 4, salesOfEach = 5;
  std::vector<std::vector<std::string>> transactions(threadCount);
  std::vector<std::thread> threads;
  for (auto& own : transactions) {
    threads.emplace_back([this, &own] {
      KestCheckout* mine = library.KestCreateCheckout();
      library.KestSetField(KEST_FIELDS(mine), "KEST-CCard-Number", goodCard);
      library.KestAddOrderLine(mine, 1042, 1);
      for (int i = 0; i < salesOfEach; ++i) own.push_back(TransactionOf(library.KestBillCustomer(mine)));
      library.KestDestroyCheckout(mine);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> distinct;
  for (const auto& own : transactions) distinct.insert(own.begin(), own.end());
  EXPECT_THAT(distinct, SizeIs(threadCount * salesOfEach));
  EXPECT_EQ(0u, distinct.count("no purchase"));
  EXPECT_EQ(20u, admin.Sales());
  // Writers that meet at one sequence number share its key: at least one receipt a thread, never more than sales.
  const std::size_t receipts = ReceiptsOf(guid).size();
  EXPECT_GE(receipts, static_cast<std::size_t>(salesOfEach));
  EXPECT_LE(receipts, static_cast<std::size_t>(threadCount * salesOfEach));
}

TEST_F(SaleRoad, AServerThatIsNotThereGivesCode102AndNoReceipt) {
  ASSERT_EQ(1, library.KestSetServer("127.0.0.1", 1, key.c_str()));
  EXPECT_EQ(nullptr, BuyOne());
  EXPECT_EQ(KEST_ERROR_EXCHANGE, Code());
  SetField("KEST-TxN", "100001");
  EXPECT_EQ(nullptr, library.KestGetBill(checkout));
  EXPECT_EQ("100001", Field("KEST-TxN"));
  EXPECT_THAT(ReceiptsOf(guid), IsEmpty());
}

}  // namespace
}  // namespace kest_road
