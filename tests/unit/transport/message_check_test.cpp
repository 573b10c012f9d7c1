// Which messages are whole, against the plain rule: the padding goes, the text ends at its first zero byte, the digest
// is that of the text and a zero byte.
#include "transport/message_check.h"

#include <gtest/gtest.h>

#include <string>

#include "support/sealed_server.h"

namespace kest {
namespace {

using testing::SealedServer;

// Answers the text, or "-" for a message that is refused.
std::string Check(std::string message) {
  std::uint32_t length = 0;
  auto* bytes = reinterpret_cast<std::uint8_t*>(message.data());
  if (!CheckMessage(bytes, static_cast<std::uint32_t>(message.size()), &length)) return "-";
  return message.substr(digestTextLength, length);
}

std::string Padded(const std::string& plain) {
  const std::size_t padding = 8 - plain.size() % 8;
  return plain + std::string(padding, static_cast<char>(padding));
}

std::string Whole(const std::string& text) { return SealedServer::DigestOf(text) + text; }

TEST(MessageCheck, TextsOfEveryLengthAreFound) {
  std::string text;
  for (int length = 0; length < 150; ++length, text += static_cast<char>('a' + length % 26)) {
    EXPECT_EQ(text, Check(Padded(Whole(text)))) << "without a zero byte";
    EXPECT_EQ(text, Check(Padded(Whole(text) + '\0'))) << "with one";
  }
}

TEST(MessageCheck, WhatFollowsAZeroByteIsNoPartOfTheText) {
  const std::string behind("\0behind\0it", 10);
  EXPECT_EQ("text", Check(Padded(Whole("text") + behind)));
  EXPECT_EQ("-", Check(Padded(SealedServer::DigestOf("text" + behind) + "text" + behind)));
}

TEST(MessageCheck, EveryBadPaddingIsRefused) {
  const std::string text(100, 't');
  const std::string good = Padded(Whole(text));  // 128 characters and a whole block of padding
  ASSERT_EQ(136u, good.size());
  for (std::size_t at = good.size() - 8; at < good.size(); ++at) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 0x10);
    EXPECT_EQ("-", Check(bad)) << at;
  }
  for (const char last : {'\0', '\x09', '\xFF'}) {
    // The zero byte ends the text where it should: the padding alone is wrong.
    EXPECT_EQ("-", Check(Whole(text) + std::string(7, '\0') + last)) << int{last};
  }
}

TEST(MessageCheck, EveryCharacterOfTheDigestCounts) {
  const std::string good = Padded(Whole("text"));
  for (std::size_t at = 0; at < digestTextLength; ++at) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 1);
    EXPECT_EQ("-", Check(bad)) << at;
  }
}

TEST(MessageCheck, DigestIncludesTheZeroByte) {
  const std::string good = Padded(Whole("text"));
  EXPECT_EQ("text", Check(good));
  // SHA-1 of the four characters alone.
  EXPECT_EQ("-", Check(Padded("Ny6gjKsz5xwCxlHbyDpHTTLGduo=text")));
}

TEST(MessageCheck, ShortMessagesAreRefused) {
  for (const std::size_t length : {0, 8, 16, 24, 32, 40}) {
    EXPECT_EQ("-", Check(std::string(length, '\x08'))) << length;
    EXPECT_EQ("-", Check(std::string(length, '\0'))) << length;
  }
  const std::string digest = SealedServer::DigestOf("");
  EXPECT_EQ("", Check(Padded(digest))) << "nothing but the digest of nothing";
  EXPECT_EQ("-", Check(Padded(digest.substr(0, 27)))) << "a digest cut by the padding";
  EXPECT_EQ("-", Check(Padded(digest.substr(0, 27) + '\0'))) << "a digest cut by a zero byte";
}

}  // namespace
}  // namespace kest
