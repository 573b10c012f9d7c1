// Does the admin port tell what happened, keep secrets, and shut out the pages of other sites?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "request_log.h"
#include "sandbox/admin_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using Json = nlohmann::json;

constexpr const char* waiting = R"({"faults": [{"kind": "status", "code": 503, "times": 2}, {"kind": "bad-padding"},
                                               {"kind": "bad-base64", "times": "always"}]})";

class Admin : public ::testing::Test {
 protected:
  // Sends a request with these header lines and no body.
  AdminAnswer WithLines(const std::string& start, const std::string& lines) {
    return admin.Send(start + " HTTP/1.1\r\n" + lines + "\r\n");
  }

  Json Requests(const std::string& query = "") { return admin.Get("/requests" + query).json["requests"]; }

  TestServer server;
  TestClient client{server.Port(), server.KeyText()};
  // Buys for a card and returns the KEST-Error of the answer.
  std::string Buy(const std::string& card) {
    const Fields order = {{"KEST-CCard-Number", card}, {"KEST-Product", "SKU:1042^Quantity:1"}};
    return Value(client.Call("BillCustomer", order).value_or(Fields()), "KEST-Error");
  }

  AdminClient admin{server.AdminPort()};
};

TEST_F(Admin, HealthIsOk) {
  const AdminAnswer answer = admin.Get("/health");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.json, Json({{"status", "ok"}}));
  EXPECT_EQ(Value(answer.headers, "Content-Type"), "application/json");
  EXPECT_EQ(Value(answer.headers, "Connection"), "close");
}

TEST_F(Admin, StateCountsWhatHappened) {
  ASSERT_TRUE(client.Call("GetProductList").has_value());
  client.NewSession();
  ASSERT_TRUE(client.Handshake());
  EXPECT_EQ(client.Send("x\r\n\r\n").status, 400);
  EXPECT_EQ(admin.Get("/state").json, Json({{"sessions", 1},
                                            {"requests", 4},
                                            {"refused", 1},
                                            {"sales", 0},
                                            {"refusals", 0},
                                            {"bills", 0},
                                            {"faults", Json::array()}}));
}

TEST_F(Admin, StateCountsSalesRefusalsAndBills) {
  ASSERT_EQ(Buy("4111111111111111"), "0");
  ASSERT_EQ(Buy("5555555555554444"), "0");
  ASSERT_EQ(Buy("4000000000000002"), "1403");
  ASSERT_TRUE(client.Call("GetBill", {{"KEST-TxN", "100001"}}).has_value());
  ASSERT_TRUE(client.Call("GetBill", {{"KEST-TxN", "100002"}}).has_value());
  ASSERT_TRUE(client.Call("GetBill", {{"KEST-TxN", "100002"}}).has_value());
  const Json state = admin.Get("/state").json;
  EXPECT_EQ(state["sales"], 2);
  EXPECT_EQ(state["refusals"], 1);
  EXPECT_EQ(state["bills"], 3);
}

// The client cannot know it; the server must.
TEST_F(Admin, SaleWhoseReplyIsCutIsASale) {
  admin.Post("/faults", R"({"faults": [{"kind": "close", "bytes": 0, "service": "BillCustomer"}]})");
  EXPECT_EQ(Buy("4111111111111111"), "(absent)");
  EXPECT_EQ(admin.Get("/state").json["sales"], 1);
}

TEST_F(Admin, SaleThatAStatusStoodInForIsNone) {
  admin.Post("/faults", R"({"faults": [{"kind": "status", "code": 500, "service": "BillCustomer"}]})");
  EXPECT_EQ(Buy("4111111111111111"), "(absent)");
  EXPECT_EQ(admin.Get("/state").json["sales"], 0);
}

TEST_F(Admin, CardOfASaleIsShownMasked) {
  ASSERT_EQ(Buy("4111 1111 1111 1111"), "0");
  EXPECT_EQ(Requests()[1]["request"][0], Json::parse(R"(["KEST-CCard-Number", "41*************1111"])"));
  EXPECT_THAT(Requests()[1]["reply"].dump(), HasSubstr(R"(["KEST-CCard-Number","41**********1111"])"));
}

