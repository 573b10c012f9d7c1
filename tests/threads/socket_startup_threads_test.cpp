// Threads that start and stop the socket library at once: is none of their counts lost?
#include <gtest/gtest.h>

#include <atomic>

#include "support/forwarding_system.h"
#include "threads/together.h"
#include "transport/socket_startup.h"

namespace kest::testing {
namespace {

constexpr int rounds = 30000;

class CountingSockets : public ForwardingSystem {
 public:
  std::atomic<int> startups{0}, cleanups{0};

  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    ++startups;
    data->version = version;
    return 0;
  }
  int WSACleanup() override {
    ++cleanups;
    return 0;
  }
};

class SocketStartupThreads : public ::testing::Test {
 protected:
  CountingSockets sockets;
  SystemInForce inForce{sockets};
};

TEST_F(SocketStartupThreads, UsersThatComeAndGoLeaveTheCountOfTheOneThatStays) {
  SocketStartupCount count(1);
  std::atomic<int> wrong{0};
  Together([&](int) {
    for (int i = 0; i < rounds; ++i) {
      if (!count.Startup() || count.Value() < 2 || !count.Cleanup()) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(1u, count.Value());
  EXPECT_EQ(0, sockets.startups);
  EXPECT_EQ(0, sockets.cleanups);
}

TEST_F(SocketStartupThreads, SocketLibraryIsStoppedOnceByTheLastOfManyUsers) {
  SocketStartupCount count(threadCount);
  Together([&](int) {
    for (int i = 0; i < rounds; ++i) {
      count.Startup();
      count.Cleanup();
    }
    count.Cleanup();
  });
  EXPECT_EQ(0u, count.Value());
  EXPECT_EQ(1, sockets.cleanups);
}

TEST_F(SocketStartupThreads, FirstStartupsOfManyThreadsEachStartTheSocketLibrary) {
  std::atomic<int> wrong{0};
  Together([&](int) {
    for (int i = 0; i < rounds; ++i) {
      if (!SocketStartup() || !SocketCleanup()) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(threadCount * rounds, sockets.startups);
  EXPECT_EQ(0, sockets.cleanups);
}

}  // namespace
}  // namespace kest::testing
