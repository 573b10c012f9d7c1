// Does one exchange send, read, keep, retry and stop as it must?
#include "transport/http_connection.h"

#include "support/allocation_system.h"
#include "transport_fixture.h"

namespace kest::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char ok[] = "HTTP/1.0 200 OK\r\nContent-Length: 2\r\n\r\nhi";

std::string Redirect(const std::string& location, const std::string& more = "") {
  return "HTTP/1.0 302 Found\r\nLocation: " + location + "\r\n" + more + "\r\n";
}

class HttpConnectionTest : public TransportTest {
 protected:
  HttpConnectionTest() {
    sockets.hosts = {
        {"server", {"10.0.0.1"}}, {"SERVER", {"10.0.0.1"}}, {"other", {"10.0.0.2"}}, {"proxy", {"10.0.0.9"}}};
    request.url = HttpUrl::Parse("http://server/x");
  }
  // One connection for each answer.
  void Serve(const std::vector<std::string>& answers) {
    for (const std::string& answer : answers) sockets.conversations.push_back({{answer}});
  }
  // All answers on one connection.
  void ServeKept(const std::vector<std::string>& answers) { sockets.conversations.push_back({answers}); }
  bool Run() { return connection.Run(request, body); }
  std::vector<std::string> Targets() const {
    std::vector<std::string> targets;
    for (const ConnectionRecord& record : sockets.connections) targets.push_back(record.address);
    return targets;
  }
  std::vector<std::string> RequestLines() const {
    std::vector<std::string> lines;
    for (const ConnectionRecord& record : sockets.connections) {
      for (const std::string& text : record.requests) lines.push_back(text.substr(0, text.find("\r\n")));
    }
    return lines;
  }
  // Asks to be kept and gets it, straight.
  void AskToBeKept() { request.version = "1.1"; }

  HttpRequest request;
  TextSource body{String("BODY")};
  HttpConnection connection;
};

TEST_F(HttpConnectionTest, HeadAndBodyAreSentAndTheReplysHeadIsRead) {
  Serve({ok});
  request.headers.Add("Host", "server");
  EXPECT_TRUE(Run());
  EXPECT_EQ(sockets.connections[0].sent, "GET /x HTTP/1.0\r\nHost: server\r\n\r\nBODY");
  EXPECT_EQ(connection.reply.status, 200);
  EXPECT_EQ(Plain(connection.reply.reason), "OK");
  EXPECT_EQ(Plain(connection.reply.version), "1.0");
  EXPECT_EQ(connection.reply.contentLength, 2);
  EXPECT_EQ(FieldsOf(connection.reply.headers), (Fields{{"Content-Length", "2"}}));
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
}

TEST_F(HttpConnectionTest, LongBodyGoesWhole) {
  Serve({ok});
  const std::string text(50000, 'b');
  TextSource source(Kest(text));
  EXPECT_TRUE(connection.Run(request, source));
  EXPECT_EQ(sockets.connections[0].sent, "GET /x HTTP/1.0\r\n\r\n" + text);
}

TEST_F(HttpConnectionTest, ReplyWithoutALengthHasMinusOneAndNoBody) {
  Serve({"HTTP/1.0 200 OK\r\n\r\nhi"});
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.contentLength, -1);
  EXPECT_TRUE(connection.ReadBody().IsEmpty());
}

TEST_F(HttpConnectionTest, BodyIsReadOnce) {
  Serve({ok});
  EXPECT_TRUE(Run());
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
  EXPECT_TRUE(connection.ReadBody().IsEmpty());
  EXPECT_FALSE(sockets.connections[0].readPastEnd);
}

TEST_F(HttpConnectionTest, ReplyToHeadHasNoBodyWhateverItsLengthSays) {
  ServeKept({"HTTP/1.0 302 Found\r\nContent-Length: 100\r\nLocation: /y\r\n\r\n",
             "HTTP/1.0 200 OK\r\nContent-Length: 100\r\n\r\n"});
  AskToBeKept();
  request.method = "HEAD";
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.status, 200);
  EXPECT_TRUE(connection.ReadBody().IsEmpty());
  EXPECT_FALSE(sockets.connections[0].readPastEnd);
}

