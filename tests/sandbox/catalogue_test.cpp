// Is a catalogue that could not be carried to a client refused at start, with the place named?
#include "catalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace sandboxtest {
namespace {

using sandbox::Catalogue;
using sandbox::CatalogueError;
using ::testing::HasSubstr;

std::string WithProduct(const std::string& product) {
  return R"({"applications": [{"guid": "g", "products": [{"SKU": 1, "Name": "a", "Price": "1.00"}, )" + product +
         "]}]}";
}

std::string WithField(const std::string& field) {
  return WithProduct(R"({"SKU": 2, "Name": "b", "Price": "1.00", )" + field + "}");
}

std::string WithKey(const std::string& key) {
  return R"({"applications": [{"guid": "g", "products": [], )" + key + "}]}";
}

struct Fault {
  const char* name;
  std::string text;
  const char* place;
  const char* reason;
};

class CatalogueFault : public ::testing::TestWithParam<Fault> {};

TEST_P(CatalogueFault, IsRefusedWithItsPlace) {
  try {
    Catalogue::FromText(GetParam().text);
    FAIL() << "taken: " << GetParam().text;
  } catch (const CatalogueError& error) {
    EXPECT_THAT(error.what(), ::testing::StartsWith(GetParam().place));
    EXPECT_THAT(error.what(), HasSubstr(GetParam().reason));
  }
}

constexpr const char* extra = "applications[0].products[1].Extra: ";
constexpr const char* second = "applications[0].products[1]";

const Fault faults[] = {
    {"CaretInValue", WithField(R"("Extra": "a^b")"), extra, "\"^\""},
    {"CaretInName", WithField(R"("Ex^tra": "a")"), "applications[0].products[1].Ex^tra: ", "\"^\""},
    {"ColonInName", WithField(R"("Ex:tra": "a")"), "applications[0].products[1].Ex:tra: ", "\":\""},
    {"EmptyName", WithField(R"("": "a")"), "applications[0].products[1].\"\": ", "name"},
    {"LineFeedInValue", WithField(R"("Extra": "a\nb")"), extra, "line ends"},
    {"CarriageReturnInValue", WithField(R"("Extra": "a\rb")"), extra, "line ends"},
    {"ZeroByteInValue", WithField(R"("Extra": "a\u0000b")"), extra, "control"},
    {"LineFeedInName", WithField(R"("Ex\ntra": "a")"), "applications[0].products[1].\"Ex\\ntra\": ", "line ends"},
    {"SpaceAtTheEnd", WithField(R"("Extra": "a ")"), extra, "space"},
    {"SpaceAtTheBeginning", WithField(R"("Extra": " a")"), extra, "space"},
    {"FractionAsNumber", WithField(R"("Extra": 19.95)"), extra, "\"19.95\""},
    {"ValueOfAnotherKind", WithField(R"("Extra": null)"), extra, "text or a whole number"},
    {"SkuMissing", WithProduct(R"({"Name": "b", "Price": "1.00"})"), second, "\"SKU\" is missing"},
    {"NameMissing", WithProduct(R"({"SKU": 2, "Price": "1.00"})"), second, "\"Name\" is missing"},
    {"PriceMissing", WithProduct(R"({"SKU": 2, "Name": "b"})"), second, "\"Price\" is missing"},
    {"SkuNegative", WithProduct(R"({"SKU": -2, "Name": "b", "Price": "1.00"})"), second, "SKU is a decimal number"},
    {"SkuOf33Bits", WithProduct(R"({"SKU": 4294967296, "Name": "b", "Price": "1.00"})"), second, "4294967295"},
    {"SkuTwice", WithProduct(R"({"SKU": "01", "Name": "b", "Price": "1.00"})"), second, "another product"},
    {"PriceWithoutDecimals", WithProduct(R"({"SKU": 2, "Name": "b", "Price": 5})"), second, "two decimals"},
    {"PriceWithOneDecimal", WithProduct(R"({"SKU": 2, "Name": "b", "Price": "5.0"})"), second, "two decimals"},
    {"PriceNegative", WithProduct(R"({"SKU": 2, "Name": "b", "Price": "-5.00"})"), second, "two decimals"},
    {"ProductThatIsNoObject", WithProduct("7"), second, "a product is an object"},
    {"NoJson", "{\n\"applications\": [\n}", "line 3: ", "not JSON"},
    {"NotUtf8", "{\"applications\": [{\"guid\": \"\xFF\", \"products\": []}]}", "line 1: ", "UTF-8"},
    {"NothingInIt", "", "line 1: ", "not JSON"},
    {"AnArray", "[]", "catalogue: ", "object"},
    {"WithoutApplications", "{}", "catalogue: ", "\"applications\" must be an array"},
    {"UnknownKey", R"({"applications": [], "aplications": []})", "catalogue.aplications: ", "knows no key"},
    {"UnknownKeyInEntry", R"({"applications": [{"guid": "g", "products": [], "product": []}]})",
     "applications[0].product: ", "knows no key"},
    {"GuidMissing", R"({"applications": [{"products": []}]})", "applications[0]: ", "\"guid\""},
    {"GuidEmpty", R"({"applications": [{"guid": "", "products": []}]})", "applications[0]: ", "\"guid\""},
    {"VersionThatIsNoText", R"({"applications": [{"guid": "g", "version": 1, "products": []}]})",
     "applications[0]: ", "\"version\""},
    {"ProductsMissing", R"({"applications": [{"guid": "g"}]})", "applications[0]: ", "\"products\" must be an array"},
    {"MerchantEmpty", WithKey(R"("merchant": "")"), "applications[0]: ", "\"merchant\""},
    {"MerchantWithALineEnd", WithKey(R"("merchant": "a\nb")"), "applications[0].merchant: ", "control"},
    {"MerchantWithASpaceAtTheEnd", WithKey(R"("merchant": "a ")"), "applications[0].merchant: ", "space"},
    {"NameWithASpaceAtTheBeginning", WithKey(R"("name": " a")"), "applications[0].name: ", "space"},
    {"NameThatIsNoText", WithKey(R"("name": 1)"), "applications[0]: ", "\"name\""},
    {"TaxAsNumber", WithKey(R"("taxPercent": 8)"), "applications[0]: ", "\"taxPercent\""},
    {"TaxWithThreeDecimals", WithKey(R"("taxPercent": "8.255")"), "applications[0].taxPercent: ", "8.25"},
    {"TaxAboveAHundred", WithKey(R"("taxPercent": "100.01")"), "applications[0].taxPercent: ", "100"},
    {"EntryTwice", R"({"applications": [{"guid": "g", "products": []}, {"guid": "G", "products": []}]})",
     "applications[1]: ", "another entry"},
};

INSTANTIATE_TEST_SUITE_P(Of, CatalogueFault, ::testing::ValuesIn(faults),
                         [](const auto& one) { return one.param.name; });

TEST(CatalogueRecord, HoldsThePairsInFileOrderJoinedByCarets) {
  const Catalogue catalogue = Catalogue::FromText(WithField(R"("Extra": "a:b", "Empty": "", "Whole": -3)"));
  EXPECT_EQ(catalogue.Find("g", "")->products[1].record, "SKU:2^Name:b^Price:1.00^Extra:a:b^Empty:^Whole:-3");
}

TEST(CatalogueRecord, CarriesUtf8BytesUnchanged) {
  const Catalogue catalogue = Catalogue::FromText(WithField("\"Extra\": \"\xE2\x82\xAC \\u20ac\""));
  EXPECT_THAT(catalogue.Find("g", "")->products[1].record, HasSubstr("Extra:\xE2\x82\xAC \xE2\x82\xAC"));
}

TEST(CatalogueWithoutEntries, IsTakenAndFindsNothing) {
  const Catalogue catalogue = Catalogue::FromText(R"({"applications": []})");
  EXPECT_FALSE(catalogue.HasGuid("g"));
  EXPECT_EQ(catalogue.Find("g", ""), nullptr);
}

}  // namespace
}  // namespace sandboxtest
