#include "window.h"

#include <commctrl.h>
#include <stdio.h>
#include <stdlib.h>

#include "form.h"
#include "layout.h"
#include "panels.h"
#include "past_sales.h"
#include "questions.h"
#include "resource.h"
#include "text.h"
#include "views.h"
#include "words.h"

#define CLOCK_TIMER 1
#define LONG_WAIT 20 /* seconds after which the buyer is told that it takes long */

/* There is one window a process. */
typedef struct Window {
  HWND dialog;
  Shop* shop;
  Layout layout;
  Panels panels;
  Products products;
  PastSales pastSales;
  BOOL isBusy; /* a job is on its way */
  JobKind kind;
  DWORD begin; /* of the job, in milliseconds since the system's start */
} Window;

static Window window;

static void Say(Mood mood, const wchar_t* title, const wchar_t* text) {
  Words words;
  SetWords(&words, mood, title, text);
  ShowWords(&window.panels, window.dialog, &words);
}

/* ---- Waiting -------------------------------------------------------------------------------------------------- */

static BOOL IsSelling(void) {
  return window.isBusy && window.kind == JobSale;
}

static void ShowWaiting(void) {
  const unsigned seconds = (GetTickCount() - window.begin) / 1000;
  wchar_t text[200];
  _snwprintf(text, 200, L"%ls (%u s)",
             seconds >= LONG_WAIT ? L"This takes unusually long. Please leave the program open until it is done."
             : IsSelling()        ? L"Please leave the program open until it is done."
                                  : L"The list of products is on its way.",
             seconds);
  text[199] = L'\0';
  Say(MoodPlain, IsSelling() ? L"Paying ..." : L"Asking the shop ...", text);
}

static void ShowBusy(BOOL isBusy) {
  const HWND progress = GetDlgItem(window.dialog, IDC_PROGRESS);
  const HWND buy = GetDlgItem(window.dialog, IDC_BUY), refresh = GetDlgItem(window.dialog, IDC_REFRESH);
  /* A button that is disabled while it has the focus would take the keyboard with it. */
  if (isBusy && (GetFocus() == buy || GetFocus() == refresh)) FocusField(window.dialog, IDC_PRODUCTS);
  window.isBusy = isBusy;
  EnableWindow(buy, !isBusy);
  EnableWindow(refresh, !isBusy);
  ShowWindow(progress, isBusy ? SW_SHOW : SW_HIDE);
  SendMessageW(progress, PBM_SETMARQUEE, (WPARAM)isBusy, 40);
  if (isBusy) SetTimer(window.dialog, CLOCK_TIMER, 1000, NULL);
  else KillTimer(window.dialog, CLOCK_TIMER);
}

/* Hands a job over; answers whether it is on its way. */
static BOOL Start(Job* job) {
  window.kind = job->kind;
  window.begin = GetTickCount();
  ShowBusy(TRUE);
  ShowWaiting();
  if (StartJob(window.shop, job)) return TRUE;
  ShowBusy(FALSE);
  return FALSE;
}

/* ---- Jobs ----------------------------------------------------------------------------------------------------- */

static const Product* Chosen(void) {
  return ChosenProduct(window.dialog, &window.products);
}

static void FreeJob(Job* job) {
  FreeProducts(&job->products);
  WipeCard(&job->card);
  free(job);
}

/* A job that could not be begun, or not be handed over. */
static void ShowNotStarted(Job* job) {
  Words words;
  job->outcome = OutcomeNoMemory;
  DescribeOutcome(job, &window.shop->settings, TRUE, &words);
  ShowWords(&window.panels, window.dialog, &words);
}

static void Refresh(void) {
  Job* job = window.isBusy ? NULL : calloc(1, sizeof *job);
  if (job == NULL) return;
  job->kind = JobProducts;
  if (Start(job)) return;
  ShowNotStarted(job);
  FreeJob(job);
}

