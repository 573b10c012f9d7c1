// The toolkit's random object: created, given its algorithm, initialised through the chooser, seeded, drained. All of
// it is one block, which is wiped. One object belongs to one operation on one thread.
#pragma once

#include <cstdint>

#include "crypto/algorithm_method.h"
#include "crypto/md5_random.h"
#include "crypto/result_code.h"

namespace kest {

struct RandomObject {
  RandomObject* self;  // the self-check, with the tag
  std::uint32_t tag;
  Md5Random generator;
};
static_assert(sizeof(void*) != 4 || sizeof(RandomObject) == 168, "the one block that a generator costs, in bytes");

// Makes an empty object; 518, and `*object` null, without memory.
ResultCode CreateRandom(RandomObject** object);
// Wipes and frees the object and sets `*object` to null; null is ignored, and what fails its self-check is left alone.
void DestroyRandom(RandomObject** object);

// The operations below answer 539 for an object that fails its self-check, which null does too.

// Chooses the algorithm: 512 when one is chosen, 517 for one that is not the MD5-based random algorithm.
ResultCode SetRandomAlgorithm(RandomObject* object, const AlgorithmDescriptor& descriptor);
// Makes it ready for seeding: 515 without an algorithm, 545 without a method in the chooser.
ResultCode InitialiseRandom(RandomObject* object, const AlgorithmChooser& chooser);
// Feeds `length` seed bytes; 538 before initialisation.
ResultCode UpdateRandom(RandomObject* object, const std::uint8_t* bytes, std::uint32_t length);
// Writes `length` bytes; 538 before initialisation.
ResultCode GenerateRandom(RandomObject* object, std::uint8_t* out, std::uint32_t length);

}  // namespace kest
