/*
 * What the buyer is asked and warned of in a box before the window. While a box stands there the window goes on taking
 * messages, the answer of a job among them. Used by the window's thread.
 */
#ifndef STOREFRONT_QUESTIONS_H
#define STOREFRONT_QUESTIONS_H

#include <windows.h>

#include "past_sales.h"
#include "settings.h"

/* Whether the buyer has looked what became of the sale of unknown outcome, and wants another one. */
BOOL AskToBuyAgain(HWND window, const Settings* settings, const PastSale* unknown);

/* Whether the window is to be closed although a sale is under way. */
BOOL AskToClose(HWND window, const Settings* settings);

/* Warns at the start of a sale whose answer never arrived. */
void WarnOfUnknownSale(HWND window, const Settings* settings, const PastSale* unknown);

#endif
