// RC5 with 32-bit words (RFC 2040 sections 4 to 7): the key table and cipher block chaining over whole blocks of 8
// bytes. Key tables and chaining values are secrets that their owner wipes; each belongs to one thread.
#pragma once

#include <cstdint>

namespace kest {

constexpr std::uint32_t rc5BlockLength = 8;  // bytes
constexpr std::uint32_t rc5MostRounds = 255;
constexpr std::uint32_t rc5LongestKey = 255;  // bytes

struct Rc5Key {
  std::uint32_t rounds;                          // 0 to 255
  std::uint32_t table[2 * (rc5MostRounds + 1)];  // the first 2 * (rounds + 1) words are in use
};

// The block that went before: the initialisation vector, then the last cipher block, as two little-endian words.
struct Rc5Chain {
  std::uint32_t words[2];
};

// Expands a key of 0 to 255 bytes for 0 to 255 rounds.
void Rc5ExpandKey(Rc5Key& key, std::uint32_t rounds, const std::uint8_t* bytes, std::uint32_t length);

// Begins a chain from an initialisation vector of 8 bytes.
void Rc5BeginChain(Rc5Chain& chain, const std::uint8_t* iv);

// Encipher or decipher `blocks` whole blocks and move the chain on. `out` is `in` or does not overlap it.
void Rc5EncipherBlocks(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in, std::uint8_t* out,
                       std::uint32_t blocks);
void Rc5DecipherBlocks(const Rc5Key& key, Rc5Chain& chain, const std::uint8_t* in, std::uint8_t* out,
                       std::uint32_t blocks);

}  // namespace kest
