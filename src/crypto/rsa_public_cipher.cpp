#include "crypto/rsa_public_cipher.h"

namespace kest {

bool RsaPublicCipher::LoadPublicKey(const ByteBuffer& der) {
  const ByteBuffer copy(der);
  Clear();
  if (CreateKey(&key) != resultSuccess) return false;
  if (SetKeyInfo(key, rsaPublicKeyDerDescriptor, ByteItem{copy.Bytes(), copy.Length()}) == resultSuccess) return true;
  DestroyKey(&key);
  return false;
}

bool RsaPublicCipher::CopyKeyFrom(const RsaPublicCipher& other) {
  if (this == &other) return key != nullptr;
  Clear();
  return CopyKey(other.key, &key) == resultSuccess;
}

int RsaPublicCipher::BlockSize() {
  RsaPublicKey publicKey;
  if (GetRsaPublicKey(key, &publicKey) != resultSuccess) return -1;
  return static_cast<int>(publicKey.modulus.length);
}

ByteBuffer RsaPublicCipher::Encipher(const ByteBuffer& in) {
  return EncipherMessage(rsaPublicDescriptor, in);
}

bool RsaPublicCipher::BeginEncipher() {
  return Begin(rsaPublicDescriptor, Direction::encipher);
}

int RsaPublicCipher::EncipherUpdate(const std::uint8_t* in, std::uint32_t inLength, std::uint8_t* out,
                                    std::uint32_t outMax) {
  return Update(Direction::encipher, in, inLength, out, outMax);
}

int RsaPublicCipher::EncipherFinal(std::uint8_t* out, std::uint32_t outMax) {
  return Final(Direction::encipher, out, outMax);
}

}  // namespace kest
