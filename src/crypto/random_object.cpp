#include "crypto/random_object.h"

#include <new>

#include "core/memory.h"

namespace kest {
namespace {

constexpr std::uint32_t randomTag = 0x4B524E44;

bool IsValid(const RandomObject* object) {
  return object != nullptr && object->self == object && object->tag == randomTag;
}

ResultCode CheckReady(const RandomObject* object) {
  if (!IsValid(object)) return resultRandomObjectInvalid;
  return object->generator.digestUpdate != nullptr ? resultSuccess : resultRandomNotInitialised;
}

}  // namespace

ResultCode CreateRandom(RandomObject** object) {
  void* block = AllocateOrNull(sizeof(RandomObject));
  *object = nullptr;
  if (block == nullptr) return resultNoMemory;
  *object = new (block) RandomObject{};
  (*object)->self = *object;
  (*object)->tag = randomTag;
  return resultSuccess;
}

void DestroyRandom(RandomObject** object) {
  RandomObject* dropped = *object;
  *object = nullptr;
  if (!IsValid(dropped)) return;
  Wipe(dropped, sizeof *dropped);
  Release(dropped);
}

// A block length other than 0 is the mark of a chosen algorithm: the object has no room for more.
ResultCode SetRandomAlgorithm(RandomObject* object, const AlgorithmDescriptor& descriptor) {
  if (!IsValid(object)) return resultRandomObjectInvalid;
  if (object->generator.blockLength != 0) return resultAlgorithmAlreadySet;
  if (descriptor.type != AlgorithmType::md5Random) return resultOperationInvalid;
  object->generator.blockLength = md5Length;
  return resultSuccess;
}

ResultCode InitialiseRandom(RandomObject* object, const AlgorithmChooser& chooser) {
  if (!IsValid(object)) return resultRandomObjectInvalid;
  if (object->generator.blockLength == 0) return resultAlgorithmNotSet;
  const AlgorithmMethod* method = FindMethod(chooser, AlgorithmType::md5Random, Direction::digest, nullptr);
  if (method == nullptr || method->operations->contextSize != sizeof object->generator) return resultNoMethod;
  return ToResultCode(method->operations->init(&object->generator, AlgorithmParameters{}, nullptr));
}

ResultCode UpdateRandom(RandomObject* object, const std::uint8_t* bytes, std::uint32_t length) {
  const ResultCode code = CheckReady(object);
  if (code == resultSuccess) Md5RandomSeed(object->generator, bytes, length);
  return code;
}

ResultCode GenerateRandom(RandomObject* object, std::uint8_t* out, std::uint32_t length) {
  const ResultCode code = CheckReady(object);
  if (code == resultSuccess) Md5RandomGenerate(object->generator, out, length);
  return code;
}

}  // namespace kest
