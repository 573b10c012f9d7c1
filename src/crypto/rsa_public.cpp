// The raw RSA public operation (RFC 8017 section 5.1.1, but without its range check) as a method of the chooser.
#include <cstring>
#include <new>

#include "core/memory.h"
#include "crypto/big_number.h"
#include "crypto/key_object.h"
#include "crypto/montgomery.h"
#include "crypto/operations.h"

namespace kest {
namespace {

constexpr std::uint32_t longestBlock = 4 * longestModulus;  // bytes

struct Context {
  Montgomery montgomery;
  BigNumber exponent;
  BigNumber result;
  std::uint32_t blockLength;  // bytes of the modulus
  std::uint32_t held;
  std::uint8_t block[longestBlock];
};

// The context's memory becomes objects here, before anything can fail, so that closing is always right.
int Init(void* memory, const AlgorithmParameters&, const KeyObject* keyObject) {
  auto& context = *new (memory) Context{};
  RsaPublicKey key;
  // The chooser hands over no other key.
  if (GetRsaPublicKey(keyObject, &key) != resultSuccess) return methodBadData;
  if (key.modulus.length > longestBlock) return methodModulusLength;
  BigNumber modulus;
  if (modulus.SetBytes(key.modulus.bytes, key.modulus.length) != resultSuccess) return methodNoMemory;
  if (!modulus.IsOdd()) return methodBadData;
  if (context.exponent.SetBytes(key.publicExponent.bytes, key.publicExponent.length) != resultSuccess) {
    return methodNoMemory;
  }
  context.montgomery.SetModulus(modulus);
  context.blockLength = key.modulus.length;
  return methodSuccess;
}

void Close(void* memory) {
  static_cast<Context*>(memory)->~Context();
}

// A block not below the modulus is reduced, not refused: whoever lays blocks out keeps them below it.
int EncipherBlock(Context& context, const std::uint8_t* block, std::uint8_t* out) {
  std::uint32_t words[longestModulus] = {};
  const std::uint32_t length = context.blockLength;
  for (std::uint32_t i = 0; i < length; ++i) words[i / 4] |= std::uint32_t{block[length - 1 - i]} << (8 * (i % 4));
  context.montgomery.Exponentiate(words, words, context.exponent);
  const ResultCode code = context.result.SetWords(words, context.montgomery.Count());
  Wipe(words, sizeof words);
  if (code != resultSuccess) return methodNoMemory;
  return context.result.ToBytes(out, length) == resultSuccess ? methodSuccess : methodOutputTooSmall;
}

int Update(void* memory, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out, std::uint32_t outMax,
           std::uint32_t* outLength) {
  auto& context = *static_cast<Context*>(memory);
  const std::uint32_t length = context.blockLength;
  while (inLength != 0) {
    const std::uint8_t* block = in;
    std::uint32_t taken = length;
    if (context.held != 0 || inLength < length) {
      const std::uint32_t room = length - context.held;
      taken = inLength < room ? inLength : room;
      std::memcpy(context.block + context.held, in, taken);
      context.held += taken;
      if (context.held < length) return methodSuccess;
      block = context.block;
      context.held = 0;
    }
    in += taken;
    inLength -= taken;
    if (outMax - *outLength < length) return methodOutputTooSmall;
    const int result = EncipherBlock(context, block, out + *outLength);
    if (result != methodSuccess) return result;
    *outLength += length;
  }
  return methodSuccess;
}

int Final(void* memory, std::uint8_t*, std::uint32_t, std::uint32_t*) {
  auto& context = *static_cast<Context*>(memory);
  Wipe(context.block, sizeof context.block);
  return context.held == 0 ? methodSuccess : methodBadLength;
}

}  // namespace

const AlgorithmDescriptor rsaPublicDescriptor = {AlgorithmType::rsaPublic, 0, nullptr};
const AlgorithmOperations rsaPublicOperations = {sizeof(Context), Init, Update, Final, Close};

}  // namespace kest
