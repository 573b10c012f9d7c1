// The operations: what each does, and what must hold after it, failed or not.
#include <set>

#include "api/export_support.h"
#include "fault/fault_world.h"
#include "fault/operation.h"

namespace kest::testing {
namespace {

FaultWorld& World() { return FaultWorld::Current(); }

std::string FieldOf(KestFieldSet* set, const char* name) {
  const char* value = KestGetField(set, name);
  return value != nullptr ? value : "";
}

// After a failure the code tells of a failed exchange, unless there was no memory beside it.
std::string CodeFault(KestFieldSet* set, bool isDone, bool isMemory) {
  const std::int32_t code = KestGetErrorCode(set);
  const bool isRight = isDone ? code == 0 : code == KEST_ERROR_EXCHANGE || (code == 0 && isMemory);
  return isRight ? "" : "error code " + std::to_string(code);
}

// Of an exchange with the server: without the network there is none, but entropy has other sources, the registry is not
// needed, a cut piece is followed by the next, and closing is closing.
std::optional<bool> OutcomeOfExchange(const std::string& call, int way) {
  if (call == "GlobalAlloc") return std::nullopt;
  if (call == "send") return way == 1;
  if (call == "recv") return way == 2;
  return std::set<std::string>{"socket", "connect", "gethostbyname"}.count(call) == 0;
}

bool HasWritten() {
  for (const std::string& call : World().registry.calls) {
    if (call.rfind("set ", 0) == 0) return true;
  }
  return false;
}

class FetchingProducts : public Operation {
 public:
  ~FetchingProducts() override { KestDestroyProductList(list); }
  std::optional<bool> Outcome(const std::string& call, int way) const override { return OutcomeOfExchange(call, way); }
  bool Run() override { return KestGetProductList(list, "1.0") == 1; }
  std::string Fault(bool isDone, bool isMemory) override {
    KestFieldSet* product = KestNextProduct(list);
    if (isDone != (product != nullptr)) return "the list holds a part";
    if (isDone && FieldOf(product, "Name") != "Tool") return "the product is another";
    if (isDone) return "";
    return CodeFault(KEST_FIELDS(list), isDone, isMemory);
  }

 private:
  KestProductList* list = KestCreateProductList();
};

// A checkout with one order line and a transaction of before.
class WithCheckout : public Operation {
 public:
  WithCheckout() {
    KestAddOrderLine(checkout, 1042, 1);
    KestSetField(KEST_FIELDS(checkout), "KEST-TxN", "T-6");
  }
  ~WithCheckout() override { KestDestroyCheckout(checkout); }

 protected:
  std::string OrderFault() const {
    return Order().Count() == 1 && std::string(Order().At(0).Get("SKU").Text()) == "1042" ? "" : "the order has changed";
  }
  KestFieldSet* Fields() const { return KEST_FIELDS(checkout); }
  const ProductRecords& Order() const { return FromHandle(checkout)->Order(); }

  KestCheckout* checkout = KestCreateCheckout();
};

class Selling : public WithCheckout {
 public:
  std::optional<bool> Outcome(const std::string& call, int way) const override { return OutcomeOfExchange(call, way); }
  bool Run() override { return KestBillCustomer(checkout) != nullptr; }
  std::string Fault(bool isDone, bool isMemory) override {
    KestFieldSet* purchase = ToHandle(static_cast<FieldSet*>(&FromHandle(checkout)->PurchaseOf()));
    if (isDone != (FieldOf(purchase, "KEST-TxN") == "T-7")) return "the purchase does not tell what happened";
    if (!isDone && HasWritten()) return "something was written for a sale that did not happen";
    if (isDone) return OrderFault() + ReceiptFault();
    return OrderFault() + CodeFault(Fields(), isDone, isMemory);
  }

 private:
  // What stands in the registry is a part of what a whole receipt has.
  static std::string ReceiptFault() {
    const std::vector<std::string> allowed = {"Guid=guid-1", "Amount=21.95", "Merchant=Shop", "Tax=2.00",
                                              "TXN=T-7",     "Tool=19.95",   "Update=1"};
    return World().registry.Has("HKCU") ? Walk("HKCU", allowed) : "";
  }
  static std::string Walk(const std::string& path, const std::vector<std::string>& allowed) {
    for (const MemoryRegistry::Value& value : World().registry.Values(path)) {
      if (value.name == "CardType" && value.data == std::string("\4\0\0\0", 4)) continue;
      const std::string text = value.name + "=" + value.data.substr(0, value.data.size() - 1);
      bool isAllowed = false;
      for (const std::string& one : allowed) isAllowed = isAllowed || one == text;
      if (!isAllowed || value.data.back() != '\0') return path + " holds " + text;
    }
    for (const std::string& name : World().registry.Subkeys(path)) {
      const std::string fault = Walk(path + "\\" + name, allowed);
      if (!fault.empty()) return fault;
    }
    return "";
  }
};

class FetchingABill : public WithCheckout {
 public:
  std::optional<bool> Outcome(const std::string& call, int way) const override { return OutcomeOfExchange(call, way); }
  bool Run() override { return KestGetBill(checkout) != nullptr; }
  std::string Fault(bool isDone, bool isMemory) override {
    KestBill* bill = ToHandle(&FromHandle(checkout)->BillOf());
    const bool isLoaded = KestGetBillProductCount(bill) == 1;
    if (isLoaded != (FieldOf(KEST_FIELDS(bill), "KEST-TxN") == "T-7")) return "the bill is loaded in part";
    if (isDone && (!isLoaded || FieldOf(Fields(), "KEST-TxN") != "T-7")) return "the bill is not loaded";
    if (!isDone && isLoaded && !isMemory) return "the bill is loaded and nobody says so";
    if (!isLoaded && FieldOf(Fields(), "KEST-TxN") != "T-6") return "the transaction was lost";
    return isDone ? OrderFault() : OrderFault() + CodeFault(Fields(), isDone, isMemory);
  }
};

class FindingAReceipt : public Operation {
 public:
  FindingAReceipt() {
    const std::string day = "HKCU\\Software\\Veltrix\\KEST\\Receipts\\3-7-1998\\";
    World().registry.Put(day + "1", "Guid", std::string("other\0", 6));
    World().registry.Put(day + "2", "Guid", std::string("guid-1\0", 7));
    World().registry.Put(day + "2", "Amount", std::string("21.95\0", 6));
    KestSetField(target, "KEST-Receipt-Date", "before");
  }
  ~FindingAReceipt() override { KestFreeFieldSet(target); }
  bool Run() override { return KestLoadReceipt(target, "guid-1") == 1; }
  std::string Fault(bool isDone, bool) override {
    if (HasWritten()) return "something was written";
    if (!isDone && FieldOf(target, "KEST-Receipt-Date") != "before") return "the fields are set in part";
    if (isDone && KestGetFieldCount(target) != 7) return "fields are missing";
    return KestGetErrorCode(target) == 0 ? "" : "an error code";
  }

