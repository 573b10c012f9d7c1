/* Prints the fields that the library keeps for it. exit: 0 done; 1 the library has no memory or lost a field. */
#include <kestapi.h>
#include <stdio.h>

int main(void) {
  KestCheckout* checkout = KestCreateCheckout();
  if (checkout == NULL) return 1;
  KestSetField(KEST_FIELDS(checkout), "Colour", "blue");
  KestSetField(KEST_FIELDS(checkout), "COLOUR", "green");
  KestAddField(KEST_FIELDS(checkout), "Size", "12");
  const int32_t count = KestGetFieldCount(KEST_FIELDS(checkout));
  for (int32_t i = 0; i < count; ++i) {
    printf("%s: %s\n", KestGetFieldName(KEST_FIELDS(checkout), i), KestGetFieldValue(KEST_FIELDS(checkout), i));
  }
  KestDestroyCheckout(checkout);
  return count == 2 ? 0 : 1;
}
