// Every exported function of the built library, with the arguments that a careless host passes.
#include "road/road_test.h"

namespace kest_road {
namespace {

using Exports = RoadTest;

TEST_F(Exports, NullObjectsGiveTheFailingResults) {
  library.KestFreeFieldSet(nullptr);
  EXPECT_EQ(nullptr, library.KestGetField(nullptr, "name"));
  EXPECT_EQ(nullptr, library.KestGetFieldName(nullptr, 0));
  EXPECT_EQ(-1, library.KestGetFieldCount(nullptr));
  EXPECT_EQ(nullptr, library.KestGetFieldValue(nullptr, 0));
  EXPECT_EQ(0, library.KestGetErrorCode(nullptr));
  library.KestAddField(nullptr, "name", "value");
  library.KestSetField(nullptr, "name", "value");
  library.KestDestroyCheckout(nullptr);
  EXPECT_EQ(0, library.KestConfigureServer(nullptr));
  library.KestDestroyPurchase(nullptr);
  library.KestDestroyProductList(nullptr);
  EXPECT_EQ(nullptr, library.KestGetBillProduct(nullptr, 0));
  EXPECT_EQ(0, library.KestGetBillProductCount(nullptr));
  library.KestAddOrderLine(nullptr, 1, 1);
  EXPECT_EQ(nullptr, library.KestBillCustomer(nullptr));
  EXPECT_EQ(nullptr, library.KestGetBill(nullptr));
  EXPECT_EQ(0, library.KestLoadReceipt(nullptr, "guid"));
  EXPECT_EQ(0, library.KestGetProductList(nullptr, "1.0"));
  EXPECT_EQ(nullptr, library.KestNextProduct(nullptr));
  library.KestClearOrder(nullptr);
}

TEST_F(Exports, NullTextsAreEmptyTexts) {
  EXPECT_EQ(0, library.KestSetServer(nullptr, 0, nullptr));
  library.KestSetProxy(nullptr, 0);
  library.KestSetApplicationGuid(nullptr);
  KestFieldSet* set = library.KestCreateFieldSet();
  library.KestAddField(set, nullptr, nullptr);
  EXPECT_EQ(1, library.KestGetFieldCount(set));
  EXPECT_STREQ("", library.KestGetFieldName(set, 0));
  EXPECT_STREQ("", library.KestGetFieldValue(set, 0));
  library.KestSetField(set, nullptr, "value");
  EXPECT_STREQ("value", library.KestGetField(set, nullptr));
  library.KestFreeFieldSet(set);
}

TEST_F(Exports, EveryKindOfObjectIsMadeEmptyAndReadAsAFieldSet) {
  KestCheckout* checkout = library.KestCreateCheckout();
  KestPurchase* purchase = library.KestCreatePurchase();
  KestFieldSet* set = library.KestCreateFieldSet();
  for (KestFieldSet* fields : {KEST_FIELDS(checkout), KEST_FIELDS(purchase), KEST_FIELDS(list), set}) {
    ASSERT_NE(nullptr, fields);
    EXPECT_EQ(0, library.KestGetFieldCount(fields));
    EXPECT_EQ(0, library.KestGetErrorCode(fields));
    library.KestSetField(fields, "Name", "first");
    library.KestSetField(fields, "NAME", "second");
    library.KestAddField(fields, "name", "third");
    EXPECT_EQ(2, library.KestGetFieldCount(fields));
    EXPECT_STREQ("Name", library.KestGetFieldName(fields, 0));
    EXPECT_STREQ("second", library.KestGetField(fields, "name"));
    EXPECT_STREQ("third", library.KestGetFieldValue(fields, 1));
    EXPECT_EQ(nullptr, library.KestGetFieldValue(fields, 2));
    EXPECT_EQ(nullptr, library.KestGetFieldName(fields, -1));
  }
  library.KestDestroyCheckout(checkout);
  library.KestDestroyPurchase(purchase);
  library.KestFreeFieldSet(set);
}

// The result is one byte: what lies above it in the register is not part of it.
TEST_F(Exports, FlagsAreOneByte) {
  EXPECT_EQ(1u, sizeof library.KestConfigureServer(nullptr));
  Configure();
  EXPECT_EQ(1, library.KestSetServer(server.c_str(), port | 0x70000, key.c_str()));
  EXPECT_EQ(0, library.KestSetServer(server.c_str(), port, "no key"));
}

}  // namespace
}  // namespace kest_road
