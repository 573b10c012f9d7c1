// Does the start-up count keep its uneven rules?
#include "transport/socket_startup.h"

#include "transport_fixture.h"

namespace kest::testing {
namespace {

using SocketStartupTest = TransportTest;
using ::testing::ElementsAre;

TEST_F(SocketStartupTest, TwoStartupsAndTwoCleanupsStartTwiceAndNeverStop) {
  EXPECT_TRUE(SocketStartup());
  EXPECT_TRUE(SocketStartup());
  EXPECT_TRUE(SocketCleanup());
  EXPECT_TRUE(SocketCleanup());
  EXPECT_THAT(sockets.startups, ElementsAre(0x0101, 0x0101));
  EXPECT_EQ(sockets.cleanups, 0);
}

TEST_F(SocketStartupTest, SuccessfulFirstStartupLeavesTheCountAtZero) {
  SocketStartupCount count;
  EXPECT_TRUE(count.Startup());
  EXPECT_EQ(count.Value(), 0u);
}

TEST_F(SocketStartupTest, CountAboveZeroIsRaisedWithoutStarting) {
  SocketStartupCount count(1);
  EXPECT_TRUE(count.Startup());
  EXPECT_EQ(count.Value(), 2u);
  EXPECT_TRUE(sockets.startups.empty());
}

TEST_F(SocketStartupTest, RefusedStartupFails) {
  sockets.startupResult = 10091;
  EXPECT_FALSE(SocketStartup());
}

TEST_F(SocketStartupTest, GrantedVersionNeedsBothNumbersAtLeastOne) {
  const std::pair<std::uint16_t, bool> grants[] = {{0x0001, false}, {0x0000, false}, {0x0100, false}, {0x0101, true},
                                                   {0x0202, true},  {0x0002, false}, {0x0201, true},  {0x0102, true}};
  for (const auto& [version, isEnough] : grants) {
    sockets.grantedVersion = version;
    EXPECT_EQ(SocketStartup(), isEnough) << std::hex << version;
  }
}

TEST_F(SocketStartupTest, CleanupOfTheLastUserStopsAndCountsDown) {
  SocketStartupCount count(1);
  EXPECT_TRUE(count.Cleanup());
  EXPECT_EQ(sockets.cleanups, 1);
  EXPECT_EQ(count.Value(), 0u);
}

TEST_F(SocketStartupTest, CleanupOfOneOfSeveralUsersOnlyCountsDown) {
  SocketStartupCount count(3);
  EXPECT_TRUE(count.Cleanup());
  EXPECT_EQ(sockets.cleanups, 0);
  EXPECT_EQ(count.Value(), 2u);
}

TEST_F(SocketStartupTest, RefusedStopFailsAndKeepsTheCount) {
  sockets.cleanupResult = -1;
  SocketStartupCount count(1);
  EXPECT_FALSE(count.Cleanup());
  EXPECT_EQ(count.Value(), 1u);
}

// Writes down what happens to locks and to the socket library, in order.
class LockRecorder : public ScriptedSockets {
 public:
  std::string events;
  void InitializeCriticalSection(os::CriticalSection* lock) override {
    events += "made ";
    ScriptedSockets::InitializeCriticalSection(lock);
  }
  void EnterCriticalSection(os::CriticalSection* lock) override {
    events += "enter ";
    ScriptedSockets::EnterCriticalSection(lock);
  }
  void LeaveCriticalSection(os::CriticalSection* lock) override {
    events += "leave ";
    ScriptedSockets::LeaveCriticalSection(lock);
  }
  void DeleteCriticalSection(os::CriticalSection* lock) override {
    events += "deleted ";
    ScriptedSockets::DeleteCriticalSection(lock);
  }
  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    events += "start ";
    return ScriptedSockets::WSAStartup(version, data);
  }
  int WSACleanup() override {
    events += "stop ";
    return ScriptedSockets::WSACleanup();
  }
};

TEST(SocketStartupLock, IsHeldAroundEveryChangeButNotForAFirstStartup) {
  LockRecorder recorder;
  SystemInForce inForce(recorder);
  {
    SocketStartupCount zero;
    zero.Startup();
    EXPECT_EQ(recorder.events, "made start ");
    zero.Cleanup();
  }
  EXPECT_EQ(recorder.events, "made start enter leave deleted ");
  recorder.events.clear();
  {
    SocketStartupCount one(1);
    one.Cleanup();
  }
  EXPECT_EQ(recorder.events, "made enter stop leave deleted ");
  recorder.events.clear();
  SocketStartupCount one(1);
  one.Startup();
  EXPECT_EQ(recorder.events, "made enter leave ");
}

TEST(SocketStartupLock, IsLeftWhenTheSocketLibraryRefusesToStop) {
  LockRecorder recorder;
  recorder.cleanupResult = -1;
  SystemInForce inForce(recorder);
  SocketStartupCount one(1);
  EXPECT_FALSE(one.Cleanup());
  EXPECT_EQ(recorder.events, "made enter stop leave ");
}

}  // namespace
}  // namespace kest::testing
