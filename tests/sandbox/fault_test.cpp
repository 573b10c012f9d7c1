// Does each fault reach a client as it is asked for, as often as it is asked for, and on no other message?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fault_table.h"
#include "sandbox/admin_client.h"
#include "sandbox/test_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const Fields ask = {{"GUID", testGuid}};

TestServerOptions With(const std::string& faults) {
  TestServerOptions options;
  options.faults = R"({"faults": [)" + faults + "]}";
  return options;
}

// A server with faults, a client, and its messages one by one.
class Faults {
 public:
  explicit Faults(const std::string& faults) : server(With(faults)), client(server.Port(), server.KeyText()) {}

  std::string HandshakeBytes() const {
    const std::string body = client.HandshakeBody(client.HandshakeFields());
    return client.Head("/GetProductList", body.size()) + body;
  }

  std::string RequestBytes() const {
    const std::string body = client.RequestBody(client.RequestFields("GetProductList", ask));
    return client.Head("/GetProductList", body.size()) + body;
  }

  // Returns what the server sends back, to the last byte.
  std::string Raw(const std::string& bytes) const {
    Socket socket(server.Port());
    socket.Send(bytes);
    bool orderly = false;
    const std::string reply = socket.ReadToEnd(orderly);
    EXPECT_TRUE(orderly);
    return reply;
  }

  HttpReply HandshakeReply() const { return client.Send(HandshakeBytes()); }

  // Runs the handshake, which has to succeed, and the request.
  HttpReply Reply() {
    client.NewSession();
    EXPECT_TRUE(client.Handshake());
    return client.Request("GetProductList", ask);
  }

  std::string RawReply() {
    client.NewSession();
    EXPECT_TRUE(client.Handshake());
    return Raw(RequestBytes());
  }

  bool Works() { return client.Call("GetProductList", ask).has_value(); }

  std::string Message(const std::string& body) const { return client.Decipher(body); }

  AdminClient Admin() const { return AdminClient(server.AdminPort()); }

  TestServer server;
  TestClient client;
};

std::string BodyOf(const std::string& raw) {
  return raw.substr(raw.find("\r\n\r\n") + 4);
}

TEST(Fault, WrongDigestBelongsToAnotherText) {
  Faults faults(R"({"kind": "wrong-digest"})");
  const HttpReply reply = faults.Reply();
  ASSERT_EQ(reply.status, 200);
  const std::string message = faults.Message(reply.body);
  const std::string right = TestClient::WithDigest(message.substr(28, message.size() - 29)) + '\0';
  EXPECT_NE(message.substr(0, 28), right.substr(0, 28));
  EXPECT_EQ(message.substr(1), right.substr(1));
  EXPECT_TRUE(FromBase64(message.substr(0, 28)).has_value());
}

TEST(Fault, DigestWithoutZeroIsThatOfTheTextAlone) {
  Faults faults(R"({"kind": "digest-without-zero"})");
  const HttpReply reply = faults.Reply();
  const std::string message = faults.Message(reply.body);
  const std::string text = message.substr(28, message.size() - 29);
  EXPECT_EQ(message.substr(0, 28), Base64(Sha1(text)));
  EXPECT_FALSE(faults.client.Open(reply.body).has_value());
}

TEST(Fault, WrongClientChallengeIsSealedInAReplyThatHolds) {
  Faults faults(R"({"kind": "wrong-client-challenge"})");
  const Fields fields = faults.client.Open(faults.Reply().body).value();
  EXPECT_NE(Value(fields, "KEST-Auth-Client-RAC"), faults.client.clientRac);
  EXPECT_EQ(Value(fields, "KEST-Auth-Client-RAC").substr(1), faults.client.clientRac.substr(1));
  EXPECT_EQ(Value(fields, "KEST-Auth-Server-RAC"), faults.client.serverRac);
}

