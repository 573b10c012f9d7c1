#include "transport/rsa_sealing.h"

#include <gtest/gtest.h>

#include <string>

#include "support/commerce_fixture.h"

namespace kest {
namespace {

using testing::SealedServer;

class RsaSealing : public ::testing::Test {
 protected:
  ~RsaSealing() override { SetServer("", 0, ""); }

  // With the exponent 1 every block enciphers to itself.
  std::string Seal(const std::string& message, std::uint32_t keyBytes) {
    EXPECT_TRUE(SetServer("host", 1, SealedServer::KeyText(keyBytes).c_str()));
    const ByteBuffer sealed =
        SealUnderServerKey(ByteBuffer(message.data(), static_cast<std::uint32_t>(message.size())));
    return std::string(reinterpret_cast<const char*>(sealed.Bytes()), sealed.Length());
  }
};

TEST_F(RsaSealing, EachBlockIsAZeroByteAndAChunk) {
  const std::string sealed = Seal(std::string(200, 'm'), 128);
  ASSERT_EQ(256u, sealed.size());
  EXPECT_EQ(std::string(1, '\0') + std::string(127, 'm'), sealed.substr(0, 128));
  EXPECT_EQ(std::string(1, '\0') + std::string(73, 'm') + std::string(54, '\0'), sealed.substr(128));
}

TEST_F(RsaSealing, AMessageOfWholeChunksFillsItsLastBlock) {
  const std::string sealed = Seal(std::string(2 * 127, 'm'), 128);
  ASSERT_EQ(256u, sealed.size());
  EXPECT_EQ(std::string(1, '\0') + std::string(127, 'm'), sealed.substr(128));
}

TEST_F(RsaSealing, EveryLengthGivesTheBlocksThatItNeeds) {
  for (std::size_t length = 1; length <= 400; ++length) {
    EXPECT_EQ((length + 62) / 63 * 64, Seal(std::string(length, 'm'), 64).size()) << length;
  }
}

TEST_F(RsaSealing, AFiveHundredTwelveBitKeyTakesAWholeHandshake) {
  EXPECT_EQ(7u * 64u, Seal(std::string(378 + 1, 'm'), 64).size());
}

TEST_F(RsaSealing, TheSmallestKeyCarriesOneByteABlock) {
  const std::string sealed = Seal("abc", 2);
  EXPECT_EQ(std::string("\0a\0b\0c", 6), sealed);
}

TEST_F(RsaSealing, WithoutAKeyThereIsNothing) {
  SetServer("host", 1, "");
  EXPECT_TRUE(SealUnderServerKey(ByteBuffer("abc", 3)).IsEmpty());
}

}  // namespace
}  // namespace kest
