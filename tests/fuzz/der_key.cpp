// A public key in DER, as a host's configuration brings it. What is accepted has one meaning: written anew in its plain
// form it is accepted again, as the same key. The input is the DER bytes.
#include "crypto/der_public_key.h"
#include "crypto/rsa_public_cipher.h"
#include "fuzz/bytes.h"
#include "support/public_key.h"

namespace kest::testing {
namespace {

struct Numbers {
  Bytes modulus, exponent;

  bool operator==(const Numbers& other) const { return modulus == other.modulus && exponent == other.exponent; }
};

Bytes BytesIn(const ByteItem& item) {
  return Bytes(item.bytes, item.bytes + item.length);
}

bool Lies(const ByteItem& item, const Bytes& der) {
  return item.bytes >= der.data() && item.bytes + item.length <= der.data() + der.size();
}

bool Read(const Bytes& der, Numbers* numbers) {
  static const std::uint8_t untouched = 0;
  RsaPublicKey key = {{&untouched, 7}, {&untouched, 9}};
  const ResultCode code = ReadDerPublicKey({der.data(), static_cast<std::uint32_t>(der.size())}, &key);
  if (code != resultSuccess) {
    HOLD(code == resultBadKeyData);
    HOLD(key.modulus.bytes == &untouched && key.modulus.length == 7);
    HOLD(key.publicExponent.bytes == &untouched && key.publicExponent.length == 9);
    return false;
  }
  HOLD(Lies(key.modulus, der) && Lies(key.publicExponent, der));
  *numbers = {BytesIn(key.modulus), BytesIn(key.publicExponent)};
  for (const Bytes& number : {numbers->modulus, numbers->exponent}) HOLD(number.empty() || number[0] != 0);
  return true;
}

// Zero is written as one zero byte.
Bytes Element(const Bytes& number) {
  return number.empty() ? Der(0x02, {0}) : DerNumber(number);
}

void HoldAccepted(const Bytes& der, const Numbers& numbers) {
  const bool isPlain = std::search(der.begin(), der.end(), rsaEncryption.begin(), rsaEncryption.end()) != der.end();
  const bool isX500 = std::search(der.begin(), der.end(), x500Rsa.begin(), x500Rsa.end()) != der.end();
  HOLD(isPlain || isX500);
  for (const Bytes& identifier : {rsaEncryption, x500Rsa}) {
    for (const Bytes& parameters : {derNull, Bytes()}) {
      const Bytes plain = DerPublicKey(Element(numbers.modulus), Element(numbers.exponent), identifier, parameters);
      Numbers again;
      HOLD(Read(plain, &again) && again == numbers);
    }
  }
  // Nothing may be missing and nothing may follow.
  Numbers other;
  HOLD(!Read(Bytes(der.begin(), der.end() - 1), &other));
  HOLD(!Read(der + Bytes{0}, &other));
}

void Check(Input input) {
  const Bytes der = TakeRest(input);
  Numbers numbers;
  const bool isKey = Read(der, &numbers);
  if (isKey) HoldAccepted(der, numbers);
  RsaPublicCipher cipher;
  HOLD(cipher.LoadPublicKey(BufferOf(der)) == isKey);
  HOLD(cipher.BlockSize() == (isKey ? static_cast<int>(numbers.modulus.size()) : -1));
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
