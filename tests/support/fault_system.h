// A system that records every call that can fail, by name and in order, and fails one of them, all from one on, or
// that one and all later ones of its name, in one of the ways in which that call says that it failed.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "support/forwarding_system.h"

namespace kest::testing {

// One call that can fail.
struct FaultPoint {
  std::string call;
  std::string about;  // the path, host or address that it is about; of an open key "INDEX of PATH", "NAME of PATH"
  int ways = 1;       // in how many ways it can fail
};

class FaultSystem : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  enum class Failing { never, once, fromThenOn, alikeFromThenOn };

  // Forgets what was recorded and fails the `point`-th call from now on, the first being 1, in the `inWay`-th way of
  // that call, the first being 0; a call that has not as many fails in its last.
  void FailAt(std::uint64_t point, Failing how, int inWay = 0) {
    points.clear();
    failPoint = point;
    failing = how;
    failWay = inWay;
  }
  void FailNever() { FailAt(0, Failing::never); }

  // The calls since then.
  const std::vector<FaultPoint>& Points() const { return points; }
  // The name of the first of them that failed, or will; empty when there are not as many.
  std::string FailedCall() const {
    return failPoint - 1 < points.size() ? points[static_cast<std::size_t>(failPoint - 1)].call : "";
  }

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    return Fails("GlobalAlloc") ? nullptr : ForwardingSystem::GlobalAlloc(flags, bytes);
  }
  int LoadStringA(os::ModuleHandle module, std::uint32_t id, char* buffer, int capacity) override {
    return Fails("LoadStringA") ? 0 : ForwardingSystem::LoadStringA(module, id, buffer, capacity);
  }
  // A clock that cannot be read, like a memory status that cannot, leaves what it was to fill.
  void GetSystemTime(os::SystemTime* time) override {
    if (!Fails("GetSystemTime")) ForwardingSystem::GetSystemTime(time);
  }
  void GlobalMemoryStatus(os::MemoryStatus* status) override {
    if (!Fails("GlobalMemoryStatus")) ForwardingSystem::GlobalMemoryStatus(status);
  }
  bool SystemTimeToFileTime(const os::SystemTime* time, os::FileTime* fileTime) override {
    return !Fails("SystemTimeToFileTime") && ForwardingSystem::SystemTimeToFileTime(time, fileTime);
  }
  bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectorsPerCluster, std::uint32_t* bytesPerSector,
                         std::uint32_t* freeClusters, std::uint32_t* totalClusters) override {
    return !Fails("GetDiskFreeSpaceA") &&
           ForwardingSystem::GetDiskFreeSpaceA(root, sectorsPerCluster, bytesPerSector, freeClusters, totalClusters);
  }
  bool RtlGenRandom(void* bytes, std::uint32_t length) override {
    return !Fails("RtlGenRandom") && ForwardingSystem::RtlGenRandom(bytes, length);
  }
  bool GetCursorPos(os::Point* position) override {
    return !Fails("GetCursorPos") && ForwardingSystem::GetCursorPos(position);
  }
  os::WindowHandle GetDesktopWindow() override {
    return Fails("GetDesktopWindow") ? nullptr : ForwardingSystem::GetDesktopWindow();
  }
  // What reports that it could not let go has let go all the same.
  int ReleaseDC(os::WindowHandle window, os::DeviceContext context) override {
    const bool isFailing = Fails("ReleaseDC");
    const int result = ForwardingSystem::ReleaseDC(window, context);
    return isFailing ? 0 : result;
  }
  bool DeleteDC(os::DeviceContext context) override {
    const bool isFailing = Fails("DeleteDC");
    return ForwardingSystem::DeleteDC(context) && !isFailing;
  }
  bool DeleteObject(os::GraphicsObject object) override {
    const bool isFailing = Fails("DeleteObject");
    return ForwardingSystem::DeleteObject(object) && !isFailing;
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
    return !Fails("BitBlt") && ForwardingSystem::BitBlt(to, x, y, width, height, from, fromX, fromY, rasterOperation);
  }
  // Nothing, and one line less than was asked for.
  int GetDIBits(os::DeviceContext context, os::GraphicsObject bitmap, std::uint32_t firstLine, std::uint32_t lines,
                void* bits, os::BitmapInfo* info, std::uint32_t colourUse) override {
    const bool isFailing = Fails("GetDIBits", "", 2);
    if (isFailing && way == 0) return 0;
    const int read = ForwardingSystem::GetDIBits(context, bitmap, firstLine, lines, bits, info, colourUse);
    return isFailing ? read - 1 : read;
  }
  std::int32_t RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                             os::RegistryHandle* key) override {
    if (FailsRegistry("RegOpenKeyExA", path, {os::errorAccessDenied, os::errorFileNotFound})) return error;
    return Opened(path, key, ForwardingSystem::RegOpenKeyExA(parent, path, options, access, key));
  }
  std::int32_t RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                               os::RegistryHandle* key) override {
    if (FailsRegistry("RegCreateKeyExA", path, {os::errorAccessDenied, os::errorFileNotFound, os::errorWriteFault})) {
      return error;
    }
    return Opened(path, key, ForwardingSystem::RegCreateKeyExA(parent, path, options, access, key));
  }
  std::int32_t RegCloseKey(os::RegistryHandle key) override {
    // A close that reports a failure has closed all the same.
    const bool isFailing = FailsRegistry("RegCloseKey", opened[key], {os::errorInvalidHandle});
    const std::int32_t result = ForwardingSystem::RegCloseKey(key);
    return isFailing ? error : result;
  }
  std::int32_t RegQueryValueExA(os::RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                std::uint32_t* size) override {
    const char* call = data == nullptr ? "RegQueryValueExA for the size" : "RegQueryValueExA";
    if (FailsRegistry(call, name + (" of " + opened[key]),
                      {os::errorAccessDenied, os::errorFileNotFound, os::errorMoreData})) {
      return error;
    }
    return ForwardingSystem::RegQueryValueExA(key, name, type, data, size);
  }
  std::int32_t RegSetValueExA(os::RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                              std::uint32_t size) override {
    if (FailsRegistry("RegSetValueExA", name + (" of " + opened[key]),
                      {os::errorAccessDenied, os::errorFileNotFound, os::errorWriteFault})) {
      return error;
    }
    return ForwardingSystem::RegSetValueExA(key, name, type, data, size);
  }
  std::int32_t RegEnumKeyExA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    if (FailsWalk("RegEnumKeyExA", key, index)) return error;
    return ForwardingSystem::RegEnumKeyExA(key, index, name, characters);
  }
  std::int32_t RegEnumValueA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    if (FailsWalk("RegEnumValueA", key, index)) return error;
    return ForwardingSystem::RegEnumValueA(key, index, name, characters);
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
  std::uint32_t GetTempFileNameA(const char* directory, const char* prefix, std::uint32_t unique, char* name) override {
    return Fails("GetTempFileNameA") ? 0 : ForwardingSystem::GetTempFileNameA(directory, prefix, unique, name);
  }
  // Not ready, and ready with a version that is older than the wanted one.
  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    const bool isFailing = Fails("WSAStartup", "", 2);
    if (isFailing && way == 0) return 10091;
    const int result = ForwardingSystem::WSAStartup(version, data);
    if (isFailing) data->version = 0x0001;
    return result;
  }
  int WSACleanup() override { return Fails("WSACleanup") ? -1 : ForwardingSystem::WSACleanup(); }
  os::Socket socket(int family, int type, int protocol) override {
    return Fails("socket") ? os::invalidSocket : ForwardingSystem::socket(family, type, protocol);
  }
  // Refused, unreachable and timed out are one answer.
  int connect(os::Socket socket, const os::SocketAddress* address, int length) override {
    return Fails("connect", Dotted(*address)) ? -1 : ForwardingSystem::connect(socket, address, length);
  }
  // Cut to one byte, reset, and nothing taken.
  int send(os::Socket socket, const void* bytes, int length, int flags) override {
    const bool isFailing = Fails("send", "", 3);
    if (isFailing && way != cutShort) return way == 1 ? -1 : 0;
    return ForwardingSystem::send(socket, bytes, isFailing ? 1 : length, flags);
  }
  // Cut to one byte, reset, and ended.
  int recv(os::Socket socket, void* bytes, int capacity, int flags) override {
    const bool isFailing = Fails("recv", "", 3);
    if (isFailing && way != cutShort) return way == 1 ? -1 : 0;
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
  // No such name, and a name without addresses.
  const os::HostEntry* gethostbyname(const char* name) override {
    static char* none[] = {nullptr};
    static const os::HostEntry empty = {nullptr, nullptr, os::addressFamilyInet, 4, none};
    if (Fails("gethostbyname", name, 2)) return way == 0 ? nullptr : &empty;
    return ForwardingSystem::gethostbyname(name);
  }
  std::uint32_t inet_addr(const char* dotted) override {
    return Fails("inet_addr", dotted) ? 0xFFFFFFFF : ForwardingSystem::inet_addr(dotted);
  }

  // The way of send and recv that only delays them.
  static constexpr int cutShort = 0;

 private:
  static std::string Dotted(const os::SocketAddress& to) {
    std::uint8_t bytes[4];
    std::memcpy(bytes, &to.address, sizeof bytes);
    std::string text = std::to_string(bytes[0]);
    for (int i = 1; i < 4; ++i) text += "." + std::to_string(bytes[i]);
    return text;
  }
  // Whether this call, which can fail in `count` ways, fails; `way` says how.
  bool Fails(const char* name, const std::string& about = "", int count = 1) {
    points.push_back({name, about, count});
    way = failWay < count ? failWay : count - 1;
    if (failing == Failing::once) return points.size() == failPoint;
    if (failing == Failing::never || points.size() < failPoint) return false;
    return failing == Failing::fromThenOn || points[static_cast<std::size_t>(failPoint) - 1].call == name;
  }
  // The same for a call that fails with one of these; `error` says which.
  bool FailsRegistry(const char* name, const std::string& about, std::initializer_list<std::int32_t> errors) {
    const bool isFailing = Fails(name, about, static_cast<int>(errors.size()));
    error = errors.begin()[way];
    return isFailing;
  }
  bool FailsWalk(const char* name, os::RegistryHandle key, std::uint32_t index) {
    return FailsRegistry(name, std::to_string(index) + " of " + opened[key],
                         {os::errorAccessDenied, os::errorFileNotFound, os::errorMoreData, os::errorNoMoreItems});
  }
  // Remembers by which path a key was opened.
  std::int32_t Opened(const char* path, const os::RegistryHandle* key, std::int32_t result) {
    if (result == os::errorSuccess) opened[*key] = path;
    return result;
  }

  Failing failing = Failing::never;
  std::uint64_t failPoint = 0;
  int failWay = 0, way = 0;
  std::int32_t error = os::errorSuccess;
  std::vector<FaultPoint> points;
  std::map<os::RegistryHandle, std::string> opened;
};

}  // namespace kest::testing
