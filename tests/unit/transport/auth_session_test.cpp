#include "transport/auth_session.h"

#include <gtest/gtest.h>

#include "support/commerce_fixture.h"

namespace kest {
namespace {

using testing::Fields;
using testing::SealedServer;
using testing::ServerRequest;

// A session and its server, which talk without a connection between them.
class AuthSessionTest : public testing::CommerceTest {
 protected:
  AuthSessionTest() {
    EXPECT_TRUE(session.Begin());
    NameValueList fields;
    fields.Add("KEST-Auth-Client-Key", session.ExportedKey());
    ServerRequest handshake;
    handshake.body = session.SealMessage(fields, true).Text();
    server.OpenHandshake(handshake);
  }

  bool Open(const Fields& fields) {
    const std::string http = server.Reply(fields);
    NameValueList opened;
    return session.OpenMessage(http.substr(http.find("\r\n\r\n") + 4).c_str(), opened);
  }
  std::string ServerChallengeSent() {
    NameValueList fields;
    session.SealMessage(fields, false);
    return fields.Get("KEST-Auth-Server-RAC").Text();
  }

  AuthSession session;
};

TEST_F(AuthSessionTest, TheFirstServerChallengeIsEmptyThenTheOneAccepted) {
  EXPECT_EQ("", ServerChallengeSent());
  ASSERT_TRUE(Open({{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", "first"}}));
  EXPECT_EQ("first", ServerChallengeSent());
}

TEST_F(AuthSessionTest, ARefusedReplyLeavesTheServerChallengeUnchanged) {
  EXPECT_FALSE(Open({{"KEST-Auth-Client-RAC", "wrong"}, {"KEST-Auth-Server-RAC", "refused"}}));
  EXPECT_EQ("", ServerChallengeSent());
  ASSERT_TRUE(Open({{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", "first"}}));
  EXPECT_FALSE(Open({{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", "second"}}));
  EXPECT_EQ("first", ServerChallengeSent());
}

TEST_F(AuthSessionTest, AnEmptyServerChallengeIsReplacedByALaterOne) {
  ASSERT_TRUE(Open({{"KEST-Auth-Client-RAC", server.clientRac}}));
  ASSERT_TRUE(Open({{"KEST-Auth-Client-RAC", server.clientRac}, {"KEST-Auth-Server-RAC", "later"}}));
  EXPECT_EQ("later", ServerChallengeSent());
}

TEST_F(AuthSessionTest, SealingMakesRoomAtOnce) {
  NameValueList few, many;
  for (int i = 0; i < 10; ++i) few.Add("name", "value");
  for (int i = 0; i < 1000; ++i) many.Add("name", "value");
  session.SealMessage(few, false);
  session.SealMessage(many, false);
  memory.Restart();
  session.SealMessage(few, false);
  const std::uint64_t forFew = memory.Allocations();
  memory.Restart();
  session.SealMessage(many, false);
  EXPECT_EQ(forFew, memory.Allocations());
}

// One of the lengths fills its block to the last character.
TEST_F(AuthSessionTest, SealingTakesAsManyBlocksForEveryLength) {
  std::uint64_t expected = 0;
  for (std::uint32_t length = 10; length <= 60; ++length) {
    NameValueList fields;
    fields.Add("name", std::string(length, 'x').c_str());
    session.SealMessage(fields, false);
    memory.Restart();
    session.SealMessage(fields, false);
    if (length == 10) expected = memory.Allocations();
    EXPECT_EQ(expected, memory.Allocations()) << length;
  }
}

}  // namespace
}  // namespace kest
