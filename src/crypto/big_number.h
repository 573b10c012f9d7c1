// Unsigned integers of any length, as words of 32 bits, least significant first. It owns its words and wipes them; one
// object belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "crypto/result_code.h"

namespace kest {

class BigNumber {
 public:
  BigNumber() = default;  // zero
  BigNumber(const BigNumber&) = delete;
  BigNumber& operator=(const BigNumber&) = delete;
  ~BigNumber();

  // Takes the value of `count` big-endian bytes; leading zero bytes contribute nothing. 518, and the old value stays,
  // without memory.
  ResultCode SetBytes(const std::uint8_t* bytes, std::uint32_t count);
  // Takes the value of `count` words, least significant first. 518 as above.
  ResultCode SetWords(const std::uint32_t* source, std::uint32_t count);
  // Writes exactly `count` big-endian bytes, left-filled with zero bytes. 536, and nothing written, when the value
  // needs more.
  ResultCode ToBytes(std::uint8_t* bytes, std::uint32_t count) const;

  // Words in use: at least 1, and the top one is not zero but for the value zero.
  std::uint32_t Length() const { return length; }
  // Word `index`; zero above those in use.
  std::uint32_t Word(std::uint32_t index) const { return index < length && words != nullptr ? words[index] : 0; }
  // Bits without leading zeros; 0 for zero.
  std::uint32_t BitLength() const;
  bool IsOdd() const { return (Word(0) & 1) != 0; }
  bool Bit(std::uint32_t index) const { return (Word(index / 32) >> (index % 32) & 1) != 0; }

 private:
  bool Reserve(std::uint32_t count);
  void Trim(std::uint32_t count);

  std::uint32_t capacity = 0;  // words allocated; those above `length` are zero
  std::uint32_t length = 1;    // words in use
  std::uint32_t* words = nullptr;
};

}  // namespace kest
