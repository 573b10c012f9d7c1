// String: numbers to text and back, letter case.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "core/string.h"
#include "support/decimal_comma.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::CapacityOf;
using testing::Content;
using testing::ReferencesOf;

std::string Unsigned(std::uint32_t value, std::uint32_t width = 0) {
  String text;
  text.AppendUnsigned(value, width);
  return Content(text);
}

std::string Signed(std::int32_t value, std::uint32_t width = 0) {
  String text;
  text.AppendSigned(value, width);
  return Content(text);
}

std::string Hex(std::uint32_t value, std::uint32_t width = 0) {
  String text;
  text.AppendHex(value, width);
  return Content(text);
}

TEST(StringAppendUnsigned, GivesDecimalDigits) {
  EXPECT_EQ("0", Unsigned(0));
  EXPECT_EQ("9", Unsigned(9));
  EXPECT_EQ("10", Unsigned(10));
  EXPECT_EQ("1234567890", Unsigned(1234567890));
  EXPECT_EQ("4294967295", Unsigned(4294967295u));
}

TEST(StringAppendUnsigned, IsFilledUpWithZerosToTheWidth) {
  EXPECT_EQ("000", Unsigned(0, 3));
  EXPECT_EQ("0", Unsigned(0, 1));
  EXPECT_EQ("007", Unsigned(7, 3));
  EXPECT_EQ("1234", Unsigned(1234, 3));
  EXPECT_EQ(std::string(90, '0') + "4294967295", Unsigned(4294967295u, 100));
}

TEST(StringAppendUnsigned, GoesBehindTheText) {
  String text("n=");
  text.AppendUnsigned(42, 3);
  EXPECT_STREQ("n=042", text.Characters());
}

