/*
 * The thread that speaks to the server. The library waits for the network as long as the system does, so the window's
 * thread never calls it: it hands over a job, and gets it back as a message. The window starts one job at a time; a
 * job's memory belongs to the thread until the message comes, and to the window afterwards.
 */
#ifndef STOREFRONT_SHOP_H
#define STOREFRONT_SHOP_H

#include <windows.h>

#include "card.h"
#include "library.h"
#include "past_sales.h"
#include "settings.h"

#define WM_JOB_DONE (WM_APP + 1) /* to the window; lParam is the Job */
#define MOST_PRODUCTS 10000      /* a longer list is cut */

typedef struct Product {
  DWORD sku;
  wchar_t name[120];
  wchar_t price[24]; /* as the server wrote it */
} Product;

typedef struct Products {
  Product* items;
  unsigned count;
} Products;

typedef enum JobKind { JobProducts, JobSale } JobKind;

typedef enum Outcome {
  OutcomeDone,
  OutcomeNoMemory,    /* nothing was sent */
  OutcomeUnreachable, /* the product list got no answer; nothing was charged */
  OutcomeChanged,     /* the product is gone or has another price; nothing was charged */
  OutcomeRefused,     /* by the server, with `error`; nothing was charged */
  OutcomeUnknown      /* the sale was sent and got no answer */
} Outcome;

typedef struct Job {
  JobKind kind;
  /* Of a sale: what the buyer saw and typed. */
  Product product;
  Card card;
  PastSale sale; /* was begun; what the server says is added */
  /* What came of it. */
  Outcome outcome;
  int error;
  Products products; /* what is sold now; the receiver frees it with FreeProducts */
} Job;

typedef struct Shop {
  Library library;
  Settings settings;
  HWND window; /* to which jobs are returned */
} Shop;

/* Tells the library the server and the application. False when the server's key is none. Call before any job. */
BOOL OpenShop(Shop* shop);

/* Starts a job, of which there must be no other; it comes back as WM_JOB_DONE. False when no thread can be made: the
 * job is still the caller's then. `shop` must stay where it is. */
BOOL StartJob(Shop* shop, Job* job);

void FreeProducts(Products* products);

#endif
