// Prints the fields that the library keeps for it. exit: 0 done; 1 the library has no memory or lost a field.
#include <kestapi.h>

#include <iostream>
#include <memory>

int main() {
  const std::unique_ptr<KestCheckout, void (*)(KestCheckout*)> checkout(KestCreateCheckout(), KestDestroyCheckout);
  if (checkout == nullptr) return 1;
  KestFieldSet* fields = KEST_FIELDS(checkout.get());
  KestSetField(fields, "Colour", "blue");
  KestSetField(fields, "COLOUR", "green");
  KestAddField(fields, "Size", "12");
  const std::int32_t count = KestGetFieldCount(fields);
  for (std::int32_t i = 0; i < count; ++i) {
    std::cout << KestGetFieldName(fields, i) << ": " << KestGetFieldValue(fields, i) << '\n';
  }
  return count == 2 ? 0 : 1;
}
