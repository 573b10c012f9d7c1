#include "shape/shape_world.h"

#include <kestapi.h>

#include "api/export_support.h"
#include "store/receipt_paths.h"

namespace kest::testing {
namespace {

bool IsOfTheSealing(const std::string& name) {
  return String(name.substr(0, 10).c_str()).EqualsIgnoringCase("KEST-Auth-");
}

// The fields but for the sealing's own.
std::string FieldsOf(KestFieldSet* set) {
  std::string text;
  for (std::int32_t i = 0; i < KestGetFieldCount(set); ++i) {
    const std::string name = KestGetFieldName(set, i);
    if (!IsOfTheSealing(name)) text += " " + name + "=" + KestGetFieldValue(set, i);
  }
  return text;
}

std::string Product(KestFieldSet* product) {
  const std::string fields = FieldsOf(product);
  return " [" + (fields.empty() ? fields : fields.substr(1)) + "]";
}

std::string Products(KestProductList* list) {
  std::string text;
  while (KestFieldSet* product = KestNextProduct(list)) text += Product(product);
  return text;
}

std::string Failure(KestFieldSet* set) {
  return std::to_string(KestGetErrorCode(set));
}

// With one order line and a transaction of before.
KestCheckout* MakeCheckout() {
  KestCheckout* checkout = KestCreateCheckout();
  KestAddOrderLine(checkout, 1042, 1);
  KestSetField(KEST_FIELDS(checkout), "KEST-TxN", "T-6");
  return checkout;
}

// A checkout is whole when its order is and, after a failed exchange, its request.
std::string CheckoutFault(KestCheckout* checkout, const char* service) {
  const ProductRecords& order = FromHandle(checkout)->Order();
  if (order.Count() != 1 || order.At(0).Get("SKU").Compare("1042") != 0) return "; the order has changed";
  if (KestGetErrorCode(KEST_FIELDS(checkout)) != KEST_ERROR_EXCHANGE) return "";
  const std::string fields = FieldsOf(KEST_FIELDS(checkout));
  if (fields == std::string(" KEST-TxN=T-6 KEST-Reseller-List= KEST-Service=") + service) return "";
  return "; the checkout has changed:" + fields;
}

}  // namespace

void LearnKey(SealedServer& server) {
  const SystemInForce honest(server);
  KestProductList* list = KestCreateProductList();
  KestGetProductList(list, "1.0");
  KestDestroyProductList(list);
}

ShapeWorld::ShapeWorld() {
  KestSetServer("shop.example", 8080, SealedServer::KeyText().c_str());
  KestSetProxy("", 0);
  KestSetApplicationGuid("guid-1");
  LearnKey(server);
}

ShapeWorld::~ShapeWorld() {
  // What the settings hold goes back before the systems go.
  KestSetServer("", 0, "");
  KestSetProxy("", 0);
  KestSetApplicationGuid(nullptr);
}

Outcome ShapeWorld::Run(Call call, const std::vector<Stream>& streams, const std::vector<Delivery>& ways) {
  registry.Clear();
  sockets.Begin(streams, ways);
  before = memory.Outstanding();
  Outcome outcome;
  outcome.seen = CallFor(call) + Leak();
  outcome.attempts = sockets.Attempts();
  outcome.sent = sockets.Sent();
  return outcome;
}

Outcome ShapeWorld::RunOnLoadedList(const std::vector<Stream>& honest, const std::vector<Stream>& streams) {
  const std::vector<Delivery> ways(streams.size() + honest.size());
  before = memory.Outstanding();
  Outcome outcome;
  KestProductList* list = KestCreateProductList();
  sockets.Begin(honest, ways);
  KestGetProductList(list, "1.0");
  sockets.Begin(streams, ways);
  const bool isDone = KestGetProductList(list, "1.0") != 0;
  const std::string products = Products(list);
  if (!isDone && products == " [SKU=1] [SKU=2] [SKU=3]") outcome.seen = "kept ";
  outcome.seen += isDone ? "done" + FieldsOf(KEST_FIELDS(list)) + products : Failure(KEST_FIELDS(list));
  KestDestroyProductList(list);
  outcome.seen += Leak();
  outcome.attempts = sockets.Attempts();
  outcome.sent = sockets.Sent();
  return outcome;
}

std::string ShapeWorld::CallFor(Call call) {
  switch (call) {
    case Call::list:
      return List();
    case Call::sale:
      return Sale();
    default:
      return Bill();
  }
}

std::string ShapeWorld::List() {
  KestProductList* list = KestCreateProductList();
  const bool isDone = KestGetProductList(list, "1.0") != 0;
  const std::string fields = FieldsOf(KEST_FIELDS(list)), products = Products(list);
  std::string seen = isDone ? "done" + fields + products : Failure(KEST_FIELDS(list)) + products;
  if (!isDone && fields != " GUID=guid-1 VERSIONID=1.0 KEST-Service=GetProductList") {
    seen += "; the list has changed:" + fields;
  }
  KestDestroyProductList(list);
  return seen;
}

std::string ShapeWorld::Sale() {
  KestCheckout* checkout = MakeCheckout();
  KestPurchase* purchase = KestBillCustomer(checkout);
  const std::string fields = FieldsOf(ToHandle(static_cast<FieldSet*>(&FromHandle(checkout)->PurchaseOf())));
  std::string seen = (purchase != nullptr ? "done" : Failure(KEST_FIELDS(checkout))) + fields;
  if (registry.Has(std::string("HKCU\\") + receiptsPath)) seen += " receipt";
  seen += CheckoutFault(checkout, "BillCustomer");
  KestDestroyCheckout(checkout);
  return seen;
}

std::string ShapeWorld::Bill() {
  KestCheckout* checkout = MakeCheckout();
  const bool isDone = KestGetBill(checkout) != nullptr;
  KestBill* bill = ToHandle(&FromHandle(checkout)->BillOf());
  std::string seen = (isDone ? "done" : Failure(KEST_FIELDS(checkout))) + FieldsOf(KEST_FIELDS(bill));
  for (std::int32_t i = 0; i < KestGetBillProductCount(bill); ++i) {
    seen += Product(KestGetBillProduct(bill, static_cast<std::uint32_t>(i)));
  }
  seen += CheckoutFault(checkout, "GetBill");
  KestDestroyCheckout(checkout);
  return seen;
}

std::string ShapeWorld::Leak() const {
  std::string leak;
  if (memory.Outstanding() != before) leak += "; " + std::to_string(memory.Outstanding() - before) + " blocks leaked";
  if (sockets.OpenSockets() != 0) leak += "; " + std::to_string(sockets.OpenSockets()) + " sockets open";
  if (registry.OpenHandles() != 0) leak += "; " + std::to_string(registry.OpenHandles()) + " keys open";
  if (registry.WrongHandles() != 0) leak += "; handles used that were not open";
  return leak;
}

}  // namespace kest::testing
