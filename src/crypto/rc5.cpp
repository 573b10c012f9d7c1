#include "crypto/rc5.h"

#include "core/memory.h"
#include "crypto/byte_order.h"

namespace kest {
namespace {

constexpr std::uint32_t magicP = 0xB7E15163;  // from e - 2
constexpr std::uint32_t magicQ = 0x9E3779B9;  // from the golden ratio - 1

// The library's own messages have 20 rounds; loops of known length unroll.
constexpr std::uint32_t usualRounds = 20;
constexpr std::uint32_t roundsOfKey = ~0U;

template <std::uint32_t fixedRounds>
void Encipher(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks) {
  const std::uint32_t rounds = fixedRounds == roundsOfKey ? key.rounds : fixedRounds;
  const std::uint32_t* table = key.table;
  std::uint32_t a = chain.words[0];
  std::uint32_t b = chain.words[1];
  for (; blocks != 0; --blocks, in += rc5BlockLength, out += rc5BlockLength) {
    a = (a ^ LoadLittle32(in)) + table[0];
    b = (b ^ LoadLittle32(in + 4)) + table[1];
#pragma GCC unroll 20
    for (std::uint32_t i = 1; i <= rounds; ++i) {
      a = RotateLeft(a ^ b, b) + table[2 * i];
      b = RotateLeft(b ^ a, a) + table[2 * i + 1];
    }
    StoreLittle32(out, a);
    StoreLittle32(out + 4, b);
  }
  chain.words[0] = a;
  chain.words[1] = b;
}

template <std::uint32_t fixedRounds>
void Decipher(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks) {
  const std::uint32_t rounds = fixedRounds == roundsOfKey ? key.rounds : fixedRounds;
  const std::uint32_t* table = key.table;
  std::uint32_t chainA = chain.words[0];
  std::uint32_t chainB = chain.words[1];
  for (; blocks != 0; --blocks, in += rc5BlockLength, out += rc5BlockLength) {
    const std::uint32_t cipherA = LoadLittle32(in);
    const std::uint32_t cipherB = LoadLittle32(in + 4);
    std::uint32_t a = cipherA;
    std::uint32_t b = cipherB;
#pragma GCC unroll 20
    for (std::uint32_t i = rounds; i != 0; --i) {
      b = RotateRight(b - table[2 * i + 1], a) ^ a;
      a = RotateRight(a - table[2 * i], b) ^ b;
    }
    StoreLittle32(out, (a - table[0]) ^ chainA);
    StoreLittle32(out + 4, (b - table[1]) ^ chainB);
    chainA = cipherA;
    chainB = cipherB;
  }
  chain.words[0] = chainA;
  chain.words[1] = chainB;
}

}  // namespace

void Rc5ExpandKey(Rc5Key& key, std::uint32_t rounds, const std::uint8_t* bytes, std::uint32_t length) {
  // The key as words; an empty key counts as one word of zero.
  std::uint32_t words[(rc5LongestKey + 3) / 4] = {};
  const std::uint32_t wordCount = length == 0 ? 1 : (length + 3) / 4;
  for (std::uint32_t i = 0; i < length; ++i) words[i / 4] |= std::uint32_t{bytes[i]} << (8 * (i % 4));

  const std::uint32_t tableLength = 2 * (rounds + 1);
  key.rounds = rounds;
  key.table[0] = magicP;
  for (std::uint32_t i = 1; i < tableLength; ++i) key.table[i] = key.table[i - 1] + magicQ;

  const std::uint32_t steps = 3 * (tableLength > wordCount ? tableLength : wordCount);
  std::uint32_t a = 0, b = 0, i = 0, j = 0;
  for (std::uint32_t step = 0; step < steps; ++step) {
    a = key.table[i] = RotateLeft(key.table[i] + a + b, 3);
    b = words[j] = RotateLeft(words[j] + a + b, a + b);
    if (++i == tableLength) i = 0;
    if (++j == wordCount) j = 0;
  }
  Wipe(words, sizeof words);
}

void Rc5BeginChain(Rc5Chain& chain, const std::uint8_t* iv) {
  chain.words[0] = LoadLittle32(iv);
  chain.words[1] = LoadLittle32(iv + 4);
}

void Rc5EncipherBlocks(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in, std::uint8_t* out,
                       std::uint32_t blocks) {
  if (key.rounds == usualRounds) {
    Encipher<usualRounds>(key, chain, in, out, blocks);
  } else {
    Encipher<roundsOfKey>(key, chain, in, out, blocks);
  }
}

void Rc5DecipherBlocks(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in, std::uint8_t* out,
                       std::uint32_t blocks) {
  if (key.rounds == usualRounds) {
    Decipher<usualRounds>(key, chain, in, out, blocks);
  } else {
    Decipher<roundsOfKey>(key, chain, in, out, blocks);
  }
}

}  // namespace kest
