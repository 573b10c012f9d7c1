// A picture of a window as it stands on the screen.
#pragma once

#include <windows.h>

#include <string>

namespace storefront_test {

// Writes a PNG. Answers whether it could.
bool SaveScreenshot(HWND window, const std::string& path);

}  // namespace storefront_test