TEST(StringAppendUnsigned, LeavesASharedBlockAlone) {
  const String other("n=");
  String text(other);
  text.AppendUnsigned(1);
  EXPECT_STREQ("n=", other.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringAppendUnsigned, GrowsByTheSteps) {
  String text;
  text.AppendUnsigned(1, 49);
  EXPECT_EQ(50u, CapacityOf(text));
  text.AppendUnsigned(1);
  EXPECT_EQ(100u, CapacityOf(text));
}

TEST(StringAppendSigned, TheWidthCountsDigitsOnly) {
  EXPECT_EQ("-005", Signed(-5, 3));
  EXPECT_EQ("005", Signed(5, 3));
  EXPECT_EQ("-5", Signed(-5));
  EXPECT_EQ("-1", Signed(-1));
  EXPECT_EQ("000", Signed(0, 3));
}

TEST(StringAppendSigned, TheWholeRangeIsWritten) {
  EXPECT_EQ("2147483647", Signed(2147483647));
  EXPECT_EQ("-2147483648", Signed(-2147483647 - 1));
}

TEST(StringAppendHex, GivesLowerCaseDigitsFilledUpWithZeros) {
  EXPECT_EQ("00ff", Hex(255, 4));
  EXPECT_EQ("0", Hex(0));
  EXPECT_EQ("0000", Hex(0, 4));
  EXPECT_EQ("deadbeef", Hex(0xDEADBEEFu));
  EXPECT_EQ("12345678", Hex(0x12345678u, 2));
}

TEST(StringToUnsigned, ReadsDecimalDigits) {
  EXPECT_EQ(0u, String("0").ToUnsigned());
  EXPECT_EQ(102u, String("102").ToUnsigned());
  EXPECT_EQ(4294967295u, String("4294967295").ToUnsigned());
}

TEST(StringToUnsigned, AnEmptyStringGivesZero) {
  EXPECT_EQ(0u, String().ToUnsigned());
  EXPECT_EQ(0u, String("").ToUnsigned());
}

TEST(StringToUnsigned, EveryCharacterIsFoldedInUnchecked) {
  EXPECT_EQ(static_cast<std::uint32_t>('-' - 48) * 10 + 5, String("-5").ToUnsigned());
  EXPECT_EQ(static_cast<std::uint32_t>(' ' - 48) * 10 + 7, String(" 7").ToUnsigned());
  EXPECT_EQ(static_cast<std::uint32_t>('a' - 48), String("a").ToUnsigned());
  EXPECT_EQ(0xE9u - 48, String("\xE9").ToUnsigned());
  EXPECT_EQ(10u * (0u - 48) + 1, String("\0" "1", 2).ToUnsigned());
}

TEST(StringToUnsigned, WrapsAtThirtyTwoBits) {
  EXPECT_EQ(0u, String("4294967296").ToUnsigned());
  EXPECT_EQ(1410065407u, String("9999999999").ToUnsigned());
}

TEST(StringToUnsignedHex, ReadsDigitsOfEitherCase) {
  EXPECT_EQ(0xFFu, String("ff").ToUnsignedHex());
  EXPECT_EQ(0xFFu, String("FF").ToUnsignedHex());
  EXPECT_EQ(0x12AbCd90u, String("12AbCd90").ToUnsignedHex());
  EXPECT_EQ(0u, String().ToUnsignedHex());
}

TEST(StringToUnsignedHex, CodesAreWeighedByThreeRulesUnchecked) {
  EXPECT_EQ(57u - 48, String("\x39").ToUnsignedHex());   // the last code of the first rule
  EXPECT_EQ(58u - 87, String(":").ToUnsignedHex());      // from 58 to 64 the third rule
  EXPECT_EQ(64u - 87, String("@").ToUnsignedHex());
  EXPECT_EQ(65u - 55, String("A").ToUnsignedHex());
  EXPECT_EQ(90u - 55, String("Z").ToUnsignedHex());
  EXPECT_EQ(91u - 87, String("[").ToUnsignedHex());
  EXPECT_EQ(122u - 87, String("z").ToUnsignedHex());
  EXPECT_EQ(32u - 48, String(" ").ToUnsignedHex());
  EXPECT_EQ(0xE9u - 87, String("\xE9").ToUnsignedHex());
}

TEST(StringToUnsignedHex, CharactersWeighSixteenfoldFromTheLast) {
  EXPECT_EQ(35u * 256 + 35 * 16 + 35, String("ZZZ").ToUnsignedHex());
  EXPECT_EQ(16u * (32u - 48) + 1, String(" 1").ToUnsignedHex());
}

TEST(StringToUnsignedHex, TheFirstOfNineDigitsIsLost) {
  EXPECT_EQ(0x23456789u, String("123456789").ToUnsignedHex());
}

TEST(StringToFloat, ReadsWhatScanfReads) {
  EXPECT_EQ(0.5f, String("0.5").ToFloat());
  EXPECT_EQ(-12.25f, String("  -12.25kg").ToFloat());
  EXPECT_EQ(1500.0f, String("1.5e3").ToFloat());
}

TEST(StringToFloat, WithoutANumberItIsZero) {
  EXPECT_EQ(0.0f, String().ToFloat());
  EXPECT_EQ(0.0f, String("").ToFloat());
  EXPECT_EQ(0.0f, String("abc").ToFloat());
}

TEST(StringToFloat, ReadsADotInEveryLocaleOfTheHost) {
  const testing::DecimalComma locale;
  if (!testing::DecimalComma::IsInForce()) GTEST_SKIP() << "no locale with a decimal comma is installed here";
  EXPECT_EQ(21.5f, String("21.5").ToFloat());
  EXPECT_EQ(-12.25f, String("  -12.25kg").ToFloat());
  EXPECT_EQ(21.0f, String("21,5").ToFloat());
  EXPECT_EQ(21.0f, String("21,5.5").ToFloat());
  EXPECT_EQ(0.5f, String(".5").ToFloat());
  EXPECT_EQ(1500.0f, String("1.5e3").ToFloat());
  EXPECT_EQ(7.0f, String("7").ToFloat());
  EXPECT_EQ(0.0f, String("abc").ToFloat());
}

TEST(StringToFloat, IsOfSinglePrecision) {
  EXPECT_EQ(16777216.0f, String("16777217").ToFloat());
  EXPECT_EQ(19.99f, String("19.99").ToFloat());
}

TEST(StringToUpper, LettersAreRaisedOneByteAtATime) {
  String text("aZ09-{z");
  text.ToUpper();
  EXPECT_STREQ("AZ09-{Z", text.Characters());
}

TEST(StringToUpper, CharactersBehindAZeroByteAreRaisedToo) {
  String text("a\0b", 3);
  text.ToUpper();
  EXPECT_EQ(std::string("A\0B", 3), Content(text));
}

TEST(StringToUpper, ASharedBlockStaysAsItIs) {
  const String other("abc");
  String text(other);
  text.ToUpper();
  EXPECT_STREQ("abc", other.Characters());
  EXPECT_STREQ("ABC", text.Characters());
  EXPECT_EQ(1u, ReferencesOf(other));
}

TEST(StringToUpper, WithoutStorageNothingHappens) {
  String text;
  text.ToUpper();
  EXPECT_EQ(nullptr, text.Characters());
}

}  // namespace
}  // namespace kest
