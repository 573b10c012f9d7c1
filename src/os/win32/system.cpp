// The calls of os.h on Windows: each forwards to the call of its name.
#include "os/os.h"

#include <winsock.h>
#include <windows.h>

#include <io.h>

#include <cstring>

namespace os {
namespace {

static_assert(sizeof(CRITICAL_SECTION) <= sizeof(CriticalSection), "the lock fits its place");
static_assert(sizeof(SYSTEMTIME) == sizeof(SystemTime) && sizeof(FILETIME) == sizeof(FileTime), "same layout");
static_assert(sizeof(POINT) == sizeof(Point) && sizeof(sockaddr_in) == sizeof(SocketAddress), "same layout");
static_assert(sizeof(hostent) == sizeof(HostEntry) && sizeof(linger) == sizeof(Linger), "same layout");
static_assert(sizeof(BITMAPINFOHEADER) == offsetof(BitmapInfo, colours), "same layout");

HKEY Key(RegistryHandle key) { return static_cast<HKEY>(key); }

CRITICAL_SECTION* Lock(CriticalSection* lock) { return reinterpret_cast<CRITICAL_SECTION*>(lock); }

std::uint32_t Clamp(SIZE_T value) {
  return value > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<std::uint32_t>(value);
}

using RandomFunction = BOOLEAN(WINAPI*)(void*, ULONG);

class WindowsSystem final : public System {
 public:
  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override { return ::GlobalAlloc(flags, bytes); }
  void GlobalFree(void* block) override { ::GlobalFree(block); }

  void InitializeCriticalSection(CriticalSection* lock) override { ::InitializeCriticalSection(Lock(lock)); }
  void EnterCriticalSection(CriticalSection* lock) override { ::EnterCriticalSection(Lock(lock)); }
  void LeaveCriticalSection(CriticalSection* lock) override { ::LeaveCriticalSection(Lock(lock)); }
  void DeleteCriticalSection(CriticalSection* lock) override { ::DeleteCriticalSection(Lock(lock)); }

  int LoadStringA(ModuleHandle module, std::uint32_t id, char* buffer, int capacity) override {
    return ::LoadStringA(static_cast<HINSTANCE>(module), id, buffer, capacity);
  }

  std::uint32_t GetTickCount() override { return ::GetTickCount(); }
  std::uint32_t GetCurrentThreadId() override { return ::GetCurrentThreadId(); }
  std::uint32_t GetCurrentProcessId() override { return ::GetCurrentProcessId(); }
  void GetSystemTime(SystemTime* time) override { ::GetSystemTime(reinterpret_cast<SYSTEMTIME*>(time)); }
  bool SystemTimeToFileTime(const SystemTime* time, FileTime* fileTime) override {
    return ::SystemTimeToFileTime(reinterpret_cast<const SYSTEMTIME*>(time), reinterpret_cast<FILETIME*>(fileTime)) != 0;
  }
  bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectorsPerCluster, std::uint32_t* bytesPerSector,
                         std::uint32_t* freeClusters, std::uint32_t* totalClusters) override {
    DWORD sectors, bytes, free, total;
    if (!::GetDiskFreeSpaceA(root, &sectors, &bytes, &free, &total)) return false;
    *sectorsPerCluster = sectors;
    *bytesPerSector = bytes;
    *freeClusters = free;
    *totalClusters = total;
    return true;
  }
  void GlobalMemoryStatus(MemoryStatus* status) override {
    MEMORYSTATUS memory{};
    memory.dwLength = sizeof memory;
    ::GlobalMemoryStatus(&memory);
    status->length = sizeof *status;
    status->memoryLoad = memory.dwMemoryLoad;
    status->totalPhysical = Clamp(memory.dwTotalPhys);
    status->availablePhysical = Clamp(memory.dwAvailPhys);
    status->totalPageFile = Clamp(memory.dwTotalPageFile);
    status->availablePageFile = Clamp(memory.dwAvailPageFile);
    status->totalVirtual = Clamp(memory.dwTotalVirtual);
    status->availableVirtual = Clamp(memory.dwAvailVirtual);
  }
  bool RtlGenRandom(void* bytes, std::uint32_t length) override {
    // Looked up, not imported, so that the DLL loads on systems that do not have it.
    HMODULE module = LoadLibraryA("ADVAPI32.DLL");
    if (module == nullptr) return false;
    RandomFunction generate = nullptr;
    const FARPROC address = GetProcAddress(module, "SystemFunction036");
    static_assert(sizeof generate == sizeof address, "both are code addresses");
    std::memcpy(&generate, &address, sizeof generate);
    const bool done = generate != nullptr && generate(bytes, length);
    FreeLibrary(module);
    return done;
  }

