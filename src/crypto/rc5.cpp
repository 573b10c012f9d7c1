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

// As many blocks as the registers hold.
constexpr std::uint32_t lanesAtOnce = sizeof(void*) == 8 ? 4 : 2;

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

// Deciphers `lanes` blocks side by side: unlike enciphering, none of them waits for the one before it.
template <std::uint32_t fixedRounds, std::uint32_t lanes>
[[gnu::always_inline]] inline void DecipherLanes(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in,
                                                 std::uint8_t* out) {
  const std::uint32_t rounds = fixedRounds == roundsOfKey ? key.rounds : fixedRounds;
  const std::uint32_t* table = key.table;
  std::uint32_t cipher[2 * lanes], a[lanes], b[lanes];
  for (std::uint32_t i = 0; i < 2 * lanes; ++i) cipher[i] = LoadLittle32(in + 4 * i);
  for (std::uint32_t lane = 0; lane < lanes; ++lane) {
    a[lane] = cipher[2 * lane];
    b[lane] = cipher[2 * lane + 1];
  }
#pragma GCC unroll 20
  for (std::uint32_t i = rounds; i != 0; --i) {
#pragma GCC unroll 4
    for (std::uint32_t lane = 0; lane < lanes; ++lane) {
      b[lane] = RotateRight(b[lane] - table[2 * i + 1], a[lane]) ^ a[lane];
      a[lane] = RotateRight(a[lane] - table[2 * i], b[lane]) ^ b[lane];
    }
  }
  for (std::uint32_t lane = 0; lane < lanes; ++lane) {
    const std::uint32_t* before = lane == 0 ? chain.words : cipher + 2 * (lane - 1);
    StoreLittle32(out + rc5BlockLength * lane, (a[lane] - table[0]) ^ before[0]);
    StoreLittle32(out + rc5BlockLength * lane + 4, (b[lane] - table[1]) ^ before[1]);
  }
  chain.words[0] = cipher[2 * lanes - 2];
  chain.words[1] = cipher[2 * lanes - 1];
}

template <std::uint32_t fixedRounds>
void Decipher(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in, std::uint8_t* out, std::uint32_t blocks) {
  for (; blocks >= lanesAtOnce; blocks -= lanesAtOnce) {
    DecipherLanes<fixedRounds, lanesAtOnce>(key, chain, in, out);
    in += lanesAtOnce * rc5BlockLength;
    out += lanesAtOnce * rc5BlockLength;
  }
  for (; blocks != 0; --blocks, in += rc5BlockLength, out += rc5BlockLength) {
    DecipherLanes<fixedRounds, 1>(key, chain, in, out);
  }
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
