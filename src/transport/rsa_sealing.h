// Sealing a handshake under the server's public key. Any thread may call it: it works on a copy of the key.
#pragma once

#include "core/byte_buffer.h"

namespace kest {

// Enciphers `message` with the raw RSA public operation. With k the modulus length in bytes, the message is cut into
// chunks of at most k - 1 bytes; each goes into a block of k bytes behind a zero byte, so that every block is below the
// modulus; what the last chunk leaves of its block is zero. Answers the enciphered blocks, k bytes each, in order; empty
// when there is no usable key. Throws Qor::MemoryException when there is no memory.
ByteBuffer SealUnderServerKey(const ByteBuffer& message);

}  // namespace kest
