// Does the program keep serving while a crowd holds its connections, its file descriptors or its memory?
#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <vector>

#include "sandbox/admin_client.h"
#include "sandbox/selling.h"
#include "sandbox/socket.h"
#include "server_limits.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;

constexpr rlim_t descriptorsNeeded = 1200;  // by this program, for its side of a crowd

class Crowd : public Selling {
 protected:
  void SetUp() override {
    ASSERT_EQ(Process({"init", shop}).Wait(), 0);
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_max < descriptorsNeeded) GTEST_SKIP() << "this machine gives a process too few file descriptors";
    limit.rlim_cur = std::max(limit.rlim_cur, descriptorsNeeded);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  }

  // Opens connections that send those bytes and nothing more.
  void Open(int count, const std::string& bytes) {
    for (int i = 0; i < count; i++) {
      sockets.push_back(std::make_unique<Socket>(port));
      ASSERT_TRUE(sockets.back()->Connected()) << i;
      ASSERT_TRUE(bytes.empty() || sockets.back()->Send(bytes)) << i;
    }
  }

  std::string Sale() const { return ErrorCodeOf("BillCustomer", OrderOf(goodCard)); }

  std::vector<std::unique_ptr<Socket>> sockets;
};

TEST_F(Crowd, ThousandConnectionsThatSayNothingOrHalfLeaveRoomForASale) {
  Start();
  Open(500, "");
  Open(250, "GET /BillCustomer HT");
  Open(250, Client().Head("/BillCustomer", 1000) + "AAAA");
  EXPECT_EQ(Sale(), "0");
  for (const auto& socket : sockets) EXPECT_FALSE(socket->AnswersWithin(0)) << "it was to wait, not to give way";
}

TEST_F(Crowd, ConnectionsBeyondTheLimitWaitForOthersToEnd) {
  options = {"--max-connections", "8", "--client-seconds", "2"};
  Start();
  Open(5, "");
  Open(5, "GET /BillCustomer HT");
  EXPECT_EQ(Sale(), "0");
}

TEST_F(Crowd, RequestsOfFourHundredClientsAtOnceAreAllAnswered) {
  Start();
  TestClient client = Client();
  const std::string body = client.HandshakeBody(client.HandshakeFields());
  Open(400, client.Head("/BillCustomer", body.size()) + body);
  for (const auto& socket : sockets) ASSERT_EQ(ReadReply(*socket).status, 200);
}

TEST_F(Crowd, FewerFileDescriptorsServeFewerConnections) {
  before = "ulimit -n " + std::to_string(sandbox::sparedDescriptors + 5);
  options = {"--client-seconds", "2"};
  Start();
  ASSERT_TRUE(serve->WaitForLog("so 5 connections are served at the same time"));
  Open(7, "");
  EXPECT_EQ(Sale(), "0");
}

TEST_F(Crowd, TooFewFileDescriptorsAreToldInWords) {
  Process process({"serve", shop}, "ulimit -n " + std::to_string(sandbox::sparedDescriptors));
  EXPECT_EQ(process.Wait(), 1);
  EXPECT_THAT(process.Log(), HasSubstr("and needs " + std::to_string(sandbox::sparedDescriptors + 1)));
}

// Somebody takes them away while the server runs.
TEST_F(Crowd, FileDescriptorsThatRunOutNeitherEndTheServerNorMakeItSpin) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's own checks take file descriptors";
#endif
  Start();
  const std::filesystem::directory_iterator open("/proc/" + std::to_string(serve->Id()) + "/fd");
  const auto count = static_cast<rlim_t>(std::distance(begin(open), end(open)));
  rlimit limit{};
  ASSERT_EQ(::prlimit(serve->Id(), RLIMIT_NOFILE, nullptr, &limit), 0);
  limit.rlim_cur = count + 2;
  ASSERT_EQ(::prlimit(serve->Id(), RLIMIT_NOFILE, &limit, nullptr), 0);
  Open(10, "");
  ASSERT_TRUE(serve->WaitForLog("a connection could not be accepted: Too many open files"));
  const auto first = std::chrono::steady_clock::now();
  ASSERT_TRUE(serve->WaitForLog("a connection could not be accepted: Too many open files", 4));
  EXPECT_GE(std::chrono::steady_clock::now() - first, std::chrono::milliseconds(150));
  sockets.clear();
  EXPECT_EQ(Sale(), "0") << "with the few there are";
}

