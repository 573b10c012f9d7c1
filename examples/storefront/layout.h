/*
 * How the window's parts move and grow with it. Made once, when all parts stand where the template put them; used by
 * the window's thread.
 */
#ifndef STOREFRONT_LAYOUT_H
#define STOREFRONT_LAYOUT_H

#include <windows.h>

#define MOST_PARTS 32

typedef struct Layout {
  HWND window;
  SIZE client;            /* as the template made it */
  POINT least;            /* the whole window's size at the start; it gets no smaller */
  RECT parts[MOST_PARTS]; /* likewise, in the order of the table of anchors */
} Layout;

/* Notes where everything stands. */
void BeginLayout(Layout* layout, HWND window);

/* Puts everything where it belongs in the client area as it is now. */
void ApplyLayout(const Layout* layout);

#endif
