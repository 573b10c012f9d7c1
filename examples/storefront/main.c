/*
 * A shop in a window: shows a vendor's products, sells them through KESTAPI.DLL and keeps the receipts.
 * usage: storefront.exe [SETTINGS.ini]
 */
#include <windows.h>

#include <commctrl.h>
#include <stdlib.h>
#include <string.h>

#include "resource.h"
#include "text.h"
#include "window.h"

static Shop shop;

static int Fail(const wchar_t* text) {
  MessageBoxW(NULL, text, L"Storefront", MB_OK | MB_ICONERROR);
  return 1;
}

/* One window at a time: two would write one list of past sales. Answers whether this is the first. */
static BOOL IsFirst(void) {
  HWND other;
  CreateMutexW(NULL, FALSE, L"Local\\Storefront"); /* lives as long as the process */
  if (GetLastError() != ERROR_ALREADY_EXISTS) return TRUE;
  other = FindWindowW(SHOP_WINDOW_CLASS, NULL);
  if (other == NULL) return FALSE;
  if (IsIconic(other)) ShowWindow(other, SW_RESTORE);
  SetForegroundWindow(other);
  return FALSE;
}

static int Run(HINSTANCE instance, int show) {
  MSG message;
  const HACCEL keys = LoadAcceleratorsW(instance, MAKEINTRESOURCEW(IDR_KEYS));
  const HWND window = OpenShopWindow(instance, &shop, show);
  if (window == NULL) return Fail(L"The shop's window cannot be opened.");
  while (GetMessageW(&message, NULL, 0, 0) > 0) {
    if (TranslateAcceleratorW(window, keys, &message) || IsDialogMessageW(window, &message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return (int)message.wParam;
}

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previous, wchar_t* commandLine, int show) {
  const INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_LISTVIEW_CLASSES | ICC_UPDOWN_CLASS | ICC_PROGRESS_CLASS};
  wchar_t fault[512];
  (void)previous;
  InitCommonControlsEx(&controls);
  if (!IsFirst()) return 0;
  if (!ReadSettings(commandLine, &shop.settings, fault, sizeof fault / sizeof fault[0])) return Fail(fault);
  if (!LoadCommerceLibrary(&shop.library)) {
    return Fail(L"KESTAPI.DLL is missing beside this program, or cannot be used. Please install the program again.");
  }
  if (!OpenShop(&shop)) return Fail(L"The key of the shop's server is none. Please install the program again.");
  return Run(instance, show);
}
