// Clients that send or take too slowly: each has its time, and then the connection is the server's again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <utility>

#include "sandbox/socket.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"
#include "server_limits.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;

TestServerOptions Impatient() {
  TestServerOptions options;
  options.http.clientTime = std::chrono::milliseconds(1500);
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
  EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(1500));
  socket.EndSending();
  EXPECT_EQ(ReadReply(socket).status, 408);
}

// Its time is over while the server is busy with another's handshake, and its request has been there all along.
TEST(SlowClient, WhoseWholeRequestWaitsForABusyServerIsServed) {
  std::promise<void> busy, goOn;
  TestServerOptions options;
  options.http.clientTime = std::chrono::seconds(2);
  bool first = true;
  options.duringHandshake = [&] {
    if (!std::exchange(first, false)) return;
    busy.set_value();
    goOn.get_future().wait();
  };
  TestServer server(options);
  const TestClient client(server.Port(), server.KeyText());
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  const std::string request = client.Head("/GetProductList", body.size()) + body;
  Socket waiting(server.Port()), other(server.Port());
  ASSERT_TRUE(other.Send(request));
  busy.get_future().wait();
  EXPECT_TRUE(waiting.Send(request));
  EXPECT_FALSE(waiting.AnswersWithin(2200));
  goOn.set_value();
  EXPECT_EQ(ReadReply(waiting).status, 200);
}

TEST(SlowClient, ThatNeverReadsItsReplyIsLetGoWhenItsTimeIsOver) {
  TestServerOptions options = Impatient();
  options.catalogue = LargeCatalogue();
  TestServer server(options);
  TestClient client(server.Port(), server.KeyText());
  ASSERT_TRUE(client.Handshake());
  const std::string body = client.RequestBody(client.RequestFields("GetProductList", {{"GUID", testGuid}}));
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

TEST(SlowClient, ThatStaysAfterItsReplyIsLetGoLongBeforeTheTimeOfARequest) {
  TestServer server;
  const TestClient client(server.Port(), server.KeyText());
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  const auto began = std::chrono::steady_clock::now();
  Socket socket(server.Port());
  ASSERT_TRUE(socket.Send(client.Head("/GetProductList", body.size()) + body));
  EXPECT_EQ(ReadReply(socket).status, 200);
  server.StopAndReadLog();
  const auto stayed = std::chrono::steady_clock::now() - began;
  EXPECT_GE(stayed, sandbox::drainTime);
  EXPECT_LT(stayed, sandbox::HttpLimits().clientTime - std::chrono::seconds(1));
}

}  // namespace
}  // namespace sandboxtest
