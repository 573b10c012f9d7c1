// What does a sale leave in the registry, in which order, and what when something on the way fails?
#include <algorithm>

#include "store/change_markers.h"
#include "store_fixture.h"

namespace kest::testing {
namespace {

using namespace std::string_literals;

class StoreReceiptTest : public StoreTest {
 protected:
  bool HasMarker(const std::string& path) { return registry.Has(path) && registry.Data(path, "Update") == "1\0"s; }
};

TEST_F(StoreReceiptTest, SaleThenEveryCallInItsOrder) {
  AddProduct("Axe", "5.00");
  Store();
  const std::string first = Today() + "\\1", bought = first + "\\Products";
  EXPECT_EQ((std::vector<std::string>{
                "open read " + first, "create all " + first, "create all " + bought, "set " + bought + " : Axe",
                "set " + bought + " : Tool", "set " + first + " : Guid", "set " + first + " : Amount",
                "set " + first + " : Merchant", "set " + first + " : Tax", "set " + first + " : TXN",
                "set " + first + " : CardType", "close " + first, "close " + bought, "create all " + Products(),
                "set " + Products() + " : Update", "close " + Products(), "create all " + Receipts(),
                "set " + Receipts() + " : Update", "close " + Receipts()}),
            registry.calls);
}

TEST_F(StoreReceiptTest, SaleThenItsValuesWithTypesAndNuls) {
  Store();
  const std::vector<MemoryRegistry::Value> values = registry.Values(Today() + "\\1");
  const std::vector<MemoryRegistry::Value> expected = {
      {"Guid", os::typeString, "{5F1A-guid}\0"s},  {"Amount", os::typeString, "21.95\0"s},
      {"Merchant", os::typeString, "The Tool Shop\0"s}, {"Tax", os::typeString, "2.00\0"s},
      {"TXN", os::typeString, "TX-77\0"s},         {"CardType", os::typeNumber, "\0\0\0\0"s}};
  ASSERT_EQ(expected.size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(expected[i].name, values[i].name);
    EXPECT_EQ(expected[i].type, values[i].type) << values[i].name;
    EXPECT_EQ(expected[i].data, values[i].data) << values[i].name;
  }
}

TEST_F(StoreReceiptTest, OneProductThenOneValueOfItsNameWithItsPrice) {
  Store();
  const std::vector<MemoryRegistry::Value> values = registry.Values(Today() + "\\1\\Products");
  ASSERT_EQ(1u, values.size());
  EXPECT_EQ("Tool", values[0].name);
  EXPECT_EQ(os::typeString, values[0].type);
  EXPECT_EQ("19.95\0"s, values[0].data);
}

TEST_F(StoreReceiptTest, TwoProductsOfOneNameThenTheEarlierOnesPriceRemains) {
  AddProduct("Tool", "1.00");
  Store();
  EXPECT_EQ(1u, registry.Values(Today() + "\\1\\Products").size());
  EXPECT_EQ("19.95\0"s, registry.Data(Today() + "\\1\\Products", "Tool"));
}

TEST_F(StoreReceiptTest, ProductWithoutANameThenTheDefaultValue) {
  products.AppendNew().Set("Price", "3.00");
  Store();
  EXPECT_EQ("3.00\0"s, registry.Data(Today() + "\\1\\Products", ""));
}

TEST_F(StoreReceiptTest, ProductWithoutAPriceThenOneNul) {
  products.AppendNew().Set("Name", "Gift");
  Store();
  EXPECT_EQ("\0"s, registry.Data(Today() + "\\1\\Products", "Gift"));
}

TEST_F(StoreReceiptTest, NoProductsThenAnEmptyProductsKey) {
  products.Clear();
  Store();
  EXPECT_TRUE(registry.Has(Today() + "\\1\\Products"));
  EXPECT_TRUE(registry.Values(Today() + "\\1\\Products").empty());
  EXPECT_TRUE(HasMarker(Receipts()));
}

TEST_F(StoreReceiptTest, AbsentFieldsThenOneNulEach) {
  purchase = FieldSet();
  guid = String();
  Store();
  for (const char* name : {"Guid", "Amount", "Merchant", "Tax", "TXN"}) {
    EXPECT_EQ("\0"s, registry.Data(Today() + "\\1", name)) << name;
  }
}

TEST_F(StoreReceiptTest, SeveralReceiptsOfADayThenTheyAreCounted) {
  for (int i = 0; i < 11; ++i) Store();
  std::vector<std::string> expected;
  for (int i = 1; i <= 11; ++i) expected.push_back(std::to_string(i));
  EXPECT_EQ(expected, registry.Subkeys(Today()));
}

TEST_F(StoreReceiptTest, AGapThenItIsFilledAndWhatFollowsStays) {
  registry.Put(Today() + "\\1", "Guid", "first\0"s);
  registry.Put(Today() + "\\3", "Guid", "third\0"s);
  Store();
  EXPECT_EQ("first\0"s, registry.Data(Today() + "\\1", "Guid"));
  EXPECT_EQ("{5F1A-guid}\0"s, registry.Data(Today() + "\\2", "Guid"));
  EXPECT_EQ("third\0"s, registry.Data(Today() + "\\3", "Guid"));
}

TEST_F(StoreReceiptTest, DateThenMonthDayAndYearWithoutLeadingZeros) {
  date.now = {2001, 11, 0, 23, 0, 0, 0, 0};
  Store();
  date.now = {800, 1, 0, 2, 0, 0, 0, 0};
  Store();
  EXPECT_EQ((std::vector<std::string>{"11-23-2001", "1-2-800"}), registry.Subkeys(Receipts()));
}

TEST_F(StoreReceiptTest, CardNumberThenItStandsNowhere) {
  Store();
  for (const std::string& path : {Today() + "\\1", Today() + "\\1\\Products"}) {
    for (const MemoryRegistry::Value& value : registry.Values(path)) {
      EXPECT_EQ(std::string::npos, value.data.find("3782")) << value.name;
    }
  }
}

TEST_F(StoreReceiptTest, CardNumberThenItsTypeIsStored) {
  cardNumber = "5500 0000 0000 0004";
  Store();
  EXPECT_EQ("\2\0\0\0"s, registry.Data(Today() + "\\1", "CardType"));
}

TEST_F(StoreReceiptTest, SaleThenBothMarkersAreSet) {
  Store();
  EXPECT_TRUE(HasMarker(Receipts()));
  EXPECT_TRUE(HasMarker(Products()));
  EXPECT_EQ(os::typeString, registry.Values(Products()).at(0).type);
}

TEST_F(StoreReceiptTest, ReceiptsKeyRefusedThenNothingIsWritten) {
  registry.refusals["create all " + Today() + "\\1"] = os::errorAccessDenied;
  Store();
  EXPECT_EQ((std::vector<std::string>{"open read " + Today() + "\\1", "create all " + Today() + "\\1"}),
            registry.calls);
}

TEST_F(StoreReceiptTest, ProductsKeyRefusedThenNoValuesAndNoMarkers) {
  registry.refusals["create all " + Today() + "\\1\\Products"] = os::errorAccessDenied;
  Store();
  EXPECT_TRUE(registry.Values(Today() + "\\1").empty());
  EXPECT_TRUE(registry.Values(Receipts()).empty());
  EXPECT_FALSE(registry.Has(Products()));
}

TEST_F(StoreReceiptTest, AValueRefusedThenTheOthersAreWritten) {
  registry.refusals["set " + Today() + "\\1 : Amount"] = os::errorAccessDenied;
  Store();
  EXPECT_EQ(5u, registry.Values(Today() + "\\1").size());
  EXPECT_TRUE(HasMarker(Receipts()));
}

TEST_F(StoreReceiptTest, ProductsMarkerRefusedThenTheReceiptsMarkerIsSet) {
  registry.refusals["create all " + Products()] = os::errorAccessDenied;
  Store();
  EXPECT_FALSE(registry.Has(Products()));
  EXPECT_TRUE(HasMarker(Receipts()));
}

TEST_F(StoreReceiptTest, AKeyThatCannotBeOpenedThenItIsTakenForFree) {
  registry.Put(Today() + "\\1", "Guid", "first\0"s);
  registry.refusals["open read " + Today() + "\\1"] = os::errorAccessDenied;
  Store();
  EXPECT_EQ("{5F1A-guid}\0"s, registry.Data(Today() + "\\1", "Guid"));
}

TEST_F(StoreReceiptTest, AnotherWriterFindsTheSameNumberThenTheLaterValuesStay) {
  registry.before = [&](const std::string& call) {
    if (call != "create all " + Today() + "\\1") return;
    registry.before = nullptr;
    StoreFor("other");
  };
  Store();
  EXPECT_EQ((std::vector<std::string>{"1"}), registry.Subkeys(Today()));
  EXPECT_EQ("{5F1A-guid}\0"s, registry.Data(Today() + "\\1", "Guid"));
}

TEST_F(StoreReceiptTest, MemoryEndsAtAnyPointThenTheExceptionAndNothingIsLeftOpen) {
  const std::int64_t before = memory.Outstanding();
  for (const auto failing : {AllocationSystem::Failing::once, AllocationSystem::Failing::fromThenOn}) {
    std::uint64_t point = 0;
    for (bool isDone = false; !isDone;) {
      memory.FailAt(++point, failing);
      try {
        Store();
        isDone = true;
      } catch (const Qor::MemoryException&) {
      }
      memory.FailNever();
      EXPECT_EQ(before, memory.Outstanding()) << "left behind when allocation " << point << " failed";
      EXPECT_EQ(0u, registry.OpenHandles()) << "left open when allocation " << point << " failed";
      ASSERT_GT(50u, point);
    }
    EXPECT_LT(3u, point);
  }
}

TEST_F(StoreReceiptTest, ProductsMarkedThenTheirMarkerAlone) {
  MarkProductsUpdated();
  EXPECT_EQ((std::vector<std::string>{"create all " + Products(), "set " + Products() + " : Update",
                                      "close " + Products()}),
            registry.calls);
  EXPECT_TRUE(HasMarker(Products()));
}

TEST_F(StoreReceiptTest, NoMemoryThenProductsAreMarkedAllTheSame) {
  memory.FailAt(1, AllocationSystem::Failing::fromThenOn);
  MarkProductsUpdated();
  memory.FailNever();
  EXPECT_TRUE(HasMarker(Products()));
}

TEST_F(StoreReceiptTest, MarkingRefusedThenNothingHappens) {
  registry.refusals["create all " + Products()] = os::errorAccessDenied;
  MarkProductsUpdated();
  EXPECT_EQ(1u, registry.calls.size());
}

}  // namespace
}  // namespace kest::testing
