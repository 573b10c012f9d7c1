// Exponentiation modulo an odd number by Montgomery multiplication on 32-bit words. All lengths but the exponent's are
// those of the modulus, so that the time tells nothing of the number that is raised. An object is wiped by its owner;
// several threads may use one at once.
#pragma once

#include <cstdint>

#include "crypto/big_number.h"

namespace kest {

constexpr std::uint32_t longestModulus = 64;  // words: 2048 bits

class Montgomery {
 public:
  // Prepares for `number`, which is odd and has at most 64 words.
  void SetModulus(const BigNumber& number);

  // Words of the modulus.
  std::uint32_t Count() const { return count; }

  // Raises `base` to `exponent`: `base` and `result` have Count() words; `base` need not be below the modulus, `result`
  // is. They may be the same.
  void Exponentiate(std::uint32_t* result, const std::uint32_t* base, const BigNumber& exponent) const;

 private:
  using Number = std::uint32_t[longestModulus];
  using Product = std::uint32_t[2 * longestModulus];

  void Multiply(Number& result, const Number& a, const Number& b) const;
  void Square(Number& result, const Number& a) const;
  void Reduce(Number& result, Product& product) const;
  void SubtractModulus(Number& number, std::uint32_t carry) const;
  void Double(Number& number) const;

  std::uint32_t count;     // words of the modulus
  std::uint32_t constant;  // -1 / modulus modulo 2^32
  Number modulus;
  Number radixSquared;  // 2^(64 * count) modulo the modulus: takes numbers into Montgomery form
};

}  // namespace kest
