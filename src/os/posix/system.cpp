// The calls of os.h on POSIX systems (Linux): no screen, no string tables; counters are the nearest that the kernel
// keeps.
#include <arpa/inet.h>
#include <pthread.h>
#include <sys/random.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>

// With optimisation the system's headers make these macros, which would rename the member of that name and let it call
// itself without end.
#undef htons
#undef ntohs

#include "os/os.h"
#include "os/posix/calendar.h"
#include "os/posix/files.h"
#include "os/posix/registry.h"
#include "os/posix/sockets.h"

namespace os {
namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CriticalSection), "the lock fits its place");
static_assert(alignof(pthread_mutex_t) <= alignof(CriticalSection), "the lock may stand where it is put");

pthread_mutex_t* Mutex(CriticalSection* lock) { return reinterpret_cast<pthread_mutex_t*>(lock); }

std::uint32_t Clamp(unsigned long long value) {
  constexpr unsigned long long most = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::uint32_t>(std::min(value, most));
}

class PosixSystem final : public System {
 public:
  void* GlobalAlloc(std::uint32_t, std::size_t bytes) override { return std::malloc(bytes != 0 ? bytes : 1); }
  void GlobalFree(void* block) override { std::free(block); }

  void InitializeCriticalSection(CriticalSection* lock) override {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(Mutex(lock), &attributes);
    pthread_mutexattr_destroy(&attributes);
  }
  void EnterCriticalSection(CriticalSection* lock) override { pthread_mutex_lock(Mutex(lock)); }
  void LeaveCriticalSection(CriticalSection* lock) override { pthread_mutex_unlock(Mutex(lock)); }
  void DeleteCriticalSection(CriticalSection* lock) override { pthread_mutex_destroy(Mutex(lock)); }

  int LoadStringA(ModuleHandle, std::uint32_t, char*, int) override { return 0; }

