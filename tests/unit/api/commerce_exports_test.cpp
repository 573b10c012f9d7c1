// Ordinals 500 to 526 as a host calls them.
#include <gtest/gtest.h>
#include <kestapi.h>

#include "api/export_support.h"
#include "api/library_state.h"
#include "support/commerce_fixture.h"

namespace kest {
namespace {

using testing::SealedServer;

class ConfigureServer : public ::testing::Test {
 protected:
  ~ConfigureServer() override {
    KestFreeFieldSet(configuration);
    KestSetServer(nullptr, 0, nullptr);
  }

  KestFieldSet* configuration = KestCreateFieldSet();
};

TEST_F(ConfigureServer, TheThreeFieldsAreTaken) {
  KestSetField(configuration, "server", "shop.example");
  KestSetField(configuration, "Port", "8080");
  KestSetField(configuration, "TARVOPK", SealedServer::KeyText().c_str());
  EXPECT_EQ(1, KestConfigureServer(configuration));
  EXPECT_STREQ("shop.example", Settings().server.host.Text());
  EXPECT_EQ(8080, Settings().server.port);
}

TEST_F(ConfigureServer, AMissingPortIsZero) {
  KestSetField(configuration, "SERVER", "shop.example");
  KestSetField(configuration, "TARVOPK", SealedServer::KeyText().c_str());
  EXPECT_EQ(1, KestConfigureServer(configuration));
  EXPECT_EQ(0, Settings().server.port);
}

TEST_F(ConfigureServer, APortIsNotCheckedButConverted) {
  KestSetField(configuration, "PORT", "80x");
  EXPECT_EQ(0, KestConfigureServer(configuration));
  EXPECT_EQ(872, Settings().server.port);
}

TEST_F(ConfigureServer, AnyObjectOfTheFamilyServes) {
  KestCheckout* checkout = KestCreateCheckout();
  KestSetField(KEST_FIELDS(checkout), "SERVER", "shop.example");
  KestSetField(KEST_FIELDS(checkout), "TARVOPK", SealedServer::KeyText().c_str());
  EXPECT_EQ(1, KestConfigureServer(KEST_FIELDS(checkout)));
  KestDestroyCheckout(checkout);
}

// Says for every name what it was asked for.
class AnsweringSet : public FieldSet {
 public:
  String Get(const char* name) const override {
    const String wanted(name);
    if (wanted == "SERVER") return "own.example";
    return wanted == "PORT" ? String("81") : String(SealedServer::KeyText().c_str());
  }
};

TEST_F(ConfigureServer, TheSettingsAreReadThroughTheObjectsOwnGet) {
  AnsweringSet own;
  EXPECT_EQ(1, KestConfigureServer(ToHandle(&own)));
  EXPECT_STREQ("own.example", Settings().server.host.Text());
  EXPECT_EQ(81, Settings().server.port);
}

TEST_F(ConfigureServer, NullIsRefused) { EXPECT_EQ(0, KestConfigureServer(nullptr)); }

TEST(NullObjects, GiveTheFailingResults) {
  KestDestroyCheckout(nullptr);
  KestDestroyPurchase(nullptr);
  KestDestroyProductList(nullptr);
  KestAddOrderLine(nullptr, 1, 1);
  KestClearOrder(nullptr);
  EXPECT_EQ(nullptr, KestGetBillProduct(nullptr, 0));
  EXPECT_EQ(0, KestGetBillProductCount(nullptr));
  EXPECT_EQ(0, KestGetProductList(nullptr, "1"));
  EXPECT_EQ(nullptr, KestNextProduct(nullptr));
}

TEST(ObjectExports, EveryKindIsMadeAndDestroyedWithoutALeak) {
  testing::AllocationSystem memory;
  testing::SystemInForce inForce(memory);
  KestCheckout* checkout = KestCreateCheckout();
  KestPurchase* purchase = KestCreatePurchase();
  KestProductList* list = KestCreateProductList();
  EXPECT_EQ(0, KestGetFieldCount(KEST_FIELDS(checkout)));
  EXPECT_EQ(0, KestGetFieldCount(KEST_FIELDS(purchase)));
  EXPECT_EQ(0, KestGetErrorCode(KEST_FIELDS(list)));
  KestDestroyCheckout(checkout);
  KestDestroyPurchase(purchase);
  KestDestroyProductList(list);
  EXPECT_EQ(0, memory.Outstanding());
}

TEST(ObjectExports, AnObjectThatFindsNoMemoryIsNull) {
  testing::AllocationSystem memory;
  testing::SystemInForce inForce(memory);
  for (const auto how : {testing::AllocationSystem::Failing::once, testing::AllocationSystem::Failing::fromThenOn}) {
    // The block, then the version texts of its field sets: four in a checkout.
    for (std::uint64_t point = 1; point <= 5; ++point) {
      memory.FailAt(point, how);
      EXPECT_EQ(nullptr, KestCreateCheckout()) << point;
    }
    for (std::uint64_t point = 1; point <= 2; ++point) {
      memory.FailAt(point, how);
      EXPECT_EQ(nullptr, KestCreatePurchase()) << point;
      memory.FailAt(point, how);
      EXPECT_EQ(nullptr, KestCreateProductList()) << point;
    }
  }
  EXPECT_EQ(0, memory.Outstanding());
}

TEST(ObjectExports, AHandleIsTheAddressOfItsBlock) {
  class Recorder : public testing::ForwardingSystem {
   public:
    void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
      void* block = ForwardingSystem::GlobalAlloc(flags, bytes);
      if (first == nullptr) first = block;
      return block;
    }
    void* first = nullptr;
  } recorder;
  testing::SystemInForce inForce(recorder);
  KestCheckout* checkout = KestCreateCheckout();
  EXPECT_EQ(recorder.first, static_cast<void*>(checkout));
  KestDestroyCheckout(checkout);
}

class OrderExports : public ::testing::Test {
 protected:
  ~OrderExports() override { KestDestroyCheckout(checkout); }
  std::string Order() const { return FromHandle(checkout)->Format().Text(); }

