#include "views.h"

#include <commctrl.h>
#include <stdio.h>
#include <wchar.h>

#include "resource.h"
#include "text.h"
#include "words.h"

#define ROW_UNITS 11   /* height of a row in horizontal dialog units */
#define RECEIPT_TAB 56 /* where the amounts begin, in dialog units */

typedef struct Column {
  int list;
  const wchar_t* title;
  int units; /* width in dialog units; 0: what the others leave */
  int format;
} Column;

/* The first column of a list is always left-aligned. */
static const Column columns[] = {
    {IDC_PRODUCTS, L"Product", 0, LVCFMT_LEFT},   {IDC_PRODUCTS, L"Price", 56, LVCFMT_RIGHT},
    {IDC_PAST, L"Date", 72, LVCFMT_LEFT},         {IDC_PAST, L"Product", 0, LVCFMT_LEFT},
    {IDC_PAST, L"Qty", 22, LVCFMT_RIGHT},         {IDC_PAST, L"Total", 42, LVCFMT_RIGHT},
    {IDC_PAST, L"Payment", 48, LVCFMT_LEFT},
};

#define COLUMN_COUNT (sizeof columns / sizeof columns[0])

static int WidthOf(HWND dialog, int units) {
  RECT area = {0, 0, 0, 0};
  area.right = units;
  MapDialogRect(dialog, &area);
  return area.right;
}

static void AddColumns(HWND dialog, int list) {
  const HWND view = GetDlgItem(dialog, list);
  int position = 0;
  size_t i;
  for (i = 0; i < COLUMN_COUNT; ++i) {
    LVCOLUMNW column = {0};
    wchar_t title[32];
    if (columns[i].list != list) continue;
    CopyText(title, 32, columns[i].title);
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
    column.pszText = title;
    column.cx = WidthOf(dialog, columns[i].units);
    column.fmt = columns[i].format;
    SendMessageW(view, LVM_INSERTCOLUMNW, (WPARAM)position++, (LPARAM)&column);
  }
  ListView_SetExtendedListViewStyle(view, LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER);
  /* Rows are as high as their pictures: empty ones give them air. The list frees them. */
  ListView_SetImageList(view, ImageList_Create(1, WidthOf(dialog, ROW_UNITS), ILC_COLOR, 1, 0), LVSIL_SMALL);
}

void PrepareViews(HWND dialog) {
  const DWORD tab = RECEIPT_TAB;
  AddColumns(dialog, IDC_PRODUCTS);
  AddColumns(dialog, IDC_PAST);
  SendDlgItemMessageW(dialog, IDC_RECEIPT, EM_SETTABSTOPS, 1, (LPARAM)&tab);
}

static void FitList(HWND dialog, int list) {
  const HWND view = GetDlgItem(dialog, list);
  RECT client;
  int position = 0, open = 0, left;
  size_t i;
  GetWindowRect(view, &client);
  /* The bar's place is kept free, so that nothing moves when it appears. */
  left = client.right - client.left - GetSystemMetrics(SM_CXVSCROLL) - 2 * GetSystemMetrics(SM_CXEDGE);
  for (i = 0; i < COLUMN_COUNT; ++i) {
    if (columns[i].list != list) continue;
    if (columns[i].units == 0) open = position;
    left -= WidthOf(dialog, columns[i].units);
    ++position;
  }
  ListView_SetColumnWidth(view, open, left);
}

void FitColumns(HWND dialog) {
  FitList(dialog, IDC_PRODUCTS);
  FitList(dialog, IDC_PAST);
}

/* ---- Rows ----------------------------------------------------------------------------------------------------- */

static void AddRow(HWND view, int row, const wchar_t* text, LPARAM data) {
  wchar_t shown[160];
  LVITEMW item = {0};
  CopyText(shown, 160, text);
  item.mask = LVIF_TEXT | LVIF_PARAM;
  item.iItem = row;
  item.pszText = shown;
  item.lParam = data;
  SendMessageW(view, LVM_INSERTITEMW, 0, (LPARAM)&item);
}

static void SetCell(HWND view, int row, int column, const wchar_t* text) {
  wchar_t shown[160];
  LVITEMW item = {0};
  CopyText(shown, 160, text);
  item.iSubItem = column;
  item.pszText = shown;
  SendMessageW(view, LVM_SETITEMTEXTW, (WPARAM)row, (LPARAM)&item);
}

