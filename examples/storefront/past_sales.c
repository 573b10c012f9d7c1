#include "past_sales.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#include <objbase.h>

#include "text.h"

#define FIELD_COUNT 11
#define LINE_BYTES 2048

static PastSale* FindSale(PastSales* list, unsigned id) {
  unsigned i;
  for (i = list->count; i > 0; --i) {
    if (list->sales[i - 1].id == id) return &list->sales[i - 1];
  }
  return NULL;
}

/* What is known of a sale replaces what was known before. */
static BOOL Remember(PastSales* list, const PastSale* sale) {
  PastSale* known = FindSale(list, sale->id);
  if (known != NULL) {
    *known = *sale;
    return TRUE;
  }
  if (list->count == list->capacity) {
    const unsigned capacity = list->capacity + 32;
    PastSale* sales = realloc(list->sales, capacity * sizeof *sales);
    if (sales == NULL) return FALSE;
    list->sales = sales;
    list->capacity = capacity;
  }
  list->sales[list->count++] = *sale;
  if (sale->id > list->lastId) list->lastId = sale->id;
  return TRUE;
}

/* ---- Lines ---------------------------------------------------------------------------------------------------- */

/* A tab ends a field and a line's end a line: neither may stand in a text. */
static void CopyField(wchar_t* target, size_t size, const wchar_t* source) {
  CopyText(target, size, source);
  for (; *target != L'\0'; ++target) {
    if (*target < L' ') *target = L' ';
  }
}

static void FormatLine(const PastSale* sale, char* line) {
  PastSale clean = *sale;
  wchar_t text[LINE_BYTES / 3]; /* a character has up to three bytes */
  CopyField(clean.date, 24, sale->date);
  CopyField(clean.product, 120, sale->product);
  CopyField(clean.total, 24, sale->total);
  CopyField(clean.tax, 24, sale->tax);
  CopyField(clean.merchant, 80, sale->merchant);
  CopyField(clean.card, 40, sale->card);
  CopyField(clean.transaction, 40, sale->transaction);
  CopyField(clean.order, 24, sale->order);
  _snwprintf(text, sizeof text / sizeof text[0], L"%lc\t%u\t%ls\t%ls\t%u\t%ls\t%ls\t%ls\t%ls\t%ls\t%ls\r\n", clean.state,
             clean.id, clean.date, clean.product, clean.quantity, clean.total, clean.tax, clean.merchant, clean.card,
             clean.transaction, clean.order);
  ToServer(line, LINE_BYTES, text);
}

static BOOL IsState(wchar_t letter) {
  return letter != L'\0' && wcschr(L"SPRUC", letter) != NULL;
}

/* False when the line is damaged, as the last one is after a power failure. */
static BOOL ParseLine(wchar_t* line, PastSale* sale) {
  wchar_t* fields[FIELD_COUNT];
  int count = 0;
  memset(sale, 0, sizeof *sale);
  for (fields[count++] = line; *line != L'\0'; ++line) {
    if (*line != L'\t') continue;
    if (count == FIELD_COUNT) return FALSE;
    *line = L'\0';
    fields[count++] = line + 1;
  }
  if (count != FIELD_COUNT || !IsState(fields[0][0]) || fields[0][1] != L'\0') return FALSE;
  sale->state = (SaleState)fields[0][0];
  sale->id = wcstoul(fields[1], NULL, 10);
  CopyText(sale->date, 24, fields[2]);
  CopyText(sale->product, 120, fields[3]);
  sale->quantity = wcstoul(fields[4], NULL, 10);
  CopyText(sale->total, 24, fields[5]);
  CopyText(sale->tax, 24, fields[6]);
  CopyText(sale->merchant, 80, fields[7]);
  CopyText(sale->card, 40, fields[8]);
  CopyText(sale->transaction, 40, fields[9]);
  CopyText(sale->order, 24, fields[10]);
  return sale->id > 0;
}

/* ---- The file ------------------------------------------------------------------------------------------------- */

static BOOL AppendText(PastSales* list, const char* text) {
  DWORD written = 0;
  BOOL done;
  const HANDLE file = CreateFileW(list->path, FILE_APPEND_DATA, FILE_SHARE_READ, NULL, OPEN_ALWAYS, 0, NULL);
  if (file == INVALID_HANDLE_VALUE) return FALSE;
  /* A sale that was written down must be there after a power failure, so the system's own time is not waited for. */
  done = WriteFile(file, text, (DWORD)strlen(text), &written, NULL) && written == strlen(text) &&
         FlushFileBuffers(file);
  CloseHandle(file);
  return done;
}

