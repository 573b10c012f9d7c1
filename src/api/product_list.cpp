#include "api/product_list.h"

#include <utility>

namespace kest {

static_assert(sizeof(void*) != 4 || sizeof(ProductList) == 80, "the layout that 32-bit hosts may read");

void ProductList::Clear() {
  FieldSet::Clear();
  records.Clear();
  cursor = 0;
}

String ProductList::Format() const {
  String text = FieldSet::Format();
  AppendProductLines(records, text);
  return text;
}

void ProductList::Load(const FieldSet& reply) {
  ProductRecords products = ProductsOf(reply);
  NameValueList others = OtherFieldsOf(reply);
  Clear();
  // Nothing fails from here on: the list holds the old reply or the new one, never a part.
  Fields() = std::move(others);
  records = std::move(products);
}

FieldSet* ProductList::Next() {
  // Before the first Clear the cursor holds no value, and there are no records.
  if (records.Count() == 0) return nullptr;
  const auto index = static_cast<std::uint32_t>(cursor);
  if (index >= records.Count()) return nullptr;
  ++cursor;
  return &records.At(index);
}

}  // namespace kest
