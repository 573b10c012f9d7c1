#include "crypto/key_object.h"

#include <cstring>
#include <new>

#include "core/memory.h"
#include "crypto/der_public_key.h"

namespace kest {
namespace {

constexpr std::uint32_t keyTag = 0x4B4B4559;
constexpr std::uint32_t longestByteString = 32767;  // bytes

// Copies one item, or two behind one another, into a block of the object's own.
ResultCode Take(KeyObject& key, KeyInfoType info, const ByteItem& first, const ByteItem& second) {
  auto* data = static_cast<std::uint8_t*>(AllocateOrNull(std::uint64_t{first.length} + second.length));
  if (data == nullptr) return resultNoMemory;
  if (first.length != 0) std::memcpy(data, first.bytes, first.length);
  if (second.length != 0) std::memcpy(data + first.length, second.bytes, second.length);
  key.info = info;
  key.data = data;
  key.length = first.length;
  key.secondLength = second.length;
  return resultSuccess;
}

ResultCode SetByteString(KeyObject& key, const ByteItem& item) {
  if (item.length > longestByteString) return resultLengthOver32767;
  return Take(key, KeyInfoType::byteString, item, ByteItem{nullptr, 0});
}

ResultCode SetRsaPublicKeyDer(KeyObject& key, const ByteItem& item) {
  RsaPublicKey publicKey;
  const ResultCode code = ReadDerPublicKey(item, &publicKey);
  if (code != resultSuccess) return code;
  return Take(key, KeyInfoType::rsaPublic, publicKey.modulus, publicKey.publicExponent);
}

}  // namespace

const KeyDescriptor byteStringKeyDescriptor = {SetByteString};
const KeyDescriptor rsaPublicKeyDerDescriptor = {SetRsaPublicKeyDer};

ResultCode CreateKey(KeyObject** key) {
  void* block = AllocateOrNull(sizeof(KeyObject));
  *key = nullptr;
  if (block == nullptr) return resultNoMemory;
  *key = new (block) KeyObject{};
  (*key)->self = *key;
  (*key)->tag = keyTag;
  return resultSuccess;
}

ResultCode CopyKey(const KeyObject* key, KeyObject** copy) {
  *copy = nullptr;
  if (!IsValidKey(key)) return resultKeyObjectInvalid;
  if (key->info == KeyInfoType::none) return resultItemMissing;
  ResultCode code = CreateKey(copy);
  if (code != resultSuccess) return code;
  code =
      Take(**copy, key->info, ByteItem{key->data, key->length}, ByteItem{key->data + key->length, key->secondLength});
  if (code != resultSuccess) DestroyKey(copy);
  return code;
}

void DestroyKey(KeyObject** key) {
  KeyObject* dropped = *key;
  *key = nullptr;
  if (!IsValidKey(dropped)) return;
  if (dropped->data != nullptr) Wipe(dropped->data, std::size_t{dropped->length} + dropped->secondLength);
  Release(dropped->data);
  Wipe(dropped, sizeof *dropped);
  Release(dropped);
}

bool IsValidKey(const KeyObject* key) {
  return key != nullptr && key->self == key && key->tag == keyTag;
}

ResultCode SetKeyInfo(KeyObject* key, const KeyDescriptor& descriptor, const ByteItem& item) {
  if (!IsValidKey(key)) return resultKeyObjectInvalid;
  if (key->info != KeyInfoType::none) return resultOperationInvalid;
  if (item.bytes == nullptr && item.length != 0) return resultKeyInfoFailed;
  return descriptor.set(*key, item);
}

ResultCode GetByteStringKey(const KeyObject* key, ByteItem* item) {
  if (!IsValidKey(key)) return resultKeyObjectInvalid;
  if (key->info != KeyInfoType::byteString) return resultItemMissing;
  *item = {key->data, key->length};
  return resultSuccess;
}

ResultCode GetRsaPublicKey(const KeyObject* key, RsaPublicKey* publicKey) {
  if (!IsValidKey(key)) return resultKeyObjectInvalid;
  if (key->info != KeyInfoType::rsaPublic) return resultItemMissing;
  publicKey->modulus = {key->data, key->length};
  publicKey->publicExponent = {key->data + key->length, key->secondLength};
  return resultSuccess;
}

}  // namespace kest
