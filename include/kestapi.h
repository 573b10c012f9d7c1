/*
 * KESTAPI: sells products on line from a desktop application.
 *
 * KESTAPI.DLL exports its functions by ordinal number only: a Windows host finds each one with
 * GetProcAddress(module, MAKEINTRESOURCEA(KEST_ORDINAL_...)) and casts it to the function's type below;
 * libkestapi.so exports them by name.
 *
 * Conventions that hold for every function:
 * - Texts are NUL-terminated 8-bit characters, the ANSI code page on Windows. Texts that are passed in stay the
 *   caller's and are not kept. A null text is an empty text, but for ordinal 523.
 * - Objects belong to the host, which destroys each with the function of its kind. A null object gives the failing
 *   result and does nothing else.
 * - KestCheckout, KestPurchase, KestProductList and KestBill are field sets too: KEST_FIELDS(object) passes one to the
 *   functions that take a KestFieldSet.
 * - A function that fails says so by its result (false, null, -1 where it is stated); a failed operation leaves its
 *   error code in the object that was passed in, see KestGetErrorCode. When memory runs out the function gives its
 *   failing result, and one without a result leaves its object as it was.
 * - Calls run on the caller's thread and wait for the network as long as the system does; there are no time-outs. Any
 *   thread may call; one object must not be used by two threads at once. KestConfigureServer, KestSetServer,
 *   KestSetProxy and KestSetApplicationGuid write settings of the whole process and must not run beside other calls.
 */
#ifndef KESTAPI_H
#define KESTAPI_H

#include <stdint.h>

#if defined(_WIN32)
#define KEST_CALL __stdcall
#define KEST_API
#else
#define KEST_CALL
#define KEST_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One byte: 1 for success, 0 for failure. */
typedef uint8_t KestBool;

typedef struct KestFieldSet KestFieldSet;       /* named text fields with an error code */
typedef struct KestCheckout KestCheckout;       /* one customer's sale */
typedef struct KestPurchase KestPurchase;       /* the fields of a billing reply */
typedef struct KestProductList KestProductList; /* the vendor's products */
typedef struct KestBill KestBill;               /* the bill of a transaction */

#define KEST_FIELDS(object) ((KestFieldSet*)(object))

/* Error codes of this library; every other one is the server's own. */
#define KEST_ERROR_NONE 0
#define KEST_ERROR_EXCHANGE 102 /* no valid answer from the server: connection, handshake or message failed */

/* The ordinal numbers of the exports. */
enum {
  KEST_ORDINAL_FREE_FIELD_SET = 100,
  KEST_ORDINAL_CREATE_FIELD_SET = 101,
  KEST_ORDINAL_SET_SERVER = 102,
  KEST_ORDINAL_GET_FIELD = 103,
  KEST_ORDINAL_GET_FIELD_NAME = 104,
  KEST_ORDINAL_GET_FIELD_COUNT = 105,
  KEST_ORDINAL_GET_FIELD_VALUE = 106,
  KEST_ORDINAL_GET_ERROR_CODE = 107,
  KEST_ORDINAL_ADD_FIELD = 108,
  KEST_ORDINAL_SET_FIELD = 109,
  KEST_ORDINAL_SET_PROXY = 110,
  KEST_ORDINAL_CREATE_CHECKOUT = 500,
  KEST_ORDINAL_DESTROY_CHECKOUT = 501,
  KEST_ORDINAL_CONFIGURE_SERVER = 502,
  KEST_ORDINAL_CREATE_PURCHASE = 504,
  KEST_ORDINAL_DESTROY_PURCHASE = 505,
  KEST_ORDINAL_CREATE_PRODUCT_LIST = 506,
  KEST_ORDINAL_DESTROY_PRODUCT_LIST = 507,
  KEST_ORDINAL_GET_BILL_PRODUCT = 509,
  KEST_ORDINAL_GET_BILL_PRODUCT_COUNT = 510,
  KEST_ORDINAL_SET_APPLICATION_GUID = 512,
  KEST_ORDINAL_ADD_ORDER_LINE = 514,
  KEST_ORDINAL_BILL_CUSTOMER = 515,
  KEST_ORDINAL_GET_BILL = 517,
  KEST_ORDINAL_LOAD_RECEIPT = 523,
  KEST_ORDINAL_GET_PRODUCT_LIST = 524,
  KEST_ORDINAL_NEXT_PRODUCT = 525,
  KEST_ORDINAL_CLEAR_ORDER = 526
};

