// Is an order read to the letter, and priced by the catalogue alone?
#include "order.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sandboxtest {
namespace {

using sandbox::Catalogue;
using sandbox::FieldList;
using sandbox::PriceOrder;
using sandbox::ReadRecord;
using sandbox::Sale;

std::vector<std::string> Pairs(std::string_view text) {
  std::vector<std::string> pairs;
  const FieldList record = ReadRecord(text).value();
  for (const sandbox::Field& field : record) pairs.push_back(field.name + " = " + field.value);
  return pairs;
}

TEST(Record, HasItsPairsInSequence) {
  EXPECT_THAT(Pairs("SKU:1042^Quantity:2"), ::testing::ElementsAre("SKU = 1042", "Quantity = 2"));
}

TEST(Record, ValueHoldsFurtherColons) {
  EXPECT_THAT(Pairs("a:1^b:2:3"), ::testing::ElementsAre("a = 1", "b = 2:3"));
}

TEST(Record, PairWithoutColonAtTheEndIsDropped) {
  EXPECT_THAT(Pairs("a:1^b"), ::testing::ElementsAre("a = 1"));
  EXPECT_THAT(Pairs("a:1^"), ::testing::ElementsAre("a = 1"));
}

TEST(Record, WithoutColonIsEmpty) {
  EXPECT_TRUE(Pairs("abc").empty());
  EXPECT_TRUE(Pairs("").empty());
}

TEST(Record, PairWithoutColonInTheMiddleGoesIntoTheNextName) {
  EXPECT_THAT(Pairs("a:1^xyz^b:2"), ::testing::ElementsAre("a = 1", "xyz^b = 2"));
}

TEST(Record, KeepsRepeatedNamesAndEmptyOnes) {
  EXPECT_THAT(Pairs("a:1^a:2^:^:3"), ::testing::ElementsAre("a = 1", "a = 2", " = ", " = 3"));
}

std::string Repeated(const std::string& text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; i++) all += text;
  return all;
}

TEST(Record, OfAsManyPairsAsItMayHaveIsReadAndOfMoreIsNot) {
  EXPECT_EQ(Pairs(Repeated("a:1^", 100)).size(), 100u);
  EXPECT_EQ(Pairs(Repeated("a:1^", 100) + "without a colon").size(), 100u);
  EXPECT_FALSE(ReadRecord(Repeated("a:1^", 100) + ":").has_value());
}

const Catalogue& TwoSellers() {
  static const Catalogue catalogue = Catalogue::FromText(R"({"applications": [
    {"guid": "pens", "name": "Pens", "merchant": "Pen Shop", "taxPercent": "5", "products": [
      {"SKU": 1, "Name": "Pen", "Price": "0.10", "Colour": "blue"}, {"SKU": "007", "Name": "Ink: red", "Price": "2.00"}]},
    {"guid": "pens", "version": "0.9", "name": "Old pens", "products": [{"SKU": 1, "Name": "Old pen", "Price": "0.05"}]},
    {"guid": "gold", "taxPercent": "10.5", "products": [
      {"SKU": 1, "Name": "Gold", "Price": "5.00"}, {"SKU": 4294967295, "Name": "Bar", "Price": "999999999.99"},
      {"SKU": 9, "Name": "Coin", "Price": "0.10"}, {"SKU": 10, "Name": "Half", "Price": "500000000.00"}]},
    {"guid": "free", "products": [{"SKU": 20, "Name": "Ten", "Price": "10.00"},
      {"SKU": 21, "Name": "Most", "Price": "999999999.99"}, {"SKU": 22, "Name": "Cent", "Price": "0.01"},
      {"SKU": 23, "Name": "Nothing", "Price": "0.00"}]}
  ]})");
  return catalogue;
}

FieldList Order(const std::vector<std::string>& lines, FieldList own = {}) {
  for (const std::string& line : lines) own.push_back({"KEST-Product", line});
  return own;
}

int CodeOf(const FieldList& request) {
  Sale sale;
  return PriceOrder(request, TwoSellers(), sale).code;
}

Sale Priced(const FieldList& request) {
  Sale sale;
  EXPECT_EQ(PriceOrder(request, TwoSellers(), sale).code, 0);
  return sale;
}

