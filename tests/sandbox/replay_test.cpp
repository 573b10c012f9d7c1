// What does somebody gain who sends again what others have sent, or names another's connection? Nothing: no sale is
// made twice and none with another's session.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sandbox/admin_client.h"
#include "sandbox/socket.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

const Fields order = {{"KEST-CCard-Number", "4111111111111111"}, {"KEST-Product", "SKU:1042^Quantity:2"}};

class Replay : public ::testing::Test {
 protected:
  TestClient Client() const { return TestClient(server.Port(), server.KeyText()); }

  // A client whose handshake for a sale is done.
  TestClient Opened() const {
    TestClient client = Client();
    EXPECT_TRUE(client.Handshake("BillCustomer"));
    return client;
  }

  static std::string SaleBytes(const TestClient& client) {
    const std::string body = client.RequestBody(client.RequestFields("BillCustomer", order));
    return client.Head("/BillCustomer", body.size()) + body;
  }

  std::string Transaction(const TestClient& client, const HttpReply& reply) const {
    return Value(client.Open(reply.body).value_or(Fields()), "KEST-TxN");
  }

  std::uint64_t Sales() const { return AdminClient(server.AdminPort()).Get("/state").json["sales"]; }

  TestServer server;
};

TEST_F(Replay, RequestSentAgainByteForByteSellsOnce) {
  const TestClient client = Opened();
  const std::string captured = SaleBytes(client);
  EXPECT_EQ(Transaction(client, client.Send(captured)), "100001");
  for (int i = 0; i < 20; i++) EXPECT_EQ(client.Send(captured).status, 409);
  EXPECT_EQ(Sales(), 1u);
}

TEST_F(Replay, RequestSentOnTwentyConnectionsAtOnceSellsOnce) {
  const TestClient client = Opened();
  const std::string captured = SaleBytes(client);
  std::vector<std::unique_ptr<Socket>> sockets;
  for (int i = 0; i < 20; i++) {
    sockets.push_back(std::make_unique<Socket>(server.Port()));
    ASSERT_TRUE(sockets.back()->Send(captured));
  }
  int sold = 0, refused = 0;
  for (const auto& socket : sockets) {
    const int status = ReadReply(*socket).status;
    sold += status == 200;
    refused += status == 409;
  }
  EXPECT_EQ(sold, 1);
  EXPECT_EQ(refused, 19);
  EXPECT_EQ(Sales(), 1u);
}

TEST_F(Replay, RequestWhoseReplyNobodyTookIsUsedUpAllTheSame) {
  const TestClient client = Opened();
  const std::string captured = SaleBytes(client);
  { EXPECT_TRUE(Socket(server.Port()).Send(captured)); }
  // Answered behind the one before, whose connection is gone.
  EXPECT_EQ(client.Send(captured).status, 409);
  EXPECT_EQ(Sales(), 1u);
}

TEST_F(Replay, DamagedRequestUsesItsConnectionUpAndSellsNothing) {
  const TestClient client = Opened();
  const std::string good = SaleBytes(client);
  std::string damaged = good;
  damaged[damaged.size() - 12] = damaged[damaged.size() - 12] == 'A' ? 'B' : 'A';
  EXPECT_EQ(client.Send(damaged).status, 403);
  EXPECT_EQ(client.Send(good).status, 409);
  EXPECT_EQ(Sales(), 0u);
}

TEST_F(Replay, ConnectionIdsOfTwoClientsExchangedSellNothing) {
  TestClient first = Opened(), second = Opened();
  std::swap(first.connectionId, second.connectionId);
  EXPECT_EQ(first.Send(SaleBytes(first)).status, 403);
  EXPECT_EQ(second.Send(SaleBytes(second)).status, 403);
  EXPECT_EQ(Sales(), 0u);
}

TEST_F(Replay, RequestUnderTheConnectionOfAnotherSellsNothing) {
  const TestClient victim = Opened();
  TestClient thief = Opened();
  thief.connectionId = victim.connectionId;
  EXPECT_EQ(thief.Send(SaleBytes(thief)).status, 403);
  EXPECT_EQ(Sales(), 0u);
}

// Whoever has seen a connection's id alone can use it up, and gets nothing for it.
TEST_F(Replay, ConnectionThatAStrangerNamedIsUsedUp) {
  const TestClient victim = Opened();
  TestClient stranger = Client();
  stranger.connectionId = victim.connectionId;
  EXPECT_EQ(stranger.Send(stranger.Head("/BillCustomer", 4) + "AAAA").status, 400);
  EXPECT_EQ(victim.Send(SaleBytes(victim)).status, 409);
  EXPECT_TRUE(Client().Call("BillCustomer", order).has_value());
  EXPECT_EQ(Sales(), 1u);
}

TEST_F(Replay, UnknownConnectionsAreNoOnes) {
  TestClient client = Opened();
  const std::string real = client.connectionId;
  std::string other = real;
  other[0] = other[0] == '0' ? '1' : '0';
  for (const std::string& id : {other, real.substr(1), real + "0", std::string("0"), std::string(32, '0'),
                                std::string("' OR 1=1 --"), std::string("\xFF\xFE")}) {
    client.connectionId = id;
    EXPECT_EQ(client.Send(SaleBytes(client)).status, 403) << id;
  }
  client.connectionId = real;
  EXPECT_EQ(Transaction(client, client.Send(SaleBytes(client))), "100001");
}

// The handshake opens a session of its own each time; the request that followed it belongs to the first alone, because
// the server's challenge is another.
TEST_F(Replay, HandshakeAndRequestSentAgainSellNothing) {
  TestClient client = Client();
  const std::string handshakeBody = client.HandshakeBody(client.HandshakeFields());
  const std::string handshake = client.Head("/BillCustomer", handshakeBody.size()) + handshakeBody;
  const auto open = [&] { return client.Open(client.Send(handshake).body).value_or(Fields()); };
  const Fields first = open();
  client.serverRac = Value(first, "KEST-Auth-Server-RAC");
  client.connectionId = Value(first, "KEST-Auth-CID");
  std::string captured = SaleBytes(client);
  EXPECT_EQ(Transaction(client, client.Send(captured)), "100001");

  const Fields second = open();
  EXPECT_NE(Value(second, "KEST-Auth-Server-RAC"), client.serverRac);
  const std::string newId = Value(second, "KEST-Auth-CID");
  ASSERT_EQ(newId.size(), client.connectionId.size());
  captured.replace(captured.find(client.connectionId), newId.size(), newId);
  EXPECT_EQ(client.Send(captured).status, 403);
  EXPECT_EQ(Sales(), 1u);
}

TEST_F(Replay, ExpiredConnectionSellsNothing) {
  const TestClient client = Opened();
  server.PassSeconds(301);
  EXPECT_EQ(client.Send(SaleBytes(client)).status, 410);
  EXPECT_EQ(Sales(), 0u);
}

}  // namespace
}  // namespace sandboxtest
