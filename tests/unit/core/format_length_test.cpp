// The characters that String reserves before it formats.
#include "core/format_length.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace kest {
namespace {

std::uint64_t Reserved(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const std::uint64_t length = FormatLength(format, arguments);
  va_end(arguments);
  return length;
}

TEST(FormatLength, OrdinaryCharactersAndDoubledPercentSignsReserveOne) {
  EXPECT_EQ(0u, Reserved(""));
  EXPECT_EQ(3u, Reserved("abc"));
  EXPECT_EQ(1u, Reserved("%%"));
  EXPECT_EQ(5u, Reserved("a%%b%%c"));
  EXPECT_EQ(2u, Reserved("%%d"));
}

TEST(FormatLength, AnAlternateFormReservesTwoMore) {
  EXPECT_EQ(34u, Reserved("%#x", 1));
  EXPECT_EQ(130u, Reserved("%#g", 1.0));
}

TEST(FormatLength, OtherFlagsReserveNothing) {
  EXPECT_EQ(32u, Reserved("%-d", 1));
  EXPECT_EQ(32u, Reserved("%+d", 1));
  EXPECT_EQ(32u, Reserved("%05d", 1));
  EXPECT_EQ(32u, Reserved("% d", 1));
  EXPECT_EQ(34u, Reserved("%-+0 #d", 1));
}

TEST(FormatLength, ACharacterReservesTwo) {
  EXPECT_EQ(2u, Reserved("%c", 'a'));
  EXPECT_EQ(2u, Reserved("%C", L'a'));
  EXPECT_EQ(2u, Reserved("%hc", 'a'));
  EXPECT_EQ(2u, Reserved("%lc", L'a'));
}

TEST(FormatLength, ATextReservesItsCharactersAndAtLeastOne) {
  EXPECT_EQ(5u, Reserved("%s", "abcde"));
  EXPECT_EQ(1u, Reserved("%s", ""));
  EXPECT_EQ(6u, Reserved("%s", static_cast<const char*>(nullptr)));
  EXPECT_EQ(6u, Reserved("%S", static_cast<const wchar_t*>(nullptr)));
}

TEST(FormatLength, AWideTextIsCountedInWideCharacters) {
  EXPECT_EQ(4u, Reserved("%S", L"abcd"));
  EXPECT_EQ(4u, Reserved("%ls", L"abcd"));
  EXPECT_EQ(2u, Reserved("%.2S", L"abcd"));
  EXPECT_EQ(3u, Reserved("%hS", "abc"));
  EXPECT_EQ(3u, Reserved("%hs", "abc"));
}

TEST(FormatLength, ATextIsRaisedToTheWidth) {
  EXPECT_EQ(10u, Reserved("%10s", "abc"));
  EXPECT_EQ(10u, Reserved("%-10s", "abc"));
  EXPECT_EQ(3u, Reserved("%2s", "abc"));
  EXPECT_EQ(8u, Reserved("%8s", static_cast<const char*>(nullptr)));
}

TEST(FormatLength, APrecisionNotAboveTheLengthTakesItsPlace) {
  EXPECT_EQ(2u, Reserved("%.2s", "abcde"));
  EXPECT_EQ(5u, Reserved("%.5s", "abcde"));
  EXPECT_EQ(5u, Reserved("%.9s", "abcde"));
  EXPECT_EQ(0u, Reserved("%.0s", "abcde"));
  EXPECT_EQ(3u, Reserved("%10.3s", "abcde"));  // deliberately below the ten characters that come out
  EXPECT_EQ(4u, Reserved("%.4s", static_cast<const char*>(nullptr)));
}

TEST(FormatLength, ATextWithAPrecisionNeedsNoTerminatorBehindIt) {
  const char unterminated[3] = {'a', 'b', 'c'};
  EXPECT_EQ(3u, Reserved("%.3s", unterminated));
}

TEST(FormatLength, WidthAndPrecisionMayComeFromTheArguments) {
  EXPECT_EQ(10u, Reserved("%*s", 10, "abc"));
  EXPECT_EQ(10u, Reserved("%*s", -10, "abc"));
  EXPECT_EQ(100u, Reserved("%*d", -100, 1));
  EXPECT_EQ(32u, Reserved("%*d", -1, 1));
  EXPECT_EQ(2u, Reserved("%.*s", 2, "abc"));
  EXPECT_EQ(3u, Reserved("%.*s", -1, "abc"));
  EXPECT_EQ(40u, Reserved("%40.*d", -1, 1));
  EXPECT_EQ(70u, Reserved("%*.*d", 40, 30, 1));
  EXPECT_EQ(300u, Reserved("%*.*f", 250, 50, 1.0));
}

TEST(FormatLength, WholeNumbersReserveWidthAndPrecisionOrThirtyTwo) {
  for (const char* format : {"%d", "%i", "%u", "%o", "%x", "%X"}) EXPECT_EQ(32u, Reserved(format, 1)) << format;
  EXPECT_EQ(32u, Reserved("%p", static_cast<const void*>("")));
  EXPECT_EQ(32u, Reserved("%20.11d", 1));
  EXPECT_EQ(32u, Reserved("%20.12d", 1));
  EXPECT_EQ(33u, Reserved("%20.13d", 1));
  EXPECT_EQ(100u, Reserved("%100d", 1));
  EXPECT_EQ(100u, Reserved("%.100d", 1));
}

TEST(FormatLength, FloatingPointReservesWidthAndPrecisionOrOneHundredTwentyEight) {
  for (const char* format : {"%e", "%f", "%g", "%G"}) EXPECT_EQ(128u, Reserved(format, 1.0)) << format;
  EXPECT_EQ(128u, Reserved("%.2f", 1.0));
  EXPECT_EQ(128u, Reserved("%100.28f", 1.0));
  EXPECT_EQ(129u, Reserved("%100.29f", 1.0));
}

TEST(FormatLength, TheCountSoFarReservesNothing) {
  int count = 0;
  EXPECT_EQ(3u, Reserved("%nabc", &count));
  EXPECT_EQ(0, count);
}

TEST(FormatLength, OtherLettersReserveNothing) {
  EXPECT_EQ(0u, Reserved("%E", 1.0));
  EXPECT_EQ(0u, Reserved("%7.3y"));
  EXPECT_EQ(2u, Reserved("%yab"));
}

TEST(FormatLength, EachConversionTakesItsOwnArgument) {
  int count = 0;
  EXPECT_EQ(32u + 2 + 128 + 3 + 0 + 4 + 32, Reserved("%d%c%f%s%n%S%ld", 1, 'a', 1.0, "abc", &count, L"abcd", 1L));
  EXPECT_EQ(32u + 5, Reserved("%lld%s", 1LL, "abcde"));
  EXPECT_EQ(32u + 5, Reserved("%hd%s", 1, "abcde"));
  for (const char* format : {"%E%s", "%a%s", "%A%s"}) EXPECT_EQ(5u, Reserved(format, 1.0, "abcde")) << format;
  EXPECT_EQ(32u + 5, Reserved("%p%s", static_cast<const void*>(""), "abcde"));
}

TEST(FormatLength, SomeSizePrefixesArePassedOver) {
  EXPECT_EQ(32u, Reserved("%Nd", 1));
  EXPECT_EQ(32u, Reserved("%Fd", 1));
  EXPECT_EQ(32u, Reserved("%Ld", 1));
}

TEST(FormatLength, AFormatThatBreaksOffReservesNothingForItsEnd) {
  EXPECT_EQ(1u, Reserved("a%"));
  EXPECT_EQ(1u, Reserved("a%-"));
  EXPECT_EQ(1u, Reserved("a%08.3l"));
}

TEST(FormatLength, EveryRealNumberIsPassedOver) {
  // So many that no register holds the last of each kind.
  for (const char letter : {'e', 'f', 'g', 'G', 'E', 'a', 'A'}) {
    std::string format;
    for (int i = 0; i < 9; ++i) format += std::string("%") + letter;
    format += "%s%s%s%s%s%s%s";
    const std::uint64_t numbers = std::strchr("efgG", letter) != nullptr ? 9 * 128 : 0;
    EXPECT_EQ(numbers + 28, Reserved(format.c_str(), 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, "a", "bc", "def", "ghij",
                                     "klmno", "pqrstu", "vwxyz78"))
        << letter;
  }
}

TEST(FormatLength, ATextIsReadAsFarAsItsPrecision) {
  const std::string narrow = "abc";
  const std::vector<char> unended(narrow.begin(), narrow.end());
  EXPECT_EQ(3u, Reserved("%.3s", unended.data()));
  EXPECT_EQ(2u, Reserved("%.2s", unended.data()));
}

TEST(FormatLength, WidthsBeyondThirtyTwoBitsDoNotWrap) {
  EXPECT_LE(std::uint64_t{0xFFFFFFFFu}, Reserved("%99999999999999999999d", 1));
  // 2 to the 64th and 1.
  EXPECT_LE(std::uint64_t{0xFFFFFFFFu}, Reserved("%18446744073709551617d", 1));
}

}  // namespace
}  // namespace kest
