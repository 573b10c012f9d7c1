#include "form.h"

#include <commctrl.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

#include "resource.h"
#include "text.h"

#define MOST_QUANTITY 999
#define MOST_TYPED 80 /* characters of a field, with the ending NUL */

static const int cardFields[] = {IDC_NUMBER, IDC_HOLDER, IDC_EXPIRY, IDC_CODE};
#define CARD_FIELD_COUNT (sizeof cardFields / sizeof cardFields[0])

static void HideUnused(HWND dialog, const char* field, int label, int edit) {
  if (field[0] != '\0') return;
  ShowWindow(GetDlgItem(dialog, label), SW_HIDE);
  ShowWindow(GetDlgItem(dialog, edit), SW_HIDE);
}

void PrepareForm(HWND dialog, const Settings* settings) {
  SendDlgItemMessageW(dialog, IDC_SPIN, UDM_SETRANGE32, 1, MOST_QUANTITY);
  SendDlgItemMessageW(dialog, IDC_QUANTITY, EM_SETLIMITTEXT, 3, 0);
  SendDlgItemMessageW(dialog, IDC_NUMBER, EM_SETLIMITTEXT, 26, 0);
  SendDlgItemMessageW(dialog, IDC_HOLDER, EM_SETLIMITTEXT, 50, 0);
  SendDlgItemMessageW(dialog, IDC_EXPIRY, EM_SETLIMITTEXT, 5, 0);
  SendDlgItemMessageW(dialog, IDC_CODE, EM_SETLIMITTEXT, 4, 0);
  SetDlgItemTextW(dialog, IDC_QUANTITY, L"1");
  HideUnused(dialog, settings->holderField, IDC_HOLDER_LABEL, IDC_HOLDER);
  HideUnused(dialog, settings->expiryField, IDC_EXPIRY_LABEL, IDC_EXPIRY);
  HideUnused(dialog, settings->codeField, IDC_CODE_LABEL, IDC_CODE);
}

void ShowChoice(HWND dialog, const Settings* settings, const Product* product) {
  wchar_t text[60] = L"", amount[40];
  long long cents;
  const UINT quantity = GetDlgItemInt(dialog, IDC_QUANTITY, NULL, FALSE);
  SetDlgItemTextW(dialog, IDC_CHOICE, product == NULL ? L"No product is chosen." : product->name);
  if (product != NULL && quantity > 0 && ReadCents(product->price, &cents)) {
    WriteCents(amount, 40, cents * quantity);
    _snwprintf(text, 60, L"%ls%ls", settings->currency, amount);
  }
  SetDlgItemTextW(dialog, IDC_SUBTOTAL, text);
}

void FocusField(HWND dialog, int field) {
  /* Not SetFocus: the dialog keeps track of its default button, and selects a field's text, only this way. */
  SendMessageW(dialog, WM_NEXTDLGCTL, (WPARAM)GetDlgItem(dialog, field), TRUE);
}

/* Takes a card field that the server wants; one without a name is left out. */
static void ReadField(HWND dialog, const char* name, int field, wchar_t* typed, char* target, size_t size) {
  if (name[0] == '\0') return;
  GetDlgItemTextW(dialog, field, typed, MOST_TYPED);
  ToServer(target, size, typed);
}

/* Answers the field that cannot be right and what is wrong with it; 0 when all can. */
static int ReadCard(HWND dialog, const Settings* settings, Card* card, wchar_t* typed, const wchar_t** fault) {
  GetDlgItemTextW(dialog, IDC_NUMBER, typed, MOST_TYPED);
  *fault = L"Please compare the number with your card: a digit is missing or wrong.";
  if (!ReadCardNumber(typed, card->number)) return IDC_NUMBER;
  ReadField(dialog, settings->holderField, IDC_HOLDER, typed, card->holder, sizeof card->holder);
  *fault = L"Please type the name as it stands on the card.";
  if (settings->holderField[0] != '\0' && card->holder[strspn(card->holder, " ")] == '\0') return IDC_HOLDER;
  ReadField(dialog, settings->expiryField, IDC_EXPIRY, typed, card->expiry, sizeof card->expiry);
  *fault = L"Please type the month and the year when the card expires, such as 04/29.";
  if (settings->expiryField[0] != '\0' && !IsExpiry(typed)) return IDC_EXPIRY;
  ReadField(dialog, settings->codeField, IDC_CODE, typed, card->code, sizeof card->code);
  *fault = L"Please type the three or four digits of the security code.";
  if (settings->codeField[0] != '\0' && strlen(card->code) < 3) return IDC_CODE;
  return 0;
}

BOOL ReadForm(HWND dialog, const Settings* settings, Job* job, Words* words) {
  wchar_t typed[MOST_TYPED];
  const wchar_t* fault = L"Please type how many you want: 1 to 999.";
  int field = IDC_QUANTITY;
  job->sale.quantity = GetDlgItemInt(dialog, IDC_QUANTITY, NULL, FALSE);
  if (job->sale.quantity >= 1 && job->sale.quantity <= MOST_QUANTITY) {
    field = ReadCard(dialog, settings, &job->card, typed, &fault);
    SecureZeroMemory(typed, sizeof typed);
  }
  if (field == 0) return TRUE;
  WipeCard(&job->card);
  SetWords(words, MoodWarning, L"Something is missing in your order", fault);
  FocusField(dialog, field);
  return FALSE;
}

void WipeForm(HWND dialog) {
  size_t i;
  for (i = 0; i < CARD_FIELD_COUNT; ++i) {
    const HWND field = GetDlgItem(dialog, cardFields[i]);
    wchar_t zeros[MOST_TYPED];
    int length = GetWindowTextLengthW(field);
    if (length > MOST_TYPED - 1) length = MOST_TYPED - 1;
    wmemset(zeros, L'0', MOST_TYPED);
    zeros[length] = L'\0';
    SetWindowTextW(field, zeros);
    SetWindowTextW(field, L"");
    SendMessageW(field, EM_EMPTYUNDOBUFFER, 0, 0);
  }
}