TEST_F(HttpConnectionTest, FieldsOfAnEarlierReplyAreGone) {
  Serve({"HTTP/1.0 200 OK\r\nA: 1\r\nContent-Length: 7\r\n\r\n", "HTTP/1.0 404\r\nB: 2\r\n\r\n"});
  EXPECT_TRUE(Run());
  EXPECT_TRUE(Run());
  EXPECT_EQ(FieldsOf(connection.reply.headers), (Fields{{"B", "2"}}));
  EXPECT_EQ(connection.reply.contentLength, -1);
  EXPECT_TRUE(connection.reply.reason.IsEmpty());
}

TEST_F(HttpConnectionTest, PortZeroIsEighty) {
  Serve({ok, ok});
  EXPECT_TRUE(Run());
  request.url.port = 8080;
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80", "10.0.0.1:8080"));
}

TEST_F(HttpConnectionTest, ProxyIsConnectedToAndGetsTheAbsoluteForm) {
  Serve({ok});
  connection.proxyHost = "proxy";
  connection.proxyPort = 3128;
  request.url = HttpUrl::Parse("http://me:pw@server:81/x");
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.9:3128"));
  EXPECT_THAT(sockets.lookUps, ElementsAre("proxy"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET http://me:pw@server:81/x HTTP/1.0"));
}

TEST_F(HttpConnectionTest, ProxyPortZeroIsEightyWhateverThePortOfTheUrl) {
  Serve({ok});
  connection.proxyHost = "proxy";
  request.url.port = 81;
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.9:80"));
}

TEST_F(HttpConnectionTest, ProxyIsTheConnectionsOwnNotTheRequests) {
  Serve({ok});
  request.proxy.host = "proxy";
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET /x HTTP/1.0"));
}

TEST_F(HttpConnectionTest, EmptyHostFailsWithoutALookUp) {
  request.url.host.Empty();
  EXPECT_FALSE(Run());
  EXPECT_THAT(sockets.lookUps, IsEmpty());
}

TEST_F(HttpConnectionTest, NoReplyEndsAfterSending) {
  Serve({ok});
  connection.reply.noReply = true;
  EXPECT_TRUE(Run());
  EXPECT_EQ(sockets.connections[0].sent, "GET /x HTTP/1.0\r\n\r\nBODY");
  EXPECT_EQ(sockets.receives.Calls(), 0u);
}

TEST_F(HttpConnectionTest, HandleStatusFalseLeavesEveryStatusToTheCaller) {
  for (const int status : {301, 302, 303, 305, 408, 411}) {
    Serve({"HTTP/1.0 " + std::to_string(status) + " x\r\nLocation: /y\r\n\r\n"});
    connection.reply.handleStatus = false;
    EXPECT_TRUE(Run());
    EXPECT_EQ(connection.reply.status, status);
  }
  EXPECT_THAT(sockets.conversations, IsEmpty());
}

TEST_F(HttpConnectionTest, OnlySixStatusesFrom300To420AreTriedAgain) {
  for (int status = 300; status <= 420; ++status) {
    const bool isTriedAgain =
        status == 301 || status == 302 || status == 303 || status == 305 || status == 408 || status == 411;
    sockets.conversations.clear();
    Serve({"HTTP/1.0 " + std::to_string(status) + " x\r\nLocation: http://other/\r\n\r\n", ok});
    request.url = HttpUrl::Parse("http://server/x");
    EXPECT_TRUE(Run());
    EXPECT_EQ(connection.reply.status, isTriedAgain ? 200 : status);
    EXPECT_EQ(sockets.conversations.empty(), isTriedAgain) << status;
  }
}

TEST_F(HttpConnectionTest, RedirectIsFollowedWithTheWholeBodyAndTheSameHostField) {
  Serve({Redirect("http://other:81/y?z"), ok});
  request.headers.Add("Host", "server");
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80", "10.0.0.2:81"));
  EXPECT_EQ(sockets.connections[1].sent, "GET /y?z HTTP/1.0\r\nHost: server\r\n\r\nBODY");
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
}

TEST_F(HttpConnectionTest, RelativeRedirectKeepsHostAndPort) {
  Serve({Redirect("../z"), ok});
  request.url = HttpUrl::Parse("http://server:81/a/b/c");
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:81", "10.0.0.1:81"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET /a/b/c HTTP/1.0", "GET /a/z HTTP/1.0"));
}