TEST(Fault, ChangedServerChallengeIsSealedInAReplyThatHolds) {
  Faults faults(R"({"kind": "changed-server-challenge"})");
  const Fields fields = faults.client.Open(faults.Reply().body).value();
  EXPECT_NE(Value(fields, "KEST-Auth-Server-RAC"), faults.client.serverRac);
  EXPECT_EQ(Value(fields, "KEST-Auth-Server-RAC").size(), 64u);
  EXPECT_EQ(Value(fields, "KEST-Auth-Client-RAC"), faults.client.clientRac);
}

TEST(Fault, ServerChallengeChangedInTheHandshakeIsNotTheOneOfTheSession) {
  Faults faults(R"({"kind": "changed-server-challenge", "at": "handshake"})");
  ASSERT_TRUE(faults.client.Handshake());
  EXPECT_EQ(faults.client.Request("GetProductList", ask).status, 403);
}

TEST(Fault, BadPaddingEndsWithANine) {
  Faults faults(R"({"kind": "bad-padding"})");
  const HttpReply reply = faults.Reply();
  ASSERT_EQ(reply.status, 200);
  EXPECT_FALSE(faults.client.Open(reply.body).has_value());
  const std::string plain = faults.client.DecipherBlocks(reply.body);
  EXPECT_EQ(plain.back(), 9);
  EXPECT_NE(plain.find("KEST-Product"), std::string::npos);
}

TEST(Fault, BadBase64HasOneForeignCharacterInItsMiddle) {
  Faults faults(R"({"kind": "bad-base64"})");
  const HttpReply reply = faults.Reply();
  ASSERT_EQ(reply.status, 200);
  EXPECT_EQ(reply.body.find('*'), reply.body.size() / 2);
  EXPECT_EQ(std::count(reply.body.begin(), reply.body.end(), '*'), 1);
  EXPECT_EQ(reply.body.size() % 4, 0u);
}

TEST(Fault, CutBodyAnnouncesTheWholeAndEndsEarly) {
  Faults faults(R"({"kind": "cut-body", "bytes": 8})");
  const std::string raw = faults.RawReply();
  EXPECT_EQ(BodyOf(raw).size(), 8u);
  const std::size_t announced = std::stoul(raw.substr(raw.find("Content-Length: ") + 16));
  EXPECT_GT(announced, 100u);
  EXPECT_EQ(announced % 4, 0u);
}

TEST(Fault, CloseEndsWithinTheHead) {
  Faults faults(R"({"kind": "close", "bytes": 12}, {"kind": "close", "bytes": 0})");
  EXPECT_EQ(faults.RawReply(), "HTTP/1.0 200");
  EXPECT_EQ(faults.RawReply(), "");
}

TEST(Fault, CloseEndsWithinTheBody) {
  Faults faults(R"({"kind": "close", "bytes": 100}, {"kind": "close", "bytes": 1000000000})");
  const std::string cut = faults.RawReply();
  EXPECT_EQ(cut.size(), 100u);
  EXPECT_GT(BodyOf(cut).size(), 0u);
  const std::string whole = faults.RawReply();
  EXPECT_TRUE(faults.client.Open(BodyOf(whole)).has_value());
}

TEST(Fault, ContentLengthIsWhatIsAskedForAndTheBodyWhole) {
  for (const char* value : {"-1", "99999999999", "2147483647", "", "many"}) {
    Faults faults(std::string(R"({"kind": "content-length", "value": ")") + value + "\"}");
    const std::string raw = faults.RawReply();
    EXPECT_THAT(raw, HasSubstr(std::string("Content-Length: ") + value + "\r\n\r\n"));
    EXPECT_TRUE(faults.client.Open(BodyOf(raw)).has_value());
  }
}

