// Does a client that does everything right get its answer, over a real socket?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

std::vector<std::string> Products(const Fields& fields) {
  std::vector<std::string> products;
  for (const auto& [name, value] : fields) {
    if (name == "KEST-Product") products.push_back(value);
  }
  return products;
}

class ConversationWithKeyOf : public ::testing::TestWithParam<unsigned> {};

TEST_P(ConversationWithKeyOf, ManyBitsAnswersWithTheProducts) {
  TestServerOptions options;
  options.bits = GetParam();
  TestServer server(options);
  TestClient client(server.Port(), server.KeyText());
  const std::optional<Fields> fields = client.Call("GetProductList", {{"GUID", testGuid}, {"VERSIONID", "1.0"}});
  ASSERT_TRUE(fields.has_value());
  EXPECT_EQ(Value(*fields, "KEST-Error"), "0");
  EXPECT_EQ(Products(*fields).size(), 3u);
}

// 1031 bits: a modulus that does not fill its bytes.
INSTANTIATE_TEST_SUITE_P(Bits, ConversationWithKeyOf, ::testing::Values(512u, 1024u, 1031u, 2048u),
                         ::testing::PrintToStringParamName());

class Conversation : public ::testing::Test {
 protected:
  TestServer server;
  TestClient client{server.Port(), server.KeyText()};

  Fields List(const std::string& guid, const std::string& version) {
    return client.Call("GetProductList", {{"GUID", guid}, {"VERSIONID", version}}).value_or(Fields());
  }
};

TEST_F(Conversation, ProductsComeInCatalogueOrderWithTheirFieldsInFileOrder) {
  EXPECT_THAT(Products(List(testGuid, "")),
              ::testing::ElementsAre("SKU:1042^Name:Pen: blue^Price:1.50", "Price:0.00^Name:Gru\xC3\x9F^SKU:7^Note:",
                                     "SKU:4294967295^Name:c^Price:999999999.99"));
}

TEST_F(Conversation, GuidIsFoundInAnyLetterCase) {
  EXPECT_EQ(Value(List("ONLY-TWO", "2.0"), "KEST-Product"), "SKU:1^Name:a^Price:1.00");
}

TEST_F(Conversation, EntryThatNamesTheVersionGoesBeforeTheOneForEveryVersion) {
  const Fields fields = List(testGuid, "2.0");
  EXPECT_EQ(Value(fields, "KEST-Error"), "0");
  EXPECT_TRUE(Products(fields).empty());
}

TEST_F(Conversation, UnknownGuidIsAnsweredWithItsErrorCode) {
  const Fields fields = List("{00000000-0000-0000-0000-000000000000}", "1.0");
  EXPECT_EQ(Value(fields, "KEST-Error"), "1101");
  EXPECT_TRUE(Products(fields).empty());
}

TEST_F(Conversation, AbsentGuidIsAnsweredAsAnUnknownOne) {
  EXPECT_EQ(Value(client.Call("GetProductList").value_or(Fields()), "KEST-Error"), "1101");
}

TEST_F(Conversation, UnknownVersionOfAKnownGuidIsAnsweredWithItsErrorCode) {
  EXPECT_EQ(Value(List("only-two", "1.0"), "KEST-Error"), "1102");
}

TEST_F(Conversation, UnknownServiceIsAnsweredWithItsErrorCode) {
  EXPECT_EQ(Value(client.Call("GetWeather").value_or(Fields()), "KEST-Error"), "1001");
}

TEST_F(Conversation, ServiceNameInOtherLetterCaseIsUnknown) {
  EXPECT_EQ(Value(client.Call("getproductlist").value_or(Fields()), "KEST-Error"), "1001");
}

TEST_F(Conversation, EachHandshakeGetsAConnectionAndChallengeOfItsOwn) {
  ASSERT_TRUE(client.Handshake());
  const std::string connection = client.connectionId;
  const std::string challenge = client.serverRac;
  client.NewSession();
  ASSERT_TRUE(client.Handshake());
  EXPECT_NE(client.connectionId, connection);
  EXPECT_NE(client.serverRac, challenge);
}

