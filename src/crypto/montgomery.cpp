#include "crypto/montgomery.h"

#include <cstring>

#include "core/memory.h"

namespace kest {
namespace {

// The inverse of an odd word modulo 2^32, bit by bit: when bit b of the product is wrong, bit b of x is missing.
std::uint32_t InverseOfWord(std::uint32_t word) {
  std::uint32_t x = (word & 3) < 3 ? 1 : 3;
  for (std::uint32_t b = 2; b < 32; ++b) {
    const std::uint32_t bit = std::uint32_t{1} << b;
    const std::uint32_t mask = bit | (bit - 1);
    if ((x * word & mask) > bit) x += bit;
  }
  return x;
}

// Adds factor * row to the target; answers the carry.
[[gnu::always_inline]] inline std::uint32_t AddRow(std::uint32_t* target, const std::uint32_t* row, std::uint32_t count,
                                                   std::uint32_t factor) {
  std::uint64_t carry = 0;
#pragma GCC unroll 8
  for (std::uint32_t i = 0; i < count; ++i) {
    carry += std::uint64_t{factor} * row[i] + target[i];
    target[i] = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
  return static_cast<std::uint32_t>(carry);
}

}  // namespace

void Montgomery::SetModulus(const BigNumber& number) {
  count = number.Length();
  for (std::uint32_t i = 0; i < count; ++i) modulus[i] = number.Word(i);
  constant = 0 - InverseOfWord(modulus[0]);

  // 2^(bits - 1) is below the modulus (1 excepted, modulo which everything ends as 0 all the same). Doubling up to
  // 2^(33 * count) and five squarings in Montgomery form, each of which doubles the distance to 2^(32 * count), give
  // 2^(64 * count).
  const std::uint32_t start = number.BitLength() - 1;
  std::memset(radixSquared, 0, sizeof radixSquared);
  radixSquared[start / 32] = std::uint32_t{1} << (start % 32);
  for (std::uint32_t i = start; i < 33 * count; ++i) Double(radixSquared);
  for (std::uint32_t i = 0; i < 5; ++i) Square(radixSquared, radixSquared);
}

void Montgomery::Exponentiate(std::uint32_t* result, const std::uint32_t* base, const BigNumber& exponent) const {
  Number plain, form, power;
  std::memcpy(plain, base, std::size_t{count} * 4);
  std::uint32_t bits = exponent.BitLength();
  if (bits == 0) {
    // 1, in Montgomery form and out again.
    std::memset(plain, 0, std::size_t{count} * 4);
    plain[0] = 1;
    bits = 1;
  }
  // One more factor that is not in Montgomery form takes the power out of it: an odd exponent's last one does.
  Multiply(form, plain, radixSquared);
  std::memcpy(power, form, std::size_t{count} * 4);
  for (std::uint32_t i = bits - 1; i-- != 0;) {
    Square(power, power);
    if (exponent.Bit(i)) Multiply(power, power, i == 0 ? plain : form);
  }
  if (bits == 1 || !exponent.IsOdd()) {
    std::memset(plain, 0, std::size_t{count} * 4);
    plain[0] = 1;
    Multiply(power, power, plain);
  }
  std::memcpy(result, power, std::size_t{count} * 4);
  Wipe(plain, sizeof plain);
  Wipe(form, sizeof form);
  Wipe(power, sizeof power);
}

void Montgomery::Multiply(Number& result, const Number& a, const Number& b) const {
  Product product;
  std::memset(product, 0, std::size_t{count} * 4);
  for (std::uint32_t i = 0; i < count; ++i) product[i + count] = AddRow(product + i, a, count, b[i]);
  Reduce(result, product);
  Wipe(product, std::size_t{count} * 8);
}

// Every product of two different words once, all of them doubled, and the squares of the words.
void Montgomery::Square(Number& result, const Number& a) const {
  Product product;
  std::memset(product, 0, std::size_t{count} * 4);
  for (std::uint32_t i = 0; i < count; ++i) {
    product[i + count] = AddRow(product + 2 * i + 1, a + i + 1, count - 1 - i, a[i]);
  }
  std::uint32_t shifted = 0;
  std::uint64_t carry = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t square = std::uint64_t{a[i]} * a[i];
    const std::uint32_t low = product[2 * i];
    const std::uint32_t high = product[2 * i + 1];
    carry += std::uint64_t{low << 1 | shifted} + static_cast<std::uint32_t>(square);
    product[2 * i] = static_cast<std::uint32_t>(carry);
    carry = (carry >> 32) + std::uint64_t{high << 1 | low >> 31} + (square >> 32);
    product[2 * i + 1] = static_cast<std::uint32_t>(carry);
    carry >>= 32;
    shifted = high >> 31;
  }
  Reduce(result, product);
  Wipe(product, std::size_t{count} * 8);
}

// Divides by 2^(32 * count) modulo the modulus: adds multiples of the modulus that make the low words zero.
void Montgomery::Reduce(Number& result, Product& product) const {
  std::uint32_t top = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t carry = AddRow(product + i, modulus, count, product[i] * constant);
    const std::uint64_t sum = std::uint64_t{product[i + count]} + carry + top;
    product[i + count] = static_cast<std::uint32_t>(sum);
    top = static_cast<std::uint32_t>(sum >> 32);
  }
  std::memcpy(result, product + count, std::size_t{count} * 4);
  SubtractModulus(result, top);
}

// Subtracts the modulus once from a number, whose word above the top one is `carry`, when it is not below it. Which of
// the two it was does not show in the time.
void Montgomery::SubtractModulus(Number& number, std::uint32_t carry) const {
  Number difference;
  std::uint64_t borrow = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    borrow = std::uint64_t{number[i]} - modulus[i] - borrow;
    difference[i] = static_cast<std::uint32_t>(borrow);
    borrow = borrow >> 63;
  }
  // All bits set when the difference is the result.
  const std::uint32_t mask = 0 - (carry | (static_cast<std::uint32_t>(borrow) ^ 1));
  for (std::uint32_t i = 0; i < count; ++i) number[i] ^= (number[i] ^ difference[i]) & mask;
  Wipe(difference, std::size_t{count} * 4);
}

void Montgomery::Double(Number& number) const {
  std::uint32_t carry = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t word = number[i];
    number[i] = word << 1 | carry;
    carry = word >> 31;
  }
  SubtractModulus(number, carry);
}

}  // namespace kest
