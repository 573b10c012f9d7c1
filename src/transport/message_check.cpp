#include "transport/message_check.h"

#include "core/memory.h"
#include "crypto/base64.h"
#include "crypto/constant_time.h"
#include "crypto/hidden_length.h"
#include "crypto/sha1.h"

namespace kest {
namespace {

constexpr std::uint32_t blockLength = 8;  // bytes
// Shorter messages cannot hold a digest and a padding.
constexpr std::uint32_t shortest = 32;  // bytes

// Compares the message's digest with that of the `length` bytes behind it, which zeros follow.
bool HasDigest(const std::uint8_t* message, std::uint32_t count, std::uint32_t length) {
  std::uint8_t digest[sha1Length];
  Sha1OfHiddenLength(message + digestTextLength, length, count - digestTextLength, digest);
  char expected[digestTextLength];
  Base64Context context{};
  std::uint32_t written, last;
  Base64EncodeUpdate(context, expected, &written, digestTextLength, digest, sha1Length);
  Base64EncodeFinal(context, expected + written, &last, digestTextLength - written);
  const bool isEqual = EqualBytes(expected, message, digestTextLength);
  Wipe(digest, sizeof digest);
  Wipe(expected, sizeof expected);
  Wipe(&context, sizeof context);
  return isEqual;
}

}  // namespace

bool CheckMessage(std::uint8_t* message, std::uint32_t count, std::uint32_t* textLength) {
  if (count < shortest) return false;
  std::uint8_t* lastBlock = message + count - blockLength;
  const std::uint32_t padding = PaddingOf(lastBlock);
  const std::uint32_t isUnpadded = MaskIfEqual(padding, 0);
  // What has no padding is cut by one byte all the same, so that a zero byte ends every text.
  ClearPadding(lastBlock, padding | (isUnpadded & 1));
  const std::uint32_t end = CutAtFirstZero(message, count);
  const std::uint32_t isShort = MaskIfBelow(end, digestTextLength);
  const std::uint32_t length = (end - digestTextLength) & ~isShort;
  // The zero byte is part of the digested data.
  const std::uint32_t isEqual = HasDigest(message, count, length + 1) ? 1 : 0;
  *textLength = length;
  return (isEqual & ~isUnpadded & ~isShort) != 0;
}

}  // namespace kest
