#include "transport/transport_request.h"

#include <gtest/gtest.h>

#include <memory>

#include "support/commerce_fixture.h"

namespace kest {
namespace {

class TransportRequestTest : public testing::CommerceTest {
 protected:
  std::unique_ptr<FieldSet> Send(const FieldSet& request) {
    return std::unique_ptr<FieldSet>(TransportRequest(0, "Service", request));
  }
};

TEST_F(TransportRequestTest, TheReplyIsANewFieldSet) {
  server.replyFields = {{"a", "1"}};
  FieldSet request;
  request.Set("KEST-Service", "Service");
  const auto reply = Send(request);
  ASSERT_NE(nullptr, reply);
  EXPECT_EQ(0, reply->ErrorCode());
  EXPECT_STREQ("1.0", reply->Version().Text());
  EXPECT_STREQ("1", reply->Get("a").Text());
}

TEST_F(TransportRequestTest, TheRequestGetsNoFieldsOfTheSealing) {
  FieldSet request;
  request.Set("KEST-Service", "Service");
  ASSERT_NE(nullptr, Send(request));
  EXPECT_EQ(1u, request.Fields().Count());
}

TEST_F(TransportRequestTest, EveryLineTravelsAlsoThoseOfOneName) {
  FieldSet request;
  request.Add("KEST-Service", "Service");
  request.Add("twice", "1");
  request.Add("twice", "2");
  ASSERT_NE(nullptr, Send(request));
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back()).find("KEST-Service: Service\r\ntwice: 1\r\ntwice: 2\r\n"));
}

TEST_F(TransportRequestTest, LinesAreReadAsHeaderLines) {
  FieldSet request;
  request.Add("KEST-Service", "Service");
  request.Add("name ", "  value: with colon\t");
  request.Add("injected", "1\r\nsecond: 2");
  ASSERT_NE(nullptr, Send(request));
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back())
                    .find("KEST-Service: Service\r\nname: value: with colon\r\ninjected: 1\r\nsecond: 2\r\n"));
}

TEST_F(TransportRequestTest, ABareCarriageReturnInAFieldFails) {
  FieldSet request;
  request.Add("KEST-Service", "Service");
  request.Add("broken", "a\rb");
  EXPECT_EQ(nullptr, Send(request));
  EXPECT_TRUE(server.requests.empty());
}

TEST_F(TransportRequestTest, AnEmptyLineInAFieldEndsTheRequestThere) {
  FieldSet request;
  request.Add("KEST-Service", "Service");
  request.Add("cut", "a\r\n\r\nb: 1");
  request.Add("behind", "lost");
  ASSERT_NE(nullptr, Send(request));
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back()).find("KEST-Service: Service\r\ncut: a\r\nKEST-Auth-"));
}

TEST_F(TransportRequestTest, ARequestWithoutFieldsFails) {
  EXPECT_EQ(nullptr, Send(FieldSet()));
  EXPECT_TRUE(server.requests.empty());
}

TEST_F(TransportRequestTest, AReplyIsSentAgainWithItsSealingReplaced) {
  server.replyFields = {{"a", "1"}};
  FieldSet request;
  request.Set("KEST-Service", "Service");
  const auto first = Send(request);
  ASSERT_NE(nullptr, first);
  const std::string before = server.clientRac;
  ASSERT_NE(nullptr, Send(*first));
  EXPECT_NE(before, server.clientRac);
  EXPECT_EQ("KEST-Auth-Client-RAC: " + server.clientRac + "\r\nKEST-Auth-Server-RAC: " + server.serverRac +
                "\r\na: 1\r\nKEST-Protocol-Version: 1.1\r\n\r\n",
            server.OpenRequest(server.requests.back()));
}

}  // namespace
}  // namespace kest
