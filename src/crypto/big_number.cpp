#include "crypto/big_number.h"

#include <cstring>

#include "core/memory.h"

namespace kest {

BigNumber::~BigNumber() {
  if (words == nullptr) return;
  Wipe(words, std::size_t{capacity} * 4);
  Release(words);
}

ResultCode BigNumber::SetBytes(const std::uint8_t* bytes, std::uint32_t count) {
  while (count != 0 && bytes[0] == 0) {
    ++bytes;
    --count;
  }
  const std::uint32_t wordCount = count / 4 + (count % 4 != 0 ? 1 : 0);
  if (!Reserve(wordCount)) return resultNoMemory;
  Wipe(words, std::size_t{capacity} * 4);
  for (std::uint32_t i = 0; i < count; ++i) words[i / 4] |= std::uint32_t{bytes[count - 1 - i]} << (8 * (i % 4));
  Trim(wordCount);
  return resultSuccess;
}

ResultCode BigNumber::SetWords(const std::uint32_t* source, std::uint32_t count) {
  if (!Reserve(count)) return resultNoMemory;
  Wipe(words, std::size_t{capacity} * 4);
  if (count != 0) std::memcpy(words, source, std::size_t{count} * 4);
  Trim(count);
  return resultSuccess;
}

ResultCode BigNumber::ToBytes(std::uint8_t* bytes, std::uint32_t count) const {
  if ((std::uint64_t{BitLength()} + 7) / 8 > count) return resultOutputTooSmall;
  for (std::uint32_t i = 0; i < count; ++i) {
    bytes[count - 1 - i] = static_cast<std::uint8_t>(Word(i / 4) >> (8 * (i % 4)));
  }
  return resultSuccess;
}

std::uint32_t BigNumber::BitLength() const {
  std::uint32_t bits = 32 * (length - 1);
  for (std::uint32_t top = Word(length - 1); top != 0; top >>= 1) ++bits;
  return bits;
}

// Makes room for `count` words, at least one; a new block replaces the old one only when there is one.
bool BigNumber::Reserve(std::uint32_t count) {
  if (count == 0) count = 1;
  if (count <= capacity) return true;
  auto* block = static_cast<std::uint32_t*>(AllocateOrNull(std::uint64_t{count} * 4));
  if (block == nullptr) return false;
  if (words != nullptr) {
    Wipe(words, std::size_t{capacity} * 4);
    Release(words);
  }
  words = block;
  capacity = count;
  return true;
}

void BigNumber::Trim(std::uint32_t count) {
  length = count == 0 ? 1 : count;
  while (length > 1 && words[length - 1] == 0) --length;
}

}  // namespace kest
