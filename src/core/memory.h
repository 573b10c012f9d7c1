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

}  // namespace kest
