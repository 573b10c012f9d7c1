// Threads that sell at once, each with its own objects and its own server: does each get what is its own while all read
// the same settings, whose texts their objects share?
#include <gtest/gtest.h>
#include <kestapi.h>

#include <string>

#include "api/library_state.h"
#include "support/memory_registry.h"
#include "support/sealed_server.h"
#include "support/storage_inspection.h"
#include "support/thread_systems.h"
#include "threads/together.h"
#include "transport/server_settings.h"

namespace kest::testing {
namespace {

constexpr int rounds = 6;
const std::string sharedGuid = "8E0F7A12-BFB3-4FE8-B9A5-48FD50A15A9A, which every thread sends";

// What one thread has to itself: a server, a registry and the objects of a host.
class Host {
 public:
  explicit Host(int which) : number(std::to_string(which)) {
    server.isAlone = false;
    server.connectionId = "connection-" + number;
    server.serverRac = "challenge " + number;
    server.answer = [this](SealedServer& self, const ServerRequest& request) {
      if (isSilent) return std::string();
      if (!self.IsHandshake(request)) asked = self.OpenRequest(request);
      return self.AnswerHonestly(request);
    };
  }
  ~Host() {
    KestDestroyProductList(list);
    KestDestroyCheckout(checkout);
    KestFreeFieldSet(receipt);
    EXPECT_EQ(0u, server.OpenSockets());
    EXPECT_EQ(0u, registry.OpenHandles());
    EXPECT_EQ(0, registry.WrongHandles());
  }

  void FetchProducts(int round) {
    const std::string sku = number + std::to_string(round), version = "version " + sku;
    server.replyFields = {{"KEST-Product", "SKU:" + sku + "^Name:first of " + number},
                          {"KEST-Product", "SKU:" + sku + "0^Name:second of " + number}};
    ASSERT_EQ(1, KestGetProductList(list, version.c_str()));
    EXPECT_TRUE(Asked("GUID", sharedGuid) && Asked("VERSIONID", version)) << asked;
    ExpectField(KestNextProduct(list), "SKU", sku);
    KestFieldSet* second = KestNextProduct(list);
    ExpectField(second, "SKU", sku + "0");
    ExpectField(second, "Name", "second of " + number);
    EXPECT_EQ(nullptr, KestNextProduct(list));
  }

  // The list keeps the fields of its request, of which one shares its text with the setting and the other threads'
  // lists: changed here, it stays there.
  void FailToFetchAndChangeTheGuid() {
    isSilent = true;
    EXPECT_EQ(0, KestGetProductList(list, number.c_str()));
    isSilent = false;
    EXPECT_EQ(KEST_ERROR_EXCHANGE, KestGetErrorCode(KEST_FIELDS(list)));
    ExpectField(KEST_FIELDS(list), "GUID", sharedGuid);
    KestSetField(KEST_FIELDS(list), "GUID", number.c_str());
    ExpectField(KEST_FIELDS(list), "GUID", number);
  }

  void Buy(int round) {
    const std::string transaction = "T-" + number + "-" + std::to_string(round), total = "1" + number + "7.25";
    server.replyFields = {{"KEST-TxN", transaction}, {"KEST-TotalAmount", total}, {"KEST-TaxAmount", "0.25"}};
    KestSetField(KEST_FIELDS(checkout), "KEST-CCard-Number", ("4111" + number).c_str());
    KestClearOrder(checkout);
    KestAddOrderLine(checkout, static_cast<std::uint32_t>(round), 3);
    KestPurchase* purchase = KestBillCustomer(checkout);
    ASSERT_NE(nullptr, purchase);
    EXPECT_TRUE(Asked("KEST-CCard-Number", "4111" + number)) << asked;
    EXPECT_TRUE(Asked("KEST-Product", "SKU:" + std::to_string(round) + "^Quantity:3")) << asked;
    ExpectField(KEST_FIELDS(purchase), "KEST-TxN", transaction);
    ExpectField(KEST_FIELDS(purchase), "KEST-TotalAmount", total);
  }

