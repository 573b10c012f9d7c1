// What can a server do to its client? Each of these calls ends, fails with the exchange's code, and gives everything
// back.
#include "api/export_support.h"
#include "shape/hostile_fixture.h"
#include "store/receipt_paths.h"

namespace kest::testing {
namespace {

using HostilePeer = HostileTest;

constexpr std::size_t budget = 2u << 20;  // bytes
constexpr std::size_t slack = 64u << 10;  // bytes: what a call takes whatever the server says
constexpr char okHead[] = "HTTP/1.0 200 OK\r\n";

TEST_F(HostilePeer, WhatNeverEndsIsAFailedExchangeWhenMemoryRunsOut) {
  const std::vector<std::pair<const char*, Peer>> endless = {
      {"head lines", {okHead, "a: b\r\n"}},
      {"head lines of one byte", {okHead, "a\n"}},
      {"one head line", {okHead, "x"}},
      {"one status line", {"", "x"}},
      {"one folded line", {std::string(okHead) + "a:\r\n", " b\r\n"}},
      {"a body of 2 GB", {std::string(okHead) + "Content-Length: 2147483647\r\n\r\n", "AAAA"}},
  };
  memory.budget = memory.Live() + budget;
  for (const auto& one : endless) {
    SCOPED_TRACE(one.first);
    ForEachMessage(one.second, [this] {
      EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
      EXPECT_GT(memory.Peak(), budget / 4) << "it was memory that ended it";
    });
    sockets.peers = {{honest[0]}, {honest[1]}};
    EXPECT_EQ(0, Fetch()) << "the next call is as good as the first";
  }
}

TEST_F(HostilePeer, SaleThatNeverGetsItsReplyKeepsItsOrderAndLeavesNoReceipt) {
  KestCheckout* checkout = KestCreateCheckout();
  KestAddOrderLine(checkout, 1042, 1);
  memory.budget = memory.Live() + budget;
  ForEachMessage({okHead, "a: b\r\n"}, [&] {
    EXPECT_EQ(nullptr, KestBillCustomer(checkout));
    EXPECT_EQ(KEST_ERROR_EXCHANGE, KestGetErrorCode(KEST_FIELDS(checkout)));
    EXPECT_EQ(1u, FromHandle(checkout)->Order().Count());
    EXPECT_FALSE(registry.Has(std::string("HKCU\\") + receiptsPath));
  });
  sockets.peers = {{honest[0]}, {honest[1]}};
  EXPECT_NE(nullptr, KestBillCustomer(checkout));
  EXPECT_TRUE(registry.Has(std::string("HKCU\\") + receiptsPath));
  KestDestroyCheckout(checkout);
}

TEST_F(HostilePeer, ReturnsWithoutEndCostNoMemory) {
  // Returns before a line end are nothing: they may not be collected.
  ForEachMessage({okHead, "\r", 1u << 20}, [this] {
    EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
    EXPECT_GE(sockets.Received(), 1u << 20);
    EXPECT_LT(memory.Peak(), slack);
  });
}

TEST_F(HostilePeer, EmptyLinesBeforeTheStatusLineEndTheCall) {
  ForEachMessage({"", "\r\n", 1u << 20}, [this] {
    EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
    EXPECT_LE(sockets.Received(), 8192 + honest[0].size()) << "one look at the connection, and no more";
    EXPECT_LT(memory.Peak(), slack);
  });
}

TEST_F(HostilePeer, BodyWithoutLengthIsNotRead) {
  ForEachMessage({std::string(okHead) + "Server: x\r\n\r\n", "AAAA"}, [this] {
    EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
    EXPECT_LT(memory.Peak(), slack);
    EXPECT_LE(sockets.Received(), 8192 + honest[0].size()) << "one look at the connection, and no more";
  });
}

TEST_F(HostilePeer, ClaimedLengthAllocatesNothing) {
  for (const char* claim : {"2147483647", "2147483648", "4294967295", "99999999999", "-1", "999999"}) {
    SCOPED_TRACE(claim);
    const std::string stream = std::string(okHead) + "Content-Length: " + claim + "\r\n\r\nfew bytes";
    for (const int ending : {0, -1}) {
      Peer peer{stream};
      peer.ending = ending;
      ForEachMessage(peer, [this] {
        EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
        EXPECT_LT(memory.LargestBlock(), slack);
        EXPECT_LT(memory.Peak(), slack);
      });
    }
  }
}

TEST_F(HostilePeer, RedirectToItselfInOtherLetterCaseIsFollowedFiveTimes) {
  const std::string head = "HTTP/1.0 302 Found\r\nContent-Length: 0\r\nProxy-Connection: Keep-Alive\r\n";
  ForEachMessage({head + "Location: HTTP://SHOP.EXAMPLE:8080/GetProductList\r\n\r\n"}, [this] {
    const std::size_t before = sockets.peers.size() - 1;
    EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
    EXPECT_EQ(before + 6, sockets.Connections());
  });
}

TEST_F(HostilePeer, RedirectToItselfOnAKeptConnectionIsFollowedFiveTimesToo) {
  KestSetProxy("10.1.1.1", 3128);
  const std::string redirect =
      "HTTP/1.0 302 Found\r\nContent-Length: 0\r\nProxy-Connection: Keep-Alive\r\n"
      "Location: http://SHOP.example:8080/GetProductList\r\n\r\n";
  ForEachMessage({redirect, redirect}, [this] {
    const std::size_t before = sockets.peers.size() - 1;
    EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
    EXPECT_EQ(before + 1, sockets.Connections()) << "the open connection is used again";
    EXPECT_LT(memory.Peak(), slack);
  });
}

// These two are deliberately not counted: the call goes on as long as the server does, at no cost in memory.
TEST_F(HostilePeer, AttemptsThatAreNotCountedCostNoMemory) {
  for (const char* status : {"411 Length Required", "305 Use Proxy\r\nLocation: http://10.6.6.6:3128"}) {
    SCOPED_TRACE(status);
    const Peer asking{std::string("HTTP/1.0 ") + status + "\r\n\r\n"};
    for (const std::size_t times : {10u, 500u}) {
      sockets.peers = std::vector<Peer>(times, asking);
      sockets.peers.push_back({"HTTP/1.0 403 Enough\r\n\r\n"});
      EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch());
      EXPECT_EQ(times + 1, sockets.Connections());
      EXPECT_LT(memory.Peak(), slack);
    }
  }
}

TEST_F(HostilePeer, ReplyBeforeTheRequestIsSentWholeFailsWhenSendingDoes) {
  // The whole reply lies there to be read, but the server takes no more of the request.
  for (std::size_t message = 0; message < 2; ++message) {
    sockets.peers = {{honest[0]}, {honest[1]}};
    std::size_t takes = 0;
    for (std::int32_t code = KEST_ERROR_EXCHANGE; code != 0; ++takes) {
      sockets.peers[message].takes = takes;
      code = Fetch();
      ASSERT_TRUE(code == KEST_ERROR_EXCHANGE || code == 0) << takes;
      ASSERT_EQ(code == 0 ? 2u : message + 1, sockets.Connections()) << takes;
    }
    EXPECT_GT(takes, 300u) << "every byte of the request was the last in turn";
  }
}

TEST_F(HostilePeer, RequestThatIsTakenInSmallPiecesIsSentWhole) {
  sockets.peers = {{honest[0]}, {honest[1]}};
  ASSERT_EQ(0, Fetch());
  const std::size_t whole = sockets.Sent();
  for (const std::size_t atOnce : {1u, 2u, 3u, 7u, 100u}) {
    for (Peer& peer : sockets.peers) peer.atOnce = atOnce;
    EXPECT_EQ(0, Fetch()) << atOnce;
    EXPECT_EQ(whole, sockets.Sent()) << atOnce;
  }
}

TEST_F(HostilePeer, ConnectionThatEndsBeforeAnythingFails) {
  for (const int ending : {0, -1}) {
    Peer silent;
    silent.ending = ending;
    ForEachMessage(silent, [this] { EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch()); });
  }
  sockets.peers.clear();
  EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch()) << "nobody listens";
}

