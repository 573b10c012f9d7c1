// Are header blocks read as strictly as they are written, and is the log kept clean?
#include "fields.h"

#include <gtest/gtest.h>

#include "log_text.h"

namespace sandboxtest {
namespace {

using sandbox::FieldList;
using sandbox::FieldOrEmpty;
using sandbox::FindField;
using sandbox::FormatHeaderBlock;
using sandbox::ParseHeaderBlock;
using sandbox::SafeGuid;
using sandbox::SafeName;

TEST(HeaderBlock, WithoutFieldsIsOneEmptyLine) {
  EXPECT_EQ(FormatHeaderBlock({}), "\r\n");
  ASSERT_TRUE(ParseHeaderBlock("\r\n").has_value());
  EXPECT_TRUE(ParseHeaderBlock("\r\n")->empty());
}

TEST(HeaderBlock, ReadBackGivesEachFieldInOrder) {
  const std::string text = FormatHeaderBlock({{"a", "1"}, {"b", ""}, {"a", "x: y"}, {"", "v"}});
  EXPECT_EQ(text, "a: 1\r\nb: \r\na: x: y\r\n: v\r\n\r\n");
  const std::optional<FieldList> fields = ParseHeaderBlock(text);
  ASSERT_TRUE(fields.has_value());
  EXPECT_EQ(FormatHeaderBlock(*fields), text);
  EXPECT_EQ(fields->size(), 4u);
  EXPECT_EQ(fields->at(2).value, "x: y");
}

TEST(HeaderBlock, OfAnyLooserFormIsNotRead) {
  const std::string faults[] = {"",
                                "a: 1\r\n",
                                "a: 1\n\r\n",
                                "a: 1\r\n\r\n\r\n",
                                "a: 1\r\n\r\nb: 2\r\n",
                                "a:1\r\n\r\n",
                                "a\r\n\r\n",
                                " a: 1\r\n\r\n",
                                "a: 1\r\n b\r\n\r\n",
                                "a: 1\r2\r\n\r\n",
                                "a: 1\n2\r\n\r\n",
                                std::string("a: \0\r\n\r\n", 8)};
  for (const std::string& text : faults) EXPECT_FALSE(ParseHeaderBlock(text).has_value()) << text;
}

TEST(FieldLookup, FindsTheFirstOfANameInAnyLetterCase) {
  const FieldList fields = {{"Other", "0"}, {"KEST-Error", "1"}, {"kest-error", "2"}};
  EXPECT_EQ(*FindField(fields, "kest-ERROR"), "1");
  EXPECT_EQ(FindField(fields, "KEST-Err"), nullptr);
  EXPECT_EQ(FieldOrEmpty(fields, "absent"), "");
}

TEST(SafeNameOf, LettersIsTheNameItself) {
  EXPECT_EQ(SafeName("GetProductList"), "GetProductList");
}

TEST(SafeNameOf, DigitsControlCharactersOrGreatLengthIsARemark) {
  EXPECT_EQ(SafeName("4111111111111111"), "(no plain name, 16 bytes)");
  EXPECT_EQ(SafeName("a\nb"), "(no plain name, 3 bytes)");
  EXPECT_EQ(SafeName("\x1b[31m"), "(no plain name, 5 bytes)");
  EXPECT_EQ(SafeName(std::string(41, 'a')), "(no plain name, 41 bytes)");
  EXPECT_EQ(SafeName(""), "(no plain name, 0 bytes)");
}

TEST(SafeGuidOf, GuidFormIsTheGuidItself) {
  EXPECT_EQ(SafeGuid("{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}"), "{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}");
  EXPECT_EQ(SafeGuid("6f1d2a54-93c7-4b0e-8e21-5a7c0d94b3f6"), "6f1d2a54-93c7-4b0e-8e21-5a7c0d94b3f6");
}

TEST(SafeGuidOf, AnythingElseIsARemark) {
  EXPECT_EQ(SafeGuid("4111111111111111"), "(not in GUID form, 16 bytes)");
  EXPECT_EQ(SafeGuid("6f1d2a54-93c7-4b0e-8e21-5a7c0d94b3f\n"), "(not in GUID form, 36 bytes)");
  EXPECT_EQ(SafeGuid("{6f1d2a54-93c7-4b0e-8e21-5a7c0d94b3f6"), "(not in GUID form, 37 bytes)");
}

}  // namespace
}  // namespace sandboxtest
