/*
 * What the buyer types about the card. It lives from the press of Buy until the library has it, and is wiped then. Any
 * thread may call.
 */
#ifndef STOREFRONT_CARD_H
#define STOREFRONT_CARD_H

#include <windows.h>

#define CARD_DIGITS 20 /* the digits of a number, with the ending NUL */

typedef struct Card {
  char number[CARD_DIGITS];
  char holder[160];
  char expiry[16];
  char code[16];
} Card;

/* Takes the digits of a card number in which blanks and dashes may stand. False when no card has it: the check digit or
 * the length is wrong. `digits` has CARD_DIGITS characters and is wiped on failure. */
BOOL ReadCardNumber(const wchar_t* text, char* digits);

/* Whether the text is a month and a year, as in 04/29. */
BOOL IsExpiry(const wchar_t* text);

/* Says which card it was without telling its number: "Visa ending in 1111". */
void DescribeCard(const Card* card, wchar_t* target, size_t size);

/* Takes a text away that holds the card's number, with whatever between its digits: a server's texts are kept. */
void HideCard(const Card* card, wchar_t* text);

void WipeCard(Card* card);

#endif