 private:
  KestFieldSet* target = KestCreateFieldSet();
};

class Configuring : public Operation {
 public:
  Configuring() {
    KestSetField(configuration, "SERVER", "shop.example");
    KestSetField(configuration, "PORT", "8080");
    KestSetField(configuration, "TARVOPK", SealedServer::KeyText().c_str());
  }
  ~Configuring() override { KestFreeFieldSet(configuration); }
  bool Run() override { return KestConfigureServer(configuration) == 1; }
  std::string Fault(bool, bool) override {
    return KestGetFieldCount(configuration) == 3 ? "" : "the configuration has changed";
  }

 private:
  KestFieldSet* configuration = KestCreateFieldSet();
};

// Settings have no result: each must be the old one or the new one.
class SettingTheProcess : public Operation {
 public:
  bool Run() override {
    KestSetProxy("proxy.example", 3128);
    KestSetApplicationGuid("guid-1");
    KestSetProxy("", 0);
    return true;
  }
  std::string Fault(bool, bool) override { return ""; }
};

class MakingObjects : public Operation {
 public:
  bool Run() override {
    KestFieldSet* set = KestCreateFieldSet();
    KestCheckout* checkout = KestCreateCheckout();
    KestPurchase* purchase = KestCreatePurchase();
    KestProductList* list = KestCreateProductList();
    const bool isDone = set != nullptr && checkout != nullptr && purchase != nullptr && list != nullptr;
    KestFreeFieldSet(set);
    KestDestroyCheckout(checkout);
    KestDestroyPurchase(purchase);
    KestDestroyProductList(list);
    return isDone;
  }
  std::string Fault(bool, bool) override { return ""; }
};

// Forty fields, so that the list grows: after a failure there are all that came before it, and no other.
class AddingFields : public Operation {
 public:
  ~AddingFields() override { KestFreeFieldSet(set); }
  bool Run() override {
    KestFreeFieldSet(set);
    set = KestCreateFieldSet();
    for (int i = 0; i < 40; ++i) KestAddField(set, "name", std::to_string(i).c_str());
    KestSetField(set, "NAME", "first");
    return set != nullptr && KestGetFieldCount(set) == 40 && FieldOf(set, "name") == "first";
  }
  std::string Fault(bool, bool) override {
    const std::int32_t count = KestGetFieldCount(set);
    int last = -1;
    for (std::int32_t i = 0; i < count; ++i) {
      const std::string value = KestGetFieldValue(set, i);
      if (std::string(KestGetFieldName(set, i)) != "name") return "a field has another name";
      if (value == "first" && i == 0) continue;
      if (std::stoi(value) <= last) return "the fields stand in another order";
      last = std::stoi(value);
    }
    return "";
  }

 private:
  KestFieldSet* set = nullptr;
};

class Ordering : public WithCheckout {
 public:
  bool Run() override {
    KestClearOrder(checkout);
    for (std::uint32_t sku = 1; sku <= 40; ++sku) KestAddOrderLine(checkout, sku, 2);
    KestAddOrderLine(checkout, 1, 3);
    return Order().Count() == 40 && std::string(Order().At(0).Get("Quantity").Text()) == "3";
  }
  std::string Fault(bool, bool) override {
    const ProductRecords& order = Order();
    for (std::uint32_t i = 0; i < order.Count(); ++i) {
      if (order.At(i).Fields().Count() != 2) return "an order line is there in part";
    }
    return "";
  }
};

template <typename Class>
OperationCase Case(const char* name) {
  return {name, [] { return std::make_unique<Class>(); }};
}

}  // namespace

const std::vector<OperationCase>& AllOperations() {
  static const std::vector<OperationCase> operations = {
      Case<FetchingProducts>("FetchingProducts"),   Case<Selling>("Selling"),
      Case<FetchingABill>("FetchingABill"),         Case<FindingAReceipt>("FindingAReceipt"),
      Case<Configuring>("Configuring"),             Case<SettingTheProcess>("SettingTheProcess"),
      Case<MakingObjects>("MakingObjects"),         Case<AddingFields>("AddingFields"),
      Case<Ordering>("Ordering"),
  };
  return operations;
}

}  // namespace kest::testing