TEST_F(HostilePeer, ProductsForWhichThereIsNoMemoryAreAFailedExchange) {
  Fields fields = HonestFields(server);
  for (int sku = 0; sku < 200; ++sku) fields.emplace_back("KEST-Product", "SKU:1^Name:Tool");
  sockets.peers = {{honest[0]}, {server.Reply(fields)}};
  ASSERT_EQ(0, Fetch());
  const std::size_t before = memory.Live(), peak = memory.Peak() - before;
  std::size_t failures = 0;
  // Below the first, there is no memory for the list itself.
  for (std::size_t given = 2048; given < peak; given += peak / 250) {
    memory.budget = before + given;
    EXPECT_EQ(KEST_ERROR_EXCHANGE, Fetch()) << given;
    ++failures;
  }
  EXPECT_GT(failures, 200u);
  memory.budget = before + peak;
  EXPECT_EQ(0, Fetch());
}

TEST_F(HostilePeer, BillForWhichThereIsNoMemoryIsAFailedExchange) {
  Fields fields = HonestFields(server);
  for (int sku = 0; sku < 200; ++sku) fields.emplace_back("KEST-Product", "SKU:1^Name:Tool");
  sockets.peers = {{honest[0]}, {server.Reply(fields)}};
  KestCheckout* checkout = KestCreateCheckout();
  memory.Restart();
  ASSERT_NE(nullptr, KestGetBill(checkout));
  KestDestroyCheckout(checkout);
  const std::size_t before = memory.Live(), peak = memory.Peak() - before;
  for (std::size_t given = 4096; given < peak; given += peak / 250) {
    checkout = KestCreateCheckout();
    memory.budget = before + given;
    sockets.Restart();
    const bool isDone = KestGetBill(checkout) != nullptr;
    EXPECT_EQ(isDone ? 0 : KEST_ERROR_EXCHANGE, KestGetErrorCode(KEST_FIELDS(checkout))) << given;
    memory.budget = Peer::noEnd;
    KestDestroyCheckout(checkout);
    EXPECT_EQ(before, memory.Live()) << given;
  }
}

}  // namespace
}  // namespace kest::testing
