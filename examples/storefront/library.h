/*
 * The functions of KESTAPI.DLL that this program calls, each found by its ordinal number. Filled once at the start and
 * never changed; any thread may read it. The module stays loaded for the life of the process.
 */
#ifndef STOREFRONT_LIBRARY_H
#define STOREFRONT_LIBRARY_H

#include <kestapi.h>
#include <windows.h>

typedef struct Library {
  KestBool(KEST_CALL* setServer)(const char* host, uint32_t port, const char* key);
  void(KEST_CALL* setApplicationGuid)(const char* guid);
  const char*(KEST_CALL* getField)(KestFieldSet* set, const char* name);
  int32_t(KEST_CALL* getErrorCode)(KestFieldSet* set);
  void(KEST_CALL* setField)(KestFieldSet* set, const char* name, const char* value);
  KestProductList*(KEST_CALL* createProductList)(void);
  void(KEST_CALL* destroyProductList)(KestProductList* list);
  KestBool(KEST_CALL* getProductList)(KestProductList* list, const char* versionId);
  KestFieldSet*(KEST_CALL* nextProduct)(KestProductList* list);
  KestCheckout*(KEST_CALL* createCheckout)(void);
  void(KEST_CALL* destroyCheckout)(KestCheckout* checkout);
  void(KEST_CALL* addOrderLine)(KestCheckout* checkout, uint32_t sku, uint32_t quantity);
  KestPurchase*(KEST_CALL* billCustomer)(KestCheckout* checkout);
} Library;

/*
 * Loads KESTAPI.DLL from the program's own folder, and from nowhere else, and finds every function. False when the file
 * cannot be loaded or lacks a function.
 */
BOOL LoadCommerceLibrary(Library* library);

#endif
