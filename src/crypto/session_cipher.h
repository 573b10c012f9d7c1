// Enciphers and deciphers whole messages with RC5-CBC-Pad (RFC 2040: 32-bit words, 20 rounds, 8-byte initialisation
// vector) under a key that it makes itself, from fresh entropy or from a given seed. It owns the key and all that an
// operation needs and wipes them. One object belongs to one operation on one thread.
#pragma once

#include <cstdint>

#include "core/byte_buffer.h"
#include "crypto/cipher.h"

namespace kest {

class SessionCipher : public Cipher {
 public:
  SessionCipher() = default;
  ~SessionCipher() override;

  // Lets go of the generator, the algorithm and the key, and wipes the initialisation vector.
  void Clear() override;
  // Gives the algorithm object this object's rounds and initialisation vector as RC5 parameters.
  bool SetAlgorithm(const AlgorithmDescriptor& descriptor, bool encipher) override;

  // Replaces the key by a new one of `bits` bits, rounded up to whole bytes, and draws a new initialisation vector.
  // With `seedLength` (bytes) other than 0 both follow from `seed` alone, so that the same seed always gives the same,
  // and `seed` is zero-filled, success or not; otherwise they come from fresh entropy. False, and no key, on any
  // failure. RC5 takes keys of up to 255 bytes: longer ones are made and exported, but nothing can be enciphered with
  // them.
  bool MakeKey(std::uint16_t bits, std::uint8_t* seed, std::uint16_t seedLength);

  // The 8 bytes of the initialisation vector, then the key bytes; empty without a key.
  ByteBuffer ExportKey();

  // Enciphers a whole message: 1 to 8 bytes longer than `plain`. Every call seeds the generator anew for 256 bytes,
  // although CBC draws none: that is meant. Empty on failure.
  ByteBuffer Encipher(const ByteBuffer& plain);

  // Deciphers a whole message; exactly the bytes without their padding. Empty on failure, which a message of no bytes
  // and one that is not a whole number of blocks are too.
  ByteBuffer Decipher(const ByteBuffer& cipher);

  // Deciphers a whole message and leaves its padding where it is, for a caller to whom whether it is one must not show
  // in the work: as long as `cipher`. Empty for a message of no bytes, one that is not a whole number of blocks, and on
  // failure; without memory for the result it throws Qor::MemoryException, as the operations above do.
  ByteBuffer DecipherWithPadding(const ByteBuffer& cipher);

  // The same in pieces: begin, any number of updates, final. Lengths are in bytes; `out` must not overlap `in`. Update
  // and final answer the bytes written, or -1, after which the message must be begun anew. Begin is false on failure
  // and does what the whole-message operation does, but for seeding the generator.
  bool BeginEncipher();
  int EncipherUpdate(const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out, std::uint32_t outMax);
  int EncipherFinal(std::uint8_t* out, std::uint32_t outMax);
  bool BeginDecipher();
  int DecipherUpdate(const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out, std::uint32_t outMax);
  int DecipherFinal(std::uint8_t* out, std::uint32_t outMax);

 private:
  bool MakeKeyBytes(std::uint8_t* keyBytes, std::uint32_t length, std::uint8_t* seed, std::uint16_t seedLength);

  std::uint16_t rounds = 0;
  std::uint8_t iv[8] = {};
};

}  // namespace kest
