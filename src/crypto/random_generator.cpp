#include "crypto/random_generator.h"

#include <cstring>

#include "core/memory.h"
#include "crypto/entropy.h"
#include "crypto/random_object.h"
#include "os/os.h"

namespace kest {
namespace {

// The entropy block: what the screen gave, folded, with the state record over it.
struct EntropyBlock {
  std::uint8_t bytes[captureLength];
  std::uint8_t record[stateRecordLength];
  std::uint8_t systemBytes[256];

  EntropyBlock() { std::memset(bytes, 0, sizeof bytes); }
  ~EntropyBlock() { Wipe(this, sizeof *this); }
};

void Xor(std::uint8_t* bytes, const std::uint8_t* with, std::uint32_t length) {
  for (std::uint32_t i = 0; i < length; ++i) bytes[i] ^= with[i];
}

// Folds the block into its first `width` bytes. A last chunk that ends exactly at the block's end is left out, which is
// meant.
void Fold(std::uint8_t* bytes, std::uint32_t width) {
  for (std::uint32_t at = width; at + width < captureLength; at += width) Xor(bytes, bytes + at, width);
}

// Lays the record over the first `width` bytes again and again. Both lengths are multiples of 4.
void LayOver(std::uint8_t* bytes, std::uint32_t width, const std::uint8_t* record, std::uint32_t recordLength) {
  for (std::uint32_t at = 0; at < width; at += recordLength) {
    Xor(bytes + at, record, width - at < recordLength ? width - at : recordLength);
  }
}

// A black desktop and a few counters can be guessed, the bytes of the system's own generator cannot. Without it the
// block stays as it is.
void AddSystemBytes(EntropyBlock& block, std::uint32_t length) {
  for (std::uint32_t at = 0; at < length; at += sizeof block.systemBytes) {
    const std::uint32_t rest = length - at;
    const std::uint32_t count = rest < sizeof block.systemBytes ? rest : std::uint32_t{sizeof block.systemBytes};
    if (!os::system->RtlGenRandom(block.systemBytes, count)) return;
    Xor(block.bytes + at, block.systemBytes, count);
  }
}

}  // namespace

bool RandomGenerator::SeedFromEntropy(std::uint16_t byteCount) {
  EntropyBlock block;
  // The width of the fold wraps at 16 bits, as it always has; the block's end bounds what it is used for.
  const std::uint32_t width = static_cast<std::uint16_t>(8 * byteCount);
  const bool isWide = byteCount >= captureLength / 16;
  if (CaptureScreen(block.bytes) && width != 0 && !isWide) Fold(block.bytes, width);
  const std::uint32_t recordLength = CollectSystemState(block.record);
  LayOver(block.bytes, width < captureLength ? width : captureLength, block.record, recordLength);
  // Fewer bytes than were folded: the rest is deliberately unused.
  const std::uint16_t seedLength = byteCount < captureLength ? byteCount : std::uint16_t{captureLength};
  AddSystemBytes(block, seedLength);
  const SeedBuffer buffers[] = {{block.bytes, seedLength}};
  return Seed(buffers, 1);
}

bool RandomGenerator::SeedFromBytes(std::uint8_t* seed, std::uint16_t length) {
  if (seed == nullptr && length != 0) {
    Destroy();
    return false;
  }
  const SeedBuffer buffers[] = {{seed, length}};
  return Seed(buffers, 1);
}

bool RandomGenerator::GenerateBytes(std::uint8_t* out, std::uint32_t length) {
  return GenerateRandom(generator, out, length & 0xFFFF) == resultSuccess;
}

void RandomGenerator::Destroy() {
  DestroyRandom(&generator);
}

bool RandomGenerator::Seed(const SeedBuffer* buffers, std::uint32_t count) {
  Destroy();
  const bool done = FeedSeed(buffers, count);
  for (std::uint32_t i = 0; i < count; ++i) Wipe(buffers[i].bytes, buffers[i].length);
  if (!done) Destroy();
  return done;
}

bool RandomGenerator::FeedSeed(const SeedBuffer* buffers, std::uint32_t count) {
  if (CreateRandom(&generator) != resultSuccess) return false;
  if (SetRandomAlgorithm(generator, md5RandomDescriptor) != resultSuccess) return false;
  if (InitialiseRandom(generator, libraryChooser) != resultSuccess) return false;
  for (std::uint32_t i = count; i-- != 0;) {
    if (UpdateRandom(generator, buffers[i].bytes, buffers[i].length) != resultSuccess) return false;
  }
  return true;
}

}  // namespace kest