TEST_F(Admin, StateShowsTheFaultsThatWaitAndWhatIsLeftOfThem) {
  const AdminAnswer answer = admin.Post("/faults", waiting);
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.json, Json({{"faults", 3}}));
  ASSERT_TRUE(client.Handshake());
  EXPECT_EQ(client.Request("GetProductList").status, 503);
  EXPECT_EQ(admin.Get("/state").json["faults"],
            Json::parse(R"([{"kind": "status", "code": 503, "times": 2, "left": 1}, {"kind": "bad-padding", "left": 1},
                            {"kind": "bad-base64", "times": "always", "left": "always"}])"));
}

TEST_F(Admin, StateShowsNoCardNumberOfAFault) {
  const std::string card = "4111111111111112";
  admin.Post("/faults", R"({"faults": [{"kind": "field", "name": "Note", "value": ")" + card + R"("},
      {"kind": "field", "name": ")" + card + R"(", "value": null},
      {"kind": "field", "name": "CCardCode", "value": "123"},
      {"kind": "headers", "lines": ["X: )" + card + R"("]},
      {"kind": "status", "code": 302, "location": ")" + card + R"(", "reason": ")" + card + R"("},
      {"kind": "content-length", "value": ")" + card + R"("}]})");
  const Json faults = admin.Get("/state").json["faults"];
  ASSERT_EQ(faults.size(), 6u);
  EXPECT_THAT(faults.dump(), Not(HasSubstr(card)));
  EXPECT_EQ(faults[0]["value"], "41**********1112");
  EXPECT_EQ(faults[1]["name"], "41**********1112");
  EXPECT_EQ(faults[1]["value"], nullptr);
  EXPECT_EQ(faults[2]["value"], "***");
  EXPECT_EQ(faults[3]["lines"][0], "X: 41**********1112");
}

TEST_F(Admin, ReplyIsShownAsTheFaultLeftIt) {
  admin.Post("/faults", R"({"faults": [{"kind": "field", "name": "KEST-Error", "value": "77"},
                                       {"kind": "field", "name": "KEST-Error", "value": null}]})");
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", "only-two"}}).has_value());
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", "only-two"}}).has_value());
  EXPECT_THAT(Requests()[1]["reply"].dump(), HasSubstr(R"(["KEST-Error","77"])"));
  EXPECT_THAT(Requests()[3]["reply"].dump(), Not(HasSubstr("KEST-Error")));
}

TEST_F(Admin, FaultsAreAddedBehindThoseThatWait) {
  admin.Post("/faults", R"({"faults": [{"kind": "bad-padding"}]})");
  EXPECT_EQ(admin.Post("/faults", R"({"faults": [{"kind": "bad-base64"}]})").json["faults"], 2);
  const Json faults = admin.Get("/state").json["faults"];
  EXPECT_EQ(faults[0]["kind"], "bad-padding");
  EXPECT_EQ(faults[1]["kind"], "bad-base64");
}

TEST_F(Admin, FaultsWithAMistakeAreRefusedAndNoneIsAdded) {
  const AdminAnswer answer = admin.Post("/faults", R"({"faults": [{"kind": "bad-padding"}, {"kind": "x"}]})");
  EXPECT_EQ(answer.status, 400);
  EXPECT_EQ(answer.json, Json({{"error", "faults[1].kind: there is no fault \"x\""}}));
  EXPECT_EQ(admin.Get("/state").json["faults"], Json::array());
}

std::string ManyFaults(std::size_t count, const std::string& one) {
  std::string list = one;
  for (std::size_t i = 1; i < count; i++) list += "," + one;
  return R"({"faults": [)" + list + "]}";
}

