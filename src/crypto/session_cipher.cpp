#include "crypto/session_cipher.h"

#include "crypto/rc5.h"

namespace kest {
namespace {

constexpr std::uint16_t usualRounds = 20;
constexpr std::uint32_t rc5Version = 16;  // 1.0
constexpr std::uint32_t rc5WordBits = 32;

}  // namespace

SessionCipher::~SessionCipher() {
  SessionCipher::Clear();
}

void SessionCipher::Clear() {
  Cipher::Clear();
  Wipe(iv, sizeof iv);
}

bool SessionCipher::SetAlgorithm(const AlgorithmDescriptor& descriptor, bool) {
  const Rc5ParameterBlock block = {rc5Version, rounds, rc5WordBits, iv};
  return SetAlgorithmInfo(algorithm, descriptor, &block) == resultSuccess;
}

bool SessionCipher::MakeKey(std::uint16_t bits, std::uint8_t* seed, std::uint16_t seedLength) {
  Clear();
  const std::uint32_t length = (std::uint32_t{bits} + 7) / 8;
  auto* keyBytes = static_cast<std::uint8_t*>(AllocateOrNull(length));
  const bool done = keyBytes != nullptr && MakeKeyBytes(keyBytes, length, seed, seedLength);
  random.Destroy();
  // A seed does not outlive the call, wherever the call ended.
  if (seed != nullptr) Wipe(seed, seedLength);
  if (keyBytes != nullptr) Wipe(keyBytes, length);
  Release(keyBytes);
  if (!done) Clear();
  return done;
}

bool SessionCipher::MakeKeyBytes(std::uint8_t* keyBytes, std::uint32_t length, std::uint8_t* seed,
                                 std::uint16_t seedLength) {
  if (CreateKey(&key) != resultSuccess) return false;
  const bool isSeeded = seedLength != 0 ? random.SeedFromBytes(seed, seedLength)
                                        : random.SeedFromEntropy(static_cast<std::uint16_t>(length));
  if (!isSeeded || !random.GenerateBytes(keyBytes, length)) return false;
  if (SetKeyInfo(key, byteStringKeyDescriptor, ByteItem{keyBytes, length}) != resultSuccess) return false;
  if (!random.GenerateBytes(iv, sizeof iv)) return false;
  rounds = usualRounds;
  return true;
}

ByteBuffer SessionCipher::ExportKey() {
  ByteItem bytes;
  if (GetByteStringKey(key, &bytes) != resultSuccess) return ByteBuffer();
  ByteBuffer exported;
  exported.Reserve(std::uint64_t{sizeof iv} + bytes.length);
  exported.Append(iv, sizeof iv);
  exported.Append(bytes.bytes, bytes.length);
  return exported;
}

ByteBuffer SessionCipher::Encipher(const ByteBuffer& plain) {
  return EncipherMessage(rc5CbcPadDescriptor, plain);
}

ByteBuffer SessionCipher::Decipher(const ByteBuffer& cipher) {
  return DecipherMessage(rc5CbcPadDescriptor, cipher);
}

ByteBuffer SessionCipher::DecipherWithPadding(const ByteBuffer& cipher) {
  const std::uint32_t length = cipher.Length();
  if (length == 0 || length % rc5BlockLength != 0) return ByteBuffer();
  ByteBuffer out;
  out.Reserve(length);
  std::uint8_t* bytes = out.TakeBuffer(length);
  // The last block is kept back until another one follows it, whatever that one holds.
  constexpr std::uint8_t another[rc5BlockLength] = {};
  const int whole = static_cast<int>(length - rc5BlockLength);
  const bool done = BeginDecipher() && DecipherUpdate(cipher.Bytes(), length, bytes, length) == whole &&
                    DecipherUpdate(another, rc5BlockLength, bytes + whole, rc5BlockLength) == int{rc5BlockLength};
  DestroyAlgorithm(&algorithm);
  out.ReturnBuffer();
  if (!done) return ByteBuffer();
  return out;
}

bool SessionCipher::BeginEncipher() {
  return Begin(rc5CbcPadDescriptor, Direction::encipher);
}

int SessionCipher::EncipherUpdate(const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
                                  std::uint32_t outMax) {
  return Update(Direction::encipher, in, inLength, out, outMax);
}

int SessionCipher::EncipherFinal(std::uint8_t* out, std::uint32_t outMax) {
  return Final(Direction::encipher, out, outMax);
}

bool SessionCipher::BeginDecipher() {
  return Begin(rc5CbcPadDescriptor, Direction::decipher);
}

int SessionCipher::DecipherUpdate(const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
                                  std::uint32_t outMax) {
  return Update(Direction::decipher, in, inLength, out, outMax);
}

int SessionCipher::DecipherFinal(std::uint8_t* out, std::uint32_t outMax) {
  return Final(Direction::decipher, out, outMax);
}

}  // namespace kest
