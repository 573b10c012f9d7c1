// What every system promises, asked of the machine's own.
#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <set>
#include <thread>
#include <vector>

#include "os/os.h"

namespace os {
namespace {

TEST(System, NativeIsInForceFromTheStart) { EXPECT_EQ(&Native(), system); }

TEST(System, ABlockOfZeroBytesIsABlock) {
  void* block = Native().GlobalAlloc(0, 0);
  EXPECT_NE(nullptr, block);
  Native().GlobalFree(block);
}

TEST(System, FreeingNullDoesNothing) { Native().GlobalFree(nullptr); }

TEST(System, AThreadMayEnterALockItHolds) {
  CriticalSection lock;
  Native().InitializeCriticalSection(&lock);
  Native().EnterCriticalSection(&lock);
  Native().EnterCriticalSection(&lock);
  Native().LeaveCriticalSection(&lock);
  Native().LeaveCriticalSection(&lock);
  Native().DeleteCriticalSection(&lock);
}

TEST(System, ALockKeepsOtherThreadsOut) {
  CriticalSection lock;
  Native().InitializeCriticalSection(&lock);
  int counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 10000; ++i) {
        Native().EnterCriticalSection(&lock);
        ++counter;
        Native().LeaveCriticalSection(&lock);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  Native().DeleteCriticalSection(&lock);
  EXPECT_EQ(40000, counter);
}

TEST(System, AMissingStringResourceGivesNoCharacters) {
  char buffer[16];
  EXPECT_EQ(0, Native().LoadStringA(nullptr, 64999, buffer, sizeof buffer));
}

TEST(System, ThreadsHaveIdentifiersOfTheirOwn) {
  const std::uint32_t own = Native().GetCurrentThreadId();
  std::uint32_t other = own;
  std::thread([&] { other = Native().GetCurrentThreadId(); }).join();
  EXPECT_NE(own, other);
  EXPECT_EQ(own, Native().GetCurrentThreadId());
}

TEST(System, TheTimeIsADateThatExists) {
  SystemTime now{};
  Native().GetSystemTime(&now);
  FileTime steps{};
  EXPECT_GE(now.year, 2024);
  EXPECT_LE(now.dayOfWeek, 6);
  EXPECT_TRUE(Native().SystemTimeToFileTime(&now, &steps));
}

// As the C library tells it. The fields stand in the order in which they count.
std::vector<int> ClockTime() {
  const std::time_t now = std::time(nullptr);
  const std::tm parts = *std::gmtime(&now);
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

TEST(System, TheTimeIsTheClocks) {
  SystemTime now{};
  std::vector<int> before, after;
  // The clocks are read at different moments and need not tick together: a second more or less is the same time.
  do {
    before = ClockTime();
    Native().GetSystemTime(&now);
    after = ClockTime();
  } while (before[4] != after[4] || before[5] == 0 || after[5] == 59);
  const std::vector<int> told = {now.year, now.month, now.day, now.hour, now.minute};
  EXPECT_EQ(std::vector<int>(before.begin(), before.end() - 1), told);
  EXPECT_LE(before[5] - 1, now.second);
  EXPECT_GE(after[5] + 1, now.second);
}

struct Date {
  SystemTime time;
  std::uint64_t steps;
};

TEST(System, DatesBecomeStepsSince1601) {
  const Date dates[] = {
      {{1601, 1, 0, 1, 0, 0, 0, 0}, 0},
      {{1970, 1, 0, 1, 0, 0, 0, 0}, 116444736000000000u},
      {{2000, 2, 0, 29, 12, 34, 56, 789}, 125963012967890000u},
      {{2000, 3, 0, 1, 0, 0, 0, 0}, 125963424000000000u},
      {{1998, 3, 6, 7, 23, 59, 59, 999}, 125337887999990000u},
  };
  for (const Date& date : dates) {
    FileTime steps{};
    ASSERT_TRUE(Native().SystemTimeToFileTime(&date.time, &steps));
    EXPECT_EQ(date.steps, std::uint64_t{steps.high} << 32 | steps.low) << date.time.year;
  }
}

TEST(System, DatesThatDoNotExistAreRefused) {
  const SystemTime dates[] = {
      {1600, 12, 0, 31, 0, 0, 0, 0}, {2001, 0, 0, 1, 0, 0, 0, 0},  {2001, 13, 0, 1, 0, 0, 0, 0},
      {2001, 1, 0, 0, 0, 0, 0, 0},   {2001, 1, 0, 32, 0, 0, 0, 0}, {2001, 1, 0, 1, 24, 0, 0, 0},
      {2001, 1, 0, 1, 0, 60, 0, 0},  {2001, 1, 0, 1, 0, 0, 60, 0}, {2001, 1, 0, 1, 0, 0, 0, 1000},
  };
  for (const SystemTime& date : dates) {
    FileTime steps{1, 2};
    EXPECT_FALSE(Native().SystemTimeToFileTime(&date, &steps)) << date.year << "-" << date.month << "-" << date.day;
  }
}

TEST(System, TheCurrentDriveHasClusters) {
  std::uint32_t sectors = 0, bytes = 0, free = 0, total = 0;
  ASSERT_TRUE(Native().GetDiskFreeSpaceA(nullptr, &sectors, &bytes, &free, &total));
  EXPECT_GT(sectors, 0u);
  EXPECT_GT(bytes, 0u);
  EXPECT_GT(total, 0u);
  EXPECT_LE(free, total);
}

TEST(System, ADriveThatIsNotThereCannotBeAsked) {
  std::uint32_t sectors, bytes, free, total;
  EXPECT_FALSE(Native().GetDiskFreeSpaceA("no-such-drive\\", &sectors, &bytes, &free, &total));
}

TEST(System, MemoryStatusIsFilled) {
  MemoryStatus status{};
  status.length = sizeof status;
  Native().GlobalMemoryStatus(&status);
  EXPECT_EQ(32u, status.length);
  EXPECT_LE(status.memoryLoad, 100u);
  EXPECT_GT(status.totalPhysical, 0u);
  EXPECT_GT(status.totalVirtual, 0u);
}

TEST(System, RandomBytesDiffer) {
  std::uint8_t first[64] = {}, second[64] = {};
  ASSERT_TRUE(Native().RtlGenRandom(first, sizeof first));
  ASSERT_TRUE(Native().RtlGenRandom(second, sizeof second));
  EXPECT_NE(0, std::memcmp(first, second, sizeof first));
}

TEST(System, SocketsGrantVersionOnePointOne) {
  SocketLibraryData data{};
  ASSERT_EQ(0, Native().WSAStartup(0x0101, &data));
  EXPECT_EQ(0x0101, data.version);
  EXPECT_EQ(0x0202, data.highVersion);
  Native().WSACleanup();
}

class Sockets : public ::testing::Test {
 protected:
  Sockets() {
    SocketLibraryData data{};
    Native().WSAStartup(0x0101, &data);
  }
  ~Sockets() override { Native().WSACleanup(); }
};

TEST_F(Sockets, DottedAddressesAreInNetworkOrder) {
  const std::uint32_t address = Native().inet_addr("127.0.0.1");
  std::uint8_t bytes[4];
  std::memcpy(bytes, &address, sizeof bytes);
  EXPECT_EQ(127, bytes[0]);
  EXPECT_EQ(1, bytes[3]);
  EXPECT_EQ(0xFFFFFFFFu, Native().inet_addr("1host"));
}

TEST_F(Sockets, PortsAreInNetworkOrder) {
  const std::uint16_t port = Native().htons(0x1234);
  std::uint8_t bytes[2];
  std::memcpy(bytes, &port, sizeof bytes);
  EXPECT_EQ(0x12, bytes[0]);
  EXPECT_EQ(0x34, bytes[1]);
}

TEST_F(Sockets, LocalhostIsFound) {
  const HostEntry* entry = Native().gethostbyname("localhost");
  ASSERT_NE(nullptr, entry);
  ASSERT_NE(nullptr, entry->addresses[0]);
  EXPECT_EQ(4, entry->length);
  EXPECT_EQ(127, entry->addresses[0][0]);
}

TEST_F(Sockets, AnUnknownNameHasNoEntry) { EXPECT_EQ(nullptr, Native().gethostbyname("no-such-host.invalid")); }

TEST_F(Sockets, ConnectingToAClosedPortFails) {
  const Socket socket = Native().socket(addressFamilyInet, socketTypeStream, 0);
  ASSERT_NE(invalidSocket, socket);
  SocketAddress address{addressFamilyInet, Native().htons(1), Native().inet_addr("127.0.0.1"), {}};
  EXPECT_EQ(-1, Native().connect(socket, &address, sizeof address));
  EXPECT_EQ(0, Native().closesocket(socket));
}

TEST_F(Sockets, LingerIsTakenInItsWindowsForm) {
  const Socket socket = Native().socket(addressFamilyInet, socketTypeStream, 0);
  ASSERT_NE(invalidSocket, socket);
  const Linger linger{1, 5};
  EXPECT_EQ(0, Native().setsockopt(socket, socketLevel, optionLinger, &linger, sizeof linger));
  EXPECT_EQ(0, Native().closesocket(socket));
}

TEST_F(Sockets, AnUnknownFamilyGivesNoSocket) {
  EXPECT_EQ(invalidSocket, Native().socket(9999, socketTypeStream, 0));
}

}  // namespace
}  // namespace os
