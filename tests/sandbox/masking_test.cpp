// Is nothing secret shown of a message, and everything else of it?
#include "masking.h"

#include <gtest/gtest.h>

namespace sandboxtest {
namespace {

using sandbox::ShownField;
using sandbox::ShownText;

TEST(Masking, CardNumberInAnyTextKeepsTwoAndFourDigits) {
  EXPECT_EQ(ShownText("4111111111111111"), "41**********1111");
  EXPECT_EQ(ShownText("pay with 378282246310005."), "pay with 37*********0005.");
  EXPECT_EQ(ShownText("a4222222222222b5105105105105100c"), "a42*******2222b51**********5100c");
}

TEST(Masking, CardNumberInGroupsKeepsItsSeparators) {
  EXPECT_EQ(ShownText("4111 1111 1111 1111"), "41** **** **** 1111");
  EXPECT_EQ(ShownText("x 4111-1111-1111-1111 y"), "x 41**-****-****-1111 y");
  EXPECT_EQ(ShownText("4111 - 1111 - 1111 - 1111"), "41** - **** - **** - 1111");
}

// What stands behind a card number may be its code or its date of expiry.
TEST(Masking, CardNumberBesideOtherGroupsIsMaskedToItsEnd) {
  EXPECT_EQ(ShownText("4111111111111111 12 2027"), "41************** ** ****");
  EXPECT_EQ(ShownText("7 4111 1111 1111 1111 123"), "7 4*** **** **** **** ***");
  EXPECT_EQ(ShownText("6304000000000000000 123"), "63***************** ***");
  EXPECT_EQ(ShownText("378282246310005 1234"), "37************* ****");
  EXPECT_EQ(ShownText("4222222222222-123"), "42***********-***");
}

TEST(Masking, NumberWithAWrongCheckDigitIsMasked) {
  EXPECT_EQ(ShownText("4242424242424241"), "42**********4241");
  EXPECT_EQ(ShownText("4111 1111 1111 1112"), "41** **** **** 1112");
}

TEST(Masking, DotsBelongToACardNumber) {
  EXPECT_EQ(ShownText("4111.1111.1111.1111"), "41**.****.****.1111");
  EXPECT_EQ(ShownText("Pay 4111111111111111."), "Pay 41**********1111.");
}

TEST(Masking, DigitsThatAreNoCardNumberStay) {
  for (const char* text : {"41111111112", "4111,1111,1111,1111", "", "SKU:4294967295^Name:a^Quantity:65535",
                           "999999999.99", "2026-01-05T10:11:12", "127.0.0.1:40123"}) {
    EXPECT_EQ(ShownText(text), text);
  }
}

TEST(Masking, ShortestIs12DigitsAndTheLastFourStayUpTo19) {
  EXPECT_EQ(ShownText("10000000009"), "10000000009");
  EXPECT_EQ(ShownText("100000000009"), "10******0009");
  EXPECT_EQ(ShownText("1000000000000000009"), "10*************0009");
  EXPECT_EQ(ShownText("10000000000000000008"), "10******************");
}

TEST(Masking, FieldOfACardIsMaskedWhateverItHolds) {
  EXPECT_EQ(ShownField({"KEST-CCard-Number", "4111111111111112"}).value, "41**********1112");
  EXPECT_EQ(ShownField({"ccardname", "Jane Roe Smith"}).value, "Ja********mith");
  EXPECT_EQ(ShownField({"CCardCode", "123"}).value, "***");
  EXPECT_EQ(ShownField({"CCard", "12345678901"}).value, "***********");
  EXPECT_EQ(ShownField({"CCard", ""}).value, "");
}

TEST(Masking, SealingFieldsAreNotShown) {
  for (const char* name : {"KEST-Auth-Client-Key", "KEST-Auth-Server-RAC", "kest-auth-cid"}) {
    EXPECT_EQ(ShownField({name, "secret"}).value, "(not shown)") << name;
    EXPECT_EQ(ShownField({name, "secret"}).name, name);
  }
}

TEST(Masking, CardNumberInANameIsMasked) {
  EXPECT_EQ(ShownField({"4111111111111112", "a"}).name, "41**********1112");
  EXPECT_EQ(ShownField({"4111111111111111", "a"}).name, "41**********1111");
}

TEST(Masking, OtherFieldsStayAsTheyAre) {
  const sandbox::FieldList shown = sandbox::ShownFields({{"GUID", "{1-2}"}, {"KEST-Authx", "seen"}});
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0].name, "GUID");
  EXPECT_EQ(shown[0].value, "{1-2}");
  EXPECT_EQ(shown[1].value, "seen");
}

}  // namespace
}  // namespace sandboxtest
