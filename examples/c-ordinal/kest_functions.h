/*
 * The functions of KESTAPI.DLL, found by their ordinal numbers while the program runs: no import library is needed, and
 * a program without the DLL can say so in words of its own.
 */
#ifndef KEST_FUNCTIONS_H
#define KEST_FUNCTIONS_H

#include <kestapi.h>

typedef struct KestFunctions {
  KestBool(KEST_CALL* setServer)(const char* host, uint32_t port, const char* key);
  void(KEST_CALL* setApplicationGuid)(const char* guid);
  const char*(KEST_CALL* getField)(KestFieldSet* set, const char* name);
  void(KEST_CALL* setField)(KestFieldSet* set, const char* name, const char* value);
  int32_t(KEST_CALL* getErrorCode)(KestFieldSet* set);
  KestProductList*(KEST_CALL* createProductList)(void);
  void(KEST_CALL* destroyProductList)(KestProductList* list);
  KestBool(KEST_CALL* getProductList)(KestProductList* list, const char* versionId);
  KestFieldSet*(KEST_CALL* nextProduct)(KestProductList* list);
  KestCheckout*(KEST_CALL* createCheckout)(void);
  void(KEST_CALL* destroyCheckout)(KestCheckout* checkout);
  void(KEST_CALL* addOrderLine)(KestCheckout* checkout, uint32_t sku, uint32_t quantity);
  KestPurchase*(KEST_CALL* billCustomer)(KestCheckout* checkout);
} KestFunctions;

/*
 * Loads the library at `path` and finds every function. 0 when it cannot be loaded or lacks one. The library stays
 * loaded for as long as the program runs.
 */
int KestLoadFunctions(const char* path, KestFunctions* functions);

#endif
