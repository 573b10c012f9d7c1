// A system that records every call that can fail, by name and in order, and fails one of them, or all from one on, in
// one of the ways in which that call says that it failed.
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

  // Forgets what was recorded and fails the `point`-th call from now on, the first being 1, in the `inWay`-th way of that
  // call, the first being 0; a call that has not as many fails in its last.
  void FailAt(std::uint64_t point, Failing how, int inWay = 0) {
    calls.clear();
    ways.clear();
    failPoint = point;
    failing = how;
    failWay = inWay;
  }
  void FailNever() { FailAt(0, Failing::never); }

  // The calls since then, by name, and in how many ways each can fail.
  const std::vector<std::string>& Calls() const { return calls; }
  const std::vector<int>& Ways() const { return ways; }

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
  // The registry's calls fail as for a key that the user may not touch, and as for one that is not there.
  std::int32_t RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                             os::RegistryHandle* key) override {
    return Fails("RegOpenKeyExA", 2) ? RegistryError() : ForwardingSystem::RegOpenKeyExA(parent, path, options, access, key);
  }
  std::int32_t RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                               std::uint32_t access, os::RegistryHandle* key) override {
    return Fails("RegCreateKeyExA", 2) ? RegistryError() : ForwardingSystem::RegCreateKeyExA(parent, path, options, access, key);
  }
  std::int32_t RegCloseKey(os::RegistryHandle key) override {
    // A close that reports a failure has closed all the same.
    const bool isFailing = Fails("RegCloseKey");
    const std::int32_t result = ForwardingSystem::RegCloseKey(key);
    return isFailing ? os::errorInvalidHandle : result;
  }
  std::int32_t RegQueryValueExA(os::RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                std::uint32_t* size) override {
    return Fails("RegQueryValueExA", 3) ? RegistryError() : ForwardingSystem::RegQueryValueExA(key, name, type, data, size);
  }
  std::int32_t RegSetValueExA(os::RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                              std::uint32_t size) override {
    return Fails("RegSetValueExA", 2) ? RegistryError() : ForwardingSystem::RegSetValueExA(key, name, type, data, size);
  }
  std::int32_t RegEnumKeyExA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    return Fails("RegEnumKeyExA", 4) ? RegistryError() : ForwardingSystem::RegEnumKeyExA(key, index, name, characters);
  }
  std::int32_t RegEnumValueA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    return Fails("RegEnumValueA", 4) ? RegistryError() : ForwardingSystem::RegEnumValueA(key, index, name, characters);
  }
  bool CreateDirectoryA(const char* path) override {
    return !Fails("CreateDirectoryA") && ForwardingSystem::CreateDirectoryA(path);
  }
  bool WriteFile(os::FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written) override {
    if (!Fails("WriteFile")) return ForwardingSystem::WriteFile(file, bytes, count, written);
    *written = 0;
    return false;
  }
  std::uint32_t GetFileSize(os::FileHandle file, std::uint32_t* high) override {
    if (!Fails("GetFileSize")) return ForwardingSystem::GetFileSize(file, high);
    *high = 0;
    return 0xFFFFFFFF;
  }
  std::uint32_t GetFileAttributesA(const char* path) override {
    return Fails("GetFileAttributesA") ? os::invalidFileAttributes : ForwardingSystem::GetFileAttributesA(path);
  }
  bool CopyFileA(const char* from, const char* to, bool failIfExists) override {
    return !Fails("CopyFileA") && ForwardingSystem::CopyFileA(from, to, failIfExists);
  }
  bool DeleteFileA(const char* path) override { return !Fails("DeleteFileA") && ForwardingSystem::DeleteFileA(path); }
  int _access(const char* path, int mode) override {
    return Fails("_access") ? -1 : ForwardingSystem::_access(path, mode);
  }
  std::uint32_t GetTempPathA(std::uint32_t capacity, char* buffer) override {
    return Fails("GetTempPathA") ? 0 : ForwardingSystem::GetTempPathA(capacity, buffer);
  }
  std::uint32_t GetWindowsDirectoryA(char* buffer, std::uint32_t capacity) override {
    return Fails("GetWindowsDirectoryA") ? 0 : ForwardingSystem::GetWindowsDirectoryA(buffer, capacity);
  }
  std::uint32_t GetSystemDirectoryA(char* buffer, std::uint32_t capacity) override {
    return Fails("GetSystemDirectoryA") ? 0 : ForwardingSystem::GetSystemDirectoryA(buffer, capacity);
  }
  std::uint32_t GetTempFileNameA(const char* directory, const char* prefix, std::uint32_t unique,
                                 char* name) override {
    return Fails("GetTempFileNameA") ? 0 : ForwardingSystem::GetTempFileNameA(directory, prefix, unique, name);
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
  // Broken, and cut to one byte.
  int send(os::Socket socket, const void* bytes, int length, int flags) override {
    const bool isFailing = Fails("send", 2);
    if (isFailing && way == 0) return -1;
    return ForwardingSystem::send(socket, bytes, isFailing ? 1 : length, flags);
  }
  // Broken, ended, and cut to one byte.
  int recv(os::Socket socket, void* bytes, int capacity, int flags) override {
    const bool isFailing = Fails("recv", 3);
    if (isFailing && way < 2) return way == 0 ? -1 : 0;
    return ForwardingSystem::recv(socket, bytes, isFailing ? 1 : capacity, flags);
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
  // Whether this call, which can fail in `count` ways, fails; `way` says how.
  bool Fails(const char* name, int count = 1) {
    calls.emplace_back(name);
    ways.push_back(count);
    way = failWay < count ? failWay : count - 1;
    if (failing == Failing::once) return calls.size() == failPoint;
    return failing == Failing::fromThenOn && calls.size() >= failPoint;
  }
  std::int32_t RegistryError() const {
    constexpr std::int32_t errors[] = {os::errorAccessDenied, os::errorFileNotFound, os::errorMoreData,
                                       os::errorNoMoreItems};
    return errors[way];
  }

  Failing failing = Failing::never;
  std::uint64_t failPoint = 0;
  int failWay = 0, way = 0;
  std::vector<int> ways;
  std::vector<std::string> calls;
};

}  // namespace kest::testing
