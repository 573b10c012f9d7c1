// Does a billing sell what was ordered at the catalogue's prices, and does the bill say the same ever after?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "operations.h"
#include "sandbox/process.h"

namespace sandboxtest {
namespace {

using sandbox::Catalogue;
using sandbox::FieldList;
using sandbox::OperationResult;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* goodCard = "4111 1111 1111 1111";

std::vector<std::string> Lines(const FieldList& fields) {
  std::vector<std::string> lines;
  for (const sandbox::Field& field : fields) lines.push_back(field.name + ": " + field.value);
  return lines;
}

class Billing : public ::testing::Test {
 protected:
  Billing()
      : catalogue(Catalogue::FromText(R"({"applications": [{"guid": "g", "merchant": "Shop", "taxPercent": "8.25",
          "products": [{"SKU": 1042, "Name": "Pen: blue", "Price": "29.00", "Note": "x"},
                       {"SKU": 7, "Name": "Ink", "Price": "0.05"}]}]})")),
        ledger(folder / "sales.db"),
        operations(catalogue, ledger) {}

  static FieldList Request(const std::vector<std::string>& lines, const std::string& card) {
    FieldList request = {{"KEST-CCard-Number", card}};
    for (const std::string& line : lines) request.push_back({"KEST-Product", line});
    return request;
  }

  OperationResult Sell(const FieldList& request) { return operations.Run("BillCustomer", request); }
  OperationResult SellOne() { return Sell(Request({"SKU:7^Quantity:1"}, goodCard)); }
  OperationResult Bill(const std::string& number) { return operations.Run("GetBill", {{"KEST-TxN", number}}); }

  // Makes every sale fail from now on, as a database does that cannot be written.
  void BreakLedger() {
    sandbox::Database(folder / "sales.db", 0)
        .Execute("CREATE TRIGGER broken BEFORE INSERT ON sales BEGIN SELECT RAISE(FAIL, 'the disk is full'); END");
  }

  TemporaryFolder folder;
  const Catalogue catalogue;
  sandbox::Ledger ledger;
  const sandbox::Operations operations;
};

TEST_F(Billing, AnswersWithTheSale) {
  const OperationResult result = Sell(Request({"SKU:1042^Quantity:1", "SKU:7^Quantity:3"}, goodCard));
  EXPECT_THAT(Lines(result.fields),
              ElementsAre("KEST-Error: 0", "KEST-TxN: 100001", "KEST-TotalAmount: 31.55", "KEST-TaxAmount: 2.40",
                          "KEST-Merchant: Shop", "KEST-CCard-Number: 41**********1111",
                          "KEST-Product: SKU:1042^Name:Pen: blue^Price:29.00^Quantity:1",
                          "KEST-Product: SKU:7^Name:Ink^Price:0.05^Quantity:3"));
  EXPECT_EQ(result.error.code, 0);
  EXPECT_EQ(ledger.Counts().sales, 1u);
}

TEST_F(Billing, BillSaysWhatTheBillingSaid) {
  const OperationResult sold = Sell(Request({"SKU:1042^Quantity:1", "SKU:7^Quantity:3"}, goodCard));
  EXPECT_EQ(Lines(Bill("100001").fields), Lines(sold.fields));
  EXPECT_EQ(ledger.Counts().bills, 1u);
}

TEST_F(Billing, BillStaysAsItWasSoldWhenTheCatalogueChanges) {
  const OperationResult sold = SellOne();
  const Catalogue other = Catalogue::FromText(R"({"applications": [{"guid": "g", "merchant": "Other", "products": [
      {"SKU": 7, "Name": "Water", "Price": "9.00"}]}]})");
  const sandbox::Operations later(other, ledger);
  EXPECT_EQ(Lines(later.Run("GetBill", {{"KEST-TxN", "100001"}}).fields), Lines(sold.fields));
}

TEST_F(Billing, EachSaleHasANumberOfItsOwn) {
  SellOne();
  EXPECT_EQ(*FindField(SellOne().fields, "KEST-TxN"), "100002");
}