TEST_F(Crowd, AdminPortServesSixteenAtATime) {
  options = {"--admin", "127.0.0.1:0"};
  Start();
  const std::string half = "GET /health HTTP/1.1\r\nHost: 127.0.0.1\r\n";
  for (std::size_t i = 0; i <= sandbox::mostAdminConnections; i++) {
    sockets.push_back(std::make_unique<Socket>(admin));
    ASSERT_TRUE(sockets.back()->Send(half));
  }
  ASSERT_TRUE(sockets.back()->Send("\r\n"));
  EXPECT_FALSE(sockets.back()->AnswersWithin(200)) << "it is one too many";
  ASSERT_TRUE(sockets.front()->Send("\r\n"));
  bool orderly = false;
  EXPECT_THAT(sockets.front()->ReadToEnd(orderly), HasSubstr("{\"status\":\"ok\"}"));
  sockets.erase(sockets.begin());
  EXPECT_THAT(sockets.back()->ReadToEnd(orderly), HasSubstr("{\"status\":\"ok\"}"));
}

// The room for a body is taken when its head has arrived.
TEST_F(Crowd, MemoryThatRunsOutEndsConnectionsAndNotTheServer) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's shadow memory is larger than any limit";
#endif
  options = {"--admin", "127.0.0.1:0"};
  Start();
  const rlim_t bytes = (serve->Megabytes("VmSize:") + 80) * 1024 * 1024;
  const rlimit limit = {bytes, bytes};
  ASSERT_EQ(::prlimit(serve->Id(), RLIMIT_AS, &limit, nullptr), 0);
  Open(4, Client().Head("/BillCustomer", 33554432) + "AAAA");
  ASSERT_TRUE(serve->WaitForLog("the server failed at a connection and goes on"));
  EXPECT_EQ(Sale(), "0");
  EXPECT_EQ(AdminClient(admin).Get("/health").status, 200);
}

// Sealed requests of many lines and of one line of many pairs, and large bodies that stay unfinished beside them, and
// heads as long as they may be on every other connection.
TEST_F(Crowd, MemoryStaysBelowItsBound) {
  options = {"--admin", "127.0.0.1:0"};
  Start();
  TestClient client = Client();
  const std::string large(33554432 - 1, 'A');
  for (int i = 0; i < 3; i++) Open(1, client.Head("/BillCustomer", large.size() + 1) + large);
  const std::string longHead = "GET /" + std::string(16000, 'a');
  Open(900, longHead);
  Fields order = OrderOf(goodCard);
  order.resize(10001, {"KEST-Product", "SKU:7^Quantity:1"});
  order[1].second += "^" + std::string(4000000, 'x') + ":y";
  EXPECT_EQ(ErrorCodeOf("BillCustomer", order), "0");
  order.resize(90000, {"KEST-Product", "SKU:7^Quantity:1"});
  EXPECT_EQ(ErrorCodeOf("BillCustomer", order), "1203");
  std::string colons(24000000, ':');
  for (std::size_t i = 1; i < colons.size(); i += 2) colons[i] = '^';
  EXPECT_EQ(ErrorCodeOf("BillCustomer", {{"KEST-CCard-Number", goodCard}, {"KEST-Product", colons}}), "1203");
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LT(serve->MostMegabytes(), sandbox::mostMemory);
#endif
  std::cout << "most memory: " << serve->MostMegabytes() << " MB\n";
}

}  // namespace
}  // namespace sandboxtest
