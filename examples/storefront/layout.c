#include "layout.h"

#include "resource.h"

/* How many hundredths of the window's growth a part's place and size take. */
typedef struct Anchor {
  int part;
  int x, y, width, height;
} Anchor;

static const Anchor anchors[] = {
    {IDC_HEADER, 0, 0, 100, 0},
    {IDC_PRODUCTS_LABEL, 0, 0, 0, 0},
    {IDC_PRODUCTS, 0, 0, 100, 50},
    {IDC_REFRESH, 100, 0, 0, 0},
    {IDC_MESSAGE, 0, 50, 100, 0},
    {IDC_PROGRESS, 0, 50, 100, 0},
    {IDC_ORDER_GROUP, 100, 0, 0, 0},
    {IDC_CHOICE, 100, 0, 0, 0},
    {IDC_QUANTITY_LABEL, 100, 0, 0, 0},
    {IDC_QUANTITY, 100, 0, 0, 0},
    {IDC_SPIN, 100, 0, 0, 0},
    {IDC_SUBTOTAL_LABEL, 100, 0, 0, 0},
    {IDC_SUBTOTAL, 100, 0, 0, 0},
    {IDC_CARD_GROUP, 100, 0, 0, 50},
    {IDC_NUMBER_LABEL, 100, 0, 0, 0},
    {IDC_NUMBER, 100, 0, 0, 0},
    {IDC_HOLDER_LABEL, 100, 0, 0, 0},
    {IDC_HOLDER, 100, 0, 0, 0},
    {IDC_EXPIRY_LABEL, 100, 0, 0, 0},
    {IDC_EXPIRY, 100, 0, 0, 0},
    {IDC_CODE_LABEL, 100, 0, 0, 0},
    {IDC_CODE, 100, 0, 0, 0},
    {IDC_BUY, 100, 50, 0, 0},
    {IDC_PAST_LABEL, 0, 50, 0, 0},
    {IDC_PAST, 0, 50, 100, 50},
    {IDC_RECEIPT_LABEL, 100, 50, 0, 0},
    {IDC_RECEIPT, 100, 50, 0, 50},
};

#define ANCHOR_COUNT (int)(sizeof anchors / sizeof anchors[0])

void BeginLayout(Layout* layout, HWND window) {
  RECT client, whole;
  int i;
  layout->window = window;
  GetClientRect(window, &client);
  GetWindowRect(window, &whole);
  layout->client.cx = client.right;
  layout->client.cy = client.bottom;
  layout->least.x = whole.right - whole.left;
  layout->least.y = whole.bottom - whole.top;
  for (i = 0; i < ANCHOR_COUNT; ++i) {
    GetWindowRect(GetDlgItem(window, anchors[i].part), &layout->parts[i]);
    MapWindowPoints(NULL, window, (POINT*)&layout->parts[i], 2);
  }
}

void ApplyLayout(const Layout* layout) {
  RECT client;
  int dx, dy, i;
  HDWP moves = BeginDeferWindowPos(ANCHOR_COUNT);
  GetClientRect(layout->window, &client);
  dx = client.right - layout->client.cx;
  dy = client.bottom - layout->client.cy;
  for (i = 0; i < ANCHOR_COUNT && moves != NULL; ++i) {
    const Anchor* anchor = &anchors[i];
    const RECT* part = &layout->parts[i];
    moves = DeferWindowPos(moves, GetDlgItem(layout->window, anchor->part), NULL, part->left + dx * anchor->x / 100,
                           part->top + dy * anchor->y / 100, part->right - part->left + dx * anchor->width / 100,
                           part->bottom - part->top + dy * anchor->height / 100, SWP_NOZORDER | SWP_NOACTIVATE);
  }
  if (moves != NULL) EndDeferWindowPos(moves);
}
