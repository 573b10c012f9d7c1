#include "crypto/hidden_length.h"

#include "crypto/byte_order.h"

namespace kest {
namespace {

constexpr std::uint32_t blockLength = 8;  // bytes

}  // namespace

std::uint32_t PaddingOf(const std::uint8_t* block) {
  const std::uint32_t padding = block[blockLength - 1];
  // The top bit of each difference says "below".
  std::uint32_t wrong = (padding - 1) >> 31 | (blockLength - padding) >> 31;
  for (std::uint32_t i = 0; i < blockLength; ++i) {
    wrong |= MaskIfBelow(blockLength - 1 - i, padding) & (block[i] ^ padding);
  }
  return padding & MaskIfEqual(wrong, 0);
}

void ClearPadding(std::uint8_t* block, std::uint32_t padding) {
  for (std::uint32_t i = 0; i < blockLength; ++i) {
    block[i] = static_cast<std::uint8_t>(block[i] & ~MaskIfBelow(blockLength - 1 - i, padding));
  }
}

std::uint32_t CutAtFirstZero(std::uint8_t* bytes, std::uint32_t count) {
  std::uint32_t length = 0;
  std::uint32_t isBefore = ~0U;  // all bits set while no zero byte was met
  for (std::uint32_t i = 0; i < count; i += 4) {
    const std::uint32_t word = LoadLittle32(bytes + i);
    // The lowest bit set stands at the top of the first zero byte; higher ones may lie.
    const std::uint32_t zeros = (word - 0x01010101) & ~word & 0x80808080;
    const std::uint32_t hasNone = MaskIfEqual(zeros, 0);
    // The bytes before it; all four where there is none.
    const std::uint32_t kept = ((zeros ^ (zeros - 1)) >> 8 | hasNone) & isBefore;
    StoreLittle32(bytes + i, word & kept);
    length += (kept & 0x01010101) * 0x01010101 >> 24;
    isBefore &= hasNone;
  }
  return length;
}

}  // namespace kest