/* Whether no sale may have been paid already, or the buyer has looked what became of it. */
static BOOL MayBuyAgain(void) {
  const PastSale* unknown = FindUnknownSale(&window.pastSales);
  if (unknown == NULL) return TRUE;
  if (!AskToBuyAgain(window.dialog, &window.shop->settings, unknown)) return FALSE;
  CheckUnknownSales(&window.pastSales);
  return TRUE;
}

/* Writes the sale down and sends it. False when it was not sent. */
static BOOL SendSale(Job* job) {
  if (!BeginSale(&window.pastSales, &job->sale)) {
    Say(MoodBad, L"Your purchases cannot be written down",
        L"Nothing was charged. Please see that your disk is not full and that you may write to your own folder.");
    return FALSE;
  }
  if (Start(job)) return TRUE;
  job->sale.state = SaleRefused;
  EndSale(&window.pastSales, &job->sale);
  ShowNotStarted(job);
  return FALSE;
}

static void Buy(void) {
  const Product* product = window.isBusy ? NULL : Chosen();
  Job* job = product == NULL ? NULL : calloc(1, sizeof *job);
  Words words;
  if (job == NULL) {
    if (!window.isBusy) Say(MoodWarning, L"No product is chosen", L"Please choose one in the list of products.");
    return;
  }
  job->kind = JobSale;
  job->product = *product;
  CopyText(job->sale.product, sizeof job->sale.product / sizeof(wchar_t), product->name);
  if (!ReadForm(window.dialog, &window.shop->settings, job, &words)) {
    ShowWords(&window.panels, window.dialog, &words);
    FreeJob(job);
    return;
  }
  if (!MayBuyAgain()) {
    FreeJob(job);
    return;
  }
  DescribeCard(&job->card, job->sale.card, sizeof job->sale.card / sizeof(wchar_t));
  HideCard(&job->card, job->sale.product);
  /* The job has all it needs: nothing of the card stays in the window, whatever becomes of the sale. */
  WipeForm(window.dialog);
  if (!SendSale(job)) FreeJob(job);
  ShowPastSales(window.dialog, &window.pastSales, &window.shop->settings, FALSE);
}

/* What the server sells now stands in the list, also when it came with a sale. */
static void TakeProducts(Job* job) {
  const Product* chosen = Chosen();
  const DWORD sku = chosen == NULL ? 0 : chosen->sku;
  const BOOL isWhole = job->outcome == OutcomeChanged || (job->kind == JobProducts && job->outcome == OutcomeDone);
  if (!isWhole) return;
  FreeProducts(&window.products);
  window.products = job->products;
  job->products.items = NULL;
  ShowProducts(window.dialog, &window.products, &window.shop->settings, sku);
  ShowChoice(window.dialog, &window.shop->settings, Chosen());
}

static void FinishJob(Job* job) {
  BOOL isKept = TRUE;
  Words words;
  ShowBusy(FALSE);
  TakeProducts(job);
  if (job->kind == JobSale) {
    isKept = EndSale(&window.pastSales, &job->sale);
    ShowPastSales(window.dialog, &window.pastSales, &window.shop->settings,
                  job->outcome == OutcomeDone || job->outcome == OutcomeUnknown);
  }
  DescribeOutcome(job, &window.shop->settings, isKept, &words);
  ShowWords(&window.panels, window.dialog, &words);
  FreeJob(job);
}

/* ---- Messages ------------------------------------------------------------------------------------------------- */

static void Prepare(HWND dialog) {
  const Settings* settings = &window.shop->settings;
  window.dialog = dialog;
  window.shop->window = dialog;
  SetWindowTextW(dialog, settings->title);
  MakePanels(&window.panels, dialog);
  PrepareViews(dialog);
  PrepareForm(dialog, settings);
  BeginLayout(&window.layout, dialog);
  FitColumns(dialog);
  OpenPastSales(&window.pastSales, settings->guid);
  ShowPastSales(dialog, &window.pastSales, settings, TRUE);
  ShowChoice(dialog, settings, NULL);
}

/*
 * A call of the library cannot be cut short. While a sale runs, closing would leave the buyer without its outcome, so
 * that is asked first; the sale stands in the file already and is shown as unknown at the next start.
 */
