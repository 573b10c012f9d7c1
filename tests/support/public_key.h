// RSA public keys in DER for tests: SubjectPublicKeyInfo from a modulus and an exponent, with the identifier and the
// parameters that a test wants.
#pragma once

#include <string>

#include "support/vector_file.h"

namespace kest::testing {

inline Bytes Der(std::uint8_t tag, const Bytes& content) {
  Bytes element = {tag};
  const std::size_t length = content.size();
  if (length < 0x80) {
    element.push_back(static_cast<std::uint8_t>(length));
  } else {
    Bytes octets;
    for (std::size_t rest = length; rest != 0; rest >>= 8)
      octets.insert(octets.begin(), static_cast<std::uint8_t>(rest));
    element.push_back(static_cast<std::uint8_t>(0x80 | octets.size()));
    element.insert(element.end(), octets.begin(), octets.end());
  }
  element.insert(element.end(), content.begin(), content.end());
  return element;
}

inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// Content bytes of the two identifiers that an RSA key may bear.
inline const Bytes rsaEncryption = FromHex("2a864886f70d010101");
inline const Bytes x500Rsa = FromHex("55080101");
inline const Bytes derNull = FromHex("0500");

// The INTEGER of a number that begins with a non-zero byte, with the sign byte where it needs one.
inline Bytes DerNumber(const Bytes& number) {
  return Der(0x02, !number.empty() && number[0] >= 0x80 ? Bytes{0} + number : number);
}

inline Bytes DerPublicKey(const Bytes& modulusElement, const Bytes& exponentElement,
                          const Bytes& identifier = rsaEncryption, const Bytes& parameters = derNull) {
  const Bytes numbers = Der(0x30, modulusElement + exponentElement);
  return Der(0x30, Der(0x30, Der(0x06, identifier) + parameters) + Der(0x03, Bytes{0} + numbers));
}

inline Bytes PublicKey(const Bytes& modulus, const Bytes& exponent) {
  return DerPublicKey(DerNumber(modulus), DerNumber(exponent));
}

}  // namespace kest::testing
