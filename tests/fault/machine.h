// The machine that stands below everything while operations are failed: always the same screen, clock and counters. It
// counts the graphics objects and the locks that are held, so that one left behind shows.
#pragma once

#include <cstring>
#include <set>
#include <vector>

#include "support/recorded_system.h"

namespace kest::testing {

class Machine : public RecordedSystem {
 public:
  explicit Machine(os::System& target) : RecordedSystem(target) {
    hasRandom = true;
    for (std::uint32_t i = 0; i < screen.size(); ++i) screen[i] = ScreenByte(i);
  }

  // Graphics objects that were given out and not given back, and such that were given back without being held.
  std::size_t HeldGraphics() const { return held.size(); }
  int WrongGraphics() const { return wrong; }
  std::int64_t Locks() const { return locks; }

  void InitializeCriticalSection(os::CriticalSection* lock) override {
    ++locks;
    RecordedSystem::InitializeCriticalSection(lock);
  }
  void DeleteCriticalSection(os::CriticalSection* lock) override {
    --locks;
    RecordedSystem::DeleteCriticalSection(lock);
  }
  // From one copy: what is on the screen takes long to make.
  int GetDIBits(os::DeviceContext, os::GraphicsObject, std::uint32_t, std::uint32_t lines, void* bits, os::BitmapInfo*,
                std::uint32_t) override {
    std::memcpy(bits, screen.data(), std::size_t{lines} * lineLength);
    return static_cast<int>(lines);
  }
  os::DeviceContext GetDC(os::WindowHandle window) override { return Hold(RecordedSystem::GetDC(window)); }
  int ReleaseDC(os::WindowHandle window, os::DeviceContext context) override {
    GiveBack(context);
    return RecordedSystem::ReleaseDC(window, context);
  }
  os::GraphicsObject CreateCompatibleBitmap(os::DeviceContext context, int width, int height) override {
    return Hold(RecordedSystem::CreateCompatibleBitmap(context, width, height));
  }
  os::DeviceContext CreateCompatibleDC(os::DeviceContext context) override {
    return Hold(RecordedSystem::CreateCompatibleDC(context));
  }
  bool DeleteDC(os::DeviceContext context) override { return GiveBack(context), RecordedSystem::DeleteDC(context); }
  bool DeleteObject(os::GraphicsObject object) override {
    return GiveBack(object), RecordedSystem::DeleteObject(object);
  }

 private:
  void* Hold(void* object) {
    held.insert(object);
    return object;
  }
  void GiveBack(void* object) { wrong += held.erase(object) == 0 ? 1 : 0; }

  static constexpr std::size_t lineLength = 160;  // bytes: 320 pixels of 4 bits
  std::vector<std::uint8_t> screen = std::vector<std::uint8_t>(240 * lineLength);
  std::set<void*> held;
  int wrong = 0;
  std::int64_t locks = 0;
};

}  // namespace kest::testing
