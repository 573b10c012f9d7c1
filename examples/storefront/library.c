#include "library.h"

#include <stddef.h>
#include <string.h>

#include "text.h"

typedef struct Import {
  WORD ordinal;
  size_t offset; /* of the function's member in Library */
} Import;

static const Import imports[] = {
    {KEST_ORDINAL_SET_SERVER, offsetof(Library, setServer)},
    {KEST_ORDINAL_SET_APPLICATION_GUID, offsetof(Library, setApplicationGuid)},
    {KEST_ORDINAL_GET_FIELD, offsetof(Library, getField)},
    {KEST_ORDINAL_GET_ERROR_CODE, offsetof(Library, getErrorCode)},
    {KEST_ORDINAL_SET_FIELD, offsetof(Library, setField)},
    {KEST_ORDINAL_CREATE_PRODUCT_LIST, offsetof(Library, createProductList)},
    {KEST_ORDINAL_DESTROY_PRODUCT_LIST, offsetof(Library, destroyProductList)},
    {KEST_ORDINAL_GET_PRODUCT_LIST, offsetof(Library, getProductList)},
    {KEST_ORDINAL_NEXT_PRODUCT, offsetof(Library, nextProduct)},
    {KEST_ORDINAL_CREATE_CHECKOUT, offsetof(Library, createCheckout)},
    {KEST_ORDINAL_DESTROY_CHECKOUT, offsetof(Library, destroyCheckout)},
    {KEST_ORDINAL_ADD_ORDER_LINE, offsetof(Library, addOrderLine)},
    {KEST_ORDINAL_BILL_CUSTOMER, offsetof(Library, billCustomer)},
};

BOOL LoadCommerceLibrary(Library* library) {
  wchar_t path[MAX_PATH];
  HMODULE module;
  size_t i;
  /* The whole path: a file of this name in the working folder or on the PATH may be anybody's. */
  if (!PathBesideProgram(L"KESTAPI.DLL", path, MAX_PATH)) return FALSE;
  module = LoadLibraryExW(path, NULL, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (module == NULL) return FALSE;
  for (i = 0; i < sizeof imports / sizeof imports[0]; ++i) {
    FARPROC function = GetProcAddress(module, MAKEINTRESOURCEA(imports[i].ordinal));
    if (function == NULL) return FALSE;
    /* A member of the function's own type takes the address; all function pointers have the same size here. */
    memcpy((char*)library + imports[i].offset, &function, sizeof function);
  }
  return TRUE;
}
