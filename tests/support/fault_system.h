// A system that records every call that can fail, by name and in order, and fails one of them, or all from one on, in
// the way in which that call says that it failed.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/forwarding_system.h"

namespace kest::testing {

class FaultSystem : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  enum class Failing { never, once, fromThenOn };

  // Forgets what was recorded and fails the `point`-th call from now on, the first being 1.
  void FailAt(std::uint64_t point, Failing how) {
    calls.clear();
    failPoint = point;
    failing = how;
  }
  void FailNever() { FailAt(0, Failing::never); }

  // The calls since then, by name.
  const std::vector<std::string>& Calls() const { return calls; }

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    return Fails("GlobalAlloc") ? nullptr : ForwardingSystem::GlobalAlloc(flags, bytes);
  }
  int LoadStringA(os::ModuleHandle module, std::uint32_t id, char* buffer, int capacity) override {
    return Fails("LoadStringA") ? 0 : ForwardingSystem::LoadStringA(module, id, buffer, capacity);
  }
  bool SystemTimeToFileTime(const os::SystemTime* time, os::FileTime* fileTime) override {
    return !Fails("SystemTimeToFileTime") && ForwardingSystem::SystemTimeToFileTime(time, fileTime);
  }
  bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectorsPerCluster, std::uint32_t* bytesPerSector,
                         std::uint32_t* freeClusters, std::uint32_t* totalClusters) override {
    return !Fails("GetDiskFreeSpaceA") && ForwardingSystem::GetDiskFreeSpaceA(root, sectorsPerCluster, bytesPerSector,
                                                                              freeClusters, totalClusters);
  }
  bool RtlGenRandom(void* bytes, std::uint32_t length) override {
    return !Fails("RtlGenRandom") && ForwardingSystem::RtlGenRandom(bytes, length);
  }
  bool GetCursorPos(os::Point* position) override {
    return !Fails("GetCursorPos") && ForwardingSystem::GetCursorPos(position);
  }
  os::DeviceContext GetDC(os::WindowHandle window) override {
    return Fails("GetDC") ? nullptr : ForwardingSystem::GetDC(window);
  }
  os::GraphicsObject CreateCompatibleBitmap(os::DeviceContext context, int width, int height) override {
    return Fails("CreateCompatibleBitmap") ? nullptr : ForwardingSystem::CreateCompatibleBitmap(context, width, height);
  }
  os::DeviceContext CreateCompatibleDC(os::DeviceContext context) override {
    return Fails("CreateCompatibleDC") ? nullptr : ForwardingSystem::CreateCompatibleDC(context);
  }
  os::GraphicsObject SelectObject(os::DeviceContext context, os::GraphicsObject object) override {
    return Fails("SelectObject") ? nullptr : ForwardingSystem::SelectObject(context, object);
  }
  bool BitBlt(os::DeviceContext to, int x, int y, int width, int height, os::DeviceContext from, int fromX, int fromY,
              std::uint32_t rasterOperation) override {
    return !Fails("BitBlt") &&
           ForwardingSystem::BitBlt(to, x, y, width, height, from, fromX, fromY, rasterOperation);
  }
  int GetDIBits(os::DeviceContext context, os::GraphicsObject bitmap, std::uint32_t firstLine, std::uint32_t lines,
                void* bits, os::BitmapInfo* info, std::uint32_t colourUse) override {
    return Fails("GetDIBits") ? 0
                              : ForwardingSystem::GetDIBits(context, bitmap, firstLine, lines, bits, info, colourUse);
  }
  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    return Fails("WSAStartup") ? 10091 : ForwardingSystem::WSAStartup(version, data);
  }
  os::Socket socket(int family, int type, int protocol) override {
    return Fails("socket") ? os::invalidSocket : ForwardingSystem::socket(family, type, protocol);
  }
  int connect(os::Socket socket, const os::SocketAddress* address, int length) override {
    return Fails("connect") ? -1 : ForwardingSystem::connect(socket, address, length);
  }
  int send(os::Socket socket, const void* bytes, int length, int flags) override {
    return Fails("send") ? -1 : ForwardingSystem::send(socket, bytes, length, flags);
  }
  int recv(os::Socket socket, void* bytes, int capacity, int flags) override {
    return Fails("recv") ? -1 : ForwardingSystem::recv(socket, bytes, capacity, flags);
  }
  int setsockopt(os::Socket socket, int level, int option, const void* value, int length) override {
    return Fails("setsockopt") ? -1 : ForwardingSystem::setsockopt(socket, level, option, value, length);
  }
  int closesocket(os::Socket socket) override {
    // A close that reports a failure has closed all the same.
    const bool isFailing = Fails("closesocket");
    const int result = ForwardingSystem::closesocket(socket);
    return isFailing ? -1 : result;
  }
  const os::HostEntry* gethostbyname(const char* name) override {
    return Fails("gethostbyname") ? nullptr : ForwardingSystem::gethostbyname(name);
  }

 private:
  bool Fails(const char* name) {
    calls.emplace_back(name);
    if (failing == Failing::once) return calls.size() == failPoint;
    return failing == Failing::fromThenOn && calls.size() >= failPoint;
  }

  Failing failing = Failing::never;
  std::uint64_t failPoint = 0;
  std::vector<std::string> calls;
};

}  // namespace kest::testing
