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

}  // namespace kest
