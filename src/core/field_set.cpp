#include "core/field_set.h"

namespace kest {

void FieldSet::Clear() {
  fields.Clear();
  version = "1.0";
}

String FieldSet::Format() const {
  String text;
  AppendHeaderLines(fields, text);
  return text;
}

int FieldSet::Kind() const { return 2; }

String FieldSet::Get(const char* name) const { return fields.Get(name); }

}  // namespace kest