TEST_F(Billing, OrderThatCannotBeSoldIsAnsweredWithItsCodeAlone) {
  EXPECT_THAT(Lines(Sell(Request({}, goodCard)).fields), ElementsAre("KEST-Error: 1201"));
  EXPECT_THAT(Lines(Sell(Request({"SKU:8^Quantity:1"}, goodCard)).fields), ElementsAre("KEST-Error: 1202"));
  EXPECT_THAT(Lines(Sell(Request({"SKU:7^Quantity:0"}, goodCard)).fields), ElementsAre("KEST-Error: 1203"));
  EXPECT_EQ(ledger.Counts().sales + ledger.Counts().refusals, 0u);
}

// The sum that is refused is known before a card is asked for it.
TEST_F(Billing, OrderIsCheckedBeforeTheCard) {
  EXPECT_THAT(Lines(Sell(Request({}, "4000000000000002")).fields), ElementsAre("KEST-Error: 1201"));
}

TEST_F(Billing, CardThatIsRefusedIsAnsweredWithItsCodeAloneAndRecorded) {
  const OperationResult result = Sell(Request({"SKU:1042^Quantity:1"}, "4000000000000002"));
  EXPECT_THAT(Lines(result.fields), ElementsAre("KEST-Error: 1403"));
  EXPECT_EQ(result.error.code, 1403);
  EXPECT_EQ(ledger.Counts().sales, 0u);
  sandbox::Database database(folder / "sales.db", 0);
  sandbox::Statement found(database, "SELECT code || ' ' || card || ' ' || cents FROM refusals");
  ASSERT_TRUE(found.Step());
  EXPECT_EQ(found.Text(0), "1403 40**********0002 3139");
}

TEST_F(Billing, EveryKindOfRefusedCardIsRecorded) {
  const std::pair<const char*, int> cards[] = {{"", 1401}, {"4242424242424241", 1402}, {"4242424242424242", 1407}};
  std::uint64_t refusals = 0;
  for (const auto& [card, code] : cards) {
    EXPECT_EQ(Sell(Request({"SKU:7^Quantity:1"}, card)).error.code, code);
    EXPECT_EQ(ledger.Counts().refusals, ++refusals);
  }
}

TEST_F(Billing, RequestWithoutTheFieldHasNoCard) {
  EXPECT_EQ(Sell({{"KEST-Product", "SKU:7^Quantity:1"}}).error.code, 1401);
}

// A checkout keeps fields of earlier replies and sends them along.
TEST_F(Billing, FieldsOfEarlierRepliesChangeNothing) {
  const FieldList plain = Request({"SKU:7^Quantity:1"}, goodCard);
  FieldList replayed = {{"KEST-TxN", "100001"},         {"KEST-Host", "elsewhere"},      {"KEST-User-ID", "1"},
                        {"KEST-User-IDEx", "x"},        {"KEST-Error", "1403"},          {"KEST-TotalAmount", "0.01"},
                        {"KEST-TaxAmount", "0.00"},     {"KEST-Merchant", "Somebody"},   {"Price", "0.00"},
                        {"KEST-Reseller-List", "a, b"}, {"KEST-Service", "BillCustomer"}};
  replayed.insert(replayed.end(), plain.begin(), plain.end());
  std::vector<std::string> first = Lines(Sell(plain).fields);
  std::vector<std::string> second = Lines(Sell(replayed).fields);
  EXPECT_EQ(first[1], "KEST-TxN: 100001");
  EXPECT_EQ(second[1], "KEST-TxN: 100002");
  first.erase(first.begin() + 1);
  second.erase(second.begin() + 1);
  EXPECT_EQ(first, second);
}

TEST_F(Billing, OrderOfACheckoutDoesNotDisturbItsBill) {
  const OperationResult sold = SellOne();
  const FieldList request = {
      {"kest-txn", "100001"}, {"KEST-CCard-Number", "x"}, {"KEST-Product", "SKU:1042^Quantity:1"}};
  EXPECT_EQ(Lines(operations.Run("GetBill", request).fields), Lines(sold.fields));
}