TEST_F(Admin, FaultsBeyondTheMostThatMayWaitAreRefusedAndNoneIsAdded) {
  const std::string one = R"({"kind":"bad-padding"})";
  EXPECT_EQ(admin.Post("/faults", ManyFaults(sandbox::mostFaults - 1, one)).json["faults"], sandbox::mostFaults - 1);
  const AdminAnswer refused = admin.Post("/faults", ManyFaults(2, one));
  EXPECT_EQ(refused.status, 400);
  EXPECT_THAT(refused.json["error"], HasSubstr("more would wait than 1000 faults or 1048576 bytes of JSON"));
  EXPECT_EQ(admin.Post("/faults", ManyFaults(1, one)).json["faults"], sandbox::mostFaults);
  EXPECT_EQ(admin.Post("/faults", ManyFaults(1, one)).status, 400);
}

TEST_F(Admin, FaultsOfMoreJsonThanMayWaitAreRefused) {
  const std::string large = R"({"kind":"content-length","value":")" + std::string(60000, 'x') + R"("})";
  std::size_t taken = 0;
  while (taken < 100 && admin.Post("/faults", ManyFaults(1, large)).status == 200) taken++;
  EXPECT_EQ(taken, sandbox::mostFaultBytes / large.size());
  EXPECT_EQ(admin.Get("/state").json["faults"].size(), taken);
}

TEST_F(Admin, RequestsAreShownWithTheirFields) {
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", "only-two"}, {"VERSIONID", "3.0"}}).has_value());
  const Json requests = Requests();
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0]["kind"], "handshake");
  EXPECT_EQ(requests[0]["request"], Json::parse(R"json([["KEST-Auth-Client-Key", "(not shown)"],
      ["KEST-Auth-Client-RAC", "(not shown)"], ["KEST-Auth-Server-RAC", "(not shown)"],
      ["KEST-Protocol-Version", "1.1"]])json"));
  EXPECT_EQ(requests[0]["reply"][0], Json::parse(R"json(["KEST-Auth-CID", "(not shown)"])json"));
  const Json& request = requests[1];
  EXPECT_EQ(request["number"], 2);
  EXPECT_THAT(request["time"].get<std::string>(),
              MatchesRegex("20[0-9][0-9]-[0-9][0-9]-[0-9][0-9]T[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\.[0-9][0-9][0-9]Z"));
  EXPECT_THAT(request["peer"].get<std::string>(), MatchesRegex("127\\.0\\.0\\.1:[0-9]+"));
  EXPECT_EQ(request["path"], "/GetProductList");
  EXPECT_EQ(request["kind"], "request");
  EXPECT_EQ(request["status"], 200);
  EXPECT_FALSE(request.contains("refusal"));
  EXPECT_EQ(request["faults"], Json::array());
  EXPECT_EQ(request["request"], Json::parse(R"json([["GUID", "only-two"], ["VERSIONID", "3.0"],
      ["KEST-Service", "GetProductList"], ["KEST-Auth-Client-RAC", "(not shown)"],
      ["KEST-Auth-Server-RAC", "(not shown)"], ["KEST-Protocol-Version", "1.1"]])json"));
  EXPECT_EQ(request["reply"], Json::parse(R"json([["KEST-Auth-Client-RAC", "(not shown)"],
      ["KEST-Auth-Server-RAC", "(not shown)"], ["KEST-Protocol-Version", "1.1"], ["KEST-Error", "1102"]])json"));
}

TEST_F(Admin, RequestsShowNoSecret) {
  const std::string card = "4111111111111111";
  ASSERT_TRUE(client.Handshake(card));
  EXPECT_EQ(client.Request(card, {{card, "4111 1111 1111 1111"}, {"CCardNumber", "4111111111111112"}}).status, 200);
  const std::string shown = Requests().dump();
  for (const std::string& secret :
       {card, std::string("1111 1111 1111"), std::string("4111111111111112"), client.connectionId, client.clientRac,
        client.serverRac, Base64(client.iv + client.key)}) {
    EXPECT_THAT(shown, Not(HasSubstr(secret)));
  }
  EXPECT_THAT(shown, HasSubstr(R"(["41**********1111","41** **** **** 1111"],["CCardNumber","41**********1112"])"));
  EXPECT_THAT(shown, HasSubstr(R"("path":"/41**********1111")"));
}

