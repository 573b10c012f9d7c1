// Does the seal hold at the lengths where blocks fill up, and does it give known bytes?
#include "sealed_message.h"

#include <gtest/gtest.h>

#include "refusal.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

// A message of that many bytes without its zero byte: digest, one field, the empty line.
std::string MessageOfLength(std::size_t length) {
  const std::size_t frame = 28 + std::string("a: \r\n\r\n").size();
  return TestClient::WithDigest(TestClient::HeaderBlock({{"a", std::string(length - frame, 'x')}}));
}

TEST(HandshakeMessage, OpensAtEachLengthAroundFullBlocks) {
  const TestClient client(0, SharedKey().PublicText());
  for (std::size_t length = 2 * 127 - 3; length <= 2 * 127 + 3; length++) {
    const std::string message = MessageOfLength(length);
    ASSERT_EQ(message.size(), length);
    const sandbox::FieldList fields = sandbox::OpenHandshake(client.SealForServer(message + '\0'), SharedKey());
    ASSERT_EQ(fields.size(), 1u) << length;
    EXPECT_EQ(fields[0].value, std::string(length - 35, 'x'));
  }
}

TEST(HandshakeMessage, MayBeFollowedByAnyBytesInItsLastBlock) {
  const TestClient client(0, SharedKey().PublicText());
  const std::string sealed = client.SealForServer(MessageOfLength(130) + '\0' + "left over");
  EXPECT_EQ(sandbox::OpenHandshake(sealed, SharedKey()).size(), 1u);
}

TEST(RequestMessage, OpensAtEachLengthOfItsLastBlock) {
  const TestClient client(0, SharedKey().PublicText());
  const sandbox::SessionKey key(client.iv + client.key);
  for (std::size_t length = 40; length < 57; length++) {
    const sandbox::FieldList fields = sandbox::OpenRequest(client.SealForSession(MessageOfLength(length) + '\0'), key);
    ASSERT_EQ(fields.size(), 1u) << length;
    EXPECT_EQ(fields[0].value, std::string(length - 35, 'x'));
  }
}

TEST(SealedReply, IsOpenedByAClientAtEachLengthOfItsLastBlock) {
  const TestClient client(0, SharedKey().PublicText());
  const sandbox::SessionKey key(client.iv + client.key);
  for (std::size_t length = 0; length < 17; length++) {
    const std::string value(length, 'x');
    const std::optional<Fields> fields = client.Open(sandbox::SealReply({{"a", value}, {"b", ""}}, key));
    ASSERT_TRUE(fields.has_value()) << length;
    EXPECT_EQ(*fields, (Fields{{"a", value}, {"b", ""}}));
  }
}

TEST(SessionKeyOfAnotherLength, IsRefused) {
  EXPECT_THROW(sandbox::SessionKey(std::string(135, 'x')), sandbox::Refused);
  EXPECT_THROW(sandbox::SessionKey(std::string(137, 'x')), sandbox::Refused);
}

}  // namespace
}  // namespace sandboxtest
