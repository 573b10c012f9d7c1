/*
 * The shop's window: it joins the form, the lists and the panels with the thread that speaks to the server. Everything
 * in it happens on the thread that made it.
 */
#ifndef STOREFRONT_WINDOW_H
#define STOREFRONT_WINDOW_H

#include <windows.h>

#include "shop.h"

#define SHOP_WINDOW_CLASS L"Storefront"

/* Makes the window of an open shop and begins to fetch the products. Null when it cannot be made. */
HWND OpenShopWindow(HINSTANCE instance, Shop* shop, int show);

#endif