TEST_F(Billing, BillOfAnUnknownTransactionIsItsCodeAlone) {
  SellOne();
  for (const char* number :
       {"100002", "0100001", "+100001", "100001 ", "1e5", "-1", "0", "x", "99999999999999999999"}) {
    EXPECT_THAT(Lines(Bill(number).fields), ElementsAre("KEST-Error: 1301")) << number;
  }
  EXPECT_EQ(ledger.Counts().bills, 0u);
}

TEST_F(Billing, BillOfNoTransactionIsItsCodeAlone) {
  EXPECT_THAT(Lines(Bill("").fields), ElementsAre("KEST-Error: 1302"));
  EXPECT_THAT(Lines(operations.Run("GetBill", {}).fields), ElementsAre("KEST-Error: 1302"));
}

TEST_F(Billing, ResetForgetsTheBillsAndGoesOnCounting) {
  SellOne();
  ledger.Reset();
  EXPECT_EQ(Bill("100001").error.code, 1301);
  EXPECT_EQ(*FindField(SellOne().fields, "KEST-TxN"), "100002");
}

TEST_F(Billing, FailureOfTheLedgerIsAnsweredWithItsCodeAndTheNextSaleIsMade) {
  BreakLedger();
  const OperationResult failed = SellOne();
  EXPECT_THAT(Lines(failed.fields), ElementsAre("KEST-Error: 1501"));
  EXPECT_TRUE(failed.serverFailed);
  EXPECT_THAT(failed.summary, HasSubstr("the disk is full"));
  sandbox::Database(folder / "sales.db", 0).Execute("DROP TRIGGER broken");
  const OperationResult made = SellOne();
  EXPECT_EQ(made.error.code, 0);
  EXPECT_FALSE(made.serverFailed);
}

// Whether it was recorded is unknown then, and 1501 would say that it was not.
TEST_F(Billing, SaleWhoseCommitFailsHasNoAnswer) {
  sandbox::Database(folder / "sales.db", 0)
      .Execute(
          "CREATE TABLE owing (sale REFERENCES sales (number) DEFERRABLE INITIALLY DEFERRED);"
          "CREATE TRIGGER broken AFTER INSERT ON sales BEGIN INSERT INTO owing VALUES (-1); END");
  EXPECT_THROW(SellOne(), sandbox::CommitError);
  sandbox::Database(folder / "sales.db", 0).Execute("DROP TRIGGER broken");
  EXPECT_EQ(SellOne().error.code, 0);
}

TEST_F(Billing, SummaryTellsTransactionLinesAndAmount) {
  EXPECT_EQ(SellOne().summary, "BillCustomer of 1 line, 0.05: transaction 100001");
  EXPECT_EQ(Bill("100001").summary, "GetBill of transaction 100001: 1 line, 0.05");
  EXPECT_EQ(Sell(Request({"SKU:7^Quantity:1", "SKU:1042^Quantity:1"}, "4000000000000069")).summary,
            "BillCustomer of 2 lines, 31.45: the card has expired");
}

TEST_F(Billing, SummaryHoldsNoValueOfTheRequest) {
  const std::string secret = "4000000000000119";
  for (const OperationResult& result :
       {Sell(Request({"SKU:7^Quantity:1"}, secret)), Sell(Request({secret}, secret)), Bill(secret),
        Sell({{"GUID", secret}, {"VERSIONID", secret}, {"KEST-Product", "SKU:7^Quantity:1"}})}) {
    EXPECT_NE(result.error.code, 0);
    EXPECT_THAT(result.summary, Not(HasSubstr(secret.substr(0, 4))));
    EXPECT_THAT(result.summary, Not(HasSubstr(secret.substr(12))));
  }
}

}  // namespace
}  // namespace sandboxtest
