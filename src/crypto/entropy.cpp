#include "crypto/entropy.h"

#include <initializer_list>

#include "core/memory.h"
#include "crypto/byte_order.h"
#include "os/os.h"

namespace kest {
namespace {

constexpr int captureWidth = 320;   // pixels
constexpr int captureHeight = 240;  // lines
constexpr std::uint16_t captureBits = 4;
constexpr std::uint32_t plainCopy = 0x00CC0020;  // the raster operation
static_assert(captureWidth / 2 * captureHeight == captureLength, "two pixels a byte");

// Copies the pixels into the bitmap and reads them out of it.
bool ReadPixels(os::DeviceContext screen, os::DeviceContext memory, os::GraphicsObject bitmap, std::uint8_t* buffer) {
  os::BitmapInfo info{};
  info.size = 40;
  info.width = captureWidth;
  info.height = captureHeight;
  info.planes = 1;
  info.bitCount = captureBits;
  const os::GraphicsObject before = os::system->SelectObject(memory, bitmap);
  if (before == nullptr) return false;
  // Whether pixels came is judged by the lines that can be read, not by this call.
  os::system->BitBlt(memory, 0, 0, captureWidth, captureHeight, screen, 0, 0, plainCopy);
  os::system->SelectObject(memory, before);
  return os::system->GetDIBits(memory, bitmap, 0, captureHeight, buffer, &info, 0) == captureHeight;
}

class Record {
 public:
  explicit Record(std::uint8_t* target) : bytes(target) {}

  void Append32(std::uint32_t value) {
    StoreLittle32(bytes + length, value);
    length = static_cast<std::uint16_t>(length + 4);
  }
  // The low halves of two values.
  void AppendHalves(std::uint32_t first, std::uint32_t second) { Append32((first & 0xFFFF) | second << 16); }
  std::uint16_t Length() const { return length; }

 private:
  std::uint8_t* bytes;
  std::uint16_t length = 0;
};

void AppendDisk(Record& record) {
  std::uint32_t sectorsPerCluster, bytesPerSector, freeClusters, totalClusters;
  if (!os::system->GetDiskFreeSpaceA(nullptr, &sectorsPerCluster, &bytesPerSector, &freeClusters, &totalClusters)) {
    return;
  }
  for (const std::uint32_t value : {sectorsPerCluster, bytesPerSector, freeClusters, totalClusters}) {
    record.Append32(value);
  }
}

void AppendCursor(Record& record) {
  os::Point position;
  if (!os::system->GetCursorPos(&position)) return;
  record.AppendHalves(static_cast<std::uint32_t>(position.x), static_cast<std::uint32_t>(position.y));
}

void AppendTime(Record& record) {
  os::SystemTime time{};
  os::FileTime fileTime;
  os::system->GetSystemTime(&time);
  if (!os::system->SystemTimeToFileTime(&time, &fileTime)) return;
  record.Append32(fileTime.low);
  record.Append32(fileTime.high);
}

void AppendMemory(Record& record) {
  os::MemoryStatus status{};
  status.length = sizeof status;
  os::system->GlobalMemoryStatus(&status);
  for (const std::uint32_t value :
       {status.memoryLoad, status.totalPhysical, status.availablePhysical, status.totalPageFile,
        status.availablePageFile, status.totalVirtual, status.availableVirtual}) {
    record.Append32(value);
  }
}

}  // namespace

bool CaptureScreen(std::uint8_t* buffer) {
  const os::WindowHandle desktop = os::system->GetDesktopWindow();
  const os::DeviceContext screen = os::system->GetDC(desktop);
  if (screen == nullptr) return false;
  const os::GraphicsObject bitmap = os::system->CreateCompatibleBitmap(screen, captureWidth, captureHeight);
  const os::DeviceContext memory = os::system->CreateCompatibleDC(screen);
  const bool done = bitmap != nullptr && memory != nullptr && ReadPixels(screen, memory, bitmap, buffer);
  if (memory != nullptr) os::system->DeleteDC(memory);
  if (bitmap != nullptr) os::system->DeleteObject(bitmap);
  os::system->ReleaseDC(desktop, screen);
  return done;
}

std::uint16_t CollectSystemState(std::uint8_t* bytes) {
  Record record(bytes);
  record.Append32(os::system->GetTickCount());
  const std::uint32_t thread = os::system->GetCurrentThreadId();
  const std::uint32_t process = os::system->GetCurrentProcessId();
  record.AppendHalves(thread, process);
  AppendDisk(record);
  AppendCursor(record);
  AppendTime(record);
  AppendMemory(record);
  return record.Length();
}

}  // namespace kest