/* ---- Field sets ------------------------------------------------------------------------------------------------- */

/* 100. Destroys a field set made by KestCreateFieldSet. */
KEST_API void KEST_CALL KestFreeFieldSet(KestFieldSet* set);

/* 101. Makes a field set without fields, error code 0; null when there is no memory. */
KEST_API KestFieldSet* KEST_CALL KestCreateFieldSet(void);

/*
 * 103. The value of the first field whose name equals `name` ignoring letter case; null when there is none. The
 * text belongs to the set and lives until that field is changed or the set is destroyed or filled anew; it is empty,
 * not null, for an empty field.
 */
KEST_API const char* KEST_CALL KestGetField(KestFieldSet* set, const char* name);

/* 104. The name of field `index`, from 0; null when the index is negative or not below the count. Lives as in 103. */
KEST_API const char* KEST_CALL KestGetFieldName(KestFieldSet* set, int32_t index);

/* 105. The number of fields; -1 for a null set. */
KEST_API int32_t KEST_CALL KestGetFieldCount(KestFieldSet* set);

/* 106. The value of field `index`, from 0; null when the index is negative or not below the count. Lives as in 103. */
KEST_API const char* KEST_CALL KestGetFieldValue(KestFieldSet* set, int32_t index);

/*
 * 107. The error code of the last failed operation on this object: KEST_ERROR_EXCHANGE, or the server's code. 0 for a
 * new object and for null. A success does not reset it: the operation's result decides, then this code explains.
 */
KEST_API int32_t KEST_CALL KestGetErrorCode(KestFieldSet* set);

/*
 * 108. Appends a field, also when the name is there already. Fields travel as header lines: a request is cut at a value
 * that holds an empty line, and one that holds a carriage return without a line feed makes it fail.
 */
KEST_API void KEST_CALL KestAddField(KestFieldSet* set, const char* name, const char* value);

/* 109. Replaces the value of the first field of that name, letter case ignored, or appends the field; see 108. */
KEST_API void KEST_CALL KestSetField(KestFieldSet* set, const char* name, const char* value);

/* ---- Server ----------------------------------------------------------------------------------------------------- */

/*
 * 102. Sets the commerce server for the whole process: host name or dotted address, TCP port (its low 16 bits; 0 means
 * 80), and the server's public key: base64 of a DER SubjectPublicKeyInfo with an RSA key (RFC 3279 section 2.3.1).
 * False when the key text does not decode; host and port are stored all the same, and no key is loaded. False
 * for want of memory loads no key either.
 */
KEST_API KestBool KEST_CALL KestSetServer(const char* host, uint32_t port, const char* key);

/* 110. Sets the HTTP proxy for the whole process: host and TCP port (low 16 bits). An empty host means no proxy. */
KEST_API void KEST_CALL KestSetProxy(const char* host, uint32_t port);

/*
 * 502. KestSetServer from the fields "SERVER" (host), "PORT" (decimal; deliberately not checked: every character is
 * folded in as a digit) and "TARVOPK" (key) of a field set. An absent field is an empty text or port 0.
 */
KEST_API KestBool KEST_CALL KestConfigureServer(KestFieldSet* configuration);

/*
 * 512. Sets the GUID of the application for the whole process; it is sent with every product list and stands in every
 * receipt.
 */
KEST_API void KEST_CALL KestSetApplicationGuid(const char* guid);

/* ---- Product list ----------------------------------------------------------------------------------------------- */

/* 506. Makes an empty product list; null when there is no memory. */
KEST_API KestProductList* KEST_CALL KestCreateProductList(void);

/* 507. Destroys a product list and its records. */
KEST_API void KEST_CALL KestDestroyProductList(KestProductList* list);

/*
 * 524. Fetches the products for the application's GUID and `versionId`. On success the list holds the reply's
 * products and, as its own fields, everything else that the reply said, "KEST-Error" included: read that field, it does
 * not make the call fail. False leaves the list's products; its code is then KEST_ERROR_EXCHANGE, or as it was when
 * there was no memory for the request and nothing was sent.
 */
KEST_API KestBool KEST_CALL KestGetProductList(KestProductList* list, const char* versionId);

/*
 * 525. The next product of the list, a field set of the server's making; null after the last one. It belongs to the
 * list and lives until the list is fetched again or destroyed. Only another fetch begins again.
 */
KEST_API KestFieldSet* KEST_CALL KestNextProduct(KestProductList* list);

