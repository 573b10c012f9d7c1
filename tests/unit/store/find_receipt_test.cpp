// Which receipt is found for a GUID, and what is told of it?
#include <algorithm>
#include <utility>

#include "store_fixture.h"
#include "support/decimal_comma.h"

namespace kest::testing {
namespace {

using namespace std::string_literals;

class FindReceiptTest : public StoreTest {
 protected:
  // Puts a receipt as another writer would, its values with a NUL each.
  void PutReceipt(const std::string& dateAndSequence, const std::string& otherGuid, const std::string& transaction) {
    const std::string path = Receipts() + "\\" + dateAndSequence;
    registry.Put(path, "Guid", otherGuid + '\0');
    registry.Put(path, "TXN", transaction + '\0');
  }
  std::string PriceFor(const std::string& amount, const std::string& tax) {
    registry.Put(Today() + "\\1", "Guid", "g\0"s);
    registry.Put(Today() + "\\1", "Amount", amount + '\0');
    registry.Put(Today() + "\\1", "Tax", tax + '\0');
    EXPECT_TRUE(FindReceipt("g", receipt));
    return Found("KEST-Receipt-Price");
  }
  bool HasCalled(const std::string& call) const {
    return std::find(registry.calls.begin(), registry.calls.end(), call) != registry.calls.end();
  }
};

TEST_F(FindReceiptTest, StoredReceiptThenItsFieldsInTheirOrder) {
  Store();
  ASSERT_TRUE(FindReceipt(guid, receipt));
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"KEST-Receipt-Date", "3-7-1998"}, {"KEST-Receipt-Price", "19.95"},           {"KEST-Receipt-Tax", "2.00"},
      {"KEST-Receipt-Total", "21.95"},   {"KEST-Receipt-Merchant", "The Tool Shop"}, {"KEST-Receipt-Card", "0"},
      {"KEST-Receipt-TxN", "TX-77"}};
  const NameValueList& fields = receipt.Fields();
  ASSERT_EQ(expected.size(), fields.Count());
  for (std::uint32_t i = 0; i < fields.Count(); ++i) {
    EXPECT_EQ(expected[i].first, Content(fields.At(i).Name()));
    EXPECT_EQ(expected[i].second, Content(fields.At(i).Value()));
  }
}

TEST_F(FindReceiptTest, HostWhoseLocaleHasADecimalCommaThenThePriceHasADot) {
  const DecimalComma locale;
  if (!DecimalComma::IsInForce()) GTEST_SKIP() << "no locale with a decimal comma is installed here";
  EXPECT_EQ("19.95", PriceFor("21.95", "2.00"));
  EXPECT_EQ("-0.50", PriceFor("1.25", "1.75"));
}

TEST_F(FindReceiptTest, FieldsThatAreThereThenTheyAreReplacedAndOthersStay) {
  receipt.Set("KEST-Host", "shop.example");
  receipt.Set("KEST-Receipt-Tax", "old");
  Store();
  ASSERT_TRUE(FindReceipt(guid, receipt));
  EXPECT_EQ("shop.example", Found("KEST-Host"));
  EXPECT_EQ("2.00", Found("KEST-Receipt-Tax"));
  EXPECT_EQ(8u, receipt.Fields().Count());
}

TEST_F(FindReceiptTest, NoReceiptsKeyThenFalse) {
  EXPECT_FALSE(FindReceipt(guid, receipt));
  EXPECT_EQ((std::vector<std::string>{"open read " + Receipts()}), registry.calls);
}

TEST_F(FindReceiptTest, NoneMatchesThenFalseAndTheRecordIsUnchanged) {
  receipt.Set("KEST-Receipt-Tax", "old");
  Store();
  EXPECT_FALSE(FindReceipt("another", receipt));
  EXPECT_EQ(1u, receipt.Fields().Count());
  EXPECT_EQ("old", Found("KEST-Receipt-Tax"));
}

TEST_F(FindReceiptTest, GuidOfAnotherLetterCaseThenItIsNotFound) {
  Store();
  EXPECT_FALSE(FindReceipt("{5f1a-guid}", receipt));
  EXPECT_FALSE(FindReceipt("{5F1A-GUID}", receipt));
}

