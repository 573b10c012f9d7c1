// The library as a host loads it: KESTAPI.DLL by ordinal, libkestapi.so by name. Holds the library in the process until
// it is destroyed; the functions are called through it.
#pragma once

#include <kestapi.h>

#include <string>

#include "module.h"

namespace kest_host {

// Every function that the hosts here use: X(name in kestapi.h, ordinal).
#define KEST_HOST_FUNCTIONS(X)                                   \
  X(KestFreeFieldSet, KEST_ORDINAL_FREE_FIELD_SET)               \
  X(KestCreateFieldSet, KEST_ORDINAL_CREATE_FIELD_SET)           \
  X(KestSetServer, KEST_ORDINAL_SET_SERVER)                      \
  X(KestGetField, KEST_ORDINAL_GET_FIELD)                        \
  X(KestGetFieldName, KEST_ORDINAL_GET_FIELD_NAME)               \
  X(KestGetFieldCount, KEST_ORDINAL_GET_FIELD_COUNT)             \
  X(KestGetFieldValue, KEST_ORDINAL_GET_FIELD_VALUE)             \
  X(KestGetErrorCode, KEST_ORDINAL_GET_ERROR_CODE)               \
  X(KestAddField, KEST_ORDINAL_ADD_FIELD)                        \
  X(KestSetField, KEST_ORDINAL_SET_FIELD)                        \
  X(KestSetProxy, KEST_ORDINAL_SET_PROXY)                        \
  X(KestCreateCheckout, KEST_ORDINAL_CREATE_CHECKOUT)            \
  X(KestDestroyCheckout, KEST_ORDINAL_DESTROY_CHECKOUT)          \
  X(KestConfigureServer, KEST_ORDINAL_CONFIGURE_SERVER)          \
  X(KestCreatePurchase, KEST_ORDINAL_CREATE_PURCHASE)            \
  X(KestDestroyPurchase, KEST_ORDINAL_DESTROY_PURCHASE)          \
  X(KestCreateProductList, KEST_ORDINAL_CREATE_PRODUCT_LIST)     \
  X(KestDestroyProductList, KEST_ORDINAL_DESTROY_PRODUCT_LIST)   \
  X(KestGetBillProduct, KEST_ORDINAL_GET_BILL_PRODUCT)           \
  X(KestGetBillProductCount, KEST_ORDINAL_GET_BILL_PRODUCT_COUNT) \
  X(KestSetApplicationGuid, KEST_ORDINAL_SET_APPLICATION_GUID)   \
  X(KestAddOrderLine, KEST_ORDINAL_ADD_ORDER_LINE)               \
  X(KestBillCustomer, KEST_ORDINAL_BILL_CUSTOMER)                \
  X(KestGetBill, KEST_ORDINAL_GET_BILL)                          \
  X(KestLoadReceipt, KEST_ORDINAL_LOAD_RECEIPT)                  \
  X(KestGetProductList, KEST_ORDINAL_GET_PRODUCT_LIST)           \
  X(KestNextProduct, KEST_ORDINAL_NEXT_PRODUCT)                  \
  X(KestClearOrder, KEST_ORDINAL_CLEAR_ORDER)

class Library {
 public:
  // Opens the library as Module does. Throws std::runtime_error with a sentence for the user when it cannot be loaded or
  // lacks a function.
  explicit Library(const std::string& path);

#define KEST_HOST_DECLARE(name, ordinal) decltype(&::name) name = nullptr;
  KEST_HOST_FUNCTIONS(KEST_HOST_DECLARE)
#undef KEST_HOST_DECLARE

 private:
  Module module;
};

}  // namespace kest_host
