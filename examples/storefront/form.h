/*
 * The order form: what is bought, how many, and the card. Reads what the buyer typed, says what is wrong with it, and
 * wipes the card's fields. Used by the window's thread.
 */
#ifndef STOREFRONT_FORM_H
#define STOREFRONT_FORM_H

#include <windows.h>

#include "shop.h"
#include "words.h"

/* Sets the limits of the fields and hides those that the server has no name for. */
void PrepareForm(HWND dialog, const Settings* settings);

/* Shows the chosen product (null for none) and what so many of it cost. */
void ShowChoice(HWND dialog, const Settings* settings, const Product* product);

/* Reads quantity and card into the job. False, with the words for the buyer and the focus in the field, when one of
 * them cannot be right; the job's card is wiped then. */
BOOL ReadForm(HWND dialog, const Settings* settings, Job* job, Words* words);

/* Overwrites the card's fields before they are emptied: the controls would leave what they held in memory. */
void WipeForm(HWND dialog);

/* Puts the focus into a field with its text selected. */
void FocusField(HWND dialog, int field);

#endif