TEST_F(FindReceiptTest, GuidThatBeginsLikeTheStoredOneThenItIsNotFound) {
  Store();
  EXPECT_FALSE(FindReceipt("{5F1A-gui", receipt));
  EXPECT_FALSE(FindReceipt("{5F1A-guid}}", receipt));
}

TEST_F(FindReceiptTest, SeveralMatchThenTheFirstInTheRegistrysOrder) {
  PutReceipt("9-9-1999\\2", "g", "first");
  PutReceipt("9-9-1999\\1", "g", "second");
  PutReceipt("1-1-1998\\1", "g", "third");
  ASSERT_TRUE(FindReceipt("g", receipt));
  EXPECT_EQ("first", Found("KEST-Receipt-TxN"));
  EXPECT_EQ("9-9-1999", Found("KEST-Receipt-Date"));
}

TEST_F(FindReceiptTest, FirstMatchThenNothingBehindItIsLookedAt) {
  PutReceipt("9-9-1999\\1", "g", "first");
  PutReceipt("9-9-1999\\2", "g", "second");
  PutReceipt("1-1-1998\\1", "g", "third");
  ASSERT_TRUE(FindReceipt("g", receipt));
  EXPECT_FALSE(HasCalled("open read " + Receipts() + "\\9-9-1999\\2"));
  EXPECT_FALSE(HasCalled("open read " + Receipts() + "\\1-1-1998"));
}

TEST_F(FindReceiptTest, OthersComeFirstThenTheMatchAmongThem) {
  PutReceipt("9-9-1999\\1", "other", "first");
  PutReceipt("9-9-1999\\2", "another", "second");
  PutReceipt("1-1-1998\\1", "other", "third");
  PutReceipt("1-1-1998\\2", "g", "fourth");
  ASSERT_TRUE(FindReceipt("g", receipt));
  EXPECT_EQ("fourth", Found("KEST-Receipt-TxN"));
  EXPECT_EQ("1-1-1998", Found("KEST-Receipt-Date"));
}

TEST_F(FindReceiptTest, ADateCannotBeOpenedThenItIsPassedOver) {
  PutReceipt("9-9-1999\\1", "g", "first");
  PutReceipt("1-1-1998\\1", "g", "second");
  registry.refusals["open read " + Receipts() + "\\9-9-1999"] = os::errorAccessDenied;
  ASSERT_TRUE(FindReceipt("g", receipt));
  EXPECT_EQ("second", Found("KEST-Receipt-TxN"));
}

TEST_F(FindReceiptTest, ASequenceKeyCannotBeOpenedThenItIsPassedOver) {
  PutReceipt("9-9-1999\\1", "g", "first");
  PutReceipt("9-9-1999\\2", "g", "second");
  registry.refusals["open read " + Receipts() + "\\9-9-1999\\1"] = os::errorFileNotFound;
  ASSERT_TRUE(FindReceipt("g", receipt));
  EXPECT_EQ("second", Found("KEST-Receipt-TxN"));
}

TEST_F(FindReceiptTest, AnEmptyDateKeyThenTheNextOneIsSearched) {
  registry.Put(Receipts() + "\\9-9-1999");
  PutReceipt("1-1-1998\\1", "g", "found");
  EXPECT_TRUE(FindReceipt("g", receipt));
}

TEST_F(FindReceiptTest, StoredEmptyGuidThenNoTextFindsIt) {
  PutReceipt("9-9-1999\\1", "", "empty");
  EXPECT_FALSE(FindReceipt("g", receipt));
  EXPECT_FALSE(FindReceipt("", receipt));
}

TEST_F(FindReceiptTest, NullRequestThenAnEmptyOrMissingGuidIsFound) {
  PutReceipt("9-9-1999\\1", "g", "other");
  PutReceipt("9-9-1999\\2", "", "empty");
  ASSERT_TRUE(FindReceipt(String(), receipt));
  EXPECT_EQ("empty", Found("KEST-Receipt-TxN"));
}

TEST_F(FindReceiptTest, AmountMinusTaxThenThePrice) {
  EXPECT_EQ("19.95", PriceFor("21.95", "2.00"));
  EXPECT_EQ("0.00", PriceFor("2", "2"));
  EXPECT_EQ("-1.50", PriceFor("0.5", "2"));
  EXPECT_EQ("21.95", PriceFor("21.95", ""));
  EXPECT_EQ("-2.00", PriceFor("", "2.00"));
  EXPECT_EQ("0.00", PriceFor("free", "none"));
}

