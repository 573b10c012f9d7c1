// Judges a deciphered message, of which a forger may have written anything. Any thread may call it.
#pragma once

#include <cstdint>

namespace kest {

constexpr std::uint32_t digestTextLength = 28;  // characters: base64 of the 20 bytes of SHA-1

// Finds the text of a message of `count` bytes, a multiple of 8 below 2^31: base64 of a digest, the text, its padding. A
// message is text: it ends at its first zero byte or at its padding, whichever comes first; what follows its end is
// cleared. True when the padding is one and the digest is that of the text with a terminating zero byte; `*textLength`
// is then the length of what follows the digest. The work depends on `count` alone: a bad padding, a short message and
// a bad digest, wherever it differs, are one and the same failure.
bool CheckMessage(std::uint8_t* message, std::uint32_t count, std::uint32_t* textLength);

}  // namespace kest
