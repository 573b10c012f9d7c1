// The raw RSA public operation under a key in SubjectPublicKeyInfo form (X.509; RFC 3279 section 2.3.1): blocks as long
// as the modulus, unpadded; their layout is the caller's. It owns its key. Enciphering belongs to one object on one
// thread; a loaded key may be copied out of one object by several threads at once, which write to their own only.
#pragma once

#include <cstdint>

#include "core/byte_buffer.h"
#include "crypto/cipher.h"

namespace kest {

class RsaPublicCipher : public Cipher {
 public:
  // Replaces the key by that of `der`. False, and no key, when it is no RSA public key or memory runs out. A key of
  // more than 2048 bits or with an even modulus is loaded; enciphering then fails.
  bool LoadPublicKey(const ByteBuffer& der) override;

  // Replaces the key by a copy of the other's, which is only read. False, and no key, when the other has none or memory
  // runs out.
  bool CopyKeyFrom(const RsaPublicCipher& other);

  // Bytes of the modulus without leading zero bytes, which is the length of every block; -1 without a key.
  int BlockSize() override;

  // Enciphers a whole number of blocks; as long as `in`. A block not below the modulus is reduced, not refused. Every
  // call seeds the generator anew for 256 bytes, although nothing is drawn: that is meant. Empty on failure, which an
  // unfinished block is too.
  ByteBuffer Encipher(const ByteBuffer& in);

  // The same in pieces, without seeding: begin, any number of updates of any lengths (bytes), final. Update writes one
  // block for every block that its input completes and answers the bytes written; final writes none and answers 0. -1
  // on failure, after which the message must be begun anew; final fails when a block is unfinished.
  bool BeginEncipher();
  int EncipherUpdate(const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out, std::uint32_t outMax);
  int EncipherFinal(std::uint8_t* out, std::uint32_t outMax);
};

}  // namespace kest