TEST_F(Conversation, SessionsOfSeveralClientsDoNotMeet) {
  TestClient other(server.Port(), server.KeyText());
  ASSERT_TRUE(client.Handshake());
  ASSERT_TRUE(other.Handshake());
  const HttpReply first = client.Request("GetProductList", {{"GUID", testGuid}});
  const HttpReply second = other.Request("GetProductList", {{"GUID", "nobody"}});
  EXPECT_EQ(Value(client.Open(first.body).value_or(Fields()), "KEST-Error"), "0");
  EXPECT_EQ(Value(other.Open(second.body).value_or(Fields()), "KEST-Error"), "1101");
}

TEST_F(Conversation, ReplyIsHttp10WithItsLengthAndNoPromiseToStay) {
  ASSERT_TRUE(client.Handshake());
  const HttpReply reply = client.Request("GetProductList", {{"GUID", testGuid}});
  EXPECT_EQ(reply.statusLine, "HTTP/1.0 200 OK");
  EXPECT_EQ(Value(reply.headers, "Content-Length"), std::to_string(reply.body.size()));
  EXPECT_EQ(Value(reply.headers, "Connection"), "(absent)");
  EXPECT_EQ(Value(reply.headers, "Proxy-Connection"), "(absent)");
}

TEST_F(Conversation, RepliesTellTheProtocolVersion) {
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  const HttpReply handshake = client.Send(client.Head("/GetProductList", body.size()) + body);
  EXPECT_EQ(Value(client.Open(handshake.body).value_or(Fields()), "KEST-Protocol-Version"), "1.1");
  const Fields fields = client.Call("GetProductList", {{"GUID", testGuid}}).value_or(Fields());
  EXPECT_EQ(Value(fields, "KEST-Protocol-Version"), "1.1");
}

TEST_F(Conversation, AbsoluteTargetIsAnswered) {
  ASSERT_TRUE(client.Handshake());
  const std::string body = client.RequestBody(client.RequestFields("GetProductList", {{"GUID", testGuid}}));
  const HttpReply reply = client.Send(client.Head("http://user:pw@shop.test:81/GetProductList", body.size()) + body);
  EXPECT_EQ(reply.status, 200);
  EXPECT_TRUE(client.Open(reply.body).has_value());
}

TEST_F(Conversation, FieldsThatAHostAddsAreLetPass) {
  Fields own = {{"GUID", testGuid}, {"VERSIONID", ""}, {"KEST-Product", "a:1^b:2"}, {"", "no name"}, {"Latin", "\xE9"}};
  EXPECT_EQ(Value(client.Call("GetProductList", own).value_or(Fields()), "KEST-Error"), "0");
}

// A list that is fetched again sends its records along.
TEST_F(Conversation, RequestOfSeveralMebibytesIsAnswered) {
  Fields own = {{"GUID", testGuid}};
  const std::string record = "SKU:1^Name:" + std::string(150, 'x') + "^Price:1.00";
  for (int i = 0; i < 20000; i++) own.emplace_back("KEST-Product", record);
  EXPECT_EQ(Value(client.Call("GetProductList", own).value_or(Fields()), "KEST-Error"), "0");
}

TEST(ConversationAboutManyProducts, TwentyThousandOfThemArriveWhole) {
  TestServerOptions options;
  options.catalogue = R"({"applications": [{"guid": "g", "products": [)";
  for (int i = 0; i < 20000; i++) {
    options.catalogue += (i ? "," : "") + ("{\"SKU\":" + std::to_string(i)) + R"(,"Name":"n","Price":"1.00"})";
  }
  options.catalogue += "]}]}";
  TestServer server(options);
  TestClient client(server.Port(), server.KeyText());
  const std::vector<std::string> products = Products(client.Call("GetProductList", {{"GUID", "g"}}).value_or(Fields()));
  ASSERT_EQ(products.size(), 20000u);
  EXPECT_EQ(products.back(), "SKU:19999^Name:n^Price:1.00");
}

}  // namespace
}  // namespace sandboxtest