TEST_F(HttpConnectionTest, SixRedirectsInARowFollowFiveAndTheSixthStands) {
  Serve({Redirect("/1"), Redirect("/2"), Redirect("/3"), Redirect("/4"), Redirect("/5"), Redirect("/6"), ok});
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.status, 302);
  EXPECT_EQ(Plain(connection.reply.headers.Get("Location")), "/6");
  EXPECT_THAT(RequestLines(), ElementsAre("GET /x HTTP/1.0", "GET /1 HTTP/1.0", "GET /2 HTTP/1.0", "GET /3 HTTP/1.0",
                                          "GET /4 HTTP/1.0", "GET /5 HTTP/1.0"));
}

TEST_F(HttpConnectionTest, CountersBeginAgainWithEveryRun) {
  for (int run = 0; run < 3; ++run) {
    Serve({Redirect("/1"), Redirect("/2"), Redirect("/3"), Redirect("/4"), Redirect("/5"), ok});
    EXPECT_TRUE(Run());
    EXPECT_EQ(connection.reply.status, 200);
  }
}

TEST_F(HttpConnectionTest, RedirectOfAPostStands) {
  Serve({Redirect("/y"), ok});
  request.method = "POST";
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.status, 302);
  EXPECT_EQ(sockets.connections.size(), 1u);
}

TEST_F(HttpConnectionTest, FiveTimeoutsAreTriedAgainAndTheSixthStands) {
  Serve(std::vector<std::string>(7, "HTTP/1.0 408 Late\r\n\r\n"));
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.status, 408);
  EXPECT_EQ(sockets.connections.size(), 6u);
  for (const ConnectionRecord& record : sockets.connections) EXPECT_EQ(record.sent, "GET /x HTTP/1.0\r\n\r\nBODY");
}

TEST_F(HttpConnectionTest, LengthRequiredIsAnsweredWithLengthZeroAndNoBody) {
  Serve({"HTTP/1.0 411 Length\r\n\r\n", ok});
  request.headers.Add("Content-Length", "4");
  EXPECT_TRUE(Run());
  EXPECT_EQ(sockets.connections[0].sent, "GET /x HTTP/1.0\r\nContent-Length: 4\r\n\r\nBODY");
  EXPECT_EQ(sockets.connections[1].sent, "GET /x HTTP/1.0\r\nContent-Length: 0\r\n\r\n");
}

TEST_F(HttpConnectionTest, LengthRequiredIsAnsweredAsOftenAsTheServerAsks) {
  Serve(std::vector<std::string>(300, "HTTP/1.0 411 Length\r\n\r\n"));
  Serve({ok});
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.status, 200);
  EXPECT_EQ(sockets.connections.size(), 301u);
}

TEST_F(HttpConnectionTest, LengthRequiredLeavesTheBodyOutOfAllLaterAttemptsOfTheRunOnly) {
  Serve({"HTTP/1.0 411 Length\r\n\r\n", Redirect("/y"), ok, ok});
  EXPECT_TRUE(Run());
  EXPECT_THAT(sockets.connections[2].sent, Not(HasSubstr("BODY")));
  HttpRequest next;
  next.url = HttpUrl::Parse("http://server/x");
  EXPECT_TRUE(connection.Run(next, body));
  EXPECT_THAT(sockets.connections[3].sent, HasSubstr("BODY"));
}

