#include "shop.h"

#include <process.h>
#include <stdlib.h>
#include <string.h>

#include "text.h"

typedef struct Work {
  Shop* shop;
  Job* job;
} Work;

/* ---- Products ------------------------------------------------------------------------------------------------- */

static BOOL AddProduct(Products* products, const Library* library, KestFieldSet* record) {
  Product* product;
  const char* sku = library->getField(record, "SKU");
  if (products->count % 64 == 0) {
    Product* items = realloc(products->items, (products->count + 64) * sizeof *items);
    if (items == NULL) return FALSE;
    products->items = items;
  }
  product = &products->items[products->count];
  /* What has no number cannot be ordered. */
  if (sku == NULL || *sku == '\0') return TRUE;
  product->sku = strtoul(sku, NULL, 10);
  FromServer(product->name, sizeof product->name / sizeof(wchar_t), library->getField(record, "Name"));
  FromServer(product->price, sizeof product->price / sizeof(wchar_t), library->getField(record, "Price"));
  ++products->count;
  return TRUE;
}

static Outcome ReadProducts(const Library* library, KestProductList* list, Job* job) {
  KestFieldSet* record;
  /* The library leaves a refusal of the list among its fields. */
  const char* error = library->getField(KEST_FIELDS(list), "KEST-Error");
  if (error != NULL && error[strspn(error, "0")] != '\0') {
    job->error = atoi(error);
    return OutcomeRefused;
  }
  while (job->products.count < MOST_PRODUCTS && (record = library->nextProduct(list)) != NULL) {
    if (!AddProduct(&job->products, library, record)) return OutcomeNoMemory;
  }
  return OutcomeDone;
}

static Outcome FetchProducts(const Shop* shop, Job* job) {
  const Library* library = &shop->library;
  KestProductList* list = library->createProductList();
  Outcome outcome;
  if (list == NULL) return OutcomeNoMemory;
  if (library->getProductList(list, shop->settings.version)) {
    outcome = ReadProducts(library, list, job);
  } else {
    job->error = library->getErrorCode(KEST_FIELDS(list));
    outcome = job->error == KEST_ERROR_NONE ? OutcomeNoMemory : OutcomeUnreachable;
  }
  library->destroyProductList(list);
  return outcome;
}

void FreeProducts(Products* products) {
  free(products->items);
  products->items = NULL;
  products->count = 0;
}

/* ---- A sale --------------------------------------------------------------------------------------------------- */

/* Whether the product is still sold at the price that the buyer saw. */
static BOOL IsAsSeen(const Products* products, const Product* seen) {
  unsigned i;
  for (i = 0; i < products->count; ++i) {
    if (products->items[i].sku == seen->sku) return wcscmp(products->items[i].price, seen->price) == 0;
  }
  return FALSE;
}

static void SetOptionalField(const Library* library, KestCheckout* checkout, const char* name, const char* value) {
  if (name[0] != '\0') library->setField(KEST_FIELDS(checkout), name, value);
}

static void FillCheckout(const Shop* shop, KestCheckout* checkout, Job* job) {
  const Library* library = &shop->library;
  const Settings* settings = &shop->settings;
  char order[64];
  /* So that the server sells this application's products at this application's prices, and no other's. */
  library->setField(KEST_FIELDS(checkout), "GUID", settings->guid);
  library->setField(KEST_FIELDS(checkout), "VERSIONID", settings->version);
  library->setField(KEST_FIELDS(checkout), "KEST-CCard-Number", job->card.number);
  SetOptionalField(library, checkout, settings->holderField, job->card.holder);
  SetOptionalField(library, checkout, settings->expiryField, job->card.expiry);
  SetOptionalField(library, checkout, settings->codeField, job->card.code);
  ToServer(order, sizeof order, job->sale.order);
  SetOptionalField(library, checkout, settings->orderField, order);
  library->addOrderLine(checkout, job->product.sku, job->sale.quantity);
}

/* A text of the reply that is kept: never one with the card's number, whatever the server sends. */
static void KeepField(const Library* library, KestPurchase* purchase, const char* name, const Card* card,
                      wchar_t* target, size_t size) {
  FromServer(target, size, library->getField(KEST_FIELDS(purchase), name));
  HideCard(card, target);
}

static Outcome BillJob(const Shop* shop, KestCheckout* checkout, Job* job) {
  const Library* library = &shop->library;
  PastSale* sale = &job->sale;
  KestPurchase* purchase = library->billCustomer(checkout);
  if (purchase != NULL) {
    KeepField(library, purchase, "KEST-TotalAmount", &job->card, sale->total, 24);
    KeepField(library, purchase, "KEST-TaxAmount", &job->card, sale->tax, 24);
    KeepField(library, purchase, "KEST-Merchant", &job->card, sale->merchant, 80);
    KeepField(library, purchase, "KEST-TxN", &job->card, sale->transaction, 40);
    return OutcomeDone;
  }
  job->error = library->getErrorCode(KEST_FIELDS(checkout));
  if (job->error == KEST_ERROR_EXCHANGE) return OutcomeUnknown;
  return job->error == KEST_ERROR_NONE ? OutcomeNoMemory : OutcomeRefused;
}

/*
 * The library reports every lost exchange of a sale alike, and whether the card was charged is unknown then. So the
 * product list is asked for first: when nothing answers that, the sale is not sent, and the buyer can be told for
 * certain. It also shows whether the price is still the one on the screen.
 */
static Outcome Sell(const Shop* shop, Job* job) {
  KestCheckout* checkout;
  Outcome outcome = FetchProducts(shop, job);
  if (outcome != OutcomeDone) return outcome;
  if (!IsAsSeen(&job->products, &job->product)) return OutcomeChanged;
  checkout = shop->library.createCheckout();
  if (checkout == NULL) return OutcomeNoMemory;
  FillCheckout(shop, checkout, job);
  outcome = BillJob(shop, checkout, job);
  shop->library.destroyCheckout(checkout);
  return outcome;
}

static SaleState StateOf(Outcome outcome) {
  if (outcome == OutcomeDone) return SalePaid;
  return outcome == OutcomeUnknown ? SaleUnknown : SaleRefused;
}

/* ---- The thread ----------------------------------------------------------------------------------------------- */

static unsigned __stdcall RunJob(void* argument) {
  const Work work = *(Work*)argument;
  Job* job = work.job;
  free(argument);
  if (job->kind == JobProducts) {
    job->outcome = FetchProducts(work.shop, job);
  } else {
    job->outcome = Sell(work.shop, job);
    job->sale.state = StateOf(job->outcome);
  }
  WipeCard(&job->card);
  PostMessageW(work.shop->window, WM_JOB_DONE, 0, (LPARAM)job);
  return 0;
}

BOOL OpenShop(Shop* shop) {
  shop->library.setApplicationGuid(shop->settings.guid);
  return shop->library.setServer(shop->settings.host, shop->settings.port, shop->settings.key) != 0;
}

BOOL StartJob(Shop* shop, Job* job) {
  uintptr_t thread;
  Work* work = malloc(sizeof *work);
  if (work == NULL) return FALSE;
  work->shop = shop;
  work->job = job;
  thread = _beginthreadex(NULL, 0, RunJob, work, 0, NULL);
  if (thread == 0) {
    free(work);
    return FALSE;
  }
  CloseHandle((HANDLE)thread);
  return TRUE;
}
