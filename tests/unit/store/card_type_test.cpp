#include "store/card_type.h"

#include <gtest/gtest.h>

#include <string>

#include "support/allocation_system.h"

namespace kest {
namespace {

using namespace std::string_literals;

std::uint32_t TypeOf(const std::string& number) {
  return CardTypeOf(String(number.data(), static_cast<std::uint32_t>(number.size())));
}

TEST(CardType, FirstDigitDecidesFour) { EXPECT_EQ(4u, TypeOf("4111111111111111")); }
TEST(CardType, FirstDigitDecidesFive) { EXPECT_EQ(2u, TypeOf("5500000000000004")); }
TEST(CardType, FirstDigitDecidesSix) { EXPECT_EQ(1u, TypeOf("6011000000000004")); }

TEST(CardType, ThreeAndSevenThenZero) {
  EXPECT_EQ(0u, TypeOf("3782-8224-6310-005"));
  EXPECT_EQ(0u, TypeOf("37"));
}

TEST(CardType, ThreeAndAnotherDigitThenThree) {
  EXPECT_EQ(3u, TypeOf("3000 0000 0000 04"));
  EXPECT_EQ(3u, TypeOf("34"));
  EXPECT_EQ(3u, TypeOf("3"));
}

TEST(CardType, AnotherFirstDigitThenThree) {
  for (const char* number : {"0", "1", "2", "7", "8", "9", "04", "07", "17", "27", "73", "97"}) {
    EXPECT_EQ(3u, TypeOf(number)) << number;
  }
}

TEST(CardType, NoDigitsThenThree) {
  EXPECT_EQ(3u, TypeOf(""));
  EXPECT_EQ(3u, TypeOf("none - at all"));
  EXPECT_EQ(3u, CardTypeOf(String()));
}

TEST(CardType, OtherCharactersThenTheyArePassedOver) {
  EXPECT_EQ(4u, TypeOf(" -x4"));
  EXPECT_EQ(0u, TypeOf("(3) x 7 9"));
  EXPECT_EQ(0u, TypeOf("\0" "3\0" "7"s));
  // The characters around the digits, and one that is a digit in its low seven bits alone.
  EXPECT_EQ(2u, TypeOf("/:\xB4" "5"));
}

TEST(CardType, NumberThenNoCopyOfItIsMade) {
  testing::AllocationSystem memory;
  const String number("3782-8224-6310-005");
  testing::SystemInForce inForce(memory);
  CardTypeOf(number);
  EXPECT_EQ(0u, memory.Allocations());
}

}  // namespace
}  // namespace kest
