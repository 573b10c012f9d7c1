// A bill: the fields of a reply and one record for each product on it. Whoever makes it owns it; one bill belongs to
// one thread at a time.
#pragma once

#include "api/product_lines.h"

namespace kest {

class Bill : public FieldSet {
 public:
  Bill() = default;
  ~Bill() override = default;

  // Empties the fields and the records.
  void Clear() override;
  // Renders the own fields, then the "KEST-Product" line of each record.
  String Format() const override;

  // Clears the bill and fills it from a reply. Throws Qor::MemoryException and changes nothing when there is no memory.
  void Load(const FieldSet& reply);

  ProductRecords& Records() { return records; }
  const ProductRecords& Records() const { return records; }

 private:
  ProductRecords records;
};

static_assert(sizeof(void*) != 4 || sizeof(Bill) == 76, "the layout that 32-bit hosts may read");

}  // namespace kest
