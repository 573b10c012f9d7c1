#include "crypto/algorithm_method.h"
#include "crypto/key_object.h"
#include "crypto/operations.h"

namespace kest {
namespace {

constexpr KeyType noKey = {KeyInfoType::none, 0};
constexpr KeyType rc5Key = {KeyInfoType::byteString, 255};
// Longer moduli are taken here and refused by the method, with the code that says why.
constexpr KeyType rsaKey = {KeyInfoType::rsaPublic, 0};

// The order is that in which initialisation looks.
const AlgorithmMethod methods[] = {
    {AlgorithmType::md5, Direction::digest, noKey, &md5Operations},
    {AlgorithmType::sha1, Direction::digest, noKey, &sha1Operations},
    {AlgorithmType::md5Random, Direction::digest, noKey, &md5RandomOperations},
    {AlgorithmType::rc5CbcPad, Direction::encipher, rc5Key, &rc5CbcPadEncipherOperations},
    {AlgorithmType::rc5CbcPad, Direction::decipher, rc5Key, &rc5CbcPadDecipherOperations},
    {AlgorithmType::base64, Direction::encipher, noKey, &base64EncodeOperations},
    {AlgorithmType::base64, Direction::decipher, noKey, &base64DecodeOperations},
    {AlgorithmType::rsaPublic, Direction::encipher, rsaKey, &rsaPublicOperations},
};

bool Accepts(const KeyType& keyType, const KeyObject* key) {
  if (keyType.info == KeyInfoType::none || key == nullptr) return keyType.info == KeyInfoType::none && key == nullptr;
  return key->info == keyType.info && (keyType.maximumLength == 0 || key->length <= keyType.maximumLength);
}

}  // namespace

const AlgorithmChooser libraryChooser = {methods, sizeof methods / sizeof methods[0]};

const AlgorithmMethod* FindMethod(const AlgorithmChooser& chooser, AlgorithmType type, Direction direction,
                                  const KeyObject* key) {
  for (std::uint32_t i = 0; i < chooser.count; ++i) {
    const AlgorithmMethod& method = chooser.methods[i];
    if (method.type == type && method.direction == direction && Accepts(method.keyType, key)) return &method;
  }
  return nullptr;
}

}  // namespace kest
