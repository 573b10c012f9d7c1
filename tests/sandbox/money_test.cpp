// Are amounts read, written and taxed to the cent?
#include "money.h"

#include <gtest/gtest.h>

namespace sandboxtest {
namespace {

using sandbox::AmountText;
using sandbox::ReadAmount;
using sandbox::ReadPercent;
using sandbox::TaxOn;

TEST(AmountText, HasTwoDecimalsAlways) {
  EXPECT_EQ(AmountText(0), "0.00");
  EXPECT_EQ(AmountText(5), "0.05");
  EXPECT_EQ(AmountText(10), "0.10");
  EXPECT_EQ(AmountText(100), "1.00");
  EXPECT_EQ(AmountText(2995), "29.95");
  EXPECT_EQ(AmountText(sandbox::mostCents), "999999999.99");
}

TEST(ReadAmount, TakesWhatAmountTextWrites) {
  for (const sandbox::Cents amount : {sandbox::Cents{0}, sandbox::Cents{5}, sandbox::Cents{2995}, sandbox::mostCents}) {
    EXPECT_EQ(ReadAmount(AmountText(amount)), amount);
  }
}

TEST(ReadAmount, RefusesEveryOtherForm) {
  for (const char* text : {"", ".", "1", "1.", "1.0", "1.000", ".50", "-1.00", "+1.00", " 1.00", "1.00 ", "1,00",
                           "1.0x", "1.-1", "1..0", "1000000000.00"}) {
    EXPECT_FALSE(ReadAmount(text)) << text;
  }
}

TEST(ReadPercent, TakesUpToTwoDecimals) {
  EXPECT_EQ(ReadPercent("0"), 0);
  EXPECT_EQ(ReadPercent("19"), 1900);
  EXPECT_EQ(ReadPercent("8.25"), 825);
  EXPECT_EQ(ReadPercent("8.5"), 850);
  EXPECT_EQ(ReadPercent("0.05"), 5);
  EXPECT_EQ(ReadPercent("100.00"), 10000);
}

TEST(ReadPercent, RefusesEveryOtherForm) {
  for (const char* text :
       {"", ".", "8.", ".5", "8.255", "-1", "+1", "8,25", "8%", " 8", "100.01", "101", "1000", "8.x"}) {
    EXPECT_FALSE(ReadPercent(text)) << text;
  }
}

TEST(TaxOn, RoundsHalfACentUpAndLessDown) {
  EXPECT_EQ(TaxOn(10, 500), 1);      // half a cent
  EXPECT_EQ(TaxOn(10, 499), 0);      // a hair less
  EXPECT_EQ(TaxOn(30, 500), 2);      // one and a half: not to the even neighbour's other side
  EXPECT_EQ(TaxOn(50, 500), 3);      // two and a half: up, not to the even neighbour
  EXPECT_EQ(TaxOn(2900, 825), 239);  // 239.25
}

TEST(TaxOn, IsExactAtTheEndsOfItsRange) {
  EXPECT_EQ(TaxOn(0, 10000), 0);
  EXPECT_EQ(TaxOn(2900, 0), 0);
  EXPECT_EQ(TaxOn(sandbox::mostCents, 10000), sandbox::mostCents);
  EXPECT_EQ(TaxOn(sandbox::mostCents, 1), 10'000'000);
}

}  // namespace
}  // namespace sandboxtest