static void Choose(HWND view, int row) {
  ListView_SetItemState(view, row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
  ListView_EnsureVisible(view, row, FALSE);
}

/* The data of the chosen row; -1 when none is. */
static LPARAM ChosenData(HWND view) {
  LVITEMW item = {0};
  item.mask = LVIF_PARAM;
  item.iItem = ListView_GetNextItem(view, -1, LVNI_SELECTED);
  if (item.iItem < 0 || !SendMessageW(view, LVM_GETITEMW, 0, (LPARAM)&item)) return -1;
  return item.lParam;
}

static void FormatAmount(wchar_t* target, size_t size, const Settings* settings, const wchar_t* amount) {
  _snwprintf(target, size, L"%ls%ls", amount[0] == L'\0' ? L"" : settings->currency, amount);
  target[size - 1] = L'\0';
}

/* ---- Products ------------------------------------------------------------------------------------------------- */

void ShowProducts(HWND dialog, const Products* products, const Settings* settings, DWORD chosenSku) {
  const HWND view = GetDlgItem(dialog, IDC_PRODUCTS);
  wchar_t amount[40];
  int chosen = 0;
  unsigned i;
  SendMessageW(view, WM_SETREDRAW, FALSE, 0);
  ListView_DeleteAllItems(view);
  for (i = 0; i < products->count; ++i) {
    const Product* product = &products->items[i];
    AddRow(view, (int)i, product->name, (LPARAM)i);
    FormatAmount(amount, 40, settings, product->price);
    SetCell(view, (int)i, 1, amount);
    if (product->sku == chosenSku) chosen = (int)i;
  }
  if (products->count > 0) Choose(view, chosen);
  SendMessageW(view, WM_SETREDRAW, TRUE, 0);
}

const Product* ChosenProduct(HWND dialog, const Products* products) {
  const LPARAM data = ChosenData(GetDlgItem(dialog, IDC_PRODUCTS));
  return data < 0 || (unsigned)data >= products->count ? NULL : &products->items[data];
}

/* ---- Past sales ----------------------------------------------------------------------------------------------- */

void ShowPastSales(HWND dialog, const PastSales* sales, const Settings* settings, BOOL chooseNewest) {
  const HWND view = GetDlgItem(dialog, IDC_PAST);
  wchar_t text[40];
  int row = 0;
  unsigned i;
  SendMessageW(view, WM_SETREDRAW, FALSE, 0);
  ListView_DeleteAllItems(view);
  for (i = sales->count; i > 0; --i) {
    const PastSale* sale = &sales->sales[i - 1];
    if (sale->state == SaleRefused) continue;
    AddRow(view, row, sale->date, (LPARAM)(i - 1));
    SetCell(view, row, 1, sale->product);
    _snwprintf(text, 40, L"%u", sale->quantity);
    SetCell(view, row, 2, text);
    FormatAmount(text, 40, settings, sale->total);
    SetCell(view, row, 3, text);
    SetCell(view, row, 4, DescribeState(sale->state));
    ++row;
  }
  if (chooseNewest && row > 0) Choose(view, 0);
  SendMessageW(view, WM_SETREDRAW, TRUE, 0);
  ShowReceipt(dialog, sales, settings);
}

static void FormatPaid(wchar_t* text, size_t size, const PastSale* sale, const Settings* settings) {
  wchar_t total[40], tax[40], price[40] = L"", cents[24];
  long long totalCents, taxCents;
  FormatAmount(total, 40, settings, sale->total);
  FormatAmount(tax, 40, settings, sale->tax);
  if (ReadCents(sale->total, &totalCents) && ReadCents(sale->tax, &taxCents) && totalCents >= taxCents) {
    WriteCents(cents, 24, totalCents - taxCents);
    FormatAmount(price, 40, settings, cents);
  }
  _snwprintf(text, size,
             L"%ls\r\n%ls\r\n\r\n%u x %ls\r\n\r\nPrice:\t%ls\r\nTax:\t%ls\r\nTotal:\t%ls\r\n\r\nPaid with:\t%ls\r\n"
             L"Transaction:\t%ls",
             sale->merchant, sale->date, sale->quantity, sale->product, price, tax, total, sale->card,
             sale->transaction);
  text[size - 1] = L'\0';
}

static void FormatUnknown(wchar_t* text, size_t size, const PastSale* sale) {
  _snwprintf(text, size, L"This is not a receipt.\r\n\r\n%ls\r\n%u x %ls\r\n%ls\r\nOrder %ls\r\n\r\n%ls", sale->date,
             sale->quantity, sale->product, sale->card, sale->order,
             sale->state == SaleStarted
                 ? L"The shop is being asked; its answer is not here yet."
                 : L"The shop's answer never arrived. Whether this was paid shows in the account of your card.");
  text[size - 1] = L'\0';
}

void ShowReceipt(HWND dialog, const PastSales* sales, const Settings* settings) {
  const LPARAM data = ChosenData(GetDlgItem(dialog, IDC_PAST));
  wchar_t text[800];
  if (data < 0 || (unsigned)data >= sales->count) {
    CopyText(text, 800, L"Choose a past purchase to see its receipt.");
  } else if (sales->sales[data].state == SalePaid) {
    FormatPaid(text, 800, &sales->sales[data], settings);
  } else {
    FormatUnknown(text, 800, &sales->sales[data]);
  }
  SetDlgItemTextW(dialog, IDC_RECEIPT, text);
}
