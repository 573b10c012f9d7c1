/*
 * The least host: it links with an import library of the kit and needs no C runtime. It names every exported function,
 * so that a linker has to find them all, and uses those that need no server. Exit code 0; otherwise the number of the
 * first step that went wrong.
 */
#include <kestapi.h>

#if defined(_WIN64)
#define SYSTEM_CALL
#else
#define SYSTEM_CALL __attribute__((stdcall))
#endif
void SYSTEM_CALL ExitProcess(unsigned int code);

typedef void (*AnyFunction)(void);

static const AnyFunction all[] = {
  (AnyFunction)KestFreeFieldSet, (AnyFunction)KestCreateFieldSet, (AnyFunction)KestSetServer,
  (AnyFunction)KestGetField, (AnyFunction)KestGetFieldName, (AnyFunction)KestGetFieldCount,
  (AnyFunction)KestGetFieldValue, (AnyFunction)KestGetErrorCode, (AnyFunction)KestAddField,
  (AnyFunction)KestSetField, (AnyFunction)KestSetProxy, (AnyFunction)KestCreateCheckout,
  (AnyFunction)KestDestroyCheckout, (AnyFunction)KestConfigureServer, (AnyFunction)KestCreatePurchase,
  (AnyFunction)KestDestroyPurchase, (AnyFunction)KestCreateProductList, (AnyFunction)KestDestroyProductList,
  (AnyFunction)KestGetBillProduct, (AnyFunction)KestGetBillProductCount, (AnyFunction)KestSetApplicationGuid,
  (AnyFunction)KestAddOrderLine, (AnyFunction)KestBillCustomer, (AnyFunction)KestGetBill,
  (AnyFunction)KestLoadReceipt, (AnyFunction)KestGetProductList, (AnyFunction)KestNextProduct,
  (AnyFunction)KestClearOrder
};

static int IsText(const char* text, const char* expected) {
  if (text == 0) return 0;
  while (*text != 0 && *text == *expected) {
    ++text;
    ++expected;
  }
  return *text == *expected;
}

static unsigned int UseFieldSet(KestFieldSet* set) {
  KestAddField(set, "First", "1");
  KestAddField(set, "Second", "two");
  KestSetField(set, "FIRST", "one");
  if (KestGetFieldCount(set) != 2) return 2;
  if (!IsText(KestGetField(set, "first"), "one")) return 3;
  if (!IsText(KestGetFieldName(set, 1), "Second")) return 4;
  if (!IsText(KestGetFieldValue(set, 1), "two")) return 5;
  if (KestGetFieldValue(set, -1) != 0 || KestGetField(set, "Third") != 0) return 6;
  if (KestGetErrorCode(set) != KEST_ERROR_NONE) return 7;
  return 0;
}

/* A checkout is a field set, has no order to refuse, and asks no server before one is set. */
static unsigned int UseCheckout(KestCheckout* checkout) {
  KestAddOrderLine(checkout, 1042, 1);
  KestClearOrder(checkout);
  KestSetField(KEST_FIELDS(checkout), "KEST-TxN", "77");
  if (!IsText(KestGetField(KEST_FIELDS(checkout), "KEST-TxN"), "77")) return 9;
  if (KestSetServer("127.0.0.1", 1, "no key") != 0) return 10;
  if (KestGetBill(checkout) != 0) return 11;
  if (KestGetErrorCode(KEST_FIELDS(checkout)) != KEST_ERROR_EXCHANGE) return 12;
  return 0;
}

static unsigned int Use(void) {
  unsigned int index, failed;
  KestFieldSet* set;
  KestCheckout* checkout;
  for (index = 0; index < sizeof all / sizeof all[0]; ++index) {
    if (*(const AnyFunction volatile*)&all[index] == 0) return 100 + index;
  }
  set = KestCreateFieldSet();
  if (set == 0) return 1;
  failed = UseFieldSet(set);
  KestFreeFieldSet(set);
  if (failed != 0) return failed;
  checkout = KestCreateCheckout();
  if (checkout == 0) return 8;
  failed = UseCheckout(checkout);
  KestDestroyCheckout(checkout);
  return failed;
}

void HostMain(void) { ExitProcess(Use()); }
