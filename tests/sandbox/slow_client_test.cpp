// Clients that send or take too slowly: each has its time, and then the connection is the server's again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sandbox/socket.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;

TestServerOptions Impatient() {
  TestServerOptions options;
  options.http.clientTime = std::chrono::milliseconds(300);
  return options;
}

// The time is that of the whole request: a byte now and then does not prolong it.
TEST(SlowClient, ThatKeepsSendingByteByByteIsRefusedWhenItsTimeIsOver) {
  TestServer server(Impatient());
  TestClient client(server.Port(), server.KeyText());
  const std::string request = client.Head("/GetProductList", 100000) + std::string(100000, 'A');
  const auto began = std::chrono::steady_clock::now();
  Socket socket(server.Port());
  std::size_t sent = 0;
  while (!socket.AnswersWithin(5) && sent < request.size()) socket.Send(request.substr(sent++, 1));
  EXPECT_LT(sent, request.size());
  EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(300));
  socket.EndSending();
  EXPECT_EQ(ReadReply(socket).status, 408);
}

TEST(SlowClient, ThatNeverReadsItsReplyIsLetGoWhenItsTimeIsOver) {
  TestServerOptions options = Impatient();
  std::string products;
  for (int i = 0; i < 100; i++) {
    products += std::string(i ? "," : "") + R"({"SKU": )" + std::to_string(i) + R"(, "Name": ")" +
                std::string(60000, 'n') + R"(", "Price": "1.00"})";
  }
  options.catalogue = R"({"applications": [{"guid": "g", "products": [)" + products + "]}]}";
  TestServer server(options);
  TestClient client(server.Port(), server.KeyText());
  ASSERT_TRUE(client.Handshake());
  const std::string body = client.RequestBody(client.RequestFields("GetProductList", {{"GUID", "g"}}));
  Socket socket(server.Port());
  socket.TakeLittle();
  ASSERT_TRUE(socket.Send(client.Head("/GetProductList", body.size()) + body));
  ASSERT_TRUE(socket.AnswersWithin(20000));
  EXPECT_THAT(server.StopAndReadLog(), HasSubstr("the reply was not taken"));
}

TEST(SlowClient, ThatStaysAfterItsReplyIsLetGo) {
  TestServer server(Impatient());
  TestClient client(server.Port(), server.KeyText());
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  Socket socket(server.Port());
  ASSERT_TRUE(socket.Send(client.Head("/GetProductList", body.size()) + body));
  EXPECT_EQ(ReadReply(socket).status, 200);
  // Neither reads nor ends. The server returns from its run when its last connection has gone.
  server.StopAndReadLog();
  bool orderly = false;
  EXPECT_EQ(socket.ReadToEnd(orderly), "");
}

}  // namespace
}  // namespace sandboxtest
