// The toolkit's key object: created empty, then given key data once through a key-info descriptor, of which it keeps a
// copy of its own. It wipes what it held. A key object may be read by several threads at once.
#pragma once

#include <cstdint>

#include "crypto/algorithm_method.h"
#include "crypto/result_code.h"

namespace kest {

// Bytes of somebody else's.
struct ByteItem {
  const std::uint8_t* bytes;
  std::uint32_t length;
};

// An RSA public key: big-endian numbers without leading zero bytes.
struct RsaPublicKey {
  ByteItem modulus;
  ByteItem publicExponent;
};

struct KeyObject {
  KeyObject* self;  // the self-check, with the tag
  std::uint32_t tag;
  KeyInfoType info;
  std::uint8_t* data;          // owned: the key bytes, or the modulus and the exponent behind it
  std::uint32_t length;        // bytes of the key, or of the modulus
  std::uint32_t secondLength;  // bytes of the exponent
};

// Says how a key object takes key data of one form.
struct KeyDescriptor {
  ResultCode (*set)(KeyObject& key, const ByteItem& item);
};

// The bytes as they are: 537 for more than 32,767 of them.
extern const KeyDescriptor byteStringKeyDescriptor;
// A DER SubjectPublicKeyInfo with an RSA key: 542 for anything else.
extern const KeyDescriptor rsaPublicKeyDerDescriptor;

// Makes an empty object; 518, and `*key` null, without memory.
ResultCode CreateKey(KeyObject** key);
// Makes a copy of `key`; 530, 535 for an empty one or 518, and `*copy` null then.
ResultCode CopyKey(const KeyObject* key, KeyObject** copy);
// Wipes and frees the object and sets `*key` to null; null is ignored, and what fails its self-check is left alone.
void DestroyKey(KeyObject** key);

// True for an object that passes its self-check; null does not.
bool IsValidKey(const KeyObject* key);

// Sets the key data: 530 for an object that fails its self-check, 517 for one that holds a key, 531 for bytes that are
// not there, 518, or what the descriptor answers; the object is empty or unchanged then.
ResultCode SetKeyInfo(KeyObject* key, const KeyDescriptor& descriptor, const ByteItem& item);

// Read the key data, which stays the object's: 530, or 535 when it holds another kind or none.
ResultCode GetByteStringKey(const KeyObject* key, ByteItem* item);
ResultCode GetRsaPublicKey(const KeyObject* key, RsaPublicKey* publicKey);

}  // namespace kest
