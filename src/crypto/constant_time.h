// Comparisons whose time tells nothing about the bytes compared. Any thread may call them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kest {

// Compares `length` bytes; the time depends on `length` alone, not on where or whether they differ.
inline bool EqualBytes(const void* a, const void* b, std::size_t length) {
  const auto* left = static_cast<const volatile std::uint8_t*>(a);
  const auto* right = static_cast<const volatile std::uint8_t*>(b);
  std::uint32_t difference = 0;
  for (std::size_t i = 0; i < length; ++i) difference |= static_cast<std::uint32_t>(left[i] ^ right[i]);
  return difference == 0;
}

}  // namespace kest
