// What does an exchange leave behind when a call, the peer or the memory fails at any point?
#include <optional>

#include "core/exception.h"
#include "transport/http_connection.h"
#include "transport_fixture.h"

namespace kest::testing {
namespace {

using HttpConnectionFailureTest = TransportTest;
using Failing = AllocationSystem::Failing;

constexpr char moved[] = "HTTP/1.1 302 Moved\r\nLocation: /y\r\nContent-Length: 9\r\n\r\nforgotten";
constexpr char final[] = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello";

// What a caller sees: nothing when memory ran out or Run failed, else status and body.
using Outcome = std::optional<std::pair<int, std::string>>;

class Scenario {
 public:
  explicit Scenario(ScriptedSockets& target) : sockets(target) {
    sockets.hosts = {{"server", {"10.0.0.1", "10.0.0.2"}}};
  }

  // A redirect on a connection that is kept and drained, then the body of the reply; `reply` is cut after `cut` bytes.
  Outcome Run(Conversation conversation) {
    sockets.conversations = {std::move(conversation)};
    HttpRequest request;
    request.version = "1.1";
    request.url = HttpUrl::Parse("http://server/x");
    request.headers.Add("Host", "server");
    TextSource body(String("BODY"));
    HttpConnection connection;
    if (!connection.Run(request, body)) {
      EXPECT_EQ(sockets.OpenSockets(), 0u);
      return std::nullopt;
    }
    return std::make_pair(int{connection.reply.status}, Plain(connection.ReadBody()));
  }