TEST_F(HttpConnectionTest, UseProxyRoutesTheNextAttemptThroughIt) {
  Serve({"HTTP/1.0 305 Use Proxy\r\nLocation: http://proxy:3128/\r\n\r\n", ok});
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80", "10.0.0.9:3128"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET /x HTTP/1.0", "GET http://server/x HTTP/1.0"));
}

TEST_F(HttpConnectionTest, UseProxyHoldsForItsRunOnly) {
  Serve({"HTTP/1.0 305 Use Proxy\r\nLocation: http://proxy/\r\n\r\n", Redirect("/y"), ok, ok});
  EXPECT_TRUE(Run());
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80", "10.0.0.9:80", "10.0.0.9:80", "10.0.0.1:80"));
  EXPECT_TRUE(connection.proxyHost.IsEmpty());
}

TEST_F(HttpConnectionTest, UseProxyWithoutALocationStands) {
  Serve({"HTTP/1.0 305 Use Proxy\r\n\r\n", ok});
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.status, 305);
}

TEST_F(HttpConnectionTest, KeptConnectionIsReusedForARedirectToTheSameHostInOtherLetterCase) {
  ServeKept({Redirect("http://SERVER:80/y"), ok});
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET /x HTTP/1.1", "GET /y HTTP/1.1"));
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
}

TEST_F(HttpConnectionTest, KeptConnectionOnAnyPortIsReused) {
  ServeKept({Redirect("http://server:81/y"), ok});
  AskToBeKept();
  request.url = HttpUrl::Parse("http://server:81/x");
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:81"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET /x HTTP/1.1", "GET /y HTTP/1.1"));
}

TEST_F(HttpConnectionTest, KeptConnectionIsNotReusedForAnotherHostOrPort) {
  Serve({Redirect("http://other/y"), Redirect("http://other:81/y"), ok});
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80", "10.0.0.2:80", "10.0.0.2:81"));
  EXPECT_FALSE(sockets.connections[0].isOpen);
  EXPECT_FALSE(sockets.connections[1].isOpen);
}

TEST_F(HttpConnectionTest, ConnectionThatIsNotKeptIsOpenedAnew) {
  Serve({Redirect("/y"), ok});
  EXPECT_TRUE(Run());
  EXPECT_FALSE(connection.reply.keepAlive);
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.1:80", "10.0.0.1:80"));
  EXPECT_FALSE(sockets.connections[0].isOpen);
}

TEST_F(HttpConnectionTest, StraightRequestWithProxyConnectionKeepAliveIsNeverKept) {
  Serve({Redirect("/y", "Connection: Keep-Alive\r\nProxy-Connection: Keep-Alive\r\n"), ok});
  request.headers.Add("Proxy-Connection", "Keep-Alive");
  EXPECT_TRUE(Run());
  EXPECT_EQ(sockets.connections.size(), 2u);
}

TEST_F(HttpConnectionTest, SameRequestThroughAProxyIsKeptWhenTheReplyAllowsIt) {
  ServeKept({Redirect("/y", "Proxy-Connection: Keep-Alive\r\n"), ok});
  connection.proxyHost = "proxy";
  request.headers.Add("Proxy-Connection", "Keep-Alive");
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.9:80"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET http://server/x HTTP/1.0", "GET http://server/y HTTP/1.0"));
}

TEST_F(HttpConnectionTest, KeptConnectionThroughAProxyIsReusedForAnotherServer) {
  ServeKept({Redirect("http://other/y"), ok});
  connection.proxyHost = "proxy";
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_THAT(Targets(), ElementsAre("10.0.0.9:80"));
  EXPECT_THAT(RequestLines(), ElementsAre("GET http://server/x HTTP/1.1", "GET http://other/y HTTP/1.1"));
}

