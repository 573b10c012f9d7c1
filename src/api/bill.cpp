#include "api/bill.h"

#include <utility>

namespace kest {

void Bill::Clear() {
  FieldSet::Clear();
  records.Clear();
}

String Bill::Format() const {
  String text = FieldSet::Format();
  AppendProductLines(records, text);
  return text;
}

void Bill::Load(const FieldSet& reply) {
  ProductRecords products = ProductsOf(reply);
  NameValueList others = OtherFieldsOf(reply);
  Clear();
  Fields() = std::move(others);
  records = std::move(products);
}

}  // namespace kest
