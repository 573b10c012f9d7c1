// RC5-CBC-Pad (RFC 2040 section 8) as two methods of the chooser: enciphering pads, deciphering keeps the last block
// back until it can judge its padding.
#include <cstring>

#include "core/memory.h"
#include "crypto/hidden_length.h"
#include "crypto/key_object.h"
#include "crypto/operations.h"
#include "crypto/rc5.h"

namespace kest {
namespace {

constexpr std::uint32_t latestVersion = 16;  // 1.0
constexpr std::uint32_t wordBits = 32;

struct Context {
  Rc5Key key;
  Rc5Chain chain;
  std::uint8_t iv[rc5BlockLength];
  std::uint32_t held;  // bytes: up to 7 when enciphering, up to 8 when deciphering
  std::uint8_t block[rc5BlockLength];
};

ResultCode SetParameters(AlgorithmParameters& parameters, const void* parameterBlock) {
  const auto* block = static_cast<const Rc5ParameterBlock*>(parameterBlock);
  if (block == nullptr || block->iv == nullptr || block->version > latestVersion || block->rounds > rc5MostRounds ||
      block->wordBits != wordBits) {
    return resultBadParameters;
  }
  parameters.rounds = block->rounds;
  std::memcpy(parameters.iv, block->iv, sizeof parameters.iv);
  return resultSuccess;
}

int Init(void* memory, const AlgorithmParameters& parameters, const KeyObject* keyObject) {
  auto& context = *static_cast<Context*>(memory);
  ByteItem key;
  // The chooser hands over no other key.
  if (GetByteStringKey(keyObject, &key) != resultSuccess) return methodBadData;
  Rc5ExpandKey(context.key, parameters.rounds, key.bytes, key.length);
  std::memcpy(context.iv, parameters.iv, sizeof context.iv);
  Rc5BeginChain(context.chain, context.iv);
  return methodSuccess;
}

// Takes what fills the block up; answers the bytes taken.
std::uint32_t Hold(Context& context, const std::uint8_t* in, std::uint32_t inLength) {
  const std::uint32_t room = rc5BlockLength - context.held;
  const std::uint32_t taken = inLength < room ? inLength : room;
  if (taken != 0) std::memcpy(context.block + context.held, in, taken);
  context.held += taken;
  return taken;
}

// Puts the bytes held and the input through `work` in whole blocks, all but `kept` bytes, which are held. `kept` is at
// most 8 and no block is cut by it.
template <typename Work>
int UpdateBlocks(Context& context, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
                 std::uint32_t outMax, std::uint32_t* outLength, std::uint32_t kept, Work work) {
  const std::uint64_t promised = std::uint64_t{context.held} + inLength - kept;
  if (promised > outMax) return methodOutputTooSmall;
  *outLength = static_cast<std::uint32_t>(promised);
  if (promised != 0 && context.held != 0) {
    const std::uint32_t taken = Hold(context, in, inLength);
    work(context.key, context.chain, context.block, out, 1);
    context.held = 0;
    in += taken;
    inLength -= taken;
    out += rc5BlockLength;
  }
  if (promised != 0) {
    const std::uint32_t blocks = (inLength - kept) / rc5BlockLength;
    work(context.key, context.chain, in, out, blocks);
    in += blocks * rc5BlockLength;
    inLength -= blocks * rc5BlockLength;
  }
  Hold(context, in, inLength);
  return methodSuccess;
}

int EncipherUpdate(void* memory, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
                   std::uint32_t outMax, std::uint32_t* outLength) {
  auto& context = *static_cast<Context*>(memory);
  const std::uint32_t kept = (context.held + inLength % rc5BlockLength) % rc5BlockLength;
  return UpdateBlocks(context, in, inLength, out, outMax, outLength, kept, Rc5EncipherBlocks);
}

int EncipherFinal(void* memory, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength) {
  auto& context = *static_cast<Context*>(memory);
  if (outMax < rc5BlockLength) return methodOutputTooSmall;
  const std::uint32_t padding = rc5BlockLength - context.held;
  std::memset(context.block + context.held, static_cast<int>(padding), padding);
  Rc5EncipherBlocks(context.key, context.chain, context.block, out, 1);
  *outLength = rc5BlockLength;
  Wipe(context.block, sizeof context.block);
  context.held = 0;
  Rc5BeginChain(context.chain, context.iv);
  return methodSuccess;
}

int DecipherUpdate(void* memory, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
                   std::uint32_t outMax, std::uint32_t* outLength) {
  auto& context = *static_cast<Context*>(memory);
  if (inLength == 0) return methodSuccess;
  // 1 to 8 bytes stay.
  const std::uint32_t kept = (context.held + inLength % rc5BlockLength + rc5BlockLength - 1) % rc5BlockLength + 1;
  return UpdateBlocks(context, in, inLength, out, outMax, outLength, kept, Rc5DecipherBlocks);
}

int DecipherFinal(void* memory, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength) {
  auto& context = *static_cast<Context*>(memory);
  if (context.held != rc5BlockLength) return methodBadLength;
  std::uint8_t area[2 * rc5BlockLength] = {};
  Rc5DecipherBlocks(context.key, context.chain, context.block, area, 1);
  // Nothing but the answer tells where a padding is wrong.
  const std::uint32_t padding = PaddingOf(area);
  const std::uint32_t plain = rc5BlockLength - padding;
  int result = methodSuccess;
  if (padding == 0) {
    result = methodBadData;
  } else if (plain > outMax) {
    result = methodOutputTooSmall;
  } else {
    if (plain != 0) std::memcpy(out, area, plain);
    *outLength = plain;
    context.held = 0;
    Rc5BeginChain(context.chain, context.iv);
  }
  Wipe(area, sizeof area);
  return result;
}

}  // namespace

const AlgorithmDescriptor rc5CbcPadDescriptor = {AlgorithmType::rc5CbcPad, 0, SetParameters};
const AlgorithmOperations rc5CbcPadEncipherOperations = {sizeof(Context), Init, EncipherUpdate, EncipherFinal, nullptr};
const AlgorithmOperations rc5CbcPadDecipherOperations = {sizeof(Context), Init, DecipherUpdate, DecipherFinal, nullptr};

}  // namespace kest
