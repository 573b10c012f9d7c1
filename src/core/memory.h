// The library's memory: every dynamic block comes from GlobalAlloc and returns through GlobalFree. Any thread may call
// these.
#pragma once

#include <cstddef>

namespace kest {

// Allocates `bytes` bytes, not cleared. Throws Qor::MemoryException when there are none; `bytes` is 64-bit so that a
// computed size beyond the address space is refused, not wrapped.
void* Allocate(unsigned long long bytes);

// The same, answering null instead of throwing.
void* AllocateOrNull(unsigned long long bytes);

// Frees a block of either; null is ignored.
void Release(void* block);

// Overwrites `bytes` bytes with zeros, also where the compiler sees that nobody reads them again.
void Wipe(void* memory, std::size_t bytes);

// Wipes a place when its scope ends, however it ends.
class WipeAtEnd {
 public:
  WipeAtEnd(void* place, std::size_t length) : memory(place), bytes(length) {}
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;
  ~WipeAtEnd() { Wipe(memory, bytes); }

 private:
  void* memory;
  std::size_t bytes;
};

// Overwrites what the calls that have returned left on the stack: 44 KiB below the caller's frame, which is more than an
// exchange with the server uses, and the registers in which the runtime library copies. It reaches what no Wipe can:
// what the compiler or the runtime library put aside.
void WipeStack();

// Does so when its scope ends: the first thing in an operation that has to do with secrets.
class WipeStackAtEnd {
 public:
  WipeStackAtEnd() = default;
  WipeStackAtEnd(const WipeStackAtEnd&) = delete;
  WipeStackAtEnd& operator=(const WipeStackAtEnd&) = delete;
  ~WipeStackAtEnd() { WipeStack(); }
};

}  // namespace kest
