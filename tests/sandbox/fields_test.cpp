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
using sandbox::LogText;
using sandbox::ParseHeaderBlock;

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

TEST(LogTextOf, KnownTextIsTheTextAndAnyOtherARemark) {
  EXPECT_EQ(LogText("GetProductList", true), "GetProductList");
  EXPECT_EQ(LogText("{41111111-1111-1111-0000-000000000000}", false), "(unknown, 38 bytes)");
  EXPECT_EQ(LogText("a\nb", false), "(unknown, 3 bytes)");
  EXPECT_EQ(LogText("", false), "(unknown, 0 bytes)");
}

}  // namespace
}  // namespace sandboxtest
