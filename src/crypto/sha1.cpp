#include "crypto/sha1.h"

#include <cstring>
#include <utility>

#include "core/memory.h"
#include "crypto/byte_order.h"
#include "crypto/hidden_length.h"
#include "crypto/operations.h"

namespace kest {
namespace {

constexpr std::uint32_t constants[4] = {0x5a827999, 0x6ed9eba1, 0x8f1bbcdc, 0xca62c1d6};

template <unsigned round>
inline std::uint32_t Mix(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  if constexpr (round == 0) {
    return d ^ (b & (c ^ d));
  } else if constexpr (round == 2) {
    return (b & c) + (d & (b ^ c));
  } else {
    return b ^ c ^ d;
  }
}

// One of the 80 steps. The five variables change their roles from step to step, not their values; the schedule of 80
// words is kept in 16.
template <unsigned step>
[[gnu::always_inline]] inline void Step(std::uint32_t (&v)[5], std::uint32_t (&words)[16]) {
  constexpr unsigned round = step / 20;
  const std::uint32_t a = v[(80 - step) % 5];
  std::uint32_t& b = v[(81 - step) % 5];
  const std::uint32_t c = v[(82 - step) % 5];
  const std::uint32_t d = v[(83 - step) % 5];
  std::uint32_t& e = v[(84 - step) % 5];
  std::uint32_t& word = words[step % 16];
  if constexpr (step >= 16) {
    word = RotateLeft(words[(step + 13) % 16] ^ words[(step + 8) % 16] ^ words[(step + 2) % 16] ^ word, 1);
  }
  e += RotateLeft(a, 5) + Mix<round>(b, c, d) + word + constants[round];
  b = RotateLeft(b, 30);
}

template <unsigned... steps>
[[gnu::always_inline]] inline void AllSteps(std::uint32_t (&v)[5], std::uint32_t (&words)[16],
                                            std::integer_sequence<unsigned, steps...>) {
  (Step<steps>(v, words), ...);
}

void Compress(std::uint32_t (&state)[5], const std::uint8_t* blocks, std::uint32_t count) {
  std::uint32_t words[16];
  std::uint32_t v[5] = {state[0], state[1], state[2], state[3], state[4]};
  for (; count != 0; --count, blocks += digestBlockLength) {
    for (unsigned i = 0; i < 16; ++i) words[i] = LoadBig32(blocks + 4 * i);
    AllSteps(v, words, std::make_integer_sequence<unsigned, 80>());
    for (unsigned i = 0; i < 5; ++i) v[i] = state[i] += v[i];
  }
  Wipe(words, sizeof words);
  Wipe(v, sizeof v);
}

// Digests one block of a text of `length` bytes, of which `at` stand before the block: adds the padding's 0x80 and the
// count where they belong. Whether they do shows nowhere but in the digest.
void CompressHidden(std::uint32_t (&state)[5], std::uint8_t (&block)[digestBlockLength], std::uint32_t at,
                    std::uint32_t length, std::uint32_t isLast) {
  const std::uint32_t end = length - at;  // in this block when it is below 64
  for (std::uint32_t i = 0; i < digestBlockLength; i += 4) {
    const std::uint32_t mark = 0x80000000U >> (8 * (end % 4)) & MaskIfEqual(end / 4, i / 4);
    StoreBig32(block + i, LoadBig32(block + i) | mark);
  }
  StoreBig32(block + 56, LoadBig32(block + 56) | (length >> 29 & isLast));
  StoreBig32(block + 60, LoadBig32(block + 60) | (length << 3 & isLast));
  Compress(state, block, 1);
}

int InitMethod(void* context, const AlgorithmParameters&, const KeyObject*) {
  Sha1Init(*static_cast<Sha1Context*>(context));
  return methodSuccess;
}

int UpdateMethod(void* context, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t*, std::uint32_t,
                 std::uint32_t*) {
  Sha1Update(*static_cast<Sha1Context*>(context), in, inLength);
  return methodSuccess;
}

int FinalMethod(void* context, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength) {
  if (outMax < sha1Length) return methodOutputTooSmall;
  Sha1Final(*static_cast<Sha1Context*>(context), out);
  *outLength = sha1Length;
  return methodSuccess;
}

}  // namespace

const AlgorithmDescriptor sha1Descriptor = {AlgorithmType::sha1, sha1Length, nullptr};
const AlgorithmOperations sha1Operations = {sizeof(Sha1Context), InitMethod, UpdateMethod, FinalMethod, nullptr};

void Sha1Init(Sha1Context& context) {
  context.state[0] = 0x67452301;
  context.state[1] = 0xefcdab89;
  context.state[2] = 0x98badcfe;
  context.state[3] = 0x10325476;
  context.state[4] = 0xc3d2e1f0;
  context.buffer.bitsLow = 0;
  context.buffer.bitsHigh = 0;
}

void Sha1Update(Sha1Context& context, const void* bytes, std::uint32_t length) {
  context.buffer.Feed(
      static_cast<const std::uint8_t*>(bytes), length,
      [&context](const std::uint8_t* blocks, std::uint32_t count) { Compress(context.state, blocks, count); });
}

void Sha1Final(Sha1Context& context, std::uint8_t* digest) {
  context.buffer.Pad(
      context.buffer.bitsHigh, context.buffer.bitsLow,
      [&context](const std::uint8_t* blocks, std::uint32_t count) { Compress(context.state, blocks, count); },
      StoreBig32);
  for (unsigned i = 0; i < 5; ++i) StoreBig32(digest + 4 * i, context.state[i]);
  Wipe(context.buffer.bytes, sizeof context.buffer.bytes);
  Sha1Init(context);
}

void Sha1OfHiddenLength(const std::uint8_t* bytes, std::uint32_t length, std::uint32_t most, std::uint8_t* digest) {
  Sha1Context context;
  Sha1Init(context);
  std::uint32_t result[5] = {};
  std::uint8_t(&block)[digestBlockLength] = context.buffer.bytes;
  // Behind the text come its mark and its count, which end the block that is the last one.
  const std::uint32_t lastBlock = (length + 8) / digestBlockLength;
  const std::uint32_t blocks = (most + 8) / digestBlockLength + 1;
  for (std::uint32_t i = 0; i < blocks; ++i) {
    const std::uint32_t at = i * digestBlockLength;
    const std::uint32_t left = at < most ? most - at : 0;
    const std::uint32_t taken = left < digestBlockLength ? left : digestBlockLength;
    if (taken != 0) std::memcpy(block, bytes + at, taken);
    std::memset(block + taken, 0, digestBlockLength - taken);
    const std::uint32_t isLast = MaskIfEqual(i, lastBlock);
    CompressHidden(context.state, block, at, length, isLast);
    for (unsigned word = 0; word < 5; ++word) result[word] |= context.state[word] & isLast;
  }
  for (unsigned word = 0; word < 5; ++word) StoreBig32(digest + 4 * word, result[word]);
  Wipe(&context, sizeof context);
  Wipe(result, sizeof result);
}

}  // namespace kest