TEST(PriceOrder, TakesProductsAsTheCatalogueHasThem) {
  const Sale sale = Priced(Order({"SKU:7^Quantity:3"}));
  ASSERT_EQ(sale.products.size(), 1u);
  EXPECT_EQ(sale.products[0].sku, "007");
  EXPECT_EQ(sale.products[0].name, "Ink: red");
  EXPECT_EQ(sale.products[0].price, "2.00");
  EXPECT_EQ(sale.products[0].quantity, 3);
  EXPECT_EQ(sale.merchant, "Pen Shop");
  EXPECT_EQ(sale.tax, 30);
  EXPECT_EQ(sale.total, 630);
}

TEST(PriceOrder, CountsEveryLineOfTheSameSku) {
  const Sale sale = Priced(Order({"SKU:7^Quantity:1", "SKU:1^Quantity:1", "SKU:7^Quantity:2"}));
  EXPECT_EQ(sale.products.size(), 3u);
  EXPECT_EQ(sale.total - sale.tax, 610);
}

// Ten lines of 0.10 at 5 %: line by line the half cents would add up to 0.10.
TEST(PriceOrder, RoundsTheTaxOnceForTheWholeOrder) {
  EXPECT_EQ(Priced(Order(std::vector<std::string>(10, "SKU:1^Quantity:1"))).tax, 5);
}

// 0.10 at 5 % and 0.10 at 10.5 %: 0.005 and 0.0105, each rounded for itself.
TEST(PriceOrder, TaxesEachApplicationForItself) {
  const Sale sale = Priced(Order({"SKU:1^Quantity:1", "SKU:9^Quantity:1"}));
  EXPECT_EQ(sale.tax, 1 + 1);
  EXPECT_EQ(sale.total, 22);
}

TEST(PriceOrder, SellsInTheNameOfTheFirstLinesMerchant) {
  EXPECT_EQ(Priced(Order({"SKU:1^Quantity:1", "SKU:9^Quantity:1"})).merchant, "Pen Shop");
  EXPECT_EQ(Priced(Order({"SKU:9^Quantity:1", "SKU:1^Quantity:1"})).merchant, "KESTAPI sandbox");
}

TEST(PriceOrder, ApplicationsNameIsTheMerchantWhenNoneIsNamed) {
  EXPECT_EQ(Priced(Order({"SKU:1^Quantity:1"}, {{"GUID", "pens"}, {"VERSIONID", "0.9"}})).merchant, "Old pens");
}

TEST(PriceOrder, WithoutGuidTakesTheFirstApplicationThatHasTheSku) {
  EXPECT_EQ(Priced(Order({"SKU:1^Quantity:1"})).products[0].name, "Pen");
  EXPECT_EQ(Priced(Order({"SKU:1^Quantity:1"}, {{"GUID", ""}})).products[0].name, "Pen");
}

TEST(PriceOrder, WithGuidTakesTheProductsOfThisApplicationAndVersion) {
  EXPECT_EQ(Priced(Order({"SKU:1^Quantity:1"}, {{"GUID", "GOLD"}})).products[0].name, "Gold");
  EXPECT_EQ(Priced(Order({"SKU:1^Quantity:1"}, {{"guid", "pens"}, {"versionid", "0.9"}})).products[0].name, "Old pen");
  EXPECT_EQ(CodeOf(Order({"SKU:7^Quantity:1"}, {{"GUID", "gold"}})), 1202);
}

TEST(PriceOrder, TellsUnknownGuidAndUnknownVersionApart) {
  const Catalogue catalogue = Catalogue::FromText(
      R"({"applications": [{"guid": "g", "version": "1", "products": [{"SKU": 1, "Name": "a", "Price": "1.00"}]}]})");
  Sale sale;
  EXPECT_EQ(PriceOrder(Order({"SKU:1^Quantity:1"}, {{"GUID", "h"}}), catalogue, sale).code, 1101);
  EXPECT_EQ(PriceOrder(Order({"SKU:1^Quantity:1"}, {{"GUID", "g"}, {"VERSIONID", "2"}}), catalogue, sale).code, 1102);
}

TEST(PriceOrder, WithoutLinesIsEmpty) {
  EXPECT_EQ(CodeOf({}), 1201);
  EXPECT_EQ(CodeOf({{"SKU", "1"}, {"Quantity", "1"}}), 1201);
}

