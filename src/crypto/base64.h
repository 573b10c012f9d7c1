// Base64 (RFC 4648 section 4) as a stream, without line breaks: any number of updates, one final, with a context that
// begins zeroed and is zeroed again by a successful final. A context belongs to one thread and is wiped by its owner.
// Lengths are in bytes and characters; `outLength` receives what was written, also when a call fails.
#pragma once

#include <cstdint>

#include "crypto/result_code.h"

namespace kest {

struct Base64Context {
  std::uint32_t count;     // values held
  std::uint8_t values[5];  // encoder: up to 2 bytes; decoder: up to 5 six-bit values, 64 for the pad
};

// Encodes each complete group of 3 bytes into 4 characters and holds the rest. 536, and nothing written or taken, when
// `outMax` is below the groups' characters.
ResultCode Base64EncodeUpdate(Base64Context& context, char* out, std::uint32_t* outLength, std::uint32_t outMax,
                              const std::uint8_t* in, std::uint32_t inLength);
// Encodes the bytes held, with pads: 0 or 4 characters. 536 when they do not fit.
ResultCode Base64EncodeFinal(Base64Context& context, char* out, std::uint32_t* outLength, std::uint32_t outMax);

// Decodes all complete groups but the last, which always waits for the final call, so that pads are judged there alone.
// Carriage return, line feed, space and tab are skipped. 524 for a character outside the alphabet or a pad before the
// last group, 536 when the bytes do not fit.
ResultCode Base64DecodeUpdate(Base64Context& context, std::uint8_t* out, std::uint32_t* outLength, std::uint32_t outMax,
                              const char* in, std::uint32_t inLength);
// Decodes the last group: 0 to 3 bytes. 525 when it is incomplete, 524 when one of its first two characters is the pad,
// 536 when the bytes do not fit. Behind a pad in third place the fourth character is deliberately not looked at.
ResultCode Base64DecodeFinal(Base64Context& context, std::uint8_t* out, std::uint32_t* outLength, std::uint32_t outMax);

}  // namespace kest
