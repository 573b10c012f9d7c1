// Words in byte strings, and rotations of words: the small change of the algorithms. Any thread may call these; byte
// pointers need no alignment.
#pragma once

#include <cstdint>
#include <cstring>

namespace kest {

inline std::uint32_t LoadLittle32(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

inline std::uint32_t LoadBig32(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
         static_cast<std::uint32_t>(bytes[2]) << 8 | static_cast<std::uint32_t>(bytes[3]);
}

inline void StoreLittle32(std::uint8_t* bytes, std::uint32_t word) {
  if (__BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__) word = __builtin_bswap32(word);
  std::memcpy(bytes, &word, sizeof word);
}

inline void StoreBig32(std::uint8_t* bytes, std::uint32_t word) {
  StoreLittle32(bytes, __builtin_bswap32(word));
}

// By the low 5 bits of `count`.
inline std::uint32_t RotateLeft(std::uint32_t word, std::uint32_t count) {
  return word << (count & 31) | word >> (-count & 31);
}
inline std::uint32_t RotateRight(std::uint32_t word, std::uint32_t count) {
  return word >> (count & 31) | word << (-count & 31);
}

}  // namespace kest
