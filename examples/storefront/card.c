#include "card.h"

#include <stdio.h>
#include <string.h>
#include <wchar.h>

#define LEAST_DIGITS 12

/* The check of the last digit: every second digit from the right is doubled, and the sum of all ends with 0. */
static BOOL HasCheckDigit(const char* digits, size_t count) {
  int sum = 0;
  size_t i;
  for (i = 0; i < count; ++i) {
    int digit = digits[count - 1 - i] - '0';
    if (i % 2 == 1) digit *= 2;
    sum += digit > 9 ? digit - 9 : digit;
  }
  return sum % 10 == 0;
}

BOOL ReadCardNumber(const wchar_t* text, char* digits) {
  size_t count = 0;
  BOOL isNumber = TRUE;
  for (; *text != L'\0' && isNumber; ++text) {
    if (*text == L' ' || *text == L'-') continue;
    isNumber = *text >= L'0' && *text <= L'9' && count < CARD_DIGITS - 1;
    if (isNumber) digits[count++] = (char)('0' + (*text - L'0'));
  }
  digits[count] = '\0';
  if (isNumber && count >= LEAST_DIGITS && HasCheckDigit(digits, count)) return TRUE;
  SecureZeroMemory(digits, CARD_DIGITS);
  return FALSE;
}

BOOL IsExpiry(const wchar_t* text) {
  unsigned month, year;
  wchar_t more;
  return wcslen(text) == 5 && swscanf(text, L"%2u/%2u%lc", &month, &year, &more) == 2 && month >= 1 && month <= 12;
}

static const wchar_t* KindOf(const char* number) {
  if (strncmp(number, "37", 2) == 0 || strncmp(number, "34", 2) == 0) return L"American Express";
  switch (number[0]) {
    case '4': return L"Visa";
    case '5': return L"Mastercard";
    case '6': return L"Discover";
    default: return L"Card";
  }
}

void DescribeCard(const Card* card, wchar_t* target, size_t size) {
  const size_t length = strlen(card->number);
  _snwprintf(target, size, L"%ls ending in %hs", KindOf(card->number), card->number + (length < 4 ? 0 : length - 4));
  target[size - 1] = L'\0';
}

void HideCard(const Card* card, wchar_t* text) {
  char digits[256];
  size_t count = 0;
  const wchar_t* at;
  for (at = text; *at != L'\0' && count < sizeof digits - 1; ++at) {
    if (*at >= L'0' && *at <= L'9') digits[count++] = (char)('0' + (*at - L'0'));
  }
  digits[count] = '\0';
  if (card->number[0] != '\0' && strstr(digits, card->number) != NULL) text[0] = L'\0';
  SecureZeroMemory(digits, sizeof digits);
}

void WipeCard(Card* card) {
  SecureZeroMemory(card, sizeof *card);
}
