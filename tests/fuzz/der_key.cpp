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

// The INTEGERs that the number may have stood in: whatever zero bytes are in front of it there.
std::vector<Bytes> Elements(const Bytes& number, std::size_t mostZeros) {
  std::vector<Bytes> elements;
  for (std::size_t zeros = number.empty() ? 1 : 0; zeros <= mostZeros; ++zeros) {
    elements.push_back(Der(0x02, Bytes(zeros, 0) + number));
  }
  return elements;
}

// True for the one way in which DER writes the key's elements.
bool IsDer(const Bytes& der, const Numbers& numbers) {
  const auto zeros = static_cast<std::size_t>(std::count(der.begin(), der.end(), 0));
  for (const Bytes& modulus : Elements(numbers.modulus, zeros)) {
    for (const Bytes& exponent : Elements(numbers.exponent, zeros)) {
      for (const Bytes& identifier : {rsaEncryption, x500Rsa}) {
        if (DerPublicKey(modulus, exponent, identifier, derNull) == der) return true;
        if (DerPublicKey(modulus, exponent, identifier, Bytes()) == der) return true;
      }
    }
  }
  return false;
}

void HoldAccepted(const Bytes& der, const Numbers& numbers) {
  // Each is tried with as many zero bytes as there are, so a long row of them would take long.
  if (std::count(der.begin(), der.end(), 0) <= 16) HOLD(IsDer(der, numbers));
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