TEST(Fault, StatusIsAnsweredWithItsLocationAndReason) {
  Faults faults(R"({"kind": "status", "code": 302, "location": "http://other:81/a", "reason": "Gone fishing"})");
  const HttpReply reply = faults.Reply();
  EXPECT_EQ(reply.statusLine, "HTTP/1.0 302 Gone fishing");
  EXPECT_EQ(Value(reply.headers, "Location"), "http://other:81/a");
}

TEST(Fault, StatusWithoutLocationAndReasonHasTheUsualReason) {
  Faults faults(R"({"kind": "status", "code": 408}, {"kind": "status", "code": 799})");
  const HttpReply reply = faults.Reply();
  EXPECT_EQ(reply.statusLine, "HTTP/1.0 408 Request Timeout");
  EXPECT_EQ(Value(reply.headers, "Location"), "(absent)");
  EXPECT_EQ(faults.Reply().statusLine, "HTTP/1.0 799 Unknown");
}

TEST(Fault, SessionIsStillOpenAfterAStatus) {
  Faults faults(R"({"kind": "status", "code": 408})");
  EXPECT_EQ(faults.Reply().status, 408);
  const HttpReply again = faults.client.Request("GetProductList", ask);
  EXPECT_EQ(again.status, 200);
  EXPECT_TRUE(faults.client.Open(again.body).has_value());
}

TEST(Fault, SessionIsUsedUpByARequestWhoseReplyIsTamperedWith) {
  Faults faults(R"({"kind": "close", "bytes": 0})");
  EXPECT_EQ(faults.RawReply(), "");
  EXPECT_EQ(faults.client.Request("GetProductList", ask).status, 409);
}

TEST(Fault, FieldIsSetAddedAndRemoved) {
  Faults faults(R"({"kind": "field", "name": "kest-error", "value": "77"},
                   {"kind": "field", "name": "KEST-Host", "value": "127.0.0.1"},
                   {"kind": "field", "name": "KEST-Product", "value": null})");
  Fields fields = faults.client.Open(faults.Reply().body).value();
  EXPECT_EQ(Value(fields, "KEST-Error"), "77");
  fields = faults.client.Open(faults.Reply().body).value();
  EXPECT_EQ(Value(fields, "KEST-Host"), "127.0.0.1");
  EXPECT_EQ(Value(fields, "KEST-Error"), "0");
  fields = faults.client.Open(faults.Reply().body).value();
  EXPECT_EQ(Value(fields, "KEST-Host"), "(absent)");
  EXPECT_EQ(Value(fields, "KEST-Product"), "(absent)");
}

TEST(Fault, HeadersStandAsTheyAreAsked) {
  Faults faults(R"({"kind": "headers", "lines": ["X-A: b", "X-Long: a", "\tfolded", "Bare: c\rd"]})");
  const std::string raw = faults.RawReply();
  EXPECT_THAT(raw, HasSubstr("\r\nX-A: b\r\nX-Long: a\r\n\tfolded\r\nBare: c\rd\r\n\r\n"));
  EXPECT_THAT(raw, HasSubstr("Content-Length: " + std::to_string(BodyOf(raw).size()) + "\r\n"));
  EXPECT_TRUE(faults.client.Open(BodyOf(raw)).has_value());
}

TEST(Fault, DelayLetsTheReplyWait) {
  Faults faults(R"({"kind": "delay", "milliseconds": 300, "at": "handshake"})");
  Socket socket(faults.server.Port());
  const auto began = std::chrono::steady_clock::now();
  ASSERT_TRUE(socket.Send(faults.HandshakeBytes()));
  EXPECT_EQ(ReadReply(socket).status, 200);
  EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(300));
}

// That time is the client's, and a delay is the server's.
TEST(Fault, DelayMayBeLongerThanAClientHas) {
  TestServerOptions options = With(R"({"kind": "delay", "milliseconds": 2300, "at": "handshake"})");
  options.http.clientTime = std::chrono::seconds(2);
  TestServer server(options);
  EXPECT_TRUE(TestClient(server.Port(), server.KeyText()).Handshake());
}