TEST_F(HttpConnectionTest, KeptConnectionIsDrainedOfTheBodyBeforeTheNextAttempt) {
  const std::string decoy = "HTTP/1.0 500 Decoy\r\n\r\n";
  for (const std::size_t piece : {1, 7, 8192}) {
    const std::string filled = decoy + std::string(20000, 'x');
    sockets.conversations.push_back(
        {{Redirect("/y", "Content-Length: " + std::to_string(filled.size()) + "\r\n") + filled, ok}, nullptr, {piece}});
    request.url = HttpUrl::Parse("http://server/x");
    AskToBeKept();
    EXPECT_TRUE(Run());
    EXPECT_EQ(connection.reply.status, 200);
    EXPECT_EQ(Plain(connection.ReadBody()), "hi");
    connection.Close();
  }
}

TEST_F(HttpConnectionTest, KeptConnectionWithoutALengthIsTakenToHaveNoBody) {
  ServeKept({Redirect("/y"), ok});
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_EQ(connection.reply.status, 200);
}

TEST_F(HttpConnectionTest, ExchangeFailsWhenAKeptConnectionCannotBeDrained) {
  for (const char* length : {"100", "-5", "4294967295"}) {
    Serve({Redirect("/y", std::string("Content-Length: ") + length + "\r\n") + "short", ok});
    AskToBeKept();
    request.url = HttpUrl::Parse("http://server/x");
    EXPECT_FALSE(Run()) << length;
    EXPECT_EQ(sockets.OpenSockets(), 0u);
    sockets.conversations.clear();
  }
}

TEST_F(HttpConnectionTest, ConnectionThatIsNotReusedIsNotDrained) {
  Serve({Redirect("http://other/", "Content-Length: 100\r\n"), ok});
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_FALSE(sockets.connections[0].readPastEnd);
}

TEST_F(HttpConnectionTest, NextRunReusesAKeptConnectionWhetherOrNotTheBodyWasRead) {
  ServeKept({ok, ok, ok});
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
  EXPECT_TRUE(Run());
  EXPECT_TRUE(Run());
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
  EXPECT_EQ(sockets.connections.size(), 1u);
}

TEST_F(HttpConnectionTest, BodyThatCannotBeReadWholeIsEmptyAndClosesTheConnection) {
  Serve({"HTTP/1.0 200 OK\r\nContent-Length: 5\r\n\r\nhi", ok});
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_TRUE(connection.ReadBody().IsEmpty());
  EXPECT_FALSE(connection.reply.keepAlive);
  EXPECT_EQ(sockets.OpenSockets(), 0u);
  EXPECT_TRUE(Run());
  EXPECT_EQ(Plain(connection.ReadBody()), "hi");
}

TEST_F(HttpConnectionTest, CloseForgetsThatTheConnectionWasKept) {
  Serve({ok, ok});
  AskToBeKept();
  EXPECT_TRUE(Run());
  EXPECT_TRUE(connection.reply.keepAlive);
  connection.Close();
  EXPECT_FALSE(connection.reply.keepAlive);
  EXPECT_EQ(sockets.OpenSockets(), 0u);
  EXPECT_THAT(sockets.log.end()[-2], StartsWith("setsockopt 65535 128 4: 0 "));
  EXPECT_TRUE(Run());
  EXPECT_EQ(sockets.connections.size(), 2u);
}

TEST_F(HttpConnectionTest, LivesInABlockOfItsOwn) {
  AllocationSystem memory;
  SystemInForce counted(memory);
  const HttpConnection inPlace;
  const std::int64_t itsMembers = memory.Outstanding();
  auto* made = new HttpConnection;
  EXPECT_EQ(itsMembers + 1 + itsMembers, memory.Outstanding());
  delete made;
  EXPECT_EQ(itsMembers, memory.Outstanding());
}

TEST_F(HttpConnectionTest, DestructionClosesTheSocket) {
  Serve({ok});
  {
    HttpConnection other;
    EXPECT_TRUE(other.Run(request, body));
    EXPECT_EQ(sockets.OpenSockets(), 1u);
  }
  EXPECT_EQ(sockets.OpenSockets(), 0u);
}

}  // namespace
}  // namespace kest::testing