/* ---- Checkout, purchase, bill ----------------------------------------------------------------------------------- */

/* 500. Makes an empty checkout; null when there is no memory. */
KEST_API KestCheckout* KEST_CALL KestCreateCheckout(void);

/* 501. Destroys a checkout with its order, its purchase and its bill. */
KEST_API void KEST_CALL KestDestroyCheckout(KestCheckout* checkout);

/* 504. Makes an empty purchase that belongs to no checkout; null when there is no memory. */
KEST_API KestPurchase* KEST_CALL KestCreatePurchase(void);

/* 505. Destroys a purchase made by KestCreatePurchase. */
KEST_API void KEST_CALL KestDestroyPurchase(KestPurchase* purchase);

/*
 * 509. Product `index` of a bill, from 0; null for a null bill. The index is deliberately not checked: stay below
 * KestGetBillProductCount. It belongs to the bill.
 */
KEST_API KestFieldSet* KEST_CALL KestGetBillProduct(KestBill* bill, uint32_t index);

/* 510. The number of products of a bill; 0 for a null bill. */
KEST_API int32_t KEST_CALL KestGetBillProductCount(KestBill* bill);

/*
 * 514. Adds an order line. Only the low 16 bits of `quantity` count. A SKU that is in the order already has its line
 * replaced in place.
 */
KEST_API void KEST_CALL KestAddOrderLine(KestCheckout* checkout, uint32_t sku, uint32_t quantity);

/* 526. Removes all order lines. */
KEST_API void KEST_CALL KestClearOrder(KestCheckout* checkout);

/*
 * 515. Charges the customer's card for the order. The request is the checkout's own fields, among them the card in
 * "KEST-CCard-Number" and whatever else the server wants to know of the customer, and the order lines. On success the
 * purchase holds the reply's fields ("KEST-TxN", "KEST-TotalAmount", "KEST-TaxAmount", "KEST-Merchant",
 * "KEST-CCard-Number") and the sale stands in a receipt, see 523. It belongs to the checkout and lives until the checkout
 * is billed again or destroyed.
 *
 * Null: the code in the checkout tells why. KEST_ERROR_EXCHANGE: no valid answer came, and whether the card was charged
 * is unknown; do not just call again. Any other code is the server's refusal; 0 on a checkout that made no call before:
 * there was no memory for the request, and nothing was sent. The code is not reset by a success, nor when nothing was
 * sent: only a fresh checkout for every sale tells these apart. Once the server has confirmed the charge the purchase is
 * returned, also when there is no memory left or the receipt cannot be written.
 *
 * What a reply says in "KEST-User-IDEx" and "KEST-Host" stays in the checkout's own fields and goes out with its later
 * requests.
 */
KEST_API KestPurchase* KEST_CALL KestBillCustomer(KestCheckout* checkout);

/*
 * 517. Fetches the bill of the transaction in the checkout's own field "KEST-TxN" and leaves the bill's number there.
 * The bill has the reply's fields and its products (509, 510). It belongs to the checkout and lives until the next bill
 * is fetched or the checkout is destroyed. Null: the code in the checkout tells why: KEST_ERROR_EXCHANGE, the server's
 * refusal, or the code of before when there was no memory for the request and nothing was sent. Nothing is charged.
 */
KEST_API KestBill* KEST_CALL KestGetBill(KestCheckout* checkout);

/* ---- Receipts --------------------------------------------------------------------------------------------------- */

/*
 * 523. Finds the first receipt whose application GUID (512) equals `guid` byte for byte and sets these fields in
 * `target`: "KEST-Receipt-Date" (month-day-year in UTC, no leading zeros), "KEST-Receipt-Price" (total less tax, two
 * decimals), "KEST-Receipt-Tax", "KEST-Receipt-Total", "KEST-Receipt-Merchant", "KEST-Receipt-Card" (0, 1, 2, 4: a number
 * that begins with 37, 6, 5, 4; 3: any other; 4294967295: not stored) and "KEST-Receipt-TxN". Null, unlike an empty
 * text, finds a receipt that was stored without a GUID. The server is not asked.
 * False when there is none, or no memory; the fields are then as they were.
 *
 * Receipts lie under HKEY_CURRENT_USER, on other systems than Windows in files of the user's; card numbers are not
 * among what they hold.
 */
KEST_API KestBool KEST_CALL KestLoadReceipt(KestFieldSet* target, const char* guid);

#ifdef __cplusplus
}
#endif

#endif
