/*
 * The buyer's past sales: this program's own list, because the library finds only one receipt for an application. It
 * stands in a file under %APPDATA%, one line for every step of a sale, and is only ever appended to: a sale is written
 * down before the server is asked, so that one whose end nobody saw is found at the next start as one of unknown
 * outcome. No line has a card's number or code. Used by the window's thread alone.
 */
#ifndef STOREFRONT_PAST_SALES_H
#define STOREFRONT_PAST_SALES_H

#include <windows.h>

/* The letters that stand for these in the file. */
typedef enum SaleState {
  SaleStarted = 'S', /* the server was about to be asked; of a past sale: nobody saw the answer */
  SalePaid = 'P',
  SaleRefused = 'R', /* nothing was charged; the list leaves it out */
  SaleUnknown = 'U', /* the card may have been charged */
  SaleChecked = 'C'  /* was unknown, and the buyer has looked what became of it */
} SaleState;

typedef struct PastSale {
  unsigned id; /* counts from 1 */
  SaleState state;
  wchar_t date[24]; /* local time, 2026-01-31 17:05 */
  wchar_t order[24]; /* this program's own number of the sale, by which a shop can look for it */
  wchar_t product[120];
  unsigned quantity;
  wchar_t total[24];
  wchar_t tax[24];
  wchar_t merchant[80];
  wchar_t card[40]; /* its kind and last four digits */
  wchar_t transaction[40];
} PastSale;

typedef struct PastSales {
  wchar_t path[MAX_PATH]; /* empty when there is no place for the file, or it could not be read */
  PastSale* sales;        /* the oldest first */
  unsigned count;
  unsigned capacity;
  unsigned lastId;
  BOOL isCut; /* the file ends with a part of a line */
} PastSales;

/* Reads the sales of an application. False when they cannot be kept or not all be read: no sale is begun then. */
BOOL OpenPastSales(PastSales* list, const char* guid);

/* Gives the sale its numbers and the time, and writes it down as started. False when that failed: do not sell then. */
BOOL BeginSale(PastSales* list, PastSale* sale);

/* Writes down what came of a sale that was begun. False when it is in this list alone and not in the file. */
BOOL EndSale(PastSales* list, const PastSale* sale);

/* The last sale whose outcome is unknown and has not been looked into; null when there is none. */
const PastSale* FindUnknownSale(const PastSales* list);

/* Marks every sale of unknown outcome as looked into. */
void CheckUnknownSales(PastSales* list);

#endif
