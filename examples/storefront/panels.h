/*
 * The two parts of the window that this program paints itself: the band with the shop's name, and the panel that tells
 * what happened. Their words are the parts' window texts too, which is where a screen reader finds them. Used by the
 * window's thread.
 */
#ifndef STOREFRONT_PANELS_H
#define STOREFRONT_PANELS_H

#include <windows.h>

#include "words.h"

typedef struct Panels {
  HFONT titleFont;
  HFONT boldFont;
  Words words; /* what the message panel shows */
} Panels;

/* Makes the fonts from the dialog's, and gives the chosen product the bold one. The system frees them at the end. */
void MakePanels(Panels* panels, HWND dialog);

void ShowWords(Panels* panels, HWND dialog, const Words* words);

/* Paints one of the two for WM_DRAWITEM. */
void DrawPanel(const Panels* panels, const Settings* settings, const DRAWITEMSTRUCT* item);

#endif
