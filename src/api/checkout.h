// One customer's sale: its own fields are the request, its order says what is bought, its purchase and its bill receive
// what the server answers. The host owns it; one checkout belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "api/bill.h"
#include "api/purchase.h"
#include "core/field_set.h"

namespace kest {

class Checkout : public FieldSet {
 public:
  Checkout() = default;
  ~Checkout() override = default;

  // Empties the own fields, the bill, the purchase and the order.
  void Clear() override;
  // Renders the own fields, then the "KEST-Product" line of every order line: so the order travels with the request.
  String Format() const override;

  // Files a line of "SKU" and "Quantity" under its SKU: a SKU that is there already has its line replaced in place.
  // Throws Qor::MemoryException and changes nothing when there is no memory.
  void AddOrderLine(std::uint32_t sku, std::uint16_t quantity);
  void ClearOrder() { order.Records().Clear(); }

  Bill& BillOf() { return bill; }
  Purchase& PurchaseOf() { return purchase; }
  const ProductRecords& Order() const { return order.Records(); }

 private:
  Bill bill;
  Purchase purchase;
  // Shaped like a bill; only its records are used, its own fields stay empty and are never rendered.
  Bill order;
};

static_assert(sizeof(void*) != 4 || sizeof(Checkout) == 272, "the layout that 32-bit hosts may read");

}  // namespace kest