  std::uint32_t GetTickCount() override {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000u +
                                      static_cast<std::uint64_t>(now.tv_nsec) / 1000000u);
  }
  std::uint32_t GetCurrentThreadId() override { return static_cast<std::uint32_t>(syscall(SYS_gettid)); }
  std::uint32_t GetCurrentProcessId() override { return static_cast<std::uint32_t>(getpid()); }
  void GetSystemTime(SystemTime* time) override { posix::CurrentTime(time); }
  bool SystemTimeToFileTime(const SystemTime* time, FileTime* fileTime) override {
    return posix::ToFileTime(*time, fileTime);
  }
  bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectorsPerCluster, std::uint32_t* bytesPerSector,
                         std::uint32_t* freeClusters, std::uint32_t* totalClusters) override {
    struct statvfs disk {};
    if (statvfs(root != nullptr ? root : ".", &disk) != 0) return false;
    constexpr unsigned long sector = 512;
    *sectorsPerCluster = Clamp(std::max(disk.f_frsize / sector, 1ul));
    *bytesPerSector = static_cast<std::uint32_t>(sector);
    *freeClusters = Clamp(disk.f_bavail);
    *totalClusters = Clamp(disk.f_blocks);
    return true;
  }
  void GlobalMemoryStatus(MemoryStatus* status) override {
    struct sysinfo memory {};
    sysinfo(&memory);
    const unsigned long long unit = memory.mem_unit, total = memory.totalram * unit, free = memory.freeram * unit;
    status->length = sizeof *status;
    status->memoryLoad = total != 0 ? static_cast<std::uint32_t>((total - free) / ((total + 99) / 100)) : 0;
    status->totalPhysical = Clamp(total);
    status->availablePhysical = Clamp(free);
    status->totalPageFile = Clamp(total + memory.totalswap * unit);
    status->availablePageFile = Clamp(free + memory.freeswap * unit);
    status->totalVirtual = Clamp(std::numeric_limits<std::size_t>::max());
    status->availableVirtual = status->totalVirtual;
  }
  bool RtlGenRandom(void* bytes, std::uint32_t length) override {
    auto* next = static_cast<unsigned char*>(bytes);
    while (length > 0) {
      const ssize_t got = getrandom(next, length, 0);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return false;
      next += got;
      length -= static_cast<std::uint32_t>(got);
    }
    return true;
  }

  bool GetCursorPos(Point*) override { return false; }
  WindowHandle GetDesktopWindow() override { return nullptr; }
  DeviceContext GetDC(WindowHandle) override { return nullptr; }
  int ReleaseDC(WindowHandle, DeviceContext) override { return 0; }
  GraphicsObject CreateCompatibleBitmap(DeviceContext, int, int) override { return nullptr; }
  DeviceContext CreateCompatibleDC(DeviceContext) override { return nullptr; }
  GraphicsObject SelectObject(DeviceContext, GraphicsObject) override { return nullptr; }
  bool BitBlt(DeviceContext, int, int, int, int, DeviceContext, int, int, std::uint32_t) override { return false; }
  int GetDIBits(DeviceContext, GraphicsObject, std::uint32_t, std::uint32_t, void*, BitmapInfo*,
                std::uint32_t) override {
    return 0;
  }
  bool DeleteDC(DeviceContext) override { return false; }
  bool DeleteObject(GraphicsObject) override { return false; }

  std::int32_t RegOpenKeyExA(RegistryHandle parent, const char* path, std::uint32_t, std::uint32_t access,
                             RegistryHandle* key) override {
    return posix::OpenKey(parent, path, access, key);
  }
  std::int32_t RegCreateKeyExA(RegistryHandle parent, const char* path, std::uint32_t, std::uint32_t access,
                               RegistryHandle* key) override {
    return posix::CreateKey(parent, path, access, key);
  }
  std::int32_t RegCloseKey(RegistryHandle key) override { return posix::CloseKey(key); }
  std::int32_t RegQueryValueExA(RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                std::uint32_t* size) override {
    return posix::QueryValue(key, name, type, data, size);
  }
  std::int32_t RegSetValueExA(RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                              std::uint32_t size) override {
    return posix::SetValue(key, name, type, data, size);
  }
  std::int32_t RegEnumKeyExA(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters) override {
    return posix::EnumKey(key, index, name, characters);
  }
  std::int32_t RegEnumValueA(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters) override {
    return posix::EnumValue(key, index, name, characters);
  }

  bool CreateDirectoryA(const char* path) override { return posix::MakeDirectory(path); }
  bool WriteFile(FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written) override {
    return posix::WriteDescriptor(file, bytes, count, written);
  }
  std::uint32_t GetFileSize(FileHandle file, std::uint32_t* high) override { return posix::SizeOf(file, high); }
  std::uint32_t GetFileAttributesA(const char* path) override { return posix::AttributesOf(path); }
  bool CopyFileA(const char* from, const char* to, bool failIfExists) override {
    return posix::Copy(from, to, failIfExists);
  }
  bool DeleteFileA(const char* path) override { return posix::Remove(path); }
  int _access(const char* path, int mode) override { return posix::Access(path, mode); }
  std::uint32_t GetTempPathA(std::uint32_t capacity, char* buffer) override {
    return posix::TempDirectory(capacity, buffer);
  }
  std::uint32_t GetWindowsDirectoryA(char*, std::uint32_t) override { return 0; }
  std::uint32_t GetSystemDirectoryA(char*, std::uint32_t) override { return 0; }
  std::uint32_t GetTempFileNameA(const char* directory, const char* prefix, std::uint32_t unique,
                                 char* name) override {
    return posix::MakeTempFile(directory, prefix, unique, name);
  }

  int WSAStartup(std::uint16_t version, SocketLibraryData* data) override {
    data->version = version;
    data->highVersion = 0x0202;
    return 0;
  }
  int WSACleanup() override { return 0; }
  Socket socket(int family, int type, int protocol) override { return posix::OpenSocket(family, type, protocol); }
  int connect(Socket socket, const SocketAddress* address, int length) override {
    return posix::Connect(socket, address, length);
  }
  int send(Socket socket, const void* bytes, int length, int flags) override {
    return posix::Send(socket, bytes, length, flags);
  }
  int recv(Socket socket, void* bytes, int capacity, int flags) override {
    return posix::Receive(socket, bytes, capacity, flags);
  }
  int setsockopt(Socket socket, int level, int option, const void* value, int length) override {
    return posix::SetOption(socket, level, option, value, length);
  }
  int closesocket(Socket socket) override { return close(static_cast<int>(socket)); }
  const HostEntry* gethostbyname(const char* name) override { return posix::LookUp(name); }
  std::uint32_t inet_addr(const char* dotted) override { return ::inet_addr(dotted); }
  std::uint16_t htons(std::uint16_t value) override { return ::htons(value); }
};

PosixSystem posixSystem;

}  // namespace

System& Native() { return posixSystem; }

System* system = &posixSystem;

}  // namespace os
