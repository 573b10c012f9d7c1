// MD5 (RFC 1321). The context belongs to one thread and is wiped by its owner.
#pragma once

#include <cstdint>

#include "crypto/digest_buffer.h"

namespace kest {

constexpr std::uint32_t md5Length = 16;  // bytes

struct Md5Context {
  std::uint32_t state[4];
  DigestBuffer buffer;
};
static_assert(sizeof(Md5Context) == 88, "the generator's size counts on it");

void Md5Init(Md5Context& context);
// Feeds `length` bytes.
void Md5Update(Md5Context& context, const void* bytes, std::uint32_t length);
// Writes the digest (16 bytes) and begins the next one: one context serves for consecutive digests.
void Md5Final(Md5Context& context, std::uint8_t* digest);

}  // namespace kest