TEST_F(Admin, RefusedRequestIsShownWithTheReason) {
  EXPECT_EQ(client.Send(client.Head("/GetProductList", 4) + "AA==").status, 400);
  EXPECT_EQ(client.Send("x\r\n\r\n").status, 400);
  const Json requests = Requests();
  EXPECT_EQ(requests[0]["refusal"],
            "the handshake is not a whole number of blocks as long as the server key's modulus");
  EXPECT_EQ(requests[0]["status"], 400);
  EXPECT_EQ(requests[0]["path"], "/GetProductList");
  EXPECT_EQ(requests[0]["request"], Json::array());
  EXPECT_EQ(requests[1]["path"], "");
  EXPECT_EQ(requests[1]["kind"], "");
}

TEST_F(Admin, RequestRefusedAfterItWasOpenedIsShownWithItsFields) {
  ASSERT_TRUE(client.Handshake());
  client.serverRac = "AAAA";
  EXPECT_EQ(client.Request("GetProductList", {{"GUID", "g"}}).status, 403);
  const Json request = Requests()[1];
  EXPECT_EQ(request["request"][0], Json::parse(R"(["GUID", "g"])"));
  EXPECT_EQ(request["reply"], Json::array());
}

TEST(AdminRecord, OfARequestRefusedAtTheVeryEndHasNoReply) {
  TestServerOptions options;
  options.sessions.most = 1;
  TestServer server(options);
  TestClient client(server.Port(), server.KeyText());
  ASSERT_TRUE(client.Handshake());
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  client.connectionId.clear();
  EXPECT_EQ(client.Send(client.Head("/GetProductList", body.size()) + body).status, 503);
  const Json request = AdminClient(server.AdminPort()).Get("/requests").json["requests"][1];
  EXPECT_EQ(request["status"], 503);
  EXPECT_EQ(request["request"].size(), 4u);
  EXPECT_EQ(request["reply"], Json::array());
}

TEST_F(Admin, BytesThatAreNotUtf8AreReplaced) {
  ASSERT_TRUE(client.Call("GetProductList", {{"GUID", "a\xffz"}}).has_value());
  EXPECT_EQ(Requests()[1]["request"][0][1], "a\xef\xbf\xbdz");
}

TEST_F(Admin, RequestsSinceANumberAreThoseBehindIt) {
  for (int i = 0; i < 3; i++) client.Send("x\r\n\r\n");
  EXPECT_EQ(Requests("?since=0").size(), 3u);
  ASSERT_EQ(Requests("?since=2").size(), 1u);
  EXPECT_EQ(Requests("?since=2")[0]["number"], 3);
  EXPECT_EQ(Requests("?since=3").size(), 0u);
}

TEST_F(Admin, QueryOfAnotherFormIsRefused) {
  for (const char* target : {"/requests?since=", "/requests?since=x", "/requests?since=-1", "/requests?since=1x",
                             "/requests?from=1", "/requests?since=18446744073709551616", "/state?since=1"}) {
    EXPECT_EQ(admin.Get(target).status, 400) << target;
  }
}

TEST_F(Admin, ResetForgetsFaultsRequestsAndSalesAndKeepsSessions) {
  ASSERT_EQ(Buy("4111111111111111"), "0");
  ASSERT_EQ(admin.Get("/state").json["sales"], 1);
  admin.Post("/faults", waiting);
  client.NewSession();
  ASSERT_TRUE(client.Handshake());
  EXPECT_EQ(admin.Post("/reset").json, Json({{"status", "ok"}}));
  const Json state = admin.Get("/state").json;
  EXPECT_EQ(state["sales"], 0);
  EXPECT_EQ(state["requests"], 0);
  EXPECT_EQ(state["refused"], 0);
  EXPECT_EQ(state["faults"], Json::array());
  EXPECT_EQ(state["sessions"], 1);
  EXPECT_EQ(client.Request("GetProductList").status, 200);
  EXPECT_EQ(Requests()[0]["number"], 1);
}

