// The vendor's products as the server last listed them, read record by record. Its own fields are first the request,
// then, after a call that went through, every reply field that is no product. The host owns it; one list belongs to one
// thread at a time.
#pragma once

#include "api/product_lines.h"

namespace kest {

class ProductList : public FieldSet {
 public:
  ProductList() = default;
  ~ProductList() override = default;

  // Empties the fields and the records and rewinds the cursor.
  void Clear() override;
  // Renders the own fields, then the "KEST-Product" line of each record.
  String Format() const override;

  // Clears the list and fills it from a reply. Throws Qor::MemoryException and changes nothing when there is no memory.
  void Load(const FieldSet& reply);
  // Answers the record at the cursor and moves on; null after the last one, and on a list without records. The record
  // lives until the list is cleared, loaded or destroyed.
  FieldSet* Next();

  const ProductRecords& Records() const { return records; }

 private:
  // Set by Clear alone: a list without records is never asked for it.
  std::int32_t cursor;
  ProductRecords records;
};

}  // namespace kest
