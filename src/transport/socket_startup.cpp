#include "transport/socket_startup.h"

namespace kest {
namespace {

constexpr std::uint16_t wantedVersion = 0x0101;  // 1.1

// Made before every other static object of the library and deleted after them: one of them starts and stops sockets.
__attribute__((init_priority(101))) SocketStartupCount processCount;

bool StartSocketLibrary() {
  os::SocketLibraryData data{};
  if (os::system->WSAStartup(wantedVersion, &data) != 0) return false;
  const int major = data.version & 0xFF;
  const int minor = data.version >> 8;
  return major >= 1 && minor >= 1;
}

}  // namespace

bool SocketStartup() {
  return processCount.Startup();
}

bool SocketCleanup() {
  return processCount.Cleanup();
}

bool SocketStartupCount::Startup() {
  // A first start-up is meant to take no lock and to leave the count at zero.
  if (count.load() == 0) return StartSocketLibrary();
  os::system->EnterCriticalSection(&lock);
  count.store(count.load() + 1);
  os::system->LeaveCriticalSection(&lock);
  return true;
}

bool SocketStartupCount::Cleanup() {
  os::system->EnterCriticalSection(&lock);
  const std::uint32_t users = count.load();
  const bool isStopped = users != 1 || os::system->WSACleanup() == 0;
  if (isStopped && users > 0) count.store(users - 1);
  os::system->LeaveCriticalSection(&lock);
  return isStopped;
}

}  // namespace kest
