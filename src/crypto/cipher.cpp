#include "crypto/cipher.h"

#include <limits>

namespace kest {
namespace {

// What an enciphered message may be longer than its plain text.
constexpr std::uint32_t encipherMargin = 1024;  // bytes
// Every message is enciphered with a generator seeded for so many bytes behind it, although none is drawn.
constexpr std::uint16_t encipherSeedLength = 256;

constexpr std::uint32_t longestCount = std::numeric_limits<std::int32_t>::max();

}  // namespace

Cipher::~Cipher() {
  Cipher::Clear();
}

void Cipher::Clear() {
  random.Destroy();
  DestroyAlgorithm(&algorithm);
  DestroyKey(&key);
}

bool Cipher::SeedRandom(std::uint16_t byteCount) {
  return random.SeedFromEntropy(byteCount);
}

bool Cipher::LoadPublicKey(const ByteBuffer&) {
  return false;
}

int Cipher::BlockSize() {
  return -1;
}

bool Cipher::SetAlgorithm(const AlgorithmDescriptor& descriptor, bool) {
  return SetAlgorithmInfo(algorithm, descriptor, nullptr) == resultSuccess;
}

bool Cipher::Begin(const AlgorithmDescriptor& descriptor, Direction direction) {
  DestroyAlgorithm(&algorithm);
  const bool done = CreateAlgorithm(&algorithm) == resultSuccess &&
                    SetAlgorithm(descriptor, direction == Direction::encipher) &&
                    InitialiseAlgorithm(algorithm, direction, key, libraryChooser) == resultSuccess;
  if (!done) DestroyAlgorithm(&algorithm);
  return done;
}

int Cipher::Update(Direction direction, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
                   std::uint32_t outMax) {
  std::uint32_t length;
  // The answer is an int: no more is written than it can count.
  if (outMax > longestCount) outMax = longestCount;
  if (UpdateAlgorithm(algorithm, direction, in, inLength, out, outMax, &length) == resultSuccess) {
    return static_cast<int>(length);
  }
  DestroyAlgorithm(&algorithm);
  return -1;
}

int Cipher::Final(Direction direction, std::uint8_t* out, std::uint32_t outMax) {
  std::uint32_t length;
  const bool done = FinishAlgorithm(algorithm, direction, out, outMax, &length) == resultSuccess;
  DestroyAlgorithm(&algorithm);
  return done ? static_cast<int>(length) : -1;
}

// `out` has its capacity already: nothing here throws.
bool Cipher::RunMessage(Direction direction, const ByteBuffer& in, std::uint32_t capacity, ByteBuffer& out) {
  std::uint8_t* bytes = out.TakeBuffer(capacity);
  std::uint32_t length = 0, last = 0;
  const bool done =
      UpdateAlgorithm(algorithm, direction, in.Bytes(), in.Length(), bytes, capacity, &length) == resultSuccess &&
      FinishAlgorithm(algorithm, direction, bytes + length, capacity - length, &last) == resultSuccess;
  out.ReturnBuffer();
  out.SetLength(done ? length + last : 0);
  return done;
}

ByteBuffer Cipher::EncipherMessage(const AlgorithmDescriptor& descriptor, const ByteBuffer& plain) {
  ByteBuffer out;
  const std::uint64_t capacity = std::uint64_t{plain.Length()} + encipherMargin;
  out.Reserve(capacity);
  const bool done = Begin(descriptor, Direction::encipher) && SeedRandom(encipherSeedLength) &&
                    RunMessage(Direction::encipher, plain, static_cast<std::uint32_t>(capacity), out);
  DestroyAlgorithm(&algorithm);
  if (!done) return ByteBuffer();
  return out;
}

ByteBuffer Cipher::DecipherMessage(const AlgorithmDescriptor& descriptor, const ByteBuffer& cipher) {
  ByteBuffer out;
  out.Reserve(cipher.Length());
  const bool done =
      Begin(descriptor, Direction::decipher) && RunMessage(Direction::decipher, cipher, cipher.Length(), out);
  DestroyAlgorithm(&algorithm);
  if (!done) return ByteBuffer();
  return out;
}

}  // namespace kest
