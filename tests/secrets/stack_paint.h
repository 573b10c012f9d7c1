// How deep calls go: the stack is painted below a function, the calls are made, and what lost its paint was used. Both
// are called from one function, which reads their answers before it calls anything else.
#pragma once

#include <cstddef>
#include <cstring>

namespace kest::testing {

constexpr std::size_t paintedStack = 192 * 1024;  // bytes
constexpr unsigned char stackPaint = 0xA5;

// Inlined nowhere, so that their frames lie where those of the calls between them lie.
[[gnu::noinline]] inline void PaintStack() {
  unsigned char area[paintedStack];
  std::memset(area, stackPaint, sizeof area);
  // The compiler must believe that these bytes are read.
  __asm__ __volatile__("" : : "r"(area) : "memory");
}

// The depth in bytes to which the stack below the caller lost its paint.
[[gnu::noinline]] inline std::size_t StackUsed() {
  const auto* frame = static_cast<const volatile unsigned char*>(__builtin_frame_address(0));
  std::size_t used = paintedStack - 1024;
  while (used > 0 && *(frame - used) == stackPaint) --used;
  return used;
}

// How many bytes between two depths below the caller are not zero.
[[gnu::noinline]] inline std::size_t StackNotZero(std::size_t from, std::size_t to) {
  const auto* frame = static_cast<const volatile unsigned char*>(__builtin_frame_address(0));
  std::size_t count = 0;
  for (std::size_t depth = from; depth < to; ++depth) count += *(frame - depth) != 0 ? 1 : 0;
  return count;
}

}  // namespace kest::testing