  bool GetCursorPos(Point* position) override { return ::GetCursorPos(reinterpret_cast<POINT*>(position)) != 0; }
  WindowHandle GetDesktopWindow() override { return ::GetDesktopWindow(); }
  DeviceContext GetDC(WindowHandle window) override { return ::GetDC(static_cast<HWND>(window)); }
  int ReleaseDC(WindowHandle window, DeviceContext context) override {
    return ::ReleaseDC(static_cast<HWND>(window), static_cast<HDC>(context));
  }
  GraphicsObject CreateCompatibleBitmap(DeviceContext context, int width, int height) override {
    return ::CreateCompatibleBitmap(static_cast<HDC>(context), width, height);
  }
  DeviceContext CreateCompatibleDC(DeviceContext context) override {
    return ::CreateCompatibleDC(static_cast<HDC>(context));
  }
  GraphicsObject SelectObject(DeviceContext context, GraphicsObject object) override {
    return ::SelectObject(static_cast<HDC>(context), object);
  }
  bool BitBlt(DeviceContext to, int x, int y, int width, int height, DeviceContext from, int fromX, int fromY,
              std::uint32_t rasterOperation) override {
    return ::BitBlt(static_cast<HDC>(to), x, y, width, height, static_cast<HDC>(from), fromX, fromY,
                    rasterOperation) != 0;
  }
  int GetDIBits(DeviceContext context, GraphicsObject bitmap, std::uint32_t firstLine, std::uint32_t lines, void* bits,
                BitmapInfo* info, std::uint32_t colourUse) override {
    return ::GetDIBits(static_cast<HDC>(context), static_cast<HBITMAP>(bitmap), firstLine, lines, bits,
                       reinterpret_cast<BITMAPINFO*>(info), colourUse);
  }
  bool DeleteDC(DeviceContext context) override { return ::DeleteDC(static_cast<HDC>(context)) != 0; }
  bool DeleteObject(GraphicsObject object) override { return ::DeleteObject(object) != 0; }

  std::int32_t RegOpenKeyExA(RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                             RegistryHandle* key) override {
    return ::RegOpenKeyExA(Key(parent), path, options, access, reinterpret_cast<HKEY*>(key));
  }
  std::int32_t RegCreateKeyExA(RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                               RegistryHandle* key) override {
    return ::RegCreateKeyExA(Key(parent), path, 0, nullptr, options, access, nullptr, reinterpret_cast<HKEY*>(key),
                             nullptr);
  }
  std::int32_t RegCloseKey(RegistryHandle key) override { return ::RegCloseKey(Key(key)); }
  std::int32_t RegQueryValueExA(RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                std::uint32_t* size) override {
    DWORD nativeType = 0, nativeSize = *size;
    const LONG result =
        ::RegQueryValueExA(Key(key), name, nullptr, &nativeType, static_cast<BYTE*>(data), &nativeSize);
    if (type != nullptr) *type = nativeType;
    *size = nativeSize;
    return result;
  }
  std::int32_t RegSetValueExA(RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                              std::uint32_t size) override {
    return ::RegSetValueExA(Key(key), name, 0, type, static_cast<const BYTE*>(data), size);
  }
  std::int32_t RegEnumKeyExA(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters) override {
    DWORD length = *characters;
    const LONG result = ::RegEnumKeyExA(Key(key), index, name, &length, nullptr, nullptr, nullptr, nullptr);
    *characters = length;
    return result;
  }
  std::int32_t RegEnumValueA(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters) override {
    DWORD length = *characters;
    const LONG result = ::RegEnumValueA(Key(key), index, name, &length, nullptr, nullptr, nullptr, nullptr);
    *characters = length;
    return result;
  }