TEST(Fault, DelaysAreAddedToTheNextFaultThatIsNone) {
  Faults faults(R"({"kind": "delay", "milliseconds": 100, "at": "handshake"},
                   {"kind": "delay", "milliseconds": 150, "at": "handshake"},
                   {"kind": "status", "code": 503, "at": "handshake"},
                   {"kind": "status", "code": 504, "at": "handshake"})");
  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(faults.HandshakeReply().status, 503);
  EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(250));
  EXPECT_EQ(faults.HandshakeReply().status, 504);
}

TEST(Fault, StopEndsADelay) {
  Faults faults(R"({"kind": "delay", "milliseconds": 600000, "at": "handshake"})");
  Socket socket(faults.server.Port());
  ASSERT_TRUE(socket.Send(faults.HandshakeBytes()));
  for (int i = 0; i < 10000 && faults.Admin().Get("/requests").json["requests"].empty(); i++) {
  }
  faults.server.Server().Stop();
  EXPECT_EQ(ReadReply(socket).status, 200);
}

TEST(Fault, StopLetsNoFurtherReplyWait) {
  Faults faults(R"({"kind": "delay", "milliseconds": 600000, "at": "handshake"})");
  const std::string bytes = faults.HandshakeBytes();
  Socket socket(faults.server.Port());
  ASSERT_TRUE(socket.Send(bytes.substr(0, 300)));
  ASSERT_EQ(faults.Admin().Get("/health").status, 200);
  faults.client.NewSession();
  ASSERT_EQ(faults.client.Send("x\r\n\r\n").status, 400);
  faults.server.Server().Stop();
  ASSERT_TRUE(socket.Send(bytes.substr(300)));
  EXPECT_EQ(ReadReply(socket).status, 200);
}

TEST(Fault, AppliesToTheRequestAloneUnlessTheHandshakeIsNamed) {
  Faults faults(R"({"kind": "status", "code": 503, "times": "always"})");
  EXPECT_EQ(faults.HandshakeReply().status, 200);
  EXPECT_EQ(faults.Reply().status, 503);
}

TEST(Fault, OfTheHandshakeLeavesTheRequestAlone) {
  Faults faults(R"({"kind": "wrong-digest", "at": "handshake"})");
  EXPECT_FALSE(faults.client.Handshake());
  EXPECT_TRUE(faults.Works());
}

TEST(Fault, OfAServiceLeavesOthersAlone) {
  Faults faults(R"({"kind": "status", "code": 503, "service": "BillCustomer", "times": "always"})");
  EXPECT_EQ(faults.Reply().status, 200);
  faults.client.NewSession();
  ASSERT_TRUE(faults.client.Handshake("BillCustomer"));
  EXPECT_EQ(faults.client.Request("BillCustomer").status, 503);
}

TEST(Fault, OfAServiceIsForItsWholeNameAlone) {
  sandbox::FaultTable table;
  table.Append(sandbox::ReadFaults(R"({"faults": [{"kind": "bad-padding", "service": "GetBill"}]})"));
  for (const char* other : {"", "Get", "GetBil", "GetBillx", "GetBill/", "xGetBill", "getbill"}) {
    EXPECT_EQ(table.Find(sandbox::FaultPlace::Request, other).Main(), nullptr) << other;
  }
  EXPECT_NE(table.Find(sandbox::FaultPlace::Request, "GetBill").Main(), nullptr);
}

TEST(Fault, IsAppliedOnceUnlessMoreIsAskedFor) {
  Faults faults(R"({"kind": "bad-base64"})");
  EXPECT_FALSE(faults.Works());
  EXPECT_TRUE(faults.Works());
}

TEST(Fault, IsAppliedAsOftenAsIsAskedFor) {
  Faults faults(R"({"kind": "bad-base64", "times": 3})");
  for (int i = 0; i < 3; i++) EXPECT_FALSE(faults.Works()) << i;
  EXPECT_TRUE(faults.Works());
}

