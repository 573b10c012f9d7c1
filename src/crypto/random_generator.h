// The library's only source of secrets: a deterministic generator on MD5, seeded by given bytes or by an entropy block
// of the screen and the system's state. It is made, drained and destroyed inside one operation on one thread, and
// wiped. Order: one Seed..., any number of GenerateBytes, Destroy. A second Seed... begins with a new generator.
#pragma once

#include <cstdint>

namespace kest {

struct RandomObject;

class RandomGenerator {
 public:
  RandomGenerator() = default;
  RandomGenerator(const RandomGenerator&) = delete;
  RandomGenerator& operator=(const RandomGenerator&) = delete;
  ~RandomGenerator() { Destroy(); }

  // Seeds from entropy; `byteCount` is the number of bytes that the caller is about to draw and becomes the length of
  // the seed (38,400 at most). False, and no generator, on failure. A missing screen is none.
  bool SeedFromEntropy(std::uint16_t byteCount);

  // Seeds with `length` bytes, which are zero-filled, success or not: a seed does not outlive the call. The same bytes
  // always give the same stream. False, and no generator, on failure.
  bool SeedFromBytes(std::uint8_t* seed, std::uint16_t length);

  // Fills `out` with `length` bytes, of which deliberately only the low 16 bits count. False without a seeded
  // generator.
  bool GenerateBytes(std::uint8_t* out, std::uint32_t length);

  // Wipes and frees the generator; harmless when there is none.
  void Destroy();

 private:
  struct SeedBuffer {
    std::uint8_t* bytes;
    std::uint16_t length;
  };
  // The last of the buffers is fed first. All are zero-filled, whatever the outcome.
  bool Seed(const SeedBuffer* buffers, std::uint32_t count);
  bool FeedSeed(const SeedBuffer* buffers, std::uint32_t count);

  RandomObject* generator = nullptr;
};

}  // namespace kest