  bool CreateDirectoryA(const char* path) override { return ::CreateDirectoryA(path, nullptr) != 0; }
  bool WriteFile(FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written) override {
    DWORD done = 0;
    const bool isWritten = ::WriteFile(file, bytes, count, &done, nullptr) != 0;
    *written = done;
    return isWritten;
  }
  std::uint32_t GetFileSize(FileHandle file, std::uint32_t* high) override {
    DWORD nativeHigh = 0;
    const DWORD low = ::GetFileSize(file, &nativeHigh);
    *high = low == INVALID_FILE_SIZE && ::GetLastError() != NO_ERROR ? 0 : nativeHigh;
    return low;
  }
  std::uint32_t GetFileAttributesA(const char* path) override { return ::GetFileAttributesA(path); }
  bool CopyFileA(const char* from, const char* to, bool failIfExists) override {
    return ::CopyFileA(from, to, failIfExists) != 0;
  }
  bool DeleteFileA(const char* path) override { return ::DeleteFileA(path) != 0; }
  int _access(const char* path, int mode) override { return ::_access(path, mode); }
  std::uint32_t GetTempPathA(std::uint32_t capacity, char* buffer) override { return ::GetTempPathA(capacity, buffer); }
  std::uint32_t GetWindowsDirectoryA(char* buffer, std::uint32_t capacity) override {
    return ::GetWindowsDirectoryA(buffer, capacity);
  }
  std::uint32_t GetSystemDirectoryA(char* buffer, std::uint32_t capacity) override {
    return ::GetSystemDirectoryA(buffer, capacity);
  }
  std::uint32_t GetTempFileNameA(const char* directory, const char* prefix, std::uint32_t unique,
                                 char* name) override {
    return ::GetTempFileNameA(directory, prefix, unique, name);
  }

  int WSAStartup(std::uint16_t version, SocketLibraryData* data) override {
    WSADATA native{};
    const int result = ::WSAStartup(version, &native);
    data->version = native.wVersion;
    data->highVersion = native.wHighVersion;
    return result;
  }
  int WSACleanup() override { return ::WSACleanup(); }
  Socket socket(int family, int type, int protocol) override { return ::socket(family, type, protocol); }
  int connect(Socket socket, const SocketAddress* address, int length) override {
    return ::connect(socket, reinterpret_cast<const sockaddr*>(address), length);
  }
  int send(Socket socket, const void* bytes, int length, int flags) override {
    return ::send(socket, static_cast<const char*>(bytes), length, flags);
  }
  int recv(Socket socket, void* bytes, int capacity, int flags) override {
    return ::recv(socket, static_cast<char*>(bytes), capacity, flags);
  }
  int setsockopt(Socket socket, int level, int option, const void* value, int length) override {
    return ::setsockopt(socket, level, option, static_cast<const char*>(value), length);
  }
  int closesocket(Socket socket) override { return ::closesocket(socket); }
  const HostEntry* gethostbyname(const char* name) override {
    return reinterpret_cast<const HostEntry*>(::gethostbyname(name));
  }
  std::uint32_t inet_addr(const char* dotted) override { return ::inet_addr(dotted); }
  std::uint16_t htons(std::uint16_t value) override { return ::htons(value); }
};

WindowsSystem windowsSystem;

}  // namespace

System& Native() { return windowsSystem; }

System* system = &windowsSystem;

}  // namespace os
