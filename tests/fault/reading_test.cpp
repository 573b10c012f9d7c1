// The exports that read, and those that destroy, make no call that can fail: there is nothing of theirs to fail in
// turn.
#include <gtest/gtest.h>

#include "api/export_support.h"
#include "fault/fault_world.h"

namespace kest::testing {
namespace {

class WithoutACall : public ::testing::Test {
 protected:
  WithoutACall() {
    FieldSet reply;
    reply.Add("Name", "value");
    reply.Add("KEST-Product", "Name:Tool");
    FromHandle(list)->Load(reply);
    FromHandle(checkout)->BillOf().Load(reply);
    KestAddField(set, "Name", "value");
    KestAddOrderLine(checkout, 1, 1);
    world.faults.FailAt(1, FaultSystem::Failing::fromThenOn);
  }
  ~WithoutACall() override {
    world.faults.FailNever();
    KestFreeFieldSet(set);
    KestDestroyCheckout(checkout);
    KestDestroyProductList(list);
  }
  void ExpectNoCall() const {
    for (const FaultPoint& point : world.faults.Points()) ADD_FAILURE() << point.call;
  }

  FaultWorld world;
  KestFieldSet* set = KestCreateFieldSet();
  KestCheckout* checkout = KestCreateCheckout();
  KestProductList* list = KestCreateProductList();
};

TEST_F(WithoutACall, FieldsAreRead) {
  EXPECT_STREQ("value", KestGetField(set, "NAME"));
  EXPECT_STREQ("Name", KestGetFieldName(set, 0));
  EXPECT_STREQ("value", KestGetFieldValue(set, 0));
  EXPECT_EQ(1, KestGetFieldCount(set));
  EXPECT_EQ(0, KestGetErrorCode(set));
  ExpectNoCall();
}

TEST_F(WithoutACall, ProductsAndBillsAreRead) {
  EXPECT_STREQ("Tool", KestGetField(KestNextProduct(list), "Name"));
  EXPECT_EQ(nullptr, KestNextProduct(list));
  KestBill* bill = ToHandle(&FromHandle(checkout)->BillOf());
  EXPECT_EQ(1, KestGetBillProductCount(bill));
  EXPECT_STREQ("Tool", KestGetField(KestGetBillProduct(bill, 0), "Name"));
  ExpectNoCall();
}

TEST_F(WithoutACall, AnOrderIsClearedAndObjectsAreDestroyed) {
  KestClearOrder(checkout);
  EXPECT_EQ(0u, FromHandle(checkout)->Order().Count());
  KestFreeFieldSet(std::exchange(set, nullptr));
  KestDestroyCheckout(std::exchange(checkout, nullptr));
  KestDestroyProductList(std::exchange(list, nullptr));
  ExpectNoCall();
}

}  // namespace
}  // namespace kest::testing
