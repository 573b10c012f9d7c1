#include "wipe.h"

#include <string.h>

namespace sandbox {

void Wipe(std::string& text) {
  text.resize(text.capacity());
  explicit_bzero(text.data(), text.size());
  text.clear();
}

void Wipe(FieldList& fields) {
  for (Field& field : fields) {
    Wipe(field.name);
    Wipe(field.value);
  }
  fields.clear();
}

}  // namespace sandbox
