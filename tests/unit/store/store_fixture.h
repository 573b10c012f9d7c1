// The base of the store's tests: a registry in memory on a day that the test chooses, and one sale.
#pragma once

#include <string>
#include <vector>

#include "core/exception.h"
#include "store/receipts.h"
#include "support/registry_fixture.h"
#include "support/storage_inspection.h"

namespace kest::testing {

// A system on which it is always the same time.
class DateSystem : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  os::SystemTime now{1998, 3, 6, 7, 23, 59, 58, 999};

  void GetSystemTime(os::SystemTime* time) override { *time = now; }
};

class StoreTest : public RegistryTest {
 protected:
  StoreTest() : dateInForce(date) {
    purchase.Set("KEST-TotalAmount", "21.95");
    purchase.Set("KEST-Merchant", "The Tool Shop");
    purchase.Set("KEST-TaxAmount", "2.00");
    purchase.Set("KEST-TxN", "TX-77");
    AddProduct("Tool", "19.95");
  }
  void AddProduct(const char* name, const char* price) {
    ProductRecord& product = products.AppendNew();
    product.Set("Name", name);
    product.Set("Price", price);
  }
  void Store() { StoreReceipt({guid, products, purchase, cardNumber}); }
  void StoreFor(const char* otherGuid) {
    const String other(otherGuid);
    StoreReceipt({other, products, purchase, cardNumber});
  }
  // The value of a field of the record that receipts are found into.
  std::string Found(const char* field) const { return Content(receipt.Get(field)); }

  static std::string Today() { return "HKCU\\Software\\Veltrix\\KEST\\Receipts\\3-7-1998"; }
  static std::string Receipts() { return "HKCU\\Software\\Veltrix\\KEST\\Receipts"; }
  static std::string Products() { return "HKCU\\Software\\Veltrix\\KEST\\Products"; }

  DateSystem date{registry};
  SystemInForce dateInForce;
  String guid = "{5F1A-guid}";
  String cardNumber = "3782-8224-6310-005";
  ProductRecords products;
  FieldSet purchase;
  FieldSet receipt;
};

}  // namespace kest::testing
