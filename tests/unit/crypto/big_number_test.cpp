#include "crypto/big_number.h"

#include <gtest/gtest.h>

#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::FromHex;
using testing::SomeBytes;
using testing::ToHex;

void Set(BigNumber& number, const Bytes& bytes) {
  ASSERT_EQ(number.SetBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size())), 0);
}

std::string HexOf(const BigNumber& number, std::uint32_t count) {
  Bytes out(count);
  EXPECT_EQ(number.ToBytes(out.data(), count), 0);
  return ToHex(out);
}

TEST(BigNumber, FreshNumberIsZeroOfOneWord) {
  const BigNumber number;
  EXPECT_EQ(number.Length(), 1U);
  EXPECT_EQ(number.Word(0), 0U);
  EXPECT_EQ(number.BitLength(), 0U);
  EXPECT_EQ(HexOf(number, 3), "000000");
  EXPECT_EQ(HexOf(number, 0), "");
}

TEST(BigNumber, BytesOfEveryLengthComeBackWithFillAndWithout) {
  for (std::uint32_t length = 1; length <= 70; ++length) {
    Bytes bytes = SomeBytes(length);
    bytes[0] |= 1;
    BigNumber number;
    Set(number, bytes);
    EXPECT_EQ(number.Length(), (length + 3) / 4);
    EXPECT_EQ(HexOf(number, length), ToHex(bytes));
    EXPECT_EQ(HexOf(number, length + 3), "000000" + ToHex(bytes));
  }
}

TEST(BigNumber, LeadingZeroBytesContributeNothing) {
  BigNumber number;
  Set(number, FromHex("0000000000000000000102"));
  EXPECT_EQ(number.Length(), 1U);
  EXPECT_EQ(number.Word(0), 0x102U);
  Set(number, Bytes(20, 0));
  EXPECT_EQ(number.Length(), 1U);
  EXPECT_EQ(number.BitLength(), 0U);
  Set(number, {});
  EXPECT_EQ(number.Length(), 1U);
}

TEST(BigNumber, WordsStandLeastSignificantFirst) {
  BigNumber number;
  Set(number, FromHex("0102030405060708090a"));
  EXPECT_EQ(number.Word(0), 0x0708090aU);
  EXPECT_EQ(number.Word(1), 0x03040506U);
  EXPECT_EQ(number.Word(2), 0x0102U);
  EXPECT_EQ(number.Word(3), 0U);
}

TEST(BigNumber, ValueThatDoesNotFitGives536AndNothingIsWritten) {
  BigNumber number;
  Set(number, FromHex("010203"));
  Bytes out(2, 0xEE);
  EXPECT_EQ(number.ToBytes(out.data(), 2), 536);
  EXPECT_EQ(out, Bytes(2, 0xEE));
  EXPECT_EQ(number.ToBytes(out.data(), 0), 536);
}

TEST(BigNumber, SmallerValueReplacesALargerOneWhole) {
  BigNumber number;
  Set(number, Bytes(40, 0xFF));
  Set(number, {5});
  EXPECT_EQ(number.Length(), 1U);
  EXPECT_EQ(HexOf(number, 40), std::string(78, '0') + "05");
}

TEST(BigNumber, WordsAreTrimmed) {
  const std::uint32_t words[] = {7, 9, 0, 0};
  BigNumber number;
  ASSERT_EQ(number.SetWords(words, 4), 0);
  EXPECT_EQ(number.Length(), 2U);
  ASSERT_EQ(number.SetWords(words + 2, 2), 0);
  EXPECT_EQ(number.Length(), 1U);
  ASSERT_EQ(number.SetWords(nullptr, 0), 0);
  EXPECT_EQ(number.Length(), 1U);
  EXPECT_EQ(number.BitLength(), 0U);
}

TEST(BigNumber, BitsAreCounted) {
  BigNumber number;
  for (std::uint32_t bits = 1; bits <= 100; ++bits) {
    Bytes bytes(13, 0);
    bytes[12 - (bits - 1) / 8] = static_cast<std::uint8_t>(1 << (bits - 1) % 8);
    Set(number, bytes);
    EXPECT_EQ(number.BitLength(), bits);
    EXPECT_TRUE(number.Bit(bits - 1));
    EXPECT_FALSE(number.Bit(bits));
    EXPECT_EQ(number.IsOdd(), bits == 1);
  }
}

}  // namespace
}  // namespace kest