TEST_F(FindReceiptTest, LargeAmountThenTheDifferenceInSinglePrecision) {
  // Exactly 183448.29, for which a number of 24 bits is too short.
  EXPECT_EQ("183448.30", PriceFor("200000.01", "16551.72"));
}

TEST_F(FindReceiptTest, HugeAmountThenAllItsDigits) {
  EXPECT_EQ("340282346638528859811704183484516925440.00", PriceFor("3.4028235e38", "0"));
}

TEST_F(FindReceiptTest, AmountBeyondSinglePrecisionThenTheRuntimesWordForInfinity) {
  const std::string price = PriceFor(std::string(50, '9'), "2.00");
  EXPECT_TRUE(price == "inf" || price.substr(0, 2) == "1.") << price;
  EXPECT_EQ(price.npos, price.find_first_of("023456789")) << price;
}

TEST_F(FindReceiptTest, ValuesMissingThenTheyAreEmptyAndTheCardIsTheFailureNumber) {
  registry.Put(Today() + "\\1", "Guid", "g\0"s);
  ASSERT_TRUE(FindReceipt("g", receipt));
  EXPECT_EQ("4294967295", Found("KEST-Receipt-Card"));
  EXPECT_EQ("0.00", Found("KEST-Receipt-Price"));
  for (const char* field : {"KEST-Receipt-Tax", "KEST-Receipt-Total", "KEST-Receipt-Merchant", "KEST-Receipt-TxN"}) {
    EXPECT_EQ("", Found(field)) << field;
  }
  EXPECT_EQ(7u, receipt.Fields().Count());
}

TEST_F(FindReceiptTest, ReceiptThenItsValuesAreReadInTheirOrder) {
  Store();
  registry.calls.clear();
  FindReceipt(guid, receipt);
  std::vector<std::string> sizes;
  for (const std::string& call : registry.calls) {
    if (call.rfind("size ", 0) == 0) sizes.push_back(call.substr(call.find(" : ") + 3));
  }
  EXPECT_EQ((std::vector<std::string>{"Guid", "Tax", "Amount", "TXN", "Merchant"}), sizes);
  EXPECT_TRUE(HasCalled("read " + Today() + "\\1 : CardType"));
}

TEST_F(FindReceiptTest, SearchThenNothingIsWritten) {
  Store();
  registry.calls.clear();
  FindReceipt(guid, receipt);
  for (const std::string& call : registry.calls) {
    EXPECT_NE(0u, call.rfind("set ", 0)) << call;
    EXPECT_NE(0u, call.rfind("create ", 0)) << call;
    EXPECT_EQ(std::string::npos, call.find("open all")) << call;
  }
}

TEST_F(FindReceiptTest, MemoryEndsAtAnyPointThenTheExceptionAndTheRecordIsUnchanged) {
  PutReceipt("9-9-1999\\1", "other", "first");
  Store();
  receipt.Set("KEST-Receipt-Tax", "old");
  for (const auto failing : {AllocationSystem::Failing::once, AllocationSystem::Failing::fromThenOn}) {
    std::uint64_t point = 0;
    for (bool isDone = false; !isDone;) {
      FieldSet target = receipt;
      const std::int64_t before = memory.Outstanding();
      memory.FailAt(++point, failing);
      try {
        isDone = FindReceipt(guid, target);
      } catch (const Qor::MemoryException&) {
        EXPECT_EQ(1u, target.Fields().Count()) << "allocation " << point;
        EXPECT_EQ("old", Content(target.Get("KEST-Receipt-Tax"))) << "allocation " << point;
        EXPECT_EQ(before, memory.Outstanding()) << "left behind when allocation " << point << " failed";
      }
      memory.FailNever();
      EXPECT_EQ(0u, registry.OpenHandles()) << "left open when allocation " << point << " failed";
      ASSERT_GT(100u, point);
    }
    EXPECT_LT(10u, point);
  }
}

}  // namespace
}  // namespace kest::testing