TEST(Fault, IsAppliedAlwaysUntilItIsForgotten) {
  Faults faults(R"({"kind": "status", "code": 408, "at": "handshake", "times": "always"})");
  for (int i = 0; i < 150; i++) ASSERT_EQ(faults.HandshakeReply().status, 408) << i;
  EXPECT_EQ(faults.Admin().Post("/reset").status, 200);
  EXPECT_TRUE(faults.Works());
}

TEST(Fault, StatusThatClientsAnswerWithoutEndStopsAfter100Answers) {
  for (const std::string code : {"305", "411"}) {
    Faults faults(R"({"kind": "status", "at": "handshake", "times": "always", "location": "http://a/", "code": )" +
                  code + "}");
    for (int i = 0; i < 100; i++) ASSERT_EQ(faults.HandshakeReply().status, std::stoi(code)) << i;
    EXPECT_TRUE(faults.Works());
  }
}

// What a client sends that has been told 411: no body announced, the body all the same.
TEST(Fault, StatusIsAnsweredToARequestWithMoreBytesThanItAnnounces) {
  Faults faults(R"({"kind": "status", "at": "handshake", "times": 2, "code": 411})");
  const std::string bytes = faults.client.Head("/GetProductList", 0) + "AAAA";
  EXPECT_EQ(faults.client.Send(bytes).status, 411);
  EXPECT_EQ(faults.client.Send(bytes).status, 411);
  EXPECT_EQ(faults.client.Send(bytes).status, 400);
}

TEST(Fault, SecondOfTwoFollowsTheFirst) {
  Faults faults(R"({"kind": "status", "code": 500, "times": 2}, {"kind": "wrong-digest"})");
  EXPECT_EQ(faults.Reply().status, 500);
  EXPECT_EQ(faults.Reply().status, 500);
  const HttpReply reply = faults.Reply();
  EXPECT_EQ(reply.status, 200);
  EXPECT_FALSE(faults.client.Open(reply.body).has_value());
  EXPECT_TRUE(faults.Works());
}

TEST(Fault, OfARefusedRequestIsKeptForTheNext) {
  Faults faults(R"({"kind": "bad-base64", "at": "handshake"})");
  EXPECT_EQ(faults.client.Send(faults.client.Head("/GetProductList", 4) + "AAAA").status, 400);
  const HttpReply reply = faults.HandshakeReply();
  EXPECT_EQ(reply.status, 200);
  EXPECT_NE(reply.body.find('*'), std::string::npos);
}

TEST(Fault, IsNamedInTheLog) {
  Faults faults(R"({"kind": "delay", "milliseconds": 1, "times": 2}, {"kind": "status", "code": 302},
                   {"kind": "bad-padding"})");
  faults.Reply();
  faults.Reply();
  faults.Reply();
  const std::string log = faults.server.StopAndReadLog();
  EXPECT_THAT(log, HasSubstr("answered with 302 and not served, fault: delay, fault: status\n"));
  EXPECT_THAT(log, HasSubstr("3 products, fault: delay, fault: bad-padding\n"));
  EXPECT_THAT(log, HasSubstr("3 products\n"));
  EXPECT_THAT(log.substr(0, log.find("302")), Not(HasSubstr("fault")));
}

TEST(Fault, IsRememberedWithTheRequest) {
  Faults faults(R"({"kind": "delay", "milliseconds": 1}, {"kind": "status", "code": 302}, {"kind": "bad-padding"})");
  faults.Reply();
  faults.Reply();
  const nlohmann::json requests = faults.Admin().Get("/requests").json["requests"];
  ASSERT_EQ(requests.size(), 4u);
  EXPECT_EQ(requests[0]["faults"], nlohmann::json::array());
  EXPECT_EQ(requests[1]["faults"], (nlohmann::json{"delay", "status"}));
  EXPECT_EQ(requests[1]["status"], 302);
  EXPECT_EQ(requests[3]["faults"], nlohmann::json{"bad-padding"});
}

}  // namespace
}  // namespace sandboxtest
