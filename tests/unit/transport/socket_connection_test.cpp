// Does one connection make the socket calls it owes, in their order?
#include "transport/socket_connection.h"

#include "core/exception.h"
#include "transport_fixture.h"

namespace kest::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SocketConnectionTest : public TransportTest {
 protected:
  SocketConnectionTest() { sockets.hosts["server"] = {"10.0.0.1", "10.0.0.2", "10.0.0.3"}; }
};

constexpr char ordinaryLinger[] = "setsockopt 65535 128 4: 0 0";

TEST_F(SocketConnectionTest, ConnectMakesAStreamSocketAndTakesThePort) {
  sockets.conversations.resize(1);
  SocketConnection connection;
  EXPECT_TRUE(connection.Connect("10.9.8.7", 8080));
  EXPECT_TRUE(connection.IsOpen());
  EXPECT_THAT(sockets.log, ElementsAre("socket 2 1 0", "connect 10.9.8.7:8080"));
}

TEST_F(SocketConnectionTest, FirstAddressThatAnswersIsUsed) {
  sockets.conversations.resize(1);
  sockets.refusing = {"10.0.0.1", "10.0.0.2"};
  SocketConnection connection;
  EXPECT_TRUE(connection.Connect("server", 80));
  EXPECT_THAT(sockets.log,
              ElementsAre("socket 2 1 0", "connect 10.0.0.1:80", "connect 10.0.0.2:80", "connect 10.0.0.3:80"));
  EXPECT_EQ(connection.Addresses().Count(), 3u);
}

TEST_F(SocketConnectionTest, ConnectFailsAndClosesWhenEveryAddressRefuses) {
  sockets.conversations.resize(1);
  sockets.refusing = {"10.0.0.1", "10.0.0.2", "10.0.0.3"};
  SocketConnection connection;
  EXPECT_FALSE(connection.Connect("server", 80));
  EXPECT_FALSE(connection.IsOpen());
  EXPECT_EQ(sockets.OpenSockets(), 0u);
}

TEST_F(SocketConnectionTest, ConnectFailsAndClosesForAnUnknownHost) {
  SocketConnection connection;
  EXPECT_FALSE(connection.Connect("nowhere", 80));
  EXPECT_THAT(sockets.log, ElementsAre("socket 2 1 0", ordinaryLinger, "closesocket"));
}

TEST_F(SocketConnectionTest, ConnectFailsForAnEmptyHostWithoutALookUp) {
  SocketConnection connection;
  EXPECT_FALSE(connection.Connect(String(), 80));
  EXPECT_THAT(sockets.lookUps, IsEmpty());
}

TEST_F(SocketConnectionTest, NameThatBeginsWithADigitFailsAtConnect) {
  sockets.conversations.resize(1);
  sockets.refusing = {"255.255.255.255"};
  SocketConnection connection;
  EXPECT_FALSE(connection.Connect("1host", 80));
  EXPECT_THAT(sockets.log, ElementsAre("socket 2 1 0", "connect 255.255.255.255:80", ordinaryLinger, "closesocket"));
}

TEST_F(SocketConnectionTest, ConnectFailsBeforeTheLookUpWhenThereIsNoSocket) {
  sockets.sockets.FailAt(1);
  SocketConnection connection;
  EXPECT_FALSE(connection.Connect("server", 80));
  EXPECT_THAT(sockets.log, ElementsAre("socket 2 1 0"));
  EXPECT_THAT(sockets.lookUps, IsEmpty());
}

TEST_F(SocketConnectionTest, ConnectOnAnOpenConnectionFirstClosesTheOldSocket) {
  sockets.conversations.resize(2);
  SocketConnection connection;
  ASSERT_TRUE(connection.Connect("10.0.0.1", 1));
  ASSERT_TRUE(connection.Connect("10.0.0.2", 2));
  EXPECT_THAT(sockets.log, ElementsAre("socket 2 1 0", "connect 10.0.0.1:1", ordinaryLinger, "closesocket",
                                       "socket 2 1 0", "connect 10.0.0.2:2"));
}

