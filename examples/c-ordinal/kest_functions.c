#include "kest_functions.h"

#include <string.h>
#include <windows.h>

/* Stores in `function`, a pointer to a function whatever its type, what the library exports under `ordinal`. */
static int Find(HMODULE library, int ordinal, void* function) {
  const FARPROC found = GetProcAddress(library, MAKEINTRESOURCEA(ordinal));
  memcpy(function, &found, sizeof found);
  return found != NULL;
}

int KestLoadFunctions(const char* path, KestFunctions* functions) {
  const HMODULE library = LoadLibraryA(path);
  return library != NULL && Find(library, KEST_ORDINAL_SET_SERVER, &functions->setServer) &&
         Find(library, KEST_ORDINAL_SET_APPLICATION_GUID, &functions->setApplicationGuid) &&
         Find(library, KEST_ORDINAL_GET_FIELD, &functions->getField) &&
         Find(library, KEST_ORDINAL_SET_FIELD, &functions->setField) &&
         Find(library, KEST_ORDINAL_GET_ERROR_CODE, &functions->getErrorCode) &&
         Find(library, KEST_ORDINAL_CREATE_PRODUCT_LIST, &functions->createProductList) &&
         Find(library, KEST_ORDINAL_DESTROY_PRODUCT_LIST, &functions->destroyProductList) &&
         Find(library, KEST_ORDINAL_GET_PRODUCT_LIST, &functions->getProductList) &&
         Find(library, KEST_ORDINAL_NEXT_PRODUCT, &functions->nextProduct) &&
         Find(library, KEST_ORDINAL_CREATE_CHECKOUT, &functions->createCheckout) &&
         Find(library, KEST_ORDINAL_DESTROY_CHECKOUT, &functions->destroyCheckout) &&
         Find(library, KEST_ORDINAL_ADD_ORDER_LINE, &functions->addOrderLine) &&
         Find(library, KEST_ORDINAL_BILL_CUSTOMER, &functions->billCustomer);
}
