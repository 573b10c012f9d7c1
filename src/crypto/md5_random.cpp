#include "crypto/md5_random.h"

#include <cstring>

#include "crypto/hidden_length.h"
#include "crypto/operations.h"

namespace kest {
namespace {

constexpr std::uint32_t phasesAtStart = 2;

// Adds 1 to the last byte and goes on to the byte before it only where the byte was 0x00 before it was incremented.
// That is not how a number is counted up, and it is meant: the stream of every seed depends on it.
// The work does not tell how far it went.
void AdvanceByOne(std::uint8_t* state) {
  std::uint32_t carry = 1;
  for (std::uint32_t i = md5Length; i-- != 0;) {
    const std::uint32_t before = state[i];
    state[i] = static_cast<std::uint8_t>(before + carry);
    carry &= MaskIfEqual(before, 0);
  }
}

// Adds two big-endian numbers; the carry out of the first byte is dropped.
void AdvanceByIncrement(std::uint8_t* state, const std::uint8_t* increment) {
  std::uint32_t carry = 0;
  for (std::uint32_t i = md5Length; i-- != 0;) {
    carry += std::uint32_t{state[i]} + increment[i];
    state[i] = static_cast<std::uint8_t>(carry);
    carry >>= 8;
  }
}

int InitMethod(void* context, const AlgorithmParameters&, const KeyObject*) {
  Md5RandomInit(*static_cast<Md5Random*>(context));
  return methodSuccess;
}

int UpdateMethod(void* context, const std::uint8_t* in, std::uint32_t inLength, std::uint8_t*, std::uint32_t,
                 std::uint32_t*) {
  Md5RandomSeed(*static_cast<Md5Random*>(context), in, inLength);
  return methodSuccess;
}

}  // namespace

const AlgorithmDescriptor md5RandomDescriptor = {AlgorithmType::md5Random, 0, nullptr};
const AlgorithmOperations md5RandomOperations = {sizeof(Md5Random), InitMethod, UpdateMethod, nullptr, nullptr};

void Md5RandomInit(Md5Random& random) {
  random = Md5Random{};
  random.seedPhase = phasesAtStart;
  random.blockLength = md5Length;
  random.digestUpdate = Md5Update;
  random.digestFinal = Md5Final;
  Md5Init(random.digest);
}

void Md5RandomSeed(Md5Random& random, const std::uint8_t* bytes, std::uint32_t length) {
  if (random.seedPhase == phasesAtStart) {
    random.digestFinal(random.digest, random.increment);
    random.increment[md5Length - 1] |= 0x01;
  }
  if (random.seedPhase > 0) --random.seedPhase;
  // Seeding goes on from the state reached.
  if (random.seedPhase == 0 && random.digestPending == 0) {
    random.digestUpdate(random.digest, random.state, md5Length);
  }
  random.digestUpdate(random.digest, bytes, length);
  random.digestPending = 1;
}

void Md5RandomGenerate(Md5Random& random, std::uint8_t* out, std::uint32_t length) {
  if (random.digestPending != 0) {
    random.digestFinal(random.digest, random.state);
    random.digestPending = 0;
    random.available = 0;
  }
  while (random.available < length) {
    std::memcpy(out, random.output + md5Length - random.available, random.available);
    out += random.available;
    length -= random.available;
    random.digestUpdate(random.digest, random.state, md5Length);
    random.digestFinal(random.digest, random.output);
    random.available = md5Length;
    if (random.seedPhase != 0) {
      AdvanceByOne(random.state);
    } else {
      AdvanceByIncrement(random.state, random.increment);
    }
  }
  if (length == 0) return;
  std::memcpy(out, random.output + md5Length - random.available, length);
  random.available -= length;
}

}  // namespace kest
