#include "core/field_set.h"

namespace kest {

static_assert(sizeof(void*) != 4 || sizeof(Object) == 12, "hosts may read the error code behind it, at offset 12");
static_assert(sizeof(void*) != 4 || sizeof(FieldSet) == 60, "the size of the records in every array of them");

void FieldSet::Clear() {
  // The version first: it may need a block of its own, and the fields must still be there when it cannot have one.
  version = "1.0";
  fields.Clear();
}

FieldSet& FieldSet::operator=(const FieldSet& other) {
  if (this != &other) *this = FieldSet(other);
  return *this;
}

String FieldSet::Format() const {
  String text;
  AppendHeaderLines(fields, text);
  return text;
}

int FieldSet::Kind() const { return 2; }

String FieldSet::Get(const char* name) const { return fields.Get(name); }

}  // namespace kest
