// Does the server keep to its limits of time and number, and leave quietly those who say nothing?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sandbox/socket.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(HttpServer, ConnectionThatSaysNothingIsClosedWithoutAReply) {
  TestServerOptions options;
  options.http.clientTime = std::chrono::milliseconds(50);
  TestServer server(options);
  Socket silent(server.Port());
  bool orderly = false;
  EXPECT_EQ(silent.ReadToEnd(orderly), "");
  EXPECT_TRUE(orderly);
  EXPECT_THAT(server.StopAndReadLog(), Not(HasSubstr("refused")));
}

TEST(HttpServer, ConnectionThatEndsAtOnceIsNotRefused) {
  TestServer server;
  Socket probe(server.Port());
  probe.EndSending();
  bool orderly = false;
  EXPECT_EQ(probe.ReadToEnd(orderly), "");
  EXPECT_TRUE(orderly);
  EXPECT_THAT(server.StopAndReadLog(), Not(HasSubstr("refused")));
}

TEST(HttpServer, ConnectionsBeyondTheLimitAreServedWhenOneEnds) {
  TestServerOptions options;
  options.http.maxConnections = 1;
  TestServer server(options);
  TestClient client(server.Port(), server.KeyText());
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  Socket first(server.Port());
  Socket second(server.Port());
  ASSERT_TRUE(second.Send(client.Head("/GetGift", body.size()) + body));
  EXPECT_FALSE(second.AnswersWithin(200));
  ASSERT_TRUE(first.Send(client.Head("/GetProductList", body.size()) + body));
  EXPECT_EQ(ReadReply(first).status, 200);
  first.EndSending();
  EXPECT_EQ(ReadReply(second).status, 200);
  const std::string log = server.StopAndReadLog();
  EXPECT_THAT(log, HasSubstr("handshake for GetProductList, opened session 1"));
  EXPECT_THAT(log, HasSubstr("handshake for (unknown, 7 bytes), opened session 2"));
}

// The refusal does nothing, so that the same session is served once there is room.
TEST(HttpServer, RequestRefusedForWaitingRepliesIsServedWhenTheyAreTaken) {
  TestServerOptions options;
  options.catalogue = LargeCatalogue();
  options.http.maxReplies = 1000000;
  TestServer server(options);
  TestClient slow(server.Port(), server.KeyText()), other(server.Port(), server.KeyText());
  ASSERT_TRUE(slow.Handshake());
  const std::string body = slow.RequestBody(slow.RequestFields("GetProductList", {{"GUID", testGuid}}));
  Socket socket(server.Port());
  ASSERT_TRUE(socket.Send(slow.Head("/GetProductList", body.size()) + body));
  ASSERT_TRUE(socket.AnswersWithin(20000));
  ASSERT_TRUE(other.Handshake());
  EXPECT_EQ(other.Request("GetProductList").status, 503);
  EXPECT_EQ(ReadReply(socket).status, 200);
  EXPECT_EQ(other.Request("GetProductList").status, 200);
}

TEST(HttpServer, RequestThatArrivesByteByByteIsAnswered) {
  TestServer server;
  TestClient client(server.Port(), server.KeyText());
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  Socket socket(server.Port());
  for (char c : client.Head("/GetProductList", body.size()) + body) ASSERT_TRUE(socket.Send(std::string(1, c)));
  EXPECT_EQ(ReadReply(socket).status, 200);
}

// The reply to an early refusal must not be lost to a reset while the client still sends.
TEST(HttpServer, RefusalReachesAClientThatIsStillSending) {
  TestServerOptions options;
  options.http.maxBody = 1000;
  TestServer server(options);
  TestClient client(server.Port(), server.KeyText());
  const std::string body(4 * 1024 * 1024, 'A');  // more than the system takes into its buffers
  Socket socket(server.Port());
  socket.SendLittleAhead();
  EXPECT_TRUE(socket.Send(client.Head("/GetProductList", body.size()) + body));
  socket.EndSending();
  EXPECT_EQ(ReadReply(socket).status, 413);
}

TEST(HttpServer, StopAnswersWhatHasBegunToArrive) {
  TestServer server;
  TestClient client(server.Port(), server.KeyText());
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  const std::string request = client.Head("/GetProductList", body.size()) + body;
  Socket idle(server.Port());
  Socket begun(server.Port());
  ASSERT_TRUE(begun.Send(request.substr(0, 300)));
  // Connections are accepted and read in the order of their coming, so one that was answered shows that both are known.
  ASSERT_TRUE(client.Handshake());
  server.Server().Stop();
  bool orderly = false;
  EXPECT_EQ(idle.ReadToEnd(orderly), "");
  EXPECT_TRUE(orderly);
  ASSERT_TRUE(begun.Send(request.substr(300)));
  EXPECT_EQ(ReadReply(begun).status, 200);
  EXPECT_FALSE(Socket(server.Port()).Connected());
}

TEST(HttpServer, AddressInUseIsToldInWords) {
  TestServer server;
  try {
    server.Server().Listen("not-numeric", 0);
    FAIL() << "it listens";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("cannot listen on address not-numeric, port 0: "));
  }
}

}  // namespace
}  // namespace sandboxtest
