// Ordinals 500 to 526: commerce objects and operations.
#include "api/bill_customer.h"
#include "api/commerce_call.h"
#include "api/export_support.h"
#include "api/get_bill.h"
#include "api/get_product_list.h"
#include "api/library_state.h"
#include "core/memory.h"
#include "store/receipts.h"
#include "transport/server_settings.h"

using namespace kest;

KestCheckout* KEST_CALL KestCreateCheckout() { return Create<Checkout>(); }

void KEST_CALL KestDestroyCheckout(KestCheckout* checkout) { delete FromHandle(checkout); }

KestBool KEST_CALL KestConfigureServer(KestFieldSet* configuration) {
  if (configuration == nullptr) return 0;
  return Guarded<KestBool>(0, [&]() -> KestBool {
    const FieldSet& settings = *FromHandle(configuration);
    const String server = settings.Get("SERVER");
    const auto port = static_cast<std::uint16_t>(settings.Get("PORT").ToUnsigned());
    return SetServer(server.Characters(), port, settings.Get("TARVOPK").Characters());
  });
}

KestPurchase* KEST_CALL KestCreatePurchase() { return Create<Purchase>(); }

void KEST_CALL KestDestroyPurchase(KestPurchase* purchase) { delete FromHandle(purchase); }

KestProductList* KEST_CALL KestCreateProductList() { return Create<ProductList>(); }

void KEST_CALL KestDestroyProductList(KestProductList* list) { delete FromHandle(list); }

KestFieldSet* KEST_CALL KestGetBillProduct(KestBill* bill, std::uint32_t index) {
  // The index is meant to go unchecked: callers bound it by the count.
  return bill != nullptr ? ToHandle(&FromHandle(bill)->Records().At(index)) : nullptr;
}

std::int32_t KEST_CALL KestGetBillProductCount(KestBill* bill) {
  return bill != nullptr ? static_cast<std::int32_t>(FromHandle(bill)->Records().Count()) : 0;
}

void KEST_CALL KestSetApplicationGuid(const char* guid) {
  Guarded([&] { SetApplicationGuid(guid); });
}

void KEST_CALL KestAddOrderLine(KestCheckout* checkout, std::uint32_t sku, std::uint32_t quantity) {
  if (checkout == nullptr) return;
  // A 16-bit quantity in a 32-bit slot: the upper half is ignored.
  Guarded([&] { FromHandle(checkout)->AddOrderLine(sku, static_cast<std::uint16_t>(quantity)); });
}

KestPurchase* KEST_CALL KestBillCustomer(KestCheckout* handle) {
  if (handle == nullptr) return nullptr;
  const WipeStackAtEnd wipe;
  Checkout& checkout = *FromHandle(handle);
  return Guarded<KestPurchase*>(nullptr, [&] {
    CommerceCall call;
    return BillCustomer(call, checkout) ? ToHandle(&checkout.PurchaseOf()) : nullptr;
  });
}

KestBill* KEST_CALL KestGetBill(KestCheckout* handle) {
  if (handle == nullptr) return nullptr;
  const WipeStackAtEnd wipe;
  Checkout& checkout = *FromHandle(handle);
  return Guarded<KestBill*>(nullptr, [&] {
    CommerceCall call;
    return GetBill(call, checkout) ? ToHandle(&checkout.BillOf()) : nullptr;
  });
}

KestBool KEST_CALL KestLoadReceipt(KestFieldSet* target, const char* guid) {
  if (target == nullptr) return 0;
  return Guarded<KestBool>(0, [&]() -> KestBool { return FindReceipt(guid, *FromHandle(target)); });
}

KestBool KEST_CALL KestGetProductList(KestProductList* list, const char* versionId) {
  if (list == nullptr) return 0;
  const WipeStackAtEnd wipe;
  return Guarded<KestBool>(0, [&]() -> KestBool {
    CommerceCall call;
    return GetProductList(call, *FromHandle(list), versionId);
  });
}

KestFieldSet* KEST_CALL KestNextProduct(KestProductList* list) {
  return list != nullptr ? ToHandle(FromHandle(list)->Next()) : nullptr;
}

void KEST_CALL KestClearOrder(KestCheckout* checkout) {
  if (checkout != nullptr) FromHandle(checkout)->ClearOrder();
}
