#include "words.h"

#include <stdarg.h>
#include <stdio.h>

#include "text.h"

typedef struct Refusal {
  int code;
  const wchar_t* title;
  const wchar_t* text;
} Refusal;

/* The codes of the vendor's server; these are the development server's. */
static const Refusal refusals[] = {
    {1101, L"This shop is closed", L"The shop does not know this program. Please ask its maker for help."},
    {1102, L"This version is not sold any more", L"Please install the current version of this program."},
    {1202, L"This product is not sold any more", L"Press Refresh to see what is sold now."},
    {1204, L"This is more than one sale can be", L"Please choose a smaller quantity."},
    {1402, L"This is not a card number", L"Please compare the number with your card, and type it again."},
    {1403, L"Your card was declined", L"Please use another card, or ask your bank."},
    {1404, L"Your card was declined", L"There is not enough money for this sale. Please use another card."},
    {1405, L"Your card has expired", L"Please use another card."},
    {1406, L"Your card could not be processed", L"Please try again later, or use another card."},
    {1407, L"Only test cards are taken here", L"This is a shop for tests. Please use one of its test cards."},
    {1501, L"The shop cannot sell at the moment", L"Please try again later."},
};

static const Refusal otherRefusal = {0, L"The shop refused this", L"Please ask the shop, and tell it this number."};

static void FormatText(Words* words, const wchar_t* format, ...) {
  const size_t size = sizeof words->text / sizeof words->text[0];
  va_list arguments;
  va_start(arguments, format);
  _vsnwprintf(words->text, size, format, arguments);
  va_end(arguments);
  words->text[size - 1] = L'\0';
}

void SetWords(Words* words, Mood mood, const wchar_t* title, const wchar_t* text) {
  words->mood = mood;
  CopyText(words->title, sizeof words->title / sizeof words->title[0], title);
  CopyText(words->text, sizeof words->text / sizeof words->text[0], text);
}

static void DescribeRefusal(const Job* job, Words* words) {
  const Refusal* refusal = &otherRefusal;
  size_t i;
  for (i = 0; i < sizeof refusals / sizeof refusals[0]; ++i) {
    if (refusals[i].code == job->error) refusal = &refusals[i];
  }
  SetWords(words, MoodBad, refusal->title, L"");
  if (job->kind == JobSale) FormatText(words, L"%ls Nothing was charged. (%d)", refusal->text, job->error);
  else FormatText(words, L"%ls (%d)", refusal->text, job->error);
}

static void DescribeSale(const Job* job, const Settings* settings, BOOL isKept, Words* words) {
  SetWords(words, MoodGood, L"Thank you for your purchase", L"");
  FormatText(words, L"%ls%ls was charged to your card. The transaction is number %ls.%ls", settings->currency,
             job->sale.total, job->sale.transaction,
             isKept ? L" The receipt stays under Past purchases."
                    : L" It could not be written to your past purchases: please copy the receipt now.");
}

static void DescribeDone(const Job* job, const Settings* settings, BOOL isKept, Words* words) {
  if (job->kind == JobSale) DescribeSale(job, settings, isKept, words);
  else if (job->products.count == 0) SetWords(words, MoodPlain, L"Nothing is sold today", L"Please look in again later.");
  else SetWords(words, MoodPlain, L"Welcome", L"Choose a product, say how many you want, and type your card's number.");
}

void DescribeOutcome(const Job* job, const Settings* settings, BOOL isKept, Words* words) {
  switch (job->outcome) {
    case OutcomeDone: DescribeDone(job, settings, isKept, words); break;
    case OutcomeNoMemory:
      SetWords(words, MoodBad, L"This computer is out of memory",
               L"Nothing was charged. Please close other programs and try again.");
      break;
    case OutcomeUnreachable:
      SetWords(words, MoodBad, L"The shop cannot be reached", job->kind == JobSale
          ? L"Nothing was charged. Please check your connection to the internet, and press Buy again."
          : L"Please check your connection to the internet, and press Refresh.");
      break;
    case OutcomeChanged:
      SetWords(words, MoodWarning, L"The price has changed",
               L"Nothing was charged. The list shows what is sold now; please choose again.");
      break;
    case OutcomeRefused: DescribeRefusal(job, words); break;
    case OutcomeUnknown:
      SetWords(words, MoodWarning, L"It is not known whether you have paid", L"");
      FormatText(words,
                 L"The connection was lost during the sale, and your card may have been charged. Do not press Buy "
                 L"again before you have looked at your card's account or asked %ls about order %ls.",
                 settings->title, job->sale.order);
      break;
  }
}

const wchar_t* DescribeState(SaleState state) {
  switch (state) {
    case SalePaid: return L"Paid";
    case SaleRefused: return L"Not sold";
    case SaleChecked: return L"Looked into";
    case SaleStarted: return L"Under way";
    case SaleUnknown: return L"Not known";
  }
  return L"";
}
