// What MD5 and SHA-1 have in common: a bit count and a buffer of 64 bytes in front of a compression function over whole
// blocks, and the padding. A context belongs to one thread and is wiped by its owner.
#pragma once

#include <cstdint>
#include <cstring>

namespace kest {

constexpr std::uint32_t digestBlockLength = 64;  // bytes

struct DigestBuffer {
  std::uint32_t bitsLow;  // the 64-bit count of the bits fed
  std::uint32_t bitsHigh;
  std::uint8_t bytes[digestBlockLength];

  std::uint32_t Used() const { return bitsLow >> 3 & (digestBlockLength - 1); }

  void Count(std::uint32_t length) {
    const std::uint32_t bits = length << 3;
    bitsLow += bits;
    bitsHigh += (bitsLow < bits ? 1 : 0) + (length >> 29);
  }

  // Feeds `length` bytes; compress(blocks, count) is called for every run of whole blocks.
  template <typename Compress>
  void Feed(const std::uint8_t* in, std::uint32_t length, Compress compress) {
    if (length == 0) return;
    const std::uint32_t used = Used();
    Count(length);
    if (used != 0) {
      const std::uint32_t room = digestBlockLength - used;
      const std::uint32_t taken = length < room ? length : room;
      std::memcpy(bytes + used, in, taken);
      if (taken < room) return;
      compress(bytes, 1);
      in += taken;
      length -= taken;
    }
    const std::uint32_t blocks = length / digestBlockLength;
    if (blocks != 0) compress(in, blocks);
    in += blocks * digestBlockLength;
    length -= blocks * digestBlockLength;
    std::memcpy(bytes, in, length);
  }

  // Pads with 0x80 and zeros to 56 bytes of a block, then the count, which store(bytes, word) writes in words: `first`
  // and `second`.
  template <typename Compress, typename Store>
  void Pad(std::uint32_t first, std::uint32_t second, Compress compress, Store store) {
    constexpr std::uint32_t countAt = digestBlockLength - 8;
    std::uint32_t used = Used();
    bytes[used++] = 0x80;
    if (used > countAt) {
      std::memset(bytes + used, 0, digestBlockLength - used);
      compress(bytes, 1);
      used = 0;
    }
    std::memset(bytes + used, 0, countAt - used);
    store(bytes + countAt, first);
    store(bytes + countAt + 4, second);
    compress(bytes, 1);
  }
};

}  // namespace kest