TEST(PriceOrder, UnknownSkuHasItsCodeWhereverItStands) {
  EXPECT_EQ(CodeOf(Order({"SKU:2^Quantity:1"})), 1202);
  EXPECT_EQ(CodeOf(Order({"SKU:1^Quantity:1", "SKU:2^Quantity:1"})), 1202);
}

TEST(PriceOrder, FindsNamesInAnyLetterCase) {
  EXPECT_EQ(CodeOf({{"kest-product", "sku:1^QUANTITY:1"}}), 0);
}

TEST(PriceOrder, ReadsTheFirstPairOfAName) {
  EXPECT_EQ(Priced(Order({"SKU:1^Quantity:2^Quantity:3^SKU:7^Price:0.00"})).total, 21);
}

class MalformedLine : public ::testing::TestWithParam<const char*> {};

TEST_P(MalformedLine, HasItsCode) {
  EXPECT_EQ(CodeOf(Order({GetParam()})), 1203);
  EXPECT_EQ(CodeOf(Order({"SKU:1^Quantity:1", GetParam()})), 1203);
}

INSTANTIATE_TEST_SUITE_P(Of, MalformedLine,
                         ::testing::Values("", "SKU:1", "Quantity:1", "SKU:1^Quantity:", "SKU:^Quantity:1",
                                           "SKU:1^Quantity:0", "SKU:1^Quantity:-1", "SKU:1^Quantity:+1",
                                           "SKU:1^Quantity:1.0", "SKU:1^Quantity:65536", "SKU:1^Quantity: 1",
                                           "SKU:x^Quantity:1", "SKU:4294967296^Quantity:1",
                                           "SKU:18446744073709551617^Quantity:1", "SKU:1^Quantity:18446744073709551617",
                                           "SKU:1 Quantity:1", "SKU:1^x^Quantity:1"));

TEST(PriceOrder, LineOfManyPairsIsMalformed) {
  EXPECT_EQ(CodeOf(Order({"SKU:1^Quantity:1^" + Repeated(":^", 98)})), 0);
  EXPECT_EQ(CodeOf(Order({"SKU:1^Quantity:1^" + Repeated(":^", 99)})), 1203);
}

TEST(PriceOrder, TakesTenThousandLinesAndNoMore) {
  std::vector<std::string> lines(10000, "SKU:23^Quantity:1");
  EXPECT_EQ(Priced(Order(lines)).products.size(), 10000u);
  lines.push_back(lines.front());
  EXPECT_EQ(CodeOf(Order(lines)), 1203);
}

TEST(PriceOrder, TakesTheLargestQuantityAndSku) {
  EXPECT_EQ(Priced(Order({"SKU:20^Quantity:65535"})).total, 65'535'000);
  EXPECT_EQ(CodeOf(Order({"SKU:4294967295^Quantity:1"})), 1204);  // found, and above the limit with its tax
}

TEST(PriceOrder, TotalMayReachTheLargestAmountAndNotPassIt) {
  EXPECT_EQ(Priced(Order({"SKU:21^Quantity:1"})).total, sandbox::mostCents);
  EXPECT_EQ(Priced(Order({"SKU:21^Quantity:1", "SKU:23^Quantity:1"})).total, sandbox::mostCents);
  EXPECT_EQ(CodeOf(Order({"SKU:21^Quantity:1", "SKU:22^Quantity:1"})), 1204);
  EXPECT_EQ(CodeOf(Order({"SKU:10^Quantity:2"})), 1204);
}

TEST(PriceOrder, ManyLinesOfTheLargestAmountAreTooLargeAndNothingElse) {
  EXPECT_EQ(CodeOf(Order(std::vector<std::string>(3000, "SKU:4294967295^Quantity:65535"))), 1204);
}

// 184467441 times 999999999.99 is 2^64 cents and 261059809.43 more: a sum of 64 bits that is looked at only at its end
// would be a small amount.
TEST(PriceOrder, SumThatWouldBeginAnewIsTooLargeBeforeItDoes) {
  std::vector<std::string> lines(2814, "SKU:21^Quantity:65535");
  lines.emplace_back("SKU:21^Quantity:51951");
  EXPECT_EQ(CodeOf(Order(lines)), 1204);
}

}  // namespace
}  // namespace sandboxtest
