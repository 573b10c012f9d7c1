#include "panels.h"

#include <stdio.h>

#include "resource.h"

#define BAND_COLOUR RGB(0x1F, 0x3A, 0x5F)
#define BAND_TEXT RGB(0xFF, 0xFF, 0xFF)
#define BAND_FAINT_TEXT RGB(0xB8, 0xC9, 0xDD)

typedef struct Colours {
  COLORREF bar, paper;
} Colours;

/* In the order of Mood. Every mood also has its own words, so that nothing depends on seeing a colour. */
static const Colours moodColours[] = {
    {RGB(0x4A, 0x7D, 0xB5), RGB(0xF1, 0xF6, 0xFB)},
    {RGB(0x3C, 0x96, 0x5A), RGB(0xEF, 0xF8, 0xF1)},
    {RGB(0xD9, 0x96, 0x1A), RGB(0xFE, 0xF7, 0xE8)},
    {RGB(0xC2, 0x3B, 0x3B), RGB(0xFC, 0xF0, 0xF0)},
};

static HFONT MakeFont(HWND dialog, int weight, int hundredths) {
  LOGFONTW font;
  GetObjectW((HFONT)SendMessageW(dialog, WM_GETFONT, 0, 0), sizeof font, &font);
  font.lfWeight = weight;
  font.lfHeight = font.lfHeight * hundredths / 100;
  return CreateFontIndirectW(&font);
}

void MakePanels(Panels* panels, HWND dialog) {
  panels->boldFont = MakeFont(dialog, FW_BOLD, 100);
  panels->titleFont = MakeFont(dialog, FW_BOLD, 160);
  SendDlgItemMessageW(dialog, IDC_CHOICE, WM_SETFONT, (WPARAM)panels->boldFont, TRUE);
}

void ShowWords(Panels* panels, HWND dialog, const Words* words) {
  wchar_t text[512];
  panels->words = *words;
  _snwprintf(text, sizeof text / sizeof text[0], L"%ls\r\n%ls", words->title, words->text);
  text[sizeof text / sizeof text[0] - 1] = L'\0';
  SetDlgItemTextW(dialog, IDC_MESSAGE, text);
  InvalidateRect(GetDlgItem(dialog, IDC_MESSAGE), NULL, FALSE);
}

static void Fill(HDC dc, const RECT* area, COLORREF colour) {
  SetDCBrushColor(dc, colour);
  FillRect(dc, area, GetStockObject(DC_BRUSH));
}

/* Draws a text at the top of the area and takes its height off the area. */
static void DrawLines(HDC dc, HFONT font, const wchar_t* text, RECT* area, COLORREF colour, UINT format) {
  RECT place = *area;
  SelectObject(dc, font);
  SetTextColor(dc, colour);
  area->top += DrawTextW(dc, text, -1, &place, format | DT_NOPREFIX | DT_LEFT | DT_TOP);
}

static int LineHeight(HDC dc, HFONT font) {
  TEXTMETRICW metrics;
  SelectObject(dc, font);
  GetTextMetricsW(dc, &metrics);
  return metrics.tmHeight;
}

static void DrawBand(const Panels* panels, const Settings* settings, HFONT font, const DRAWITEMSTRUCT* item) {
  RECT area = item->rcItem;
  const int lines = LineHeight(item->hDC, panels->titleFont) + LineHeight(item->hDC, font);
  Fill(item->hDC, &area, BAND_COLOUR);
  area.left += LineHeight(item->hDC, font);
  area.top += (area.bottom - area.top - lines) / 2;
  DrawLines(item->hDC, panels->titleFont, settings->title, &area, BAND_TEXT, DT_SINGLELINE | DT_END_ELLIPSIS);
  DrawLines(item->hDC, font, settings->slogan, &area, BAND_FAINT_TEXT, DT_SINGLELINE | DT_END_ELLIPSIS);
}

static void DrawMessage(const Panels* panels, HFONT font, const DRAWITEMSTRUCT* item) {
  const Colours* colours = &moodColours[panels->words.mood];
  RECT area = item->rcItem, bar = item->rcItem;
  const int gap = LineHeight(item->hDC, font) / 3;
  Fill(item->hDC, &area, colours->paper);
  bar.right = bar.left + gap;
  Fill(item->hDC, &bar, colours->bar);
  InflateRect(&area, -gap, -gap);
  area.left += 2 * gap;
  DrawLines(item->hDC, panels->boldFont, panels->words.title, &area, GetSysColor(COLOR_WINDOWTEXT),
            DT_SINGLELINE | DT_END_ELLIPSIS);
  area.top += gap / 2;
  DrawLines(item->hDC, font, panels->words.text, &area, GetSysColor(COLOR_WINDOWTEXT), DT_WORDBREAK);
}

void DrawPanel(const Panels* panels, const Settings* settings, const DRAWITEMSTRUCT* item) {
  const HFONT font = (HFONT)SendMessageW(item->hwndItem, WM_GETFONT, 0, 0);
  const int saved = SaveDC(item->hDC);
  SetBkMode(item->hDC, TRANSPARENT);
  if (item->CtlID == IDC_HEADER) DrawBand(panels, settings, font, item);
  else DrawMessage(panels, font, item);
  RestoreDC(item->hDC, saved);
}
