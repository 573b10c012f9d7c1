#include "crypto/der_public_key.h"

#include <cstring>

namespace kest {
namespace {

constexpr std::uint8_t tagInteger = 0x02, tagBitString = 0x03, tagNull = 0x05, tagObjectIdentifier = 0x06,
                       tagSequence = 0x30;

// What is found on the way.
struct Found {
  ByteItem integers[2];
  std::uint32_t integerCount;
};

// One element that must stand in a structure: its tag, what is done with its content, and what its content must be.
struct DerTemplate {
  std::uint8_t tag;
  bool isOptional;
  bool (*take)(ByteItem& content, Found& found);
  const DerTemplate* elements;  // null when the content is not a structure
  std::uint32_t elementCount;
};

bool TakeAlgorithm(ByteItem& content, Found&) {
  constexpr std::uint8_t rsaEncryption[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01};
  constexpr std::uint8_t x500Rsa[] = {0x55, 0x08, 0x01, 0x01};
  return (content.length == sizeof rsaEncryption &&
          std::memcmp(content.bytes, rsaEncryption, sizeof rsaEncryption) == 0) ||
         (content.length == sizeof x500Rsa && std::memcmp(content.bytes, x500Rsa, sizeof x500Rsa) == 0);
}

bool TakeNull(ByteItem& content, Found&) {
  return content.length == 0;
}

// The first byte counts the unused bits of the last one.
bool TakeBitString(ByteItem& content, Found&) {
  if (content.length == 0 || content.bytes[0] != 0) return false;
  content = {content.bytes + 1, content.length - 1};
  return true;
}

// The sign is not looked at: a number that lacks its sign byte is taken as it is meant.
bool TakeInteger(ByteItem& content, Found& found) {
  if (content.length == 0) return false;
  while (content.length != 0 && content.bytes[0] == 0) content = {content.bytes + 1, content.length - 1};
  found.integers[found.integerCount++] = content;
  return true;
}

constexpr DerTemplate Value(std::uint8_t tag, bool (*take)(ByteItem&, Found&), bool isOptional = false) {
  return {tag, isOptional, take, nullptr, 0};
}

template <std::uint32_t count>
constexpr DerTemplate Structure(std::uint8_t tag, const DerTemplate (&elements)[count],
                                bool (*take)(ByteItem&, Found&) = nullptr) {
  return {tag, false, take, elements, count};
}

constexpr DerTemplate numbers[] = {
    Value(tagInteger, TakeInteger),  // modulus
    Value(tagInteger, TakeInteger),  // public exponent
};
constexpr DerTemplate rsaPublicKey[] = {
    Structure(tagSequence, numbers),
};
constexpr DerTemplate algorithmIdentifier[] = {
    Value(tagObjectIdentifier, TakeAlgorithm),
    Value(tagNull, TakeNull, true),
};
constexpr DerTemplate subjectPublicKeyInfo[] = {
    Structure(tagSequence, algorithmIdentifier),
    Structure(tagBitString, rsaPublicKey, TakeBitString),
};
constexpr DerTemplate wholeKey[] = {
    Structure(tagSequence, subjectPublicKeyInfo),
};

// Cuts the length octets and the content off the front of `area`, which stands behind a tag. Lengths are definite and
// as short as they can be.
bool CutContent(ByteItem& area, ByteItem& content) {
  if (area.length == 0) return false;
  std::uint32_t length = area.bytes[0];
  std::uint32_t used = 1;
  if (length >= 0x80) {
    const std::uint32_t octets = length & 0x7F;
    if (octets == 0 || octets > 4 || octets >= area.length || area.bytes[1] == 0) return false;
    length = 0;
    for (std::uint32_t i = 1; i <= octets; ++i) length = length << 8 | area.bytes[i];
    if (length < 0x80) return false;
    used += octets;
  }
  if (length > area.length - used) return false;
  content = {area.bytes + used, length};
  area = {area.bytes + used + length, area.length - used - length};
  return true;
}

// Walks `area`, which must hold the elements and nothing else.
bool Walk(const DerTemplate* elements, std::uint32_t count, ByteItem area, Found& found) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const DerTemplate& element = elements[i];
    if (area.length == 0 || area.bytes[0] != element.tag) {
      if (element.isOptional) continue;
      return false;
    }
    area = {area.bytes + 1, area.length - 1};
    ByteItem content;
    if (!CutContent(area, content)) return false;
    if (element.take != nullptr && !element.take(content, found)) return false;
    if (element.elements != nullptr && !Walk(element.elements, element.elementCount, content, found)) return false;
  }
  return area.length == 0;
}

}  // namespace

ResultCode ReadDerPublicKey(const ByteItem& der, RsaPublicKey* key) {
  Found found{};
  if (!Walk(wholeKey, 1, der, found)) return resultBadKeyData;
  key->modulus = found.integers[0];
  key->publicExponent = found.integers[1];
  return resultSuccess;
}

}  // namespace kest
