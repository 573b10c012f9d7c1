#include "core/memory.h"

#include <cstring>
#include <limits>

#include "core/exception.h"
#include "os/os.h"

namespace kest {

void* AllocateOrNull(unsigned long long bytes) {
  // Half the address space: no block may be larger, and positions inside one stay positive.
  if (bytes > std::numeric_limits<std::size_t>::max() / 2) return nullptr;
  return os::system->GlobalAlloc(0, static_cast<std::size_t>(bytes));
}

void* Allocate(unsigned long long bytes) {
  void* block = AllocateOrNull(bytes);
  if (block == nullptr) throw Qor::MemoryException();
  return block;
}

void Release(void* block) {
  if (block != nullptr) os::system->GlobalFree(block);
}

void Wipe(void* memory, std::size_t bytes) {
  if (bytes == 0) return;
  std::memset(memory, 0, bytes);
  // The compiler must believe that these bytes are read.
  __asm__ __volatile__("" : : "r"(memory) : "memory");
}

// Never inlined: its frame must lie where those of the calls before it lay. Compilers that can, clear the registers that
// the calls used as well: whoever saves registers next would write what is in them to the stack.
#if __has_attribute(zero_call_used_regs)
__attribute__((zero_call_used_regs("all")))
#endif
__attribute__((noinline)) void WipeStack() {
  // An exchange uses just under 40 KiB (the stack was painted, called upon and looked at, on Linux and under Wine), most
  // of it for the captured screen. Much more than that would ask for a larger stack than the exchange itself does.
  unsigned char area[44 * 1024];
  Wipe(area, sizeof area);
  // Lengths for which the runtime library uses all registers that it copies with, be they of 16, 32 or 64 bytes.
  for (const std::size_t length : {100, 250, 500, 1000}) {
    std::memmove(area + length, area, length);
    Wipe(area, 1);
  }
}

}  // namespace kest
