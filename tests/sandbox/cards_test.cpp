// Does the card decide the outcome, and is its number nowhere to be seen afterwards?
#include "cards.h"

#include <gtest/gtest.h>

namespace sandboxtest {
namespace {

using sandbox::JudgeCard;

struct Judged {
  const char* name;
  const char* text;
  int code;
  const char* masked;
};

class Card : public ::testing::TestWithParam<Judged> {};

TEST_P(Card, HasItsOutcomeAndItsMask) {
  const sandbox::CardVerdict verdict = JudgeCard(GetParam().text);
  EXPECT_EQ(verdict.error.code, GetParam().code);
  EXPECT_EQ(verdict.masked, GetParam().masked);
}

const Judged judged[] = {
    {"Visa", "4111111111111111", 0, "41**********1111"},
    {"Mastercard", "5555555555554444", 0, "55**********4444"},
    {"Discover", "6011111111111117", 0, "60**********1117"},
    {"AmericanExpress", "378282246310005", 0, "37*********0005"},
    {"DinersClub", "30569309025904", 0, "30********5904"},
    {"WithDashes", "4111-1111-1111-1111", 0, "41**********1111"},
    {"WithSpaces", " 4111 1111  1111 1111 ", 0, "41**********1111"},
    {"Declined", "4000000000000002", 1403, "40**********0002"},
    {"InsufficientFunds", "4000000000009995", 1404, "40**********9995"},
    {"Expired", "4000000000000069", 1405, "40**********0069"},
    {"ProcessingError", "4000000000000119", 1406, "40**********0119"},
    {"WrongCheckDigit", "4242424242424241", 1402, ""},
    {"WrongCheckDigitOfAGoodCard", "4111111111111112", 1402, ""},
    {"TwoDigitsSwapped", "5555555555545444", 1402, ""},
    {"NoTestCard", "4242424242424242", 1407, "42**********4242"},
    {"TestCardWithMoreDigits", "41111111111111110", 1402, ""},
    {"TwelveDigits", "000000000000", 1407, "00******0000"},
    {"ElevenDigits", "00000000000", 1402, ""},
    {"NineteenDigits", "0000000000000000000", 1407, "00*************0000"},
    {"TwentyDigits", "00000000000000000000", 1402, ""},
    {"MaskedNumber", "41**********1111", 1402, ""},
    {"Letters", "no card at all", 1402, ""},
    {"DigitsAndALetter", "4111111111111111x", 1402, ""},
    {"Nothing", "", 1401, ""},
    {"SpacesAndDashesAlone", " - ", 1401, ""},
};

INSTANTIATE_TEST_SUITE_P(Of, Card, ::testing::ValuesIn(judged), [](const auto& one) { return one.param.name; });

TEST(CardTable, IsWhatDecides) {
#define KEST_TEST_CARD(number, kind, typeCode, outcomeCode, outcome) \
  EXPECT_EQ(JudgeCard(number).error.code, sandbox::outcomeCode.code) << number;
#include "tables/test_cards.inc"
#undef KEST_TEST_CARD
}

}  // namespace
}  // namespace sandboxtest