TEST_F(SocketConnectionTest, NoMemoryForTheAddressesRaisesAndCloses) {
  sockets.FailAt(1, AllocationSystem::Failing::once);
  SocketConnection connection;
  const String host;  // no memory of its own
  EXPECT_THROW(connection.Connect("server", 80), Qor::MemoryException);
  sockets.FailAt(2, AllocationSystem::Failing::once);
  EXPECT_THROW(connection.Connect("server", 80), Qor::MemoryException);
  EXPECT_FALSE(connection.IsOpen());
  EXPECT_EQ(sockets.OpenSockets(), 0u);
  EXPECT_EQ(sockets.Outstanding(), 0);
}

TEST_F(SocketConnectionTest, DestructionClosesTheSocket) {
  sockets.conversations.resize(1);
  {
    SocketConnection connection;
    ASSERT_TRUE(connection.Connect("server", 80));
  }
  EXPECT_EQ(sockets.OpenSockets(), 0u);
  EXPECT_EQ(sockets.log.back(), "closesocket");
}

TEST_F(SocketConnectionTest, CloseSetsTheLingerItIsGivenThenCloses) {
  const std::pair<std::int32_t, const char*> closes[] = {{-1, ordinaryLinger},
                                                         {-7, ordinaryLinger},
                                                         {0, "setsockopt 65535 128 4: 1 0"},
                                                         {5, "setsockopt 65535 128 4: 1 5"}};
  for (const auto& [seconds, option] : closes) {
    sockets.conversations.resize(1);
    SocketConnection connection;
    ASSERT_TRUE(connection.Connect("server", 80));
    sockets.log.clear();
    connection.Close(seconds);
    EXPECT_THAT(sockets.log, ElementsAre(option, "closesocket")) << seconds;
    EXPECT_FALSE(connection.IsOpen());
  }
}

TEST_F(SocketConnectionTest, ClosingAClosedConnectionDoesNothing) {
  SocketConnection connection;
  connection.Close(3);
  EXPECT_THAT(sockets.log, IsEmpty());
}

TEST_F(SocketConnectionTest, SendingNothingSucceedsWithoutACall) {
  SocketConnection connection;
  EXPECT_TRUE(connection.Send("x", 0));
  EXPECT_TRUE(connection.Send("x", -1));
  EXPECT_THAT(sockets.log, IsEmpty());
}

TEST_F(SocketConnectionTest, ShortSendsGoOnWithTheRest) {
  sockets.conversations.resize(1);
  sockets.sendLimit = 4;
  SocketConnection connection;
  ASSERT_TRUE(connection.Connect("server", 80));
  sockets.log.clear();
  EXPECT_TRUE(connection.Send("0123456789", 10));
  EXPECT_THAT(sockets.log, ElementsAre("send 10", "send 6", "send 2"));
  EXPECT_EQ(sockets.connections[0].sent, "0123456789");
}

TEST_F(SocketConnectionTest, FailedSendFailsAtOnceAndWhatWasSentStaysSent) {
  for (const int result : {-1, 0}) {
    sockets.conversations.resize(1);
    sockets.sendLimit = 4;
    sockets.sends.FailAt(2);
    sockets.failingSend = result;
    SocketConnection connection;
    ASSERT_TRUE(connection.Connect("server", 80));
    EXPECT_FALSE(connection.Send("0123456789", 10)) << result;
    EXPECT_EQ(sockets.sends.Calls(), 2u);
    EXPECT_EQ(sockets.connections.back().sent, "0123");
  }
}

TEST_F(SocketConnectionTest, ReceiveIsOneCallAndAnswersWhatItAnswers) {
  sockets.conversations.push_back({{"hello"}, nullptr, {3}, -1});
  SocketConnection connection;
  ASSERT_TRUE(connection.Connect("server", 80));
  sockets.log.clear();
  char bytes[64];
  EXPECT_EQ(connection.Receive(bytes, sizeof bytes), 3);
  EXPECT_EQ(connection.Receive(bytes, sizeof bytes), 2);
  EXPECT_EQ(connection.Receive(bytes, sizeof bytes), -1);
  EXPECT_THAT(sockets.log, ElementsAre("recv 64", "recv 64", "recv 64"));
}

TEST_F(SocketConnectionTest, ReceiveAnswersZeroAtTheEndOfTheStream) {
  sockets.conversations.resize(1);
  SocketConnection connection;
  ASSERT_TRUE(connection.Connect("server", 80));
  char byte;
  EXPECT_EQ(connection.Receive(&byte, 1), 0);
}

}  // namespace
}  // namespace kest::testing