  KestCheckout* checkout = KestCreateCheckout();
};

TEST_F(OrderExports, OnlyTheLowSixteenBitsOfAQuantityCount) {
  KestAddOrderLine(checkout, 5, 0x00010002);
  EXPECT_EQ("KEST-Product: SKU:5^Quantity:2\r\n", Order());
  KestAddOrderLine(checkout, 5, 65536);
  EXPECT_EQ("KEST-Product: SKU:5^Quantity:0\r\n", Order());
}

TEST_F(OrderExports, ClearingRemovesAllLines) {
  KestAddOrderLine(checkout, 5, 1);
  KestAddOrderLine(checkout, 6, 1);
  KestClearOrder(checkout);
  EXPECT_EQ("", Order());
}

TEST_F(OrderExports, BillProductsAreCountedAndHandedOut) {
  Bill& bill = FromHandle(checkout)->BillOf();
  bill.Records().AppendNew().Parse("SKU:1");
  bill.Records().AppendNew().Parse("SKU:2");
  auto* handle = reinterpret_cast<KestBill*>(&bill);
  EXPECT_EQ(2, KestGetBillProductCount(handle));
  EXPECT_STREQ("2", KestGetField(KestGetBillProduct(handle, 1), "SKU"));
}

TEST_F(OrderExports, ABillIndexIsNotChecked) {
  Bill& bill = FromHandle(checkout)->BillOf();
  bill.Records().AppendNew();
  auto* handle = reinterpret_cast<KestBill*>(&bill);
  auto* first = reinterpret_cast<char*>(KestGetBillProduct(handle, 0));
  auto* beyond = reinterpret_cast<char*>(KestGetBillProduct(handle, 3));
  EXPECT_EQ(static_cast<std::ptrdiff_t>(3 * sizeof(ProductRecord)), beyond - first);
}

class ProductListExports : public testing::CommerceTest {
 protected:
  ~ProductListExports() override {
    KestDestroyProductList(list);
    KestSetApplicationGuid(nullptr);
  }