static void Close(void) {
  if (IsSelling() && !AskToClose(window.dialog, &window.shop->settings)) return;
  if (!window.isBusy) {
    DestroyWindow(window.dialog);
    return;
  }
  /* The thread waits inside the library, which must not be unloaded under its feet. */
  TerminateProcess(GetCurrentProcess(), 0);
}

static void TakeCommand(int part, int event) {
  if (part == IDC_BUY && event == BN_CLICKED) Buy();
  if (part == IDC_REFRESH && event <= 1) Refresh(); /* the button or its key */
  if (part == IDC_QUANTITY && event == EN_CHANGE && window.dialog != NULL) {
    ShowChoice(window.dialog, &window.shop->settings, Chosen());
  }
}

static void TakeNotice(const NMHDR* notice) {
  const NMLISTVIEW* change = (const NMLISTVIEW*)notice;
  if (notice->code != LVN_ITEMCHANGED || !(change->uChanged & LVIF_STATE)) return;
  if (notice->idFrom == IDC_PRODUCTS) ShowChoice(window.dialog, &window.shop->settings, Chosen());
  if (notice->idFrom == IDC_PAST) ShowReceipt(window.dialog, &window.pastSales, &window.shop->settings);
}

static void Resize(void) {
  ApplyLayout(&window.layout);
  FitColumns(window.dialog);
  InvalidateRect(GetDlgItem(window.dialog, IDC_HEADER), NULL, FALSE);
  InvalidateRect(GetDlgItem(window.dialog, IDC_MESSAGE), NULL, FALSE);
}

static INT_PTR CALLBACK TakeMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_INITDIALOG: Prepare(dialog); return TRUE;
    case WM_COMMAND: TakeCommand(LOWORD(wParam), HIWORD(wParam)); return TRUE;
    case WM_NOTIFY: TakeNotice((const NMHDR*)lParam); return FALSE;
    case WM_DRAWITEM: DrawPanel(&window.panels, &window.shop->settings, (const DRAWITEMSTRUCT*)lParam); return TRUE;
    case WM_TIMER: if (window.isBusy) ShowWaiting(); return TRUE;
    case WM_JOB_DONE: FinishJob((Job*)lParam); return TRUE;
    case WM_CTLCOLORSTATIC:
      /* The receipt is to look like paper, not like a part that is out of use. */
      return GetDlgCtrlID((HWND)lParam) == IDC_RECEIPT ? (INT_PTR)GetSysColorBrush(COLOR_WINDOW) : FALSE;
    case WM_SIZE: if (wParam != SIZE_MINIMIZED && window.dialog != NULL) Resize(); return TRUE;
    case WM_GETMINMAXINFO: ((MINMAXINFO*)lParam)->ptMinTrackSize = window.layout.least; return TRUE;
    case WM_CLOSE: Close(); return TRUE;
    case WM_DESTROY: PostQuitMessage(0); return TRUE;
    default: return FALSE;
  }
}

static BOOL RegisterShopClass(HINSTANCE instance) {
  WNDCLASSEXW type = {0};
  type.cbSize = sizeof type;
  type.lpfnWndProc = DefDlgProcW;
  type.cbWndExtra = DLGWINDOWEXTRA;
  type.hInstance = instance;
  type.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_SHOP));
  type.hCursor = LoadCursorW(NULL, (const wchar_t*)IDC_ARROW);
  type.lpszClassName = SHOP_WINDOW_CLASS;
  return RegisterClassExW(&type) != 0;
}

HWND OpenShopWindow(HINSTANCE instance, Shop* shop, int show) {
  window.shop = shop;
  if (!RegisterShopClass(instance)) return NULL;
  if (CreateDialogParamW(instance, MAKEINTRESOURCEW(IDD_SHOP), NULL, TakeMessage, 0) == NULL) return NULL;
  ShowWindow(window.dialog, show);
  if (FindUnknownSale(&window.pastSales) != NULL) {
    WarnOfUnknownSale(window.dialog, &shop->settings, FindUnknownSale(&window.pastSales));
  }
  Refresh();
  return window.dialog;
}
