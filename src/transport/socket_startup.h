// The start-up count of the socket library. One counter stands for the process; it owns the lock around itself, made
// when the library is loaded and deleted when it is unloaded. Any thread may call these.
#pragma once

#include <atomic>
#include <cstdint>

#include "os/os.h"

namespace kest {

// Starts the socket library (version 1.1) for this process. False when it does not start or grants a version whose
// major or minor number is 0. Deliberately uneven: see SocketStartupCount.
bool SocketStartup();

// The counterpart. False when the socket library refuses to stop; the count then stays.
bool SocketCleanup();

// The counter behind the two. Only a start-up that finds it above zero raises it, and a successful first start-up
// leaves it at zero: so in a process that begins with zero every start-up starts the socket library again, and no
// clean-up ever stops it. That is meant: a host that uses sockets itself never loses them when this library is
// unloaded.
class SocketStartupCount {
 public:
  explicit SocketStartupCount(std::uint32_t initial = 0) : count(initial) {
    os::system->InitializeCriticalSection(&lock);
  }
  SocketStartupCount(const SocketStartupCount&) = delete;
  SocketStartupCount& operator=(const SocketStartupCount&) = delete;
  ~SocketStartupCount() { os::system->DeleteCriticalSection(&lock); }

  bool Startup();
  bool Cleanup();
  std::uint32_t Value() const { return count.load(); }

 private:
  // Changed under `lock` only; atomic because the first look at it is taken without.
  std::atomic<std::uint32_t> count;
  os::CriticalSection lock;
};

}  // namespace kest
