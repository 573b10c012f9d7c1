#include "screenshot.h"

#include <objidl.h>
// What GDI+ needs and does not bring.
#include <gdiplus.h>

namespace storefront_test {
namespace {

constexpr CLSID pngEncoder = {0x557cf406, 0x1a04, 0x11d3, {0x9a, 0x73, 0x00, 0x00, 0xf8, 0x1e, 0xf3, 0x2e}};

HBITMAP Capture(const RECT& area) {
  const int width = area.right - area.left, height = area.bottom - area.top;
  const HDC screen = GetDC(nullptr);
  const HDC copy = CreateCompatibleDC(screen);
  const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
  const HGDIOBJ before = SelectObject(copy, bitmap);
  BitBlt(copy, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
  SelectObject(copy, before);
  DeleteDC(copy);
  ReleaseDC(nullptr, screen);
  return bitmap;
}

}  // namespace

bool SaveScreenshot(HWND window, const std::string& path) {
  RECT area;
  GetWindowRect(window, &area);
  ULONG_PTR token;
  const Gdiplus::GdiplusStartupInput input;
  if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok) return false;
  const HBITMAP bitmap = Capture(area);
  bool isSaved;
  {
    Gdiplus::Bitmap image(bitmap, nullptr);
    isSaved = image.Save(std::wstring(path.begin(), path.end()).c_str(), &pngEncoder, nullptr) == Gdiplus::Ok;
  }
  DeleteObject(bitmap);
  Gdiplus::GdiplusShutdown(token);
  return isSaved;
}

}  // namespace storefront_test
