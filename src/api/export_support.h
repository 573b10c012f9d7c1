// What every exported function needs: handles are the addresses of the library's objects, and no exception leaves.
#pragma once

#include <utility>

#include "api/bill.h"
#include "api/checkout.h"
#include "api/product_list.h"
#include "api/purchase.h"
#include "core/exception.h"
#include "core/field_set.h"
#include "kestapi.h"

namespace kest {

// A checkout, purchase, product list or bill passes as a field set: each begins with one.
inline FieldSet* FromHandle(KestFieldSet* handle) { return reinterpret_cast<FieldSet*>(handle); }
inline Checkout* FromHandle(KestCheckout* handle) { return reinterpret_cast<Checkout*>(handle); }
inline Purchase* FromHandle(KestPurchase* handle) { return reinterpret_cast<Purchase*>(handle); }
inline ProductList* FromHandle(KestProductList* handle) { return reinterpret_cast<ProductList*>(handle); }
inline Bill* FromHandle(KestBill* handle) { return reinterpret_cast<Bill*>(handle); }

inline KestFieldSet* ToHandle(FieldSet* set) { return reinterpret_cast<KestFieldSet*>(set); }
inline KestCheckout* ToHandle(Checkout* checkout) { return reinterpret_cast<KestCheckout*>(checkout); }
inline KestPurchase* ToHandle(Purchase* purchase) { return reinterpret_cast<KestPurchase*>(purchase); }
inline KestBill* ToHandle(Bill* bill) { return reinterpret_cast<KestBill*>(bill); }
inline KestProductList* ToHandle(ProductList* list) { return reinterpret_cast<KestProductList*>(list); }

// Runs `body` and answers what it answers, or `failing` when memory runs out in it.
template <typename Result, typename Body>
Result Guarded(Result failing, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const Qor::MemoryException&) {
    return failing;
  }
}

// The same for functions without a result.
template <typename Body>
void Guarded(Body&& body) {
  try {
    std::forward<Body>(body)();
  } catch (const Qor::MemoryException&) {
    // What `body` works on is as it was; there is no result to say more.
  }
}

// Makes an object for the host; null when there is no memory.
template <typename Class>
auto Create() -> decltype(ToHandle(static_cast<Class*>(nullptr))) {
  using Handle = decltype(ToHandle(static_cast<Class*>(nullptr)));
  return Guarded(Handle(), [] { return ToHandle(new Class); });
}

}  // namespace kest
