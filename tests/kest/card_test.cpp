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
  EXPECT_EQ("####-1111", MaskCard("####-1111"));
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
  EXPECT_EQ("paid 41**********1111, not 41**********1112, 41**********1111", fields[0].second);
  EXPECT_EQ("123456789012345", fields[1].second);
}

TEST(HideCard, BlanksAndDashesHideNoNumber) {
  Fields fields = {{"by 4111 1111 1111 1111", "41-11 1111  1111-1111."}, {"KEST-TxN", "4111-1111-1111-1111"}};
  HideCard(fields, "4111111111111111");
  EXPECT_EQ((Fields{{"by 41** **** **** 1111", "41-** ****  ****-1111."}, {"KEST-TxN", "41**-****-****-1111"}}), fields);
}

TEST(HideCard, AShortCardIsHiddenWhole) {
  Fields fields = {{"Note", "1234 5678, 1234 5679, 1234"}};
  HideCard(fields, "12345678");
  EXPECT_EQ("**** ****, 1234 5679, 1234", fields[0].second);
}

TEST(HideCard, TransactionsAndAmountsStay) {
  const Fields original = {{"kest-txn", "123456789012345"}, {"KEST-TotalAmount", "123456789012"},
                           {"KEST-TaxAmount", "123456789012"}, {"Price", "123456789012"}, {"SKU", "123456789012"},
                           {"Quantity", "123456789012"}, {"KEST-Receipt-TxN", "123456789012"},
                           {"KEST-Receipt-Price", "123456789012"}, {"KEST-Receipt-Tax", "123456789012"},
                           {"KEST-Receipt-Total", "123456789012"}};
  Fields fields = original;
  HideCard(fields, "4111111111111111");
  EXPECT_EQ(original, fields);
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

TEST(HideCards, AGuidStaysAndWhatStandsBesideItDoesNot) {
  EXPECT_EQ("{12345678-1234-1234-1234-12345678901A}", HideCards("{12345678-1234-1234-1234-12345678901A}"));
  EXPECT_EQ("41**********1111 a2345678-1234-1234-1234-123456789012 41**********1111",
            HideCards("4111111111111111 a2345678-1234-1234-1234-123456789012 4111111111111111"));
}

TEST(HideCards, WhatOnlyResemblesAGuidIsMasked) {
  EXPECT_EQ("12******-****-****-****-********9012", HideCards("12345678-1234-1234-1234-123456789012"));
  EXPECT_EQ("a12******-****-****-****-********9012", HideCards("a12345678-1234-1234-1234-123456789012"));
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