/* A line must not become the end of one that was cut off, by a power failure or a full disk: that one is ended first. */
static BOOL Append(PastSales* list, const PastSale* sale) {
  char line[LINE_BYTES];
  FormatLine(sale, line);
  if (list->isCut && !AppendText(list, "\r\n")) return FALSE;
  list->isCut = !AppendText(list, line);
  return !list->isCut;
}

/* False when the file could not be read to its end, or there is no memory for its sales. */
static BOOL ReadLines(PastSales* list, FILE* file) {
  char bytes[LINE_BYTES];
  wchar_t text[LINE_BYTES];
  PastSale sale;
  while (fgets(bytes, sizeof bytes, file) != NULL) {
    char* end = strpbrk(bytes, "\r\n");
    list->isCut = end == NULL;
    if (list->isCut) continue;
    *end = '\0';
    FromServer(text, LINE_BYTES, bytes);
    if (ParseLine(text, &sale) && !Remember(list, &sale)) return FALSE;
  }
  return ferror(file) == 0;
}

/* Sales that were left as started ended without anybody seeing how. */
static void SettleStartedSales(PastSales* list) {
  unsigned i;
  for (i = 0; i < list->count; ++i) {
    if (list->sales[i].state == SaleStarted) list->sales[i].state = SaleUnknown;
  }
}

/* %APPDATA%\Storefront\GUID.sales, where the GUID is left with what every file name may have. */
static BOOL FindPath(PastSales* list, const char* guid) {
  wchar_t name[96];
  const DWORD length = GetEnvironmentVariableW(L"APPDATA", list->path, MAX_PATH);
  size_t count = 0;
  for (; *guid != '\0' && count < 80; ++guid) {
    const char letter = *guid;
    const BOOL isPlain = (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
                         (letter >= 'a' && letter <= 'z') || letter == '-';
    if (isPlain) name[count++] = (wchar_t)letter;
  }
  wcscpy(name + count, L".sales");
  if (length == 0 || length + wcslen(L"\\Storefront\\") + wcslen(name) >= MAX_PATH) return FALSE;
  wcscat(list->path, L"\\Storefront");
  if (!CreateDirectoryW(list->path, NULL) && GetLastError() != ERROR_ALREADY_EXISTS) return FALSE;
  wcscat(list->path, L"\\");
  wcscat(list->path, name);
  return TRUE;
}

BOOL OpenPastSales(PastSales* list, const char* guid) {
  FILE* file;
  BOOL isRead;
  memset(list, 0, sizeof *list);
  isRead = FindPath(list, guid);
  file = isRead ? _wfopen(list->path, L"rb") : NULL;
  if (file != NULL) {
    isRead = ReadLines(list, file);
    fclose(file);
  } else if (isRead) {
    isRead = errno == ENOENT; /* nothing was bought yet */
  }
  SettleStartedSales(list);
  /* A list that is not known whole may lack a sale of unknown outcome: nothing is sold then. */
  if (!isRead) list->path[0] = L'\0';
  return isRead;
}

/* ---- Sales ---------------------------------------------------------------------------------------------------- */

/* The letter keeps date and number apart: what is all digits would be taken for a card's number. */
static void SetNumbers(PastSale* sale) {
  SYSTEMTIME now;
  GUID unique = {0};
  GetLocalTime(&now);
  CoCreateGuid(&unique);
  _snwprintf(sale->date, 24, L"%04u-%02u-%02u %02u:%02u", now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute);
  _snwprintf(sale->order, 24, L"%04u%02u%02u-K%08lX", now.wYear, now.wMonth, now.wDay, unique.Data1);
  sale->date[23] = sale->order[23] = L'\0';
}

BOOL BeginSale(PastSales* list, PastSale* sale) {
  SetNumbers(sale);
  sale->state = SaleStarted;
  sale->id = list->lastId + 1;
  if (list->path[0] == L'\0' || !Remember(list, sale)) return FALSE;
  if (Append(list, sale)) return TRUE;
  --list->count;
  return FALSE;
}

BOOL EndSale(PastSales* list, const PastSale* sale) {
  Remember(list, sale); /* it is there since the beginning, so no memory is needed */
  return Append(list, sale);
}

const PastSale* FindUnknownSale(const PastSales* list) {
  unsigned i;
  for (i = list->count; i > 0; --i) {
    if (list->sales[i - 1].state == SaleUnknown) return &list->sales[i - 1];
  }
  return NULL;
}

void CheckUnknownSales(PastSales* list) {
  unsigned i;
  for (i = 0; i < list->count; ++i) {
    if (list->sales[i].state != SaleUnknown) continue;
    list->sales[i].state = SaleChecked;
    Append(list, &list->sales[i]);
  }
}
