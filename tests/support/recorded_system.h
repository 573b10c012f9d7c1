// A system with a screen, counters and a random generator that always say the same, that records the calls, and in
// which each of them can be made to fail.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "support/forwarding_system.h"

namespace kest::testing {

class RecordedSystem : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  bool hasScreen = true, hasBitmap = true, hasMemoryContext = true, canSelect = true, canCopy = true;
  bool hasCursor = true, hasDisk = true, hasTime = true, hasRandom = false;
  int linesRead = 240;
  std::vector<std::string> calls;            // those on graphics, with their arguments
  std::vector<std::uint32_t> randomLengths;  // what was asked of the system's generator
  std::uint32_t seedings = 0;                // the state was collected so often
  os::BitmapInfo bitmapInfo{};

  // Byte `i` of the screen's lines, and of the system's generator within one request.
  static std::uint8_t ScreenByte(std::uint32_t i) { return static_cast<std::uint8_t>(i * 31 + i / 256 * 7 + 5); }
  static std::uint8_t RandomByte(std::uint32_t i) { return static_cast<std::uint8_t>(i * 13 + 1); }

  std::uint32_t GetTickCount() override { return ++seedings, 0x01020304; }
  std::uint32_t GetCurrentThreadId() override { return 0xAAAA1112; }
  std::uint32_t GetCurrentProcessId() override { return 0xBBBB2122; }
  bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectors, std::uint32_t* bytes, std::uint32_t* freeClusters,
                         std::uint32_t* totalClusters) override {
    if (!hasDisk || root != nullptr) return false;
    *sectors = 8, *bytes = 512, *freeClusters = 0x31323334, *totalClusters = 0x41424344;
    return true;
  }
  bool GetCursorPos(os::Point* position) override {
    if (hasCursor) *position = {-2, 0x12345};
    return hasCursor;
  }
  void GetSystemTime(os::SystemTime* time) override { *time = {1999, 12, 5, 31, 23, 59, 58, 999}; }
  bool SystemTimeToFileTime(const os::SystemTime* time, os::FileTime* fileTime) override {
    if (!hasTime || time->year != 1999) return false;
    *fileTime = {0x51525354, 0x61626364};
    return true;
  }
  void GlobalMemoryStatus(os::MemoryStatus* status) override {
    const std::uint32_t length = status->length;
    *status = {length, 77, 0x71727374, 0x81828384, 0x91929394, 0xA1A2A3A4, 0xB1B2B3B4, 0xC1C2C3C4};
    if (length != 32) status->memoryLoad = 0;
  }
  bool RtlGenRandom(void* bytes, std::uint32_t length) override {
    randomLengths.push_back(length);
    for (std::uint32_t i = 0; i < length; ++i) static_cast<std::uint8_t*>(bytes)[i] = RandomByte(i);
    return hasRandom;
  }

  os::WindowHandle GetDesktopWindow() override { return Log("GetDesktopWindow"), &desktop; }
  os::DeviceContext GetDC(os::WindowHandle window) override {
    Log("GetDC " + Name(window));
    return hasScreen ? &screen : nullptr;
  }
  int ReleaseDC(os::WindowHandle window, os::DeviceContext context) override {
    return Log("ReleaseDC " + Name(window) + " " + Name(context)), 1;
  }
  os::GraphicsObject CreateCompatibleBitmap(os::DeviceContext context, int width, int height) override {
    Log("CreateCompatibleBitmap " + Name(context) + " " + std::to_string(width) + " " + std::to_string(height));
    return hasBitmap ? &bitmap : nullptr;
  }
  os::DeviceContext CreateCompatibleDC(os::DeviceContext context) override {
    Log("CreateCompatibleDC " + Name(context));
    return hasMemoryContext ? &memory : nullptr;
  }
  os::GraphicsObject SelectObject(os::DeviceContext context, os::GraphicsObject object) override {
    Log("SelectObject " + Name(context) + " " + Name(object));
    return canSelect ? &oldBitmap : nullptr;
  }
  bool BitBlt(os::DeviceContext to, int x, int y, int width, int height, os::DeviceContext from, int fromX, int fromY,
              std::uint32_t operation) override {
    std::string text = "BitBlt " + Name(to);
    for (const int value : {x, y, width, height}) text += " " + std::to_string(value);
    text += " " + Name(from) + " " + std::to_string(fromX) + " " + std::to_string(fromY);
    Log(text + " " + std::to_string(operation));
    return canCopy;
  }
  int GetDIBits(os::DeviceContext context, os::GraphicsObject object, std::uint32_t firstLine, std::uint32_t lines,
                void* bits, os::BitmapInfo* info, std::uint32_t colourUse) override {
    Log("GetDIBits " + Name(context) + " " + Name(object) + " " + std::to_string(firstLine) + " " +
        std::to_string(lines) + " " + std::to_string(colourUse));
    bitmapInfo = *info;
    const std::uint32_t count = static_cast<std::uint32_t>(linesRead) * 160;
    for (std::uint32_t i = 0; i < count; ++i) static_cast<std::uint8_t*>(bits)[i] = ScreenByte(i);
    // The system fills the colour table that follows the header.
    std::memset(info->colours, 0xEE, sizeof info->colours);
    return linesRead;
  }
  bool DeleteDC(os::DeviceContext context) override { return Log("DeleteDC " + Name(context)), true; }
  bool DeleteObject(os::GraphicsObject object) override { return Log("DeleteObject " + Name(object)), true; }

 private:
  void Log(const std::string& call) { calls.push_back(call); }
  std::string Name(const void* handle) const {
    if (handle == &desktop) return "desktop";
    if (handle == &screen) return "screen";
    if (handle == &memory) return "memory";
    if (handle == &bitmap) return "bitmap";
    return handle == &oldBitmap ? "old" : "unknown";
  }

  char desktop = 0, screen = 0, memory = 0, bitmap = 0, oldBitmap = 0;
};

}  // namespace kest::testing
