// The generator's algorithm on MD5: seed updates are digested into a state, output blocks are digests of the state,
// which then advances. A state belongs to one thread and is wiped by its owner.
#pragma once

#include <cstdint>

#include "crypto/md5.h"

namespace kest {

struct Md5Random {
  std::uint32_t digestPending;  // 1: seed bytes were fed and are not yet folded into `state`
  std::uint32_t seedPhase;      // counts the seed updates down from 2 to 0; chooses how `state` advances
  std::uint32_t blockLength;    // bytes: 16
  std::uint8_t state[md5Length];
  std::uint8_t output[md5Length];
  std::uint8_t increment[md5Length];
  std::uint32_t available;  // the last so many bytes of `output` are still to be read
  void (*digestUpdate)(Md5Context& context, const void* bytes, std::uint32_t length);  // null until initialised
  void (*digestFinal)(Md5Context& context, std::uint8_t* digest);
  Md5Context digest;
};

void Md5RandomInit(Md5Random& random);
// Feeds `length` seed bytes.
void Md5RandomSeed(Md5Random& random, const std::uint8_t* bytes, std::uint32_t length);
// Writes `length` bytes.
void Md5RandomGenerate(Md5Random& random, std::uint8_t* out, std::uint32_t length);

}  // namespace kest
