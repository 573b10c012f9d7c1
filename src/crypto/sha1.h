// SHA-1 (FIPS 180-1). The context belongs to one thread and is wiped by its owner.
#pragma once

#include <cstdint>

#include "crypto/digest_buffer.h"

namespace kest {

constexpr std::uint32_t sha1Length = 20;  // bytes

struct Sha1Context {
  std::uint32_t state[5];
  DigestBuffer buffer;
};

void Sha1Init(Sha1Context& context);
// Feeds `length` bytes.
void Sha1Update(Sha1Context& context, const void* bytes, std::uint32_t length);
// Writes the digest (20 bytes) and begins the next one: one context serves for consecutive digests.
void Sha1Final(Sha1Context& context, std::uint8_t* digest);

// Digests the first `length` of `most` bytes; the others are zero. The time depends on `most` alone: `length`, at most
// `most` and below 2^31, may be a secret.
void Sha1OfHiddenLength(const std::uint8_t* bytes, std::uint32_t length, std::uint32_t most, std::uint8_t* digest);

}  // namespace kest
