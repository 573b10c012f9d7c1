// Servers send texts of any bytes; people and JSON get UTF-8.
#include "text.h"

#include <gtest/gtest.h>

namespace kest_host {
namespace {

TEST(ToUtf8, Utf8Stays) {
  for (const char* text : {"", "Jam", "Bl\xC3\xA5", "\xE2\x82\xAC", "\xF0\x9F\x8D\x93"}) EXPECT_EQ(text, ToUtf8(text));
}

TEST(ToUtf8, AnythingElseIsTakenForIso8859) {
  EXPECT_EQ("Bl\xC3\xA5", ToUtf8("Bl\xE5"));
  EXPECT_EQ("\xC3\xBF\xC2\x80", ToUtf8("\xFF\x80"));
}

TEST(ToUtf8, OverlongAndSurrogatesAndCutOffAreNoUtf8) {
  EXPECT_EQ("\xC3\x80\xC2\x80", ToUtf8("\xC0\x80"));
  EXPECT_EQ("\xC3\xAD\xC2\xA0\xC2\x80", ToUtf8("\xED\xA0\x80"));
  EXPECT_EQ("a\xC3\xA2\xC2\x82", ToUtf8("a\xE2\x82"));
}

TEST(ForTerminal, ControlCharactersBecomeQuestionMarks) {
  EXPECT_EQ("a?b?c?", ForTerminal("a\nb\x7F" "c\xC2\x9B"));
}

TEST(Columns, CodePointsAreCounted) {
  EXPECT_EQ(3u, Columns("Bl\xC3\xA5"));
}

}  // namespace
}  // namespace kest_host
