// What the ciphers have in common: a random generator, a key object and an algorithm object of the toolkit, hidden
// behind byte strings, and the road of one message through them. The classes derived from it say which algorithm and
// which parameters. It owns all three; one object belongs to one operation on one thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/byte_buffer.h"
#include "core/memory.h"
#include "crypto/algorithm_object.h"
#include "crypto/key_object.h"
#include "crypto/random_generator.h"

namespace kest {

class Cipher {
 public:
  Cipher() = default;
  Cipher(const Cipher&) = delete;
  Cipher& operator=(const Cipher&) = delete;

  // The virtual operations stand in this order in the table.
  virtual ~Cipher();
  // Lets go of the random generator, the algorithm object and the key object.
  virtual void Clear();
  // Seeds the generator from entropy for `byteCount` bytes; it then lives until Clear. False on failure.
  virtual bool SeedRandom(std::uint16_t byteCount);
  // Takes the key from its DER form; false here, where a cipher's key is not read from anywhere.
  virtual bool LoadPublicKey(const ByteBuffer& der);
  // Bytes in a block, as the key has it; -1 here and without a key.
  virtual int BlockSize();
  // Sets `descriptor` on the algorithm object, which is fresh, with the parameters that the cipher has; none here.
  virtual bool SetAlgorithm(const AlgorithmDescriptor& descriptor, bool encipher);

  static void* operator new(std::size_t bytes) { return Allocate(bytes); }
  static void operator delete(void* block) noexcept { Release(block); }

 protected:
  // Begins a message: a fresh algorithm object with `descriptor`, initialised with the key. False on failure; there is
  // then no algorithm object.
  bool Begin(const AlgorithmDescriptor& descriptor, Direction direction);
  // The bytes written, or -1 without an algorithm object afterwards.
  int Update(Direction direction, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
             std::uint32_t outMax);
  int Final(Direction direction, std::uint8_t* out, std::uint32_t outMax);

  // A whole message; empty on failure. Neither leaves an algorithm object behind.
  ByteBuffer EncipherMessage(const AlgorithmDescriptor& descriptor, const ByteBuffer& plain);
  ByteBuffer DecipherMessage(const AlgorithmDescriptor& descriptor, const ByteBuffer& cipher);

  RandomGenerator random;
  KeyObject* key = nullptr;
  void* surrenderContext = nullptr;  // always null: nobody asks to give up in the middle of an operation
  AlgorithmObject* algorithm = nullptr;

 private:
  bool RunMessage(Direction direction, const ByteBuffer& in, std::uint32_t capacity, ByteBuffer& out);
};

}  // namespace kest
