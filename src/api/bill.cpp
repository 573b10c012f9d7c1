#include "api/bill.h"

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

}  // namespace kest
