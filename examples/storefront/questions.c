#include "questions.h"

#include <stdarg.h>
#include <stdio.h>

/* The safe answer is the default of every question: a key that is pressed too often must not buy or close. */
#define QUESTION (MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2)

static int Show(HWND window, const Settings* settings, UINT kind, const wchar_t* format, ...) {
  wchar_t text[600];
  va_list arguments;
  va_start(arguments, format);
  _vsnwprintf(text, 600, format, arguments);
  va_end(arguments);
  text[599] = L'\0';
  return MessageBoxW(window, text, settings->title, kind);
}

BOOL AskToBuyAgain(HWND window, const Settings* settings, const PastSale* unknown) {
  return Show(window, settings, QUESTION,
              L"It is not known whether your purchase of %ls (%u x %ls) was paid.\n\n"
              L"Have you looked at your card's account or asked %ls, so that you do not pay twice?",
              unknown->date, unknown->quantity, unknown->product, settings->title) == IDYES;
}

BOOL AskToClose(HWND window, const Settings* settings) {
  return Show(window, settings, QUESTION,
              L"Your payment is under way, and closing does not stop it: you may be charged without seeing the "
              L"receipt.\n\nClose all the same?") == IDYES;
}

void WarnOfUnknownSale(HWND window, const Settings* settings, const PastSale* unknown) {
  Show(window, settings, MB_OK | MB_ICONWARNING,
       L"The answer to your purchase of %ls (%u x %ls) never arrived.\n\n"
       L"Do not press Buy before you have looked at your card's account or asked %ls.",
       unknown->date, unknown->quantity, unknown->product, settings->title);
}
