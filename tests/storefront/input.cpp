#include "input.h"

namespace storefront_test {
namespace {

void Send(INPUT* inputs, UINT count) {
  SendInput(count, inputs, sizeof *inputs);
}

INPUT Key(WORD key, bool isDown) {
  INPUT input{};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = key;
  input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
  input.ki.dwFlags = isDown ? 0 : KEYEVENTF_KEYUP;
  return input;
}

// A place on the screen in the units of the mouse, of which there are 65536 across.
LONG MouseUnits(LONG place, int metric) {
  const LONG size = GetSystemMetrics(metric);
  return (place * 65536 + size / 2) / size;
}

}  // namespace

void ClickAt(POINT point) {
  INPUT inputs[3]{};
  // Every one says where: the system's own report of an earlier movement may come in between.
  for (INPUT& input : inputs) {
    input.type = INPUT_MOUSE;
    input.mi.dx = MouseUnits(point.x, SM_CXSCREEN);
    input.mi.dy = MouseUnits(point.y, SM_CYSCREEN);
    input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
  }
  inputs[1].mi.dwFlags |= MOUSEEVENTF_LEFTDOWN;
  inputs[2].mi.dwFlags |= MOUSEEVENTF_LEFTUP;
  Send(inputs, 3);
}

void PressKey(WORD key, WORD held) {
  INPUT inputs[4];
  UINT count = 0;
  if (held != 0) inputs[count++] = Key(held, true);
  inputs[count++] = Key(key, true);
  inputs[count++] = Key(key, false);
  if (held != 0) inputs[count++] = Key(held, false);
  Send(inputs, count);
}

void Type(const std::string& text) {
  for (const char character : text) {
    const SHORT key = VkKeyScanW(static_cast<wchar_t>(character));
    PressKey(LOBYTE(key), (HIBYTE(key) & 1) != 0 ? VK_SHIFT : 0);
  }
}

}  // namespace storefront_test
