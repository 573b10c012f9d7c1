// What hides a card number that a server returns: the one for development returns none, so the road cannot show it.
#include "card.h"

#include <gtest/gtest.h>

namespace kest_host {
namespace {

TEST(MaskCard, TheFirstTwoAndTheLastFourDigitsStay) {
  EXPECT_EQ("41**********1111", MaskCard("4111111111111111"));
  EXPECT_EQ("37*********0005", MaskCard("378282246310005"));
  EXPECT_EQ("12******9012", MaskCard("123456789012"));
}

TEST(MaskCard, WhatIsNoDigitStays) {
  EXPECT_EQ("41**-**** ****-1111", MaskCard("4111-1111 1111-1111"));
}

TEST(MaskCard, ANumberTooShortForACardIsHiddenWhole) {
  EXPECT_EQ("***********", MaskCard("12345678901"));
  EXPECT_EQ("*******", MaskCard("1234567"));
}

TEST(MaskCard, WhatIsMaskedAlreadyStays) {
  EXPECT_EQ("41**********1111", MaskCard("41**********1111"));
  EXPECT_EQ("XXXX-1111", MaskCard("XXXX-1111"));
  EXPECT_EQ("", MaskCard(""));
}

TEST(HideCard, TheCardFieldIsMaskedWhateverItsNumberAndLetterCase) {
  Fields fields = {{"kest-ccard-NUMBER", "5555555555554444"}};
  HideCard(fields, "");
  EXPECT_EQ((Fields{{"kest-ccard-NUMBER", "55**********4444"}}), fields);
}

TEST(HideCard, TheNumberIsMaskedWhereverItStands) {
  Fields fields = {{"Note", "paid 4111111111111111, not 4111111111111112, 4111111111111111"},
                   {"KEST-TxN", "123456789012345"}};
  HideCard(fields, "4111111111111111");
  EXPECT_EQ("paid 41**********1111, not 4111111111111112, 41**********1111", fields[0].second);
  EXPECT_EQ("123456789012345", fields[1].second);
}

TEST(HideCard, ANumberThatIsNoneToHideLeavesOtherFieldsAlone) {
  Fields fields = {{"KEST-TotalAmount", "4111.00"}};
  HideCard(fields, "4111");
  EXPECT_EQ("4111.00", fields[0].second);
}

TEST(HideCards, WhatIsAsLongAsACardNumberIsMaskedInATextForPeople) {
  EXPECT_EQ("not expected: 41**********1111", HideCards("not expected: 4111111111111111"));
  EXPECT_EQ("--card=41** **** **** 1111\n", HideCards("--card=4111 1111 1111 1111\n"));
}

TEST(HideCards, ShorterNumbersStay) {
  EXPECT_EQ("--port 65536 [80]", HideCards("--port 65536 [80]"));
}

TEST(ReadCard, BlanksAndDashesAreDropped) {
  EXPECT_EQ("4111111111111111", ReadCard("4111-1111 1111 1111"));
}

TEST(CardTypeName, EveryCodeHasItsWord) {
  EXPECT_EQ("American Express", CardTypeName("0"));
  EXPECT_EQ("Discover", CardTypeName("1"));
  EXPECT_EQ("Mastercard", CardTypeName("2"));
  EXPECT_EQ("other", CardTypeName("3"));
  EXPECT_EQ("Visa", CardTypeName("4"));
}

TEST(CardTypeName, AnyOtherCodeIsUnknown) {
  for (const char* code : {"5", "4294967295", "", "x"}) EXPECT_EQ("unknown", CardTypeName(code)) << code;
}

}  // namespace
}  // namespace kest_host
