/*
 * The two lists and the receipt beside them: what they show and what is chosen in them. They hold no data of their own.
 * Used by the window's thread.
 */
#ifndef STOREFRONT_VIEWS_H
#define STOREFRONT_VIEWS_H

#include <windows.h>

#include "past_sales.h"
#include "shop.h"

/* Makes the columns. */
void PrepareViews(HWND dialog);

/* Lets the names take what width the other columns leave. */
void FitColumns(HWND dialog);

/* Shows the products; the one that was chosen stays so when it is still there, else the first is. */
void ShowProducts(HWND dialog, const Products* products, const Settings* settings, DWORD chosenSku);

/* Null when none is. */
const Product* ChosenProduct(HWND dialog, const Products* products);

/* Shows the past sales that were not refused, the newest first, and chooses the newest when asked to. */
void ShowPastSales(HWND dialog, const PastSales* sales, const Settings* settings, BOOL chooseNewest);

/* Shows the receipt of the past sale that is chosen, or a word about what will stand there. */
void ShowReceipt(HWND dialog, const PastSales* sales, const Settings* settings);

#endif
