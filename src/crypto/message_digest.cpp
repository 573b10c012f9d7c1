#include "crypto/message_digest.h"

#include "core/memory.h"
#include "crypto/sha1.h"

namespace kest {
namespace {

constexpr std::uint32_t longestDigest = sha1Length;  // bytes

// A sound object whose algorithm is no digest; what else is wrong with an object, the frame says.
bool IsForeign(const AlgorithmObject* object) {
  return IsValidAlgorithm(object) && object->descriptor != nullptr && object->descriptor->digestLength == 0;
}

ResultCode Digest(AlgorithmObject* object, const String& text, const DigestDescriptor& descriptor, std::uint8_t* out) {
  std::uint32_t length = 0;
  ResultCode code = SetAlgorithmInfo(object, descriptor, nullptr);
  if (code == resultSuccess) code = DigestInit(object, libraryChooser);
  if (code == resultSuccess) code = DigestUpdate(object, text.Text(), text.Length() + 1);
  if (code == resultSuccess) code = DigestFinal(object, out, &length, longestDigest);
  return code;
}

}  // namespace

std::uint32_t DigestLength(const DigestDescriptor& descriptor) {
  return descriptor.digestLength;
}

ByteBuffer DigestText(const String& text, const DigestDescriptor& descriptor) {
  AlgorithmObject* object = nullptr;
  if (CreateAlgorithm(&object) != resultSuccess) return ByteBuffer();
  std::uint8_t digest[longestDigest];
  const WipeAtEnd wipe(digest, sizeof digest);
  const ResultCode code = Digest(object, text, descriptor, digest);
  DestroyAlgorithm(&object);
  if (code != resultSuccess) return ByteBuffer();
  return ByteBuffer(digest, DigestLength(descriptor));
}

ResultCode DigestInit(AlgorithmObject* object, const AlgorithmChooser& chooser) {
  if (IsForeign(object)) return resultOperationInvalid;
  return InitialiseAlgorithm(object, Direction::digest, nullptr, chooser);
}

ResultCode DigestUpdate(AlgorithmObject* object, const void* bytes, std::uint32_t length) {
  if (IsForeign(object)) return resultOperationInvalid;
  std::uint32_t written;
  return UpdateAlgorithm(object, Direction::digest, static_cast<const std::uint8_t*>(bytes), length, nullptr, 0,
                         &written);
}

ResultCode DigestFinal(AlgorithmObject* object, std::uint8_t* out, std::uint32_t* outLength, std::uint32_t outMax) {
  *outLength = 0;
  if (IsForeign(object)) return resultOperationInvalid;
  return FinishAlgorithm(object, Direction::digest, out, outMax, outLength);
}

}  // namespace kest