  void ReadBill(int round) {
    const std::string transaction = "T-" + number + "-" + std::to_string(round);
    KestSetField(KEST_FIELDS(checkout), "KEST-TxN", transaction.c_str());
    server.replyFields.emplace_back("KEST-Product", "SKU:" + number);
    KestBill* bill = KestGetBill(checkout);
    ASSERT_NE(nullptr, bill);
    EXPECT_TRUE(Asked("KEST-TxN", transaction)) << asked;
    ASSERT_EQ(1, KestGetBillProductCount(bill));
    ExpectField(KestGetBillProduct(bill, 0), "SKU", number);
  }

  void LoadReceipt() {
    ASSERT_EQ(1, KestLoadReceipt(receipt, sharedGuid.c_str()));
    ExpectField(receipt, "KEST-Receipt-TxN", "T-" + number + "-0");
    ExpectField(receipt, "KEST-Receipt-Price", "1" + number + "7.00");
  }

  const std::string number;
  SealedServer server;
  MemoryRegistry registry{server};

 private:
  bool Asked(const std::string& name, const std::string& value) const {
    return ("\r\n" + asked).find("\r\n" + name + ": " + value + "\r\n") != std::string::npos;
  }
  static void ExpectField(KestFieldSet* set, const char* name, const std::string& value) {
    EXPECT_STREQ(value.c_str(), KestGetField(set, name));
  }

  bool isSilent = false;
  std::string asked;  // the text of the last request
  KestProductList* list = KestCreateProductList();
  KestCheckout* checkout = KestCreateCheckout();
  KestFieldSet* receipt = KestCreateFieldSet();
};

class SharedSettings : public ::testing::Test {
 protected:
  SharedSettings() : inForce(systems) {
    KestSetServer("shop.example", 8080, SealedServer::KeyText().c_str());
    KestSetApplicationGuid(sharedGuid.c_str());
  }
  ~SharedSettings() override {
    KestSetServer("", 0, "");
    KestSetProxy("", 0);
    KestSetApplicationGuid("");
  }

  template <typename Work>
  void OnHosts(Work work) {
    Together([&work](int which) {
      Host host(which);
      const ThreadSystems::Own own(host.registry);
      for (int round = 0; round < rounds; ++round) work(host, round);
    });
  }

  ThreadSystems systems;
  SystemInForce inForce;
};

TEST_F(SharedSettings, EachThreadGetsItsOwnProductsSalesBillsAndReceipts) {
  OnHosts([](Host& host, int round) {
    host.FetchProducts(round);
    host.Buy(round);
    host.ReadBill(round);
    host.LoadReceipt();
  });
}

TEST_F(SharedSettings, ObjectsThatAreGoneLeaveTheGuidItsOneOwner) {
  OnHosts([](Host& host, int round) {
    host.FetchProducts(round);
    host.FailToFetchAndChangeTheGuid();
  });
  EXPECT_EQ(sharedGuid, Content(State().applicationGuid));
  EXPECT_EQ(1u, ReferencesOf(State().applicationGuid));
  EXPECT_EQ(1u, ReferencesOf(Settings().server.host));
}

TEST_F(SharedSettings, EveryRequestGoesThroughTheProxy) {
  KestSetProxy("10.1.2.3", 3128);
  OnHosts([](Host& host, int round) {
    host.Buy(round);
    for (const ServerRequest& request : host.server.requests) {
      ASSERT_EQ("10.1.2.3", request.host);
      ASSERT_EQ(3128, request.port);
      ASSERT_EQ(0u, request.head.find("GET http://shop.example:8080/BillCustomer ")) << request.head;
    }
  });
  EXPECT_EQ(1u, ReferencesOf(Settings().proxy.host));
}

// Threads come and go: nothing of the library may lie with one that has ended.
TEST_F(SharedSettings, ThreadsThatEndAndNewOnesServeEachOther) {
  for (int generation = 0; generation < 4; ++generation) {
    OnHosts([](Host& host, int round) {
      if (round < 2) host.FetchProducts(round);
    });
  }
  EXPECT_EQ(1u, ReferencesOf(State().applicationGuid));
}

}  // namespace
}  // namespace kest::testing
