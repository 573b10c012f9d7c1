// Do two runs with the same seed and clock answer the same?
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "environment.h"
#include "sandbox/admin_client.h"
#include "sandbox/selling.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Json = nlohmann::json;

constexpr const char* moment = "2026-01-05T10:11:12Z";

// What a client and the admin port were told by one run.
struct Told {
  std::vector<std::string> drawn;  // connection ids and challenges of the server
  std::vector<Fields> replies;
  Json sales;
  Json requests;
};

class Repeatable : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(Process({"init", shop}).Wait(), 0); }

  // Serves without the sales of the run before and has one client buy, be declined and ask for its bill.
  Told RunWith(std::vector<std::string> options) {
    for (const char* name : {"sales.db", "sales.db-wal", "sales.db-shm"}) std::filesystem::remove(shop + "/" + name);
    std::vector<std::string> words = {"serve", shop, "--admin", "127.0.0.1:0"};
    words.insert(words.end(), options.begin(), options.end());
    Process serve(words);
    const Json ready = Json::parse(serve.ReadLine());
    Told run;
    Ask(ready, "BillCustomer", OrderOf(goodCard, 3), run);
    Ask(ready, "BillCustomer", OrderOf("4000000000000002"), run);
    Ask(ready, "GetBill", {{"KEST-TxN", "100001"}}, run);
    const AdminClient admin(ready["admin"]);
    run.sales = admin.Get("/sales").json;
    run.requests = admin.Get("/requests").json["requests"];
    for (Json& request : run.requests) request.erase("peer");  // whose port the system chooses
    serve.Signal(SIGTERM);
    serve.Wait();
    log = serve.Log();
    return run;
  }

  static void Ask(const Json& ready, const std::string& service, const Fields& own, Told& run) {
    TestClient client(ready["port"], ready["key"]);
    ASSERT_TRUE(client.Handshake(service));
    run.drawn.push_back(client.connectionId);
    run.drawn.push_back(client.serverRac);
    Fields reply = client.Open(client.Request(service, own).body).value_or(Fields());
    ASSERT_EQ(Value(reply, "KEST-Auth-Client-RAC"), client.clientRac);
    sandboxtest::Replace(reply, "KEST-Auth-Client-RAC", "the client's own");
    run.replies.push_back(std::move(reply));
  }

  TemporaryFolder folder;
  const std::string shop = folder / "shop";
  std::string log;
};

TEST_F(Repeatable, RunsWithTheSameSeedAndClockTellTheSame) {
  const Told first = RunWith({"--seed", "7", "--clock", moment});
  const Told second = RunWith({"--seed", "7", "--clock", moment});
  ASSERT_EQ(first.drawn.size(), 6u);
  EXPECT_EQ(first.drawn, second.drawn);
  EXPECT_EQ(first.replies, second.replies);
  EXPECT_EQ(first.sales, second.sales);
  EXPECT_EQ(first.requests, second.requests);
  EXPECT_EQ(Value(first.replies[2], "KEST-TotalAmount"), Value(first.replies[0], "KEST-TotalAmount"));
}

TEST_F(Repeatable, SessionsOfOneRunDiffer) {
  const Told run = RunWith({"--seed", "7"});
  EXPECT_NE(run.drawn[0], run.drawn[2]);
  EXPECT_NE(run.drawn[1], run.drawn[3]);
}

TEST_F(Repeatable, AnotherSeedDrawsOthers) {
  EXPECT_NE(RunWith({"--seed", "7"}).drawn, RunWith({"--seed", "8"}).drawn);
}

TEST_F(Repeatable, WithoutASeedNothingIsRepeated) {
  const Told first = RunWith({});
  EXPECT_THAT(log, Not(HasSubstr("seed")));
  EXPECT_NE(first.drawn, RunWith({}).drawn);
}

TEST_F(Repeatable, SeedIsAWarningInTheLog) {
  RunWith({"--seed", "18446744073709551615"});
  EXPECT_THAT(log, HasSubstr("warning challenges and connection ids come from the seed 18446744073709551615"));
}

TEST_F(Repeatable, ClockDatesSalesRefusalsAndRequests) {
  const Told run = RunWith({"--clock", moment});
  EXPECT_EQ(run.sales["sales"][0]["time"], moment);
  EXPECT_EQ(run.sales["refusals"][0]["time"], moment);
  EXPECT_EQ(run.requests[5]["time"], "2026-01-05T10:11:12.000Z");
}

TEST_F(Repeatable, ClockThatIsNoneIsWrongUsage) {
  Process serve({"serve", shop, "--clock", "yesterday"});
  EXPECT_EQ(serve.Wait(), 2);
  EXPECT_THAT(serve.Log(), HasSubstr("--clock needs a time in UTC"));
}

// Written down, because a generator that changed would break what others have recorded.
TEST(SeededEnvironment, DrawsWhatTheStandardGeneratorGives) {
  const std::string bytes = sandbox::Environment::Seeded(5489).randomBytes(3);
  EXPECT_EQ(bytes, "\xc9\x40\xb5");
}

}  // namespace
}  // namespace sandboxtest