TEST_F(Admin, ResetThatFailsForgetsNothing) {
  ASSERT_EQ(Buy("4111111111111111"), "0");
  admin.Post("/faults", waiting);
  sandbox::Database(server.SalesFile(), 1000)
      .Execute("CREATE TRIGGER broken BEFORE DELETE ON sales BEGIN SELECT RAISE(FAIL, 'the disk is full'); END");
  const AdminAnswer answer = admin.Post("/reset");
  EXPECT_EQ(answer.status, 500);
  EXPECT_EQ(answer.json, Json({{"error", "the disk is full"}}));
  const Json state = admin.Get("/state").json;
  EXPECT_EQ(state["sales"], 1);
  EXPECT_EQ(state["requests"], 2);
  EXPECT_EQ(state["faults"].size(), 3u);
}

TEST_F(Admin, UnknownPathIs404) {
  for (const char* path : {"/dashboard/", "/dashboard", "/dashboard/none.js", "/index.html", "/healthy", "/state/",
                           "/Health", "//health"}) {
    const AdminAnswer answer = admin.Get(path);
    EXPECT_EQ(answer.status, 404) << path;
    EXPECT_TRUE(answer.json.contains("error")) << path;
  }
}

TEST_F(Admin, WrongMethodIs405AndTellsTheRightOne) {
  for (const char* start : {"GET /faults", "GET /reset", "OPTIONS /reset", "PUT /faults"}) {
    const AdminAnswer answer = WithLines(start, "Host: localhost\r\n");
    EXPECT_EQ(answer.status, 405) << start;
    EXPECT_EQ(Value(answer.headers, "Allow"), "POST") << start;
  }
  const AdminAnswer answer = admin.Post("/state");
  EXPECT_EQ(answer.status, 405);
  EXPECT_EQ(Value(answer.headers, "Allow"), "GET");
}

TEST_F(Admin, BodyOfAnotherTypeIs415) {
  const std::string text = R"({"faults": []})";
  const std::string length = "Content-Length: " + std::to_string(text.size()) + "\r\n";
  const auto status = [&](const std::string& line) {
    return admin.Send("POST /faults HTTP/1.1\r\nHost: localhost\r\n" + line + length + "\r\n" + text).status;
  };
  EXPECT_EQ(status(""), 415);
  EXPECT_EQ(status("Content-Type: text/plain\r\n"), 415);
  EXPECT_EQ(status("Content-Type: text/plain; application/json\r\n"), 415);
  EXPECT_EQ(status("Content-Type: application/jsonx\r\n"), 415);
  EXPECT_EQ(status("Content-Type: application/json; charset=utf-8\r\n"), 200);
  EXPECT_EQ(status("Content-Type: Application/JSON\r\n"), 200);
  EXPECT_EQ(WithLines("POST /reset", "Host: localhost\r\nContent-Length: 0\r\n").status, 415);
}

TEST_F(Admin, HostMustBeTheMachineItself) {
  for (const char* host :
       {"127.0.0.1", "127.0.0.1:8080", "127.1.2.3", "localhost", "LocalHost:1", "[::1]", "[::1]:5"}) {
    EXPECT_EQ(WithLines("GET /health", std::string("Host: ") + host + "\r\n").status, 200) << host;
  }
  for (const char* host : {"example.com", "127.0.0.1.example.com", "localhost.example.com", "10.0.0.1", "0.0.0.0",
                           "[::2]", "[127.0.0.1]", "[localhost]", "::1", "[::1", "", ":80", "127.1", "127.0.0.1:evil.com",
                           "localhost:", "localhost:80x", "[::1]:evil.com", "127.0.0.1:65536", "127.0.0.1:-1"}) {
    const AdminAnswer answer = WithLines("GET /health", std::string("Host: ") + host + "\r\n");
    EXPECT_EQ(answer.status, 403) << host;
    EXPECT_TRUE(answer.json.contains("error")) << host;
  }
  EXPECT_EQ(WithLines("GET /health", "").status, 403);
}

