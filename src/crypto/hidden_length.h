// Work on a deciphered text whose length is a secret until it has been judged: how much of it is padding and where it
// ends must not show in the time. The time of each function depends on the public lengths alone. Any thread may call
// these.
#pragma once

#include <cstdint>

namespace kest {

// All bits set for two equal numbers, none for different ones.
inline std::uint32_t MaskIfEqual(std::uint32_t a, std::uint32_t b) {
  const std::uint32_t difference = a ^ b;
  return ((difference | (0 - difference)) >> 31) - 1;
}

// All bits set where a is below b; both are below 2^31.
inline std::uint32_t MaskIfBelow(std::uint32_t a, std::uint32_t b) { return 0 - ((a - b) >> 31); }

// How many bytes of padding end an 8-byte block (RFC 2040 section 8): its last byte, when that is 1 to 8 and stands that
// many times at the end; else 0.
std::uint32_t PaddingOf(const std::uint8_t* block);

// Clears `padding` (0 to 8) bytes at the end of an 8-byte block.
void ClearPadding(std::uint8_t* block, std::uint32_t padding);

// Clears everything behind the first zero byte of `count` bytes, a multiple of 4 below 2^31, and answers how many bytes
// stand before it; `count` where there is none.
std::uint32_t CutAtFirstZero(std::uint8_t* bytes, std::uint32_t count);

}  // namespace kest
