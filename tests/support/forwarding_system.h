// A system behind the seam that passes every call on to another one: the base of the systems that tests put there.
#pragma once

#include "os/os.h"

namespace kest::testing {

class ForwardingSystem : public os::System {
 public:
  explicit ForwardingSystem(os::System& target = os::Native()) : next(target) {}
  virtual ~ForwardingSystem() = default;

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override { return next.GlobalAlloc(flags, bytes); }
  void GlobalFree(void* block) override { next.GlobalFree(block); }
  void InitializeCriticalSection(os::CriticalSection* lock) override { next.InitializeCriticalSection(lock); }
  void EnterCriticalSection(os::CriticalSection* lock) override { next.EnterCriticalSection(lock); }
  void LeaveCriticalSection(os::CriticalSection* lock) override { next.LeaveCriticalSection(lock); }
  void DeleteCriticalSection(os::CriticalSection* lock) override { next.DeleteCriticalSection(lock); }
  int LoadStringA(os::ModuleHandle module, std::uint32_t id, char* buffer, int capacity) override {
    return next.LoadStringA(module, id, buffer, capacity);
  }
  std::uint32_t GetTickCount() override { return next.GetTickCount(); }
  std::uint32_t GetCurrentThreadId() override { return next.GetCurrentThreadId(); }
  std::uint32_t GetCurrentProcessId() override { return next.GetCurrentProcessId(); }
  void GetSystemTime(os::SystemTime* time) override { next.GetSystemTime(time); }
  bool SystemTimeToFileTime(const os::SystemTime* time, os::FileTime* fileTime) override {
    return next.SystemTimeToFileTime(time, fileTime);
  }
  bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectorsPerCluster, std::uint32_t* bytesPerSector,
                         std::uint32_t* freeClusters, std::uint32_t* totalClusters) override {
    return next.GetDiskFreeSpaceA(root, sectorsPerCluster, bytesPerSector, freeClusters, totalClusters);
  }
  void GlobalMemoryStatus(os::MemoryStatus* status) override { next.GlobalMemoryStatus(status); }
  bool RtlGenRandom(void* bytes, std::uint32_t length) override { return next.RtlGenRandom(bytes, length); }
  bool GetCursorPos(os::Point* position) override { return next.GetCursorPos(position); }
  os::WindowHandle GetDesktopWindow() override { return next.GetDesktopWindow(); }
  os::DeviceContext GetDC(os::WindowHandle window) override { return next.GetDC(window); }
  int ReleaseDC(os::WindowHandle window, os::DeviceContext context) override { return next.ReleaseDC(window, context); }
  os::GraphicsObject CreateCompatibleBitmap(os::DeviceContext context, int width, int height) override {
    return next.CreateCompatibleBitmap(context, width, height);
  }
  os::DeviceContext CreateCompatibleDC(os::DeviceContext context) override { return next.CreateCompatibleDC(context); }
  os::GraphicsObject SelectObject(os::DeviceContext context, os::GraphicsObject object) override {
    return next.SelectObject(context, object);
  }
  bool BitBlt(os::DeviceContext to, int x, int y, int width, int height, os::DeviceContext from, int fromX, int fromY,
              std::uint32_t rasterOperation) override {
    return next.BitBlt(to, x, y, width, height, from, fromX, fromY, rasterOperation);
  }
  int GetDIBits(os::DeviceContext context, os::GraphicsObject bitmap, std::uint32_t firstLine, std::uint32_t lines,
                void* bits, os::BitmapInfo* info, std::uint32_t colourUse) override {
    return next.GetDIBits(context, bitmap, firstLine, lines, bits, info, colourUse);
  }
  bool DeleteDC(os::DeviceContext context) override { return next.DeleteDC(context); }
  bool DeleteObject(os::GraphicsObject object) override { return next.DeleteObject(object); }
  std::int32_t RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                             os::RegistryHandle* key) override {
    return next.RegOpenKeyExA(parent, path, options, access, key);
  }
  std::int32_t RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                               std::uint32_t access, os::RegistryHandle* key) override {
    return next.RegCreateKeyExA(parent, path, options, access, key);
  }
  std::int32_t RegCloseKey(os::RegistryHandle key) override { return next.RegCloseKey(key); }
  std::int32_t RegQueryValueExA(os::RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                std::uint32_t* size) override {
    return next.RegQueryValueExA(key, name, type, data, size);
  }
  std::int32_t RegSetValueExA(os::RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                              std::uint32_t size) override {
    return next.RegSetValueExA(key, name, type, data, size);
  }
  std::int32_t RegEnumKeyExA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    return next.RegEnumKeyExA(key, index, name, characters);
  }
  std::int32_t RegEnumValueA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    return next.RegEnumValueA(key, index, name, characters);
  }
  bool CreateDirectoryA(const char* path) override { return next.CreateDirectoryA(path); }
  bool WriteFile(os::FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written) override {
    return next.WriteFile(file, bytes, count, written);
  }
  std::uint32_t GetFileSize(os::FileHandle file, std::uint32_t* high) override { return next.GetFileSize(file, high); }
  std::uint32_t GetFileAttributesA(const char* path) override { return next.GetFileAttributesA(path); }
  bool CopyFileA(const char* from, const char* to, bool failIfExists) override {
    return next.CopyFileA(from, to, failIfExists);
  }
  bool DeleteFileA(const char* path) override { return next.DeleteFileA(path); }
  int _access(const char* path, int mode) override { return next._access(path, mode); }
  std::uint32_t GetTempPathA(std::uint32_t capacity, char* buffer) override {
    return next.GetTempPathA(capacity, buffer);
  }
  std::uint32_t GetWindowsDirectoryA(char* buffer, std::uint32_t capacity) override {
    return next.GetWindowsDirectoryA(buffer, capacity);
  }
  std::uint32_t GetSystemDirectoryA(char* buffer, std::uint32_t capacity) override {
    return next.GetSystemDirectoryA(buffer, capacity);
  }
  std::uint32_t GetTempFileNameA(const char* directory, const char* prefix, std::uint32_t unique,
                                 char* name) override {
    return next.GetTempFileNameA(directory, prefix, unique, name);
  }
  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override { return next.WSAStartup(version, data); }
  int WSACleanup() override { return next.WSACleanup(); }
  os::Socket socket(int family, int type, int protocol) override { return next.socket(family, type, protocol); }
  int connect(os::Socket socket, const os::SocketAddress* address, int length) override {
    return next.connect(socket, address, length);
  }
  int send(os::Socket socket, const void* bytes, int length, int flags) override {
    return next.send(socket, bytes, length, flags);
  }
  int recv(os::Socket socket, void* bytes, int capacity, int flags) override {
    return next.recv(socket, bytes, capacity, flags);
  }
  int setsockopt(os::Socket socket, int level, int option, const void* value, int length) override {
    return next.setsockopt(socket, level, option, value, length);
  }
  int closesocket(os::Socket socket) override { return next.closesocket(socket); }
  const os::HostEntry* gethostbyname(const char* name) override { return next.gethostbyname(name); }
  std::uint32_t inet_addr(const char* dotted) override { return next.inet_addr(dotted); }
  std::uint16_t htons(std::uint16_t value) override { return next.htons(value); }

 private:
  os::System& next;
};

// Puts a system behind the seam for one scope.
class SystemInForce {
 public:
  explicit SystemInForce(os::System& replacement) : before(os::system) { os::system = &replacement; }
  ~SystemInForce() { os::system = before; }
  SystemInForce(const SystemInForce&) = delete;
  SystemInForce& operator=(const SystemInForce&) = delete;

 private:
  os::System* before;
};

}  // namespace kest::testing