 private:
  ScriptedSockets& sockets;
};

const Outcome whole = std::make_pair(200, std::string("hello"));

TEST_F(HttpConnectionFailureTest, PiecesDoNotMatter) {
  for (std::size_t size = 1; size <= sizeof moved + sizeof final; ++size) {
    EXPECT_EQ(Scenario(sockets).Run({{moved, final}, nullptr, {size}}), whole) << size;
  }
}

TEST_F(HttpConnectionFailureTest, PlaceOfASplitDoesNotMatter) {
  for (std::size_t place = 1; place < sizeof moved; ++place) {
    EXPECT_EQ(Scenario(sockets).Run({{moved, final}, nullptr, {place, 1, 8192}}), whole) << place;
  }
}

TEST_F(HttpConnectionFailureTest, ReplyCutAnywhereIsNoWholeReply) {
  const std::string reply = final;
  for (std::size_t cut = 0; cut < reply.size(); ++cut) {
    for (const int ending : {0, -1}) {
      const Outcome outcome = Scenario(sockets).Run({{reply.substr(0, cut)}, nullptr, {}, ending});
      EXPECT_TRUE(!outcome || outcome->second.empty()) << cut;
      EXPECT_EQ(sockets.OpenSockets(), 0u);
    }
  }
}

TEST_F(HttpConnectionFailureTest, ReplyThatEndsBeforeItsHeaderBlockFails) {
  EXPECT_EQ(Scenario(sockets).Run({{"HTTP/1.0 200 OK\r\n"}}), std::nullopt);
  EXPECT_EQ(Scenario(sockets).Run({{"HTTP/1.0 200 OK"}}), std::nullopt);
  EXPECT_EQ(Scenario(sockets).Run({}), std::nullopt);
}

TEST_F(HttpConnectionFailureTest, MalformedHeadFails) {
  EXPECT_EQ(Scenario(sockets).Run({{"HTTP/1.0 200\rOK\r\n\r\n"}}), std::nullopt);
  EXPECT_EQ(Scenario(sockets).Run({{"HTTP/1.0 200 OK\r\na\rb: c\r\n\r\n"}}), std::nullopt);
}

TEST_F(HttpConnectionFailureTest, HeadThatIsMalformedAfterAKeptReplyClosesTheConnection) {
  EXPECT_EQ(Scenario(sockets).Run({{moved, "HTTP/1.0 200\rOK\r\n\r\n"}}), std::nullopt);
}

TEST_F(HttpConnectionFailureTest, NoSocketFails) {
  sockets.sockets.FailAt(1);
  EXPECT_EQ(Scenario(sockets).Run({{moved, final}}), std::nullopt);
}

TEST_F(HttpConnectionFailureTest, FailingConnectGoesOnToTheNextAddress) {
  sockets.connects.FailAt(1);
  EXPECT_EQ(Scenario(sockets).Run({{moved, final}}), whole);
  sockets.connects.FailAt(1, Failing::fromThenOn);
  EXPECT_EQ(Scenario(sockets).Run({{moved, final}}), std::nullopt);
}

TEST_F(HttpConnectionFailureTest, FailingSendAnywhereFails) {
  for (const int result : {-1, 0}) {
    sockets.failingSend = result;
    for (std::uint64_t point = 1; point <= 4; ++point) {
      sockets.sends.FailAt(point);
      EXPECT_EQ(Scenario(sockets).Run({{moved, final}}), std::nullopt) << point;
      ASSERT_GE(sockets.sends.Calls(), point);
    }
  }
}

TEST_F(HttpConnectionFailureTest, SendsOfOneByteSendTheSame) {
  sockets.sendLimit = 1;
  EXPECT_EQ(Scenario(sockets).Run({{moved, final}}), whole);
  EXPECT_EQ(sockets.connections[0].sent,
            "GET /x HTTP/1.1\r\nHost: server\r\n\r\nBODYGET /y HTTP/1.1\r\nHost: server\r\n\r\nBODY");
}

TEST_F(HttpConnectionFailureTest, FailingReceiveAnywhereIsNoWholeReply) {
  for (const Failing how : {Failing::once, Failing::fromThenOn}) {
    for (std::uint64_t point = 1; point < sizeof moved + sizeof final - 2; ++point) {
      sockets.receives.FailAt(point, how);
      const Outcome outcome = Scenario(sockets).Run({{moved, final}, nullptr, {1}});
      EXPECT_TRUE(!outcome || outcome->second.empty()) << point;
      EXPECT_EQ(sockets.OpenSockets(), 0u);
    }
  }
}

TEST_F(HttpConnectionFailureTest, NoMemoryAnywhereRaisesLeavesNoBlockAndNoSocket) {
  for (const Failing how : {Failing::once, Failing::fromThenOn}) {
    std::uint64_t point = 0;
    for (bool isRaised = true; isRaised;) {
      sockets.FailAt(++point, how);
      isRaised = false;
      try {
        EXPECT_EQ(Scenario(sockets).Run({{moved, final}}), whole);
      } catch (const Qor::MemoryException&) {
        isRaised = true;
      }
      EXPECT_EQ(isRaised, sockets.Allocations() >= point);
      ASSERT_EQ(sockets.Outstanding(), 0) << point;
      ASSERT_EQ(sockets.OpenSockets(), 0u) << point;
    }
    EXPECT_GT(point, 20u);
  }
}

TEST_F(HttpConnectionFailureTest, NoMemoryInsideRunClosesAtOnce) {
  sockets.hosts = {{"server", {"10.0.0.1"}}};
  HttpRequest request;
  request.version = "1.1";
  request.url = HttpUrl::Parse("http://server/x");
  TextSource body(String("BODY"));
  HttpConnection connection;
  std::uint64_t raised = 0;
  for (std::uint64_t point = 1;; ++point) {
    connection.Close();
    request.url.path = "/x";
    sockets.conversations = {{{moved, final}}};
    sockets.FailAt(point, Failing::once);
    try {
      EXPECT_TRUE(connection.Run(request, body));
      break;
    } catch (const Qor::MemoryException&) {
      ++raised;
      ASSERT_EQ(sockets.OpenSockets(), 0u) << point;
      EXPECT_FALSE(connection.reply.keepAlive);
    }
  }
  EXPECT_GT(raised, 10u);
}

TEST_F(HttpConnectionFailureTest, HeadOfAnyLengthIsRead) {
  const std::string value(5 << 20, 'v');
  sockets.conversations.push_back({{"HTTP/1.0 200 OK\r\nA: " + value + "\r\nContent-Length: 2\r\n\r\nhi"}});
  HttpRequest request;
  request.url = HttpUrl::Parse("http://10.0.0.1/");
  TextSource body{String()};
  HttpConnection connection;
  ASSERT_TRUE(connection.Run(request, body));
  EXPECT_EQ(connection.reply.headers.Get("a").Length(), 5u << 20);
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
}

}  // namespace
}  // namespace kest::testing
