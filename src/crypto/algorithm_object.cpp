#include "crypto/algorithm_object.h"

#include <new>

#include "core/memory.h"
#include "crypto/key_object.h"

namespace kest {
namespace {

constexpr std::uint32_t algorithmTag = 0x4B414C47;

void DropContext(AlgorithmObject& object) {
  if (object.method == nullptr) return;
  const AlgorithmOperations& operations = *object.method->operations;
  if (operations.close != nullptr) operations.close(object.context);
  Wipe(object.context, operations.contextSize);
  Release(object.context);
  object.context = nullptr;
  object.method = nullptr;
}

// What every operation on a running message asks first.
ResultCode Check(const AlgorithmObject* object, Direction direction) {
  if (!IsValidAlgorithm(object)) return resultAlgorithmObjectInvalid;
  if (object->descriptor == nullptr) return resultAlgorithmNotSet;
  if (object->method == nullptr) return resultNotInitialised;
  return object->method->direction == direction ? resultSuccess : resultOperationInvalid;
}

// Answers what a method's update or final gave. A failure ends the message, so that nothing can go on behind data that
// were refused; a lack of room is the caller's and ends nothing.
ResultCode Judge(AlgorithmObject& object, int result) {
  if (result != methodSuccess && result != methodOutputTooSmall) DropContext(object);
  return ToResultCode(result);
}

}  // namespace

ResultCode CreateAlgorithm(AlgorithmObject** object) {
  void* block = AllocateOrNull(sizeof(AlgorithmObject));
  *object = nullptr;
  if (block == nullptr) return resultNoMemory;
  *object = new (block) AlgorithmObject{};
  (*object)->self = *object;
  (*object)->tag = algorithmTag;
  return resultSuccess;
}

bool IsValidAlgorithm(const AlgorithmObject* object) {
  return object != nullptr && object->self == object && object->tag == algorithmTag;
}

void DestroyAlgorithm(AlgorithmObject** object) {
  AlgorithmObject* dropped = *object;
  *object = nullptr;
  if (!IsValidAlgorithm(dropped)) return;
  DropContext(*dropped);
  Wipe(dropped, sizeof *dropped);
  Release(dropped);
}

ResultCode SetAlgorithmInfo(AlgorithmObject* object, const AlgorithmDescriptor& descriptor,
                            const void* parameterBlock) {
  if (!IsValidAlgorithm(object)) return resultAlgorithmObjectInvalid;
  if (object->descriptor != nullptr) return resultAlgorithmAlreadySet;
  if (descriptor.setParameters != nullptr) {
    const ResultCode code = descriptor.setParameters(object->parameters, parameterBlock);
    if (code != resultSuccess) return code;
  }
  object->descriptor = &descriptor;
  return resultSuccess;
}

ResultCode InitialiseAlgorithm(AlgorithmObject* object, Direction direction, const KeyObject* key,
                               const AlgorithmChooser& chooser) {
  if (!IsValidAlgorithm(object)) return resultAlgorithmObjectInvalid;
  if (object->descriptor == nullptr) return resultAlgorithmNotSet;
  if (key != nullptr && !IsValidKey(key)) return resultKeyObjectInvalid;
  DropContext(*object);
  const AlgorithmMethod* method = FindMethod(chooser, object->descriptor->type, direction, key);
  if (method == nullptr) return resultNoMethod;
  const std::size_t size = method->operations->contextSize;
  void* context = AllocateOrNull(size);
  if (context == nullptr) return resultNoMemory;
  Wipe(context, size);
  object->context = context;
  object->method = method;
  const int result = method->operations->init(context, object->parameters, key);
  if (result != methodSuccess) DropContext(*object);
  return ToResultCode(result);
}

ResultCode UpdateAlgorithm(AlgorithmObject* object, Direction direction, const std::uint8_t* in, std::uint32_t inLength,
                           std::uint8_t* out, std::uint32_t outMax, std::uint32_t* outLength) {
  *outLength = 0;
  const ResultCode code = Check(object, direction);
  if (code != resultSuccess) return code;
  return Judge(*object, object->method->operations->update(object->context, in, inLength, out, outMax, outLength));
}

ResultCode FinishAlgorithm(AlgorithmObject* object, Direction direction, std::uint8_t* out, std::uint32_t outMax,
                           std::uint32_t* outLength) {
  *outLength = 0;
  const ResultCode code = Check(object, direction);
  if (code != resultSuccess) return code;
  // The random method has no end.
  if (object->method->operations->final == nullptr) return resultOperationInvalid;
  return Judge(*object, object->method->operations->final(object->context, out, outMax, outLength));
}

}  // namespace kest