  KestProductList* list = KestCreateProductList();
};

TEST_F(ProductListExports, AListIsFetchedAndReadToItsEnd) {
  KestSetApplicationGuid("guid-1");
  server.replyFields = {{"KEST-Product", "SKU:1"}, {"KEST-Product", "SKU:2"}, {"Note", "n"}};
  ASSERT_EQ(1, KestGetProductList(list, "2.1"));
  EXPECT_STREQ("1", KestGetField(KestNextProduct(list), "SKU"));
  EXPECT_STREQ("2", KestGetField(KestNextProduct(list), "SKU"));
  EXPECT_EQ(nullptr, KestNextProduct(list));
  EXPECT_EQ(nullptr, KestNextProduct(list));
  EXPECT_STREQ("n", KestGetField(KEST_FIELDS(list), "Note"));
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back()).find("GUID: guid-1\r\nVERSIONID: 2.1\r\n"));
}

TEST_F(ProductListExports, NullTextsTravelAsEmptyTexts) {
  KestSetApplicationGuid(nullptr);
  ASSERT_EQ(1, KestGetProductList(list, nullptr));
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back()).find("GUID: \r\nVERSIONID: \r\n"));
}

TEST_F(ProductListExports, AFailedExchangeIsFalseWithCode102) {
  KestSetServer("shop.example", 8080, "no key");
  EXPECT_EQ(0, KestGetProductList(list, "1"));
  EXPECT_EQ(KEST_ERROR_EXCHANGE, KestGetErrorCode(KEST_FIELDS(list)));
}

TEST_F(ProductListExports, EveryFailedAllocationGivesTheStatedResultAndLeaksNothing) {
  server.replyFields = {{"KEST-Product", "SKU:1^Name:Tool"}, {"Note", "n"}};
  KestSetApplicationGuid("guid-1");
  ASSERT_EQ(1, KestGetProductList(list, "1"));
  for (const auto how : {testing::AllocationSystem::Failing::once, testing::AllocationSystem::Failing::fromThenOn}) {
    const std::int64_t before = memory.Outstanding();
    bool isDone = false;
    std::uint64_t failures = 0;
    for (std::uint64_t point = 1; !isDone; ++point) {
      KestProductList* other = KestCreateProductList();
      memory.FailAt(point, how);
      isDone = KestGetProductList(other, "1") == 1;
      memory.FailNever();
      const std::int32_t code = KestGetErrorCode(KEST_FIELDS(other));
      EXPECT_TRUE(isDone ? code == 0 : code == 0 || code == 102) << point;
      failures += isDone ? 0 : 1;
      KestDestroyProductList(other);
      EXPECT_EQ(before, memory.Outstanding()) << point;
    }
    EXPECT_GT(failures, 50u);
  }
}

TEST(ApplicationGuid, ANewOneEmptiesTheResellerList) {
  State().resellerList = "of another application";
  KestSetApplicationGuid("guid");
  EXPECT_TRUE(State().resellerList.IsEmpty());
  KestSetApplicationGuid(nullptr);
}

TEST(ApplicationGuid, IsReplacedWholeOrNotAtAll) {
  KestSetApplicationGuid("first");
  {
    testing::AllocationSystem memory;
    testing::SystemInForce inForce(memory);
    memory.FailAt(1, testing::AllocationSystem::Failing::fromThenOn);
    KestSetApplicationGuid("second");
  }
  EXPECT_STREQ("first", State().applicationGuid.Text());
  EXPECT_TRUE(State().resellerList.IsEmpty());
  KestSetApplicationGuid(nullptr);
  EXPECT_TRUE(State().applicationGuid.IsEmpty());
}

}  // namespace
}  // namespace kest
