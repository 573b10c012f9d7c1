// A machine on which nothing ever changes: what the library draws from clocks, counters and the system's generator is
// the same in every call, so every call has the same key and sends the same bytes. Memory is counted.
#pragma once

#include <cstring>

#include "support/allocation_system.h"

namespace kest::testing {

class StillMachine : public AllocationSystem {
 public:
  using AllocationSystem::AllocationSystem;

  std::uint32_t GetTickCount() override { return 1; }
  std::uint32_t GetCurrentThreadId() override { return 2; }
  std::uint32_t GetCurrentProcessId() override { return 3; }
  void GetSystemTime(os::SystemTime* time) override { *time = os::SystemTime{}; }
  bool SystemTimeToFileTime(const os::SystemTime*, os::FileTime* fileTime) override {
    *fileTime = os::FileTime{};
    return true;
  }
  bool GetDiskFreeSpaceA(const char*, std::uint32_t*, std::uint32_t*, std::uint32_t*, std::uint32_t*) override {
    return false;
  }
  void GlobalMemoryStatus(os::MemoryStatus*) override {}
  bool RtlGenRandom(void* bytes, std::uint32_t length) override {
    std::memset(bytes, 0x5C, length);
    return true;
  }
  bool GetCursorPos(os::Point*) override { return false; }
  os::DeviceContext GetDC(os::WindowHandle) override { return nullptr; }
};

}  // namespace kest::testing
