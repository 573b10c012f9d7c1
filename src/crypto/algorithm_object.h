// The toolkit's algorithm object: created empty, given a descriptor once, initialised for one direction with a key and
// a chooser, fed by updates, closed by a final; then it is ready for the next message of the same kind. It owns its
// context and wipes it. It refers to no key after initialisation. One object belongs to one operation on one thread.
#pragma once

#include <cstdint>

#include "crypto/algorithm_method.h"
#include "crypto/result_code.h"

namespace kest {

struct AlgorithmObject {
  AlgorithmObject* self;  // the self-check, with the tag
  std::uint32_t tag;
  const AlgorithmDescriptor* descriptor;  // null until set
  AlgorithmParameters parameters;
  const AlgorithmMethod* method;  // null until initialised
  void* context;
};

// Makes an empty object; 518, and `*object` null, without memory.
ResultCode CreateAlgorithm(AlgorithmObject** object);

// True for an object that passes its self-check; null does not.
bool IsValidAlgorithm(const AlgorithmObject* object);

// Wipes and frees the object and sets `*object` to null; null is ignored, and what fails its self-check is left alone.
void DestroyAlgorithm(AlgorithmObject** object);

// The operations below answer 516 for an object that fails its self-check, which null does too, and 515 for one without
// a descriptor (but SetAlgorithmInfo, of course).

// Sets the descriptor with its parameter block, which is copied: 512 when one is set, 541 when the descriptor refuses
// the block; the object is unchanged then.
ResultCode SetAlgorithmInfo(AlgorithmObject* object, const AlgorithmDescriptor& descriptor, const void* parameterBlock);

// Initialises for `direction` with the first fitting method of the chooser: 530 for a key object that fails its
// self-check, 545 without a method, 518, or what the method answers; the object is then not initialised. `key` may be
// null and may be destroyed afterwards.
ResultCode InitialiseAlgorithm(AlgorithmObject* object, Direction direction, const KeyObject* key,
                               const AlgorithmChooser& chooser);

// Feeds `inLength` bytes and takes up to `outMax` bytes of output, which must not overlap the input; `*outLength` is
// what was written. 514 before initialisation, 517 for the other direction, or what the method answers. After a failure
// of the method other than 536 the message is lost and its context wiped: every call answers 514 until the next
// initialisation. After 536 the object stays initialised, and what the call took is the method's to say.
ResultCode UpdateAlgorithm(AlgorithmObject* object, Direction direction, const std::uint8_t* in, std::uint32_t inLength,
                           std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength);

// Ends the message, in the same manner.
ResultCode FinishAlgorithm(AlgorithmObject* object, Direction direction, std::uint8_t* out, std::uint32_t outMax,
                           std::uint32_t* outLength);

}  // namespace kest
