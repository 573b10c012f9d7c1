// The one seam to the operating system: every call that the library makes is listed here, named as Windows names it,
// with what it promises on every system. win32/ forwards to Windows, posix/ provides the same calls with the same
// results, tests put a recording or failing system behind it. Whoever holds what a call hands out gives it back through
// the matching call. Every call may be made by any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace os {

using ModuleHandle = void*;
using WindowHandle = void*;
using DeviceContext = void*;
using GraphicsObject = void*;

// A lock, sized as the 32-bit CRITICAL_SECTION (24 bytes; 48 where pointers have 8). Never copied or moved once made.
struct CriticalSection {
  void* opaque[6];
};

// SYSTEMTIME, in its order: a date and time of day in UTC.
struct SystemTime {
  std::uint16_t year, month, dayOfWeek, day, hour, minute, second, milliseconds;
};

// FILETIME: 100-nanosecond steps since 1601-01-01 UTC, low half first.
struct FileTime {
  std::uint32_t low, high;
};

struct Point {
  std::int32_t x, y;
};

// MEMORYSTATUS as 32-bit Windows lays it out: 32 bytes, sizes in bytes, those above 2^32 - 1 given as 2^32 - 1.
struct MemoryStatus {
  std::uint32_t length, memoryLoad, totalPhysical, availablePhysical, totalPageFile, availablePageFile, totalVirtual,
      availableVirtual;
};
static_assert(sizeof(MemoryStatus) == 32, "the length that callers set");

// BITMAPINFO for 16 colours: the 40-byte header, then the colour table.
struct BitmapInfo {
  std::uint32_t size;
  std::int32_t width, height;
  std::uint16_t planes, bitCount;
  std::uint32_t compression, imageSize;
  std::int32_t horizontalResolution, verticalResolution;
  std::uint32_t coloursUsed, coloursImportant;
  std::uint32_t colours[16];
};
static_assert(sizeof(BitmapInfo) == 40 + 16 * 4, "header and colour table without gaps");

using Socket = std::uintptr_t;
constexpr Socket invalidSocket = ~static_cast<Socket>(0);
constexpr int addressFamilyInet = 2;
constexpr int socketTypeStream = 1;
constexpr int socketLevel = 0xFFFF;
constexpr int optionLinger = 0x80;

// WSADATA: the two words of it that the library reads.
struct SocketLibraryData {
  std::uint16_t version;      // granted: low byte major, high byte minor
  std::uint16_t highVersion;  // the newest on offer
};

// sockaddr_in: 16 bytes; port and address in network byte order.
struct SocketAddress {
  std::uint16_t family;
  std::uint16_t port;
  std::uint32_t address;
  std::uint8_t zero[8];
};
static_assert(sizeof(SocketAddress) == 16, "the length that connect is given");

// linger as Windows lays it out: 4 bytes, time in seconds.
struct Linger {
  std::uint16_t on, seconds;
};
static_assert(sizeof(Linger) == 4, "the length that setsockopt is given");

// hostent: `addresses` points at 4-byte addresses in network byte order and ends with a null pointer.
struct HostEntry {
  char* name;
  char** aliases;
  std::int16_t addressType, length;
  char** addresses;
};

// HKEY. The two roots that the library uses; each open key is closed once, a root never.
using RegistryHandle = void*;
inline RegistryHandle CurrentUser() { return reinterpret_cast<RegistryHandle>(static_cast<std::intptr_t>(-0x7FFFFFFF)); }
inline RegistryHandle LocalMachine() { return reinterpret_cast<RegistryHandle>(static_cast<std::intptr_t>(-0x7FFFFFFE)); }

// Access masks, keySetValue being the part without which values are not set, and types of values.
constexpr std::uint32_t keyRead = 0x20019;
constexpr std::uint32_t keyAllAccess = 0xF003F;
constexpr std::uint32_t keySetValue = 0x2;
constexpr std::uint32_t typeString = 1;  // REG_SZ
constexpr std::uint32_t typeBinary = 3;  // REG_BINARY
constexpr std::uint32_t typeNumber = 4;  // REG_DWORD, low byte first

// What the registry calls answer; any other number is a failure too.
constexpr std::int32_t errorSuccess = 0;
constexpr std::int32_t errorFileNotFound = 2;
constexpr std::int32_t errorAccessDenied = 5;
constexpr std::int32_t errorInvalidHandle = 6;
constexpr std::int32_t errorNotEnoughMemory = 8;
constexpr std::int32_t errorWriteFault = 29;
constexpr std::int32_t errorInvalidParameter = 87;
constexpr std::int32_t errorMoreData = 234;
constexpr std::int32_t errorNoMoreItems = 259;

