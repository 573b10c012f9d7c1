#include "crypto/md5.h"

#include <utility>

#include "core/memory.h"
#include "crypto/byte_order.h"
#include "crypto/operations.h"

namespace kest {
namespace {

// floor(2^32 * |sin(i + 1)|)
constexpr std::uint32_t sines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};
constexpr std::uint32_t shifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr std::uint32_t wordFactor[4] = {1, 5, 3, 7};
constexpr std::uint32_t wordOffset[4] = {0, 1, 5, 0};

template <unsigned round>
inline std::uint32_t Mix(std::uint32_t x, std::uint32_t y, std::uint32_t z) {
  if constexpr (round == 0) {
    return z ^ (x & (y ^ z));
  } else if constexpr (round == 1) {
    return (x & z) + (y & ~z);  // disjoint bits: a sum leaves the compiler more freedom
  } else if constexpr (round == 2) {
    return x ^ y ^ z;
  } else {
    return y ^ (x | ~z);
  }
}

// One of the 64 steps. The four variables change their roles from step to step, not their values.
template <unsigned step>
[[gnu::always_inline]] inline void Step(std::uint32_t (&v)[4], const std::uint32_t (&words)[16]) {
  constexpr unsigned round = step / 16;
  std::uint32_t& a = v[(64 - step) % 4];
  const std::uint32_t b = v[(65 - step) % 4];
  const std::uint32_t c = v[(66 - step) % 4];
  const std::uint32_t d = v[(67 - step) % 4];
  const std::uint32_t word = words[(wordFactor[round] * step + wordOffset[round]) % 16];
  a = b + RotateLeft(a + word + sines[step] + Mix<round>(b, c, d), shifts[round][step % 4]);
}

template <unsigned... steps>
[[gnu::always_inline]] inline void AllSteps(std::uint32_t (&v)[4], const std::uint32_t (&words)[16],
                                            std::integer_sequence<unsigned, steps...>) {
  (Step<steps>(v, words), ...);
}

void Compress(std::uint32_t (&state)[4], const std::uint8_t* blocks, std::uint32_t count) {
  std::uint32_t words[16];
  std::uint32_t v[4] = {state[0], state[1], state[2], state[3]};
  for (; count != 0; --count, blocks += digestBlockLength) {
    for (unsigned i = 0; i < 16; ++i) words[i] = LoadLittle32(blocks + 4 * i);
    AllSteps(v, words, std::make_integer_sequence<unsigned, 64>());
    for (unsigned i = 0; i < 4; ++i) v[i] = state[i] += v[i];
  }
  Wipe(words, sizeof words);
  Wipe(v, sizeof v);
}

int InitMethod(void* context, const AlgorithmParameters&, const KeyObject*) {
  Md5Init(*static_cast<Md5Context*>(context));
  return methodSuccess;
}

int UpdateMethod(void* context, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t*, std::uint32_t,
                 std::uint32_t*) {
  Md5Update(*static_cast<Md5Context*>(context), in, inLength);
  return methodSuccess;
}

int FinalMethod(void* context, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength) {
  if (outMax < md5Length) return methodOutputTooSmall;
  Md5Final(*static_cast<Md5Context*>(context), out);
  *outLength = md5Length;
  return methodSuccess;
}

}  // namespace

const AlgorithmDescriptor md5Descriptor = {AlgorithmType::md5, md5Length, nullptr};
const AlgorithmOperations md5Operations = {sizeof(Md5Context), InitMethod, UpdateMethod, FinalMethod, nullptr};

void Md5Init(Md5Context& context) {
  context.state[0] = 0x67452301;
  context.state[1] = 0xefcdab89;
  context.state[2] = 0x98badcfe;
  context.state[3] = 0x10325476;
  context.buffer.bitsLow = 0;
  context.buffer.bitsHigh = 0;
}

void Md5Update(Md5Context& context, const void* bytes, std::uint32_t length) {
  context.buffer.Feed(
      static_cast<const std::uint8_t*>(bytes), length,
      [&context](const std::uint8_t* blocks, std::uint32_t count) { Compress(context.state, blocks, count); });
}

void Md5Final(Md5Context& context, std::uint8_t* digest) {
  context.buffer.Pad(
      context.buffer.bitsLow, context.buffer.bitsHigh,
      [&context](const std::uint8_t* blocks, std::uint32_t count) { Compress(context.state, blocks, count); },
      StoreLittle32);
  for (unsigned i = 0; i < 4; ++i) StoreLittle32(digest + 4 * i, context.state[i]);
  Wipe(context.buffer.bytes, sizeof context.buffer.bytes);
  Md5Init(context);
}

}  // namespace kest
