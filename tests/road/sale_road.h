// The base of the road tests that sell: a configured host with an application GUID of its own and a checkout.
#pragma once

#include <string>

#include "road/road_test.h"
#include "road/sandbox_admin.h"
#include "road/stored_receipts.h"

namespace kest_road {

// Cards of the development server: one that is charged, one that is declined (error code 1403).
constexpr char goodCard[] = "4111111111111111";
constexpr char declinedCard[] = "4000000000000002";

class SaleRoad : public RoadTest {
 protected:
  SaleRoad() {
    Configure();
    library.KestSetApplicationGuid(guid.c_str());
    SetField("KEST-CCard-Number", goodCard);
  }
  ~SaleRoad() override {
    library.KestSetApplicationGuid("");
    library.KestDestroyCheckout(checkout);
  }
  void SetUp() override { admin.Reset(); }

  void SetField(const char* name, const char* value) { library.KestSetField(KEST_FIELDS(checkout), name, value); }
  // The value of the checkout's own field; empty when there is none.
  std::string Field(const char* name) { return FieldOf(KEST_FIELDS(checkout), name); }
  std::string FieldOf(KestFieldSet* set, const char* name) {
    const char* value = library.KestGetField(set, name);
    return value != nullptr ? value : "";
  }
  std::int32_t Code() { return library.KestGetErrorCode(KEST_FIELDS(checkout)); }
  // Bills the customer for one jar (SKU 1042).
  KestPurchase* BuyOne() {
    library.KestClearOrder(checkout);
    library.KestAddOrderLine(checkout, 1042, 1);
    return library.KestBillCustomer(checkout);
  }
  // Has the server say so in its next reply to a request.
  void AskForField(const char* name, const char* value) {
    admin.AskFor(nlohmann::json::array({nlohmann::json{{"kind", "field"}, {"name", name}, {"value", value}}}));
  }
  std::string TransactionOf(KestPurchase* purchase) {
    return purchase != nullptr ? FieldOf(KEST_FIELDS(purchase), "KEST-TxN") : "no purchase";
  }

  SandboxAdmin admin;
  const std::string guid = FreshGuid();
  KestCheckout* checkout = library.KestCreateCheckout();
};

}  // namespace kest_road