TEST_F(Admin, PageOfAnotherSiteIsShutOut) {
  for (const char* origin : {"http://example.com", "null", "http://127.0.0.1:1", "https://127.0.0.1:7"}) {
    const AdminAnswer answer = WithLines("GET /state", std::string("Host: 127.0.0.1:7\r\nOrigin: ") + origin + "\r\n");
    EXPECT_EQ(answer.status, 403) << origin;
  }
  EXPECT_EQ(WithLines("GET /state", "Host: 127.0.0.1:7\r\nOrigin: http://127.0.0.1:7\r\n").status, 200);
}

TEST_F(Admin, FieldThatIsRepeatedIs400) {
  for (const char* lines : {"Host: localhost\r\nHost: localhost\r\n", "Host: localhost\r\nHost: example.com\r\n",
                            "Host: localhost\r\nOrigin: http://localhost\r\nOrigin: http://example.com\r\n",
                            "Host: localhost\r\nContent-Type: application/json\r\nContent-Type: text/plain\r\n"}) {
    const AdminAnswer answer = WithLines("GET /health", lines);
    EXPECT_EQ(answer.status, 400) << lines;
    EXPECT_TRUE(answer.json.contains("error")) << lines;
  }
}

TEST_F(Admin, BodyLargerThan64KilobytesIs413) {
  const std::string large(64 * 1024 + 1, ' ');
  const AdminAnswer answer = admin.Post("/faults", large);
  EXPECT_EQ(answer.status, 413);
  EXPECT_EQ(answer.json, Json({{"error", "the body is larger than 64 KB"}}));
  const std::string empty = R"({"faults": []})";
  EXPECT_EQ(admin.Post("/faults", empty + std::string(64 * 1024 - empty.size(), ' ')).status, 200);
}

TEST_F(Admin, WhatIsNotHttpIs400) {
  const AdminAnswer answer = admin.Send("nonsense\r\n\r\n");
  EXPECT_EQ(answer.status, 400);
  EXPECT_TRUE(answer.json.contains("error"));
}

TEST(AdminRun, StopClosesAConnectionOnWhichNothingArrived) {
  TestServer server;
  Socket silent(server.AdminPort());
  ASSERT_EQ(AdminClient(server.AdminPort()).Get("/health").status, 200);
  server.StopAndReadLog();
  bool orderly = false;
  EXPECT_EQ(silent.ReadToEnd(orderly), "");
}

TEST(RequestLog, HoldsTheLast1000Requests) {
  sandbox::RequestLog log;
  for (int i = 0; i < 1005; i++) log.Add({});
  EXPECT_EQ(log.Requests().size(), 1000u);
  EXPECT_EQ(log.Requests().front().number, 6u);
  EXPECT_EQ(log.Requests().back().number, 1005u);
  EXPECT_EQ(log.Count(), 1005u);
}

TEST(RequestLog, CountsFromNothingWhenItIsCleared) {
  sandbox::RequestLog log;
  sandbox::RequestRecord refused;
  refused.refusal = "why";
  log.Add(refused);
  EXPECT_EQ(log.Refused(), 1u);
  log.Clear();
  EXPECT_EQ(log.Refused(), 0u);
  EXPECT_EQ(log.Count(), 0u);
}

TEST(RequestLog, DropsTheOldestWhenTheyAreTooLarge) {
  sandbox::RequestLog log(1000);
  sandbox::RequestRecord large;
  large.reply.push_back({"", std::string(600, 'a')});
  log.Add(large);
  log.Add({});
  EXPECT_EQ(log.Requests().size(), 2u);
  log.Add(large);
  EXPECT_EQ(log.Requests().size(), 2u);
  EXPECT_EQ(log.Requests().front().number, 2u);
  large.reply.push_back({"", std::string(2000, 'a')});
  log.Add(large);
  EXPECT_EQ(log.Requests().size(), 1u);
  log.Clear();
  log.Add({});
  log.Add({});
  EXPECT_EQ(log.Requests().size(), 2u);
}

}  // namespace
}  // namespace sandboxtest