using FileHandle = void*;
constexpr std::uint32_t invalidFileAttributes = 0xFFFFFFFF;
constexpr std::uint32_t longestPath = 260;  // MAX_PATH: characters with the final NUL

class System {
 public:
  // Memory. GlobalAlloc: `flags` 0, fixed memory, aligned for any object; null when there is none. A block of 0 bytes is
  // a block. GlobalFree gives one back; it takes what GlobalAlloc gave, or null, which does nothing.
  virtual void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) = 0;
  virtual void GlobalFree(void* block) = 0;

  // Locks: a thread may enter one it already holds. None of these fails.
  virtual void InitializeCriticalSection(CriticalSection* lock) = 0;
  virtual void EnterCriticalSection(CriticalSection* lock) = 0;
  virtual void LeaveCriticalSection(CriticalSection* lock) = 0;
  virtual void DeleteCriticalSection(CriticalSection* lock) = 0;

  // Copies string `id` of the module's string table into `buffer` of `capacity` bytes, cut to capacity - 1 characters and
  // ended by a NUL; answers the characters copied, 0 when there is no such string. Without string tables: always 0.
  virtual int LoadStringA(ModuleHandle module, std::uint32_t id, char* buffer, int capacity) = 0;

  // Clock and counters. GetTickCount: milliseconds since the system started, wrapping at 2^32.
  virtual std::uint32_t GetTickCount() = 0;
  virtual std::uint32_t GetCurrentThreadId() = 0;
  virtual std::uint32_t GetCurrentProcessId() = 0;
  virtual void GetSystemTime(SystemTime* time) = 0;
  // False for a date that does not exist or lies before 1601; `fileTime` is then untouched.
  virtual bool SystemTimeToFileTime(const SystemTime* time, FileTime* fileTime) = 0;
  // The drive that `root` names, null for the current one: clusters as 32-bit counts. False when it cannot be asked.
  virtual bool GetDiskFreeSpaceA(const char* root, std::uint32_t* sectorsPerCluster, std::uint32_t* bytesPerSector,
                                 std::uint32_t* freeClusters, std::uint32_t* totalClusters) = 0;
  virtual void GlobalMemoryStatus(MemoryStatus* status) = 0;
  // The system's own random generator. False when there is none; what `bytes` then holds is of no use.
  virtual bool RtlGenRandom(void* bytes, std::uint32_t length) = 0;

  // Screen. Without one GetDC answers null and GetCursorPos false.
  virtual bool GetCursorPos(Point* position) = 0;
  virtual WindowHandle GetDesktopWindow() = 0;
  virtual DeviceContext GetDC(WindowHandle window) = 0;
  virtual int ReleaseDC(WindowHandle window, DeviceContext context) = 0;
  virtual GraphicsObject CreateCompatibleBitmap(DeviceContext context, int width, int height) = 0;
  virtual DeviceContext CreateCompatibleDC(DeviceContext context) = 0;
  virtual GraphicsObject SelectObject(DeviceContext context, GraphicsObject object) = 0;
  virtual bool BitBlt(DeviceContext to, int x, int y, int width, int height, DeviceContext from, int fromX, int fromY,
                      std::uint32_t rasterOperation) = 0;
  // Answers the lines copied into `bits`, 0 on failure.
  virtual int GetDIBits(DeviceContext context, GraphicsObject bitmap, std::uint32_t firstLine, std::uint32_t lines,
                        void* bits, BitmapInfo* info, std::uint32_t colourUse) = 0;
  virtual bool DeleteDC(DeviceContext context) = 0;
  virtual bool DeleteObject(GraphicsObject object) = 0;

  // Registry. Paths are key names joined by "\\", from 1 to 255 characters each, found without regard to the case of
  // letters. All answer errorSuccess or why not; then no handle was given and nothing changed, but that keys above the
  // one to be made may have been made. A write either happened or did not, whenever the process ends. Null texts are
  // empty: the empty path is the key itself, the empty value name the key's default value.
  virtual std::int32_t RegOpenKeyExA(RegistryHandle parent, const char* path, std::uint32_t options,
                                     std::uint32_t access, RegistryHandle* key) = 0;
  // Opens or makes the key and whatever is missing above it, whatever access `parent` has. `options` 0: kept on disk.
  virtual std::int32_t RegCreateKeyExA(RegistryHandle parent, const char* path, std::uint32_t options,
                                       std::uint32_t access, RegistryHandle* key) = 0;
  virtual std::int32_t RegCloseKey(RegistryHandle key) = 0;
  // `size` holds the bytes that `data` takes and receives the bytes that the value has; a null `data` asks for them
  // alone. errorMoreData: `data` is too small; what it then holds is of no use. `type` may be null.
  virtual std::int32_t RegQueryValueExA(RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                        std::uint32_t* size) = 0;
  // errorAccessDenied when the key was opened without keySetValue.
  virtual std::int32_t RegSetValueExA(RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                                      std::uint32_t size) = 0;
  // The name of subkey or value `index`, in the registry's order, ended by a NUL; `characters` holds the room in `name`
  // with the NUL and receives the length without it. errorNoMoreItems behind the last one.
  virtual std::int32_t RegEnumKeyExA(RegistryHandle key, std::uint32_t index, char* name,
                                     std::uint32_t* characters) = 0;
  virtual std::int32_t RegEnumValueA(RegistryHandle key, std::uint32_t index, char* name,
                                     std::uint32_t* characters) = 0;

  // Files and directories. False, and 0 characters, stand for failure. A path's separators are "\\" and "/".
  virtual bool CreateDirectoryA(const char* path) = 0;
  virtual bool WriteFile(FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written) = 0;
  // The low half of the size in bytes; the high half goes to `high`. A failure gives 2^32 - 1 with `high` 0.
  virtual std::uint32_t GetFileSize(FileHandle file, std::uint32_t* high) = 0;
  virtual std::uint32_t GetFileAttributesA(const char* path) = 0;  // invalidFileAttributes when there is none
  virtual bool CopyFileA(const char* from, const char* to, bool failIfExists) = 0;
  virtual bool DeleteFileA(const char* path) = 0;
  virtual int _access(const char* path, int mode) = 0;  // mode 0: 0 when the path exists, else -1
  // These put a path into `buffer` of `capacity` characters and answer its length without the NUL; a length that is not
  // below `capacity` says what is needed, and nothing was put there. Without such directories: 0.
  virtual std::uint32_t GetTempPathA(std::uint32_t capacity, char* buffer) = 0;  // ends with a separator
  virtual std::uint32_t GetWindowsDirectoryA(char* buffer, std::uint32_t capacity) = 0;
  virtual std::uint32_t GetSystemDirectoryA(char* buffer, std::uint32_t capacity) = 0;
  // Makes an empty file of a new name, which begins with up to three characters of `prefix`, in `directory` and puts
  // its path into `name` (longestPath characters). `unique` 0: the system chooses. Answers 0 on failure.
  virtual std::uint32_t GetTempFileNameA(const char* directory, const char* prefix, std::uint32_t unique,
                                         char* name) = 0;

  // Sockets, blocking. A broken connection raises no signal, an interrupted wait goes on. The int results are 0 for
  // success unless said otherwise.
  virtual int WSAStartup(std::uint16_t version, SocketLibraryData* data) = 0;
  virtual int WSACleanup() = 0;
  virtual Socket socket(int family, int type, int protocol) = 0;  // invalidSocket on failure
  virtual int connect(Socket socket, const SocketAddress* address, int length) = 0;  // -1 on failure
  virtual int send(Socket socket, const void* bytes, int length, int flags) = 0;     // bytes sent, -1 on failure
  virtual int recv(Socket socket, void* bytes, int capacity, int flags) = 0;  // bytes, 0 at the end, -1 on failure
  virtual int setsockopt(Socket socket, int level, int option, const void* value, int length) = 0;
  virtual int closesocket(Socket socket) = 0;
  // IPv4 addresses of a name, in the resolver's order; null when there are none. The entry belongs to the calling thread
  // and lives until its next look-up.
  virtual const HostEntry* gethostbyname(const char* name) = 0;
  virtual std::uint32_t inet_addr(const char* dotted) = 0;  // network byte order; 2^32 - 1 for what is no address
  virtual std::uint16_t htons(std::uint16_t value) = 0;

 protected:
  // Systems are static objects that live as long as the process; nobody deletes one through this class.
  ~System() = default;
};

// The system of the machine.
System& Native();

// The system in force: Native() from the start. Tests point it elsewhere while no other thread is in the library.
extern System* system;

}  // namespace os
