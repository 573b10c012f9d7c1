// What the calls of the system are on POSIX systems beyond what every system promises.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>

#include "os/os.h"
#include "unit/os/traced_child.h"

namespace os {
namespace {

TEST(PosixSystem, HasNoScreen) {
  Point position{};
  BitmapInfo info{};
  EXPECT_FALSE(Native().GetCursorPos(&position));
  EXPECT_EQ(nullptr, Native().GetDesktopWindow());
  EXPECT_EQ(nullptr, Native().GetDC(nullptr));
  EXPECT_EQ(0, Native().ReleaseDC(nullptr, nullptr));
  EXPECT_EQ(nullptr, Native().CreateCompatibleBitmap(nullptr, 1, 1));
  EXPECT_EQ(nullptr, Native().CreateCompatibleDC(nullptr));
  EXPECT_EQ(nullptr, Native().SelectObject(nullptr, nullptr));
  EXPECT_FALSE(Native().BitBlt(nullptr, 0, 0, 1, 1, nullptr, 0, 0, 0));
  EXPECT_EQ(0, Native().GetDIBits(nullptr, nullptr, 0, 1, nullptr, &info, 0));
  EXPECT_FALSE(Native().DeleteDC(nullptr));
  EXPECT_FALSE(Native().DeleteObject(nullptr));
}

TEST(PosixSystem, InterruptedRandomBytesAreDrawnAgain) {
  const auto work = [] {
    unsigned char bytes[32] = {};
    const bool isDrawn = Native().RtlGenRandom(bytes, sizeof bytes);
    unsigned bits = 0;
    for (const unsigned char byte : bytes) bits |= byte;
    return isDrawn && bits != 0 ? 1 : 0;
  };
  const TracedRun run = RunTraced(work, {0, 1, EINTR, {SYS_getrandom}, ""});
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(SYS_getrandom, run.refused);
  EXPECT_EQ(1, run.result);
}

TEST(PosixSystem, RandomBytesThatCannotBeHadAreAFailure) {
  const auto work = [] {
    unsigned char bytes[32];
    return Native().RtlGenRandom(bytes, sizeof bytes) ? 1 : 0;
  };
  const TracedRun run = RunTraced(work, {0, 1, ENOSYS, {SYS_getrandom}, ""});
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(SYS_getrandom, run.refused);
  EXPECT_EQ(0, run.result);
}

TEST(PosixSystem, MemoryThatCannotBeCountedIsNone) {
  const auto work = [] {
    MemoryStatus status{};
    status.memoryLoad = 77;
    Native().GlobalMemoryStatus(&status);
    return status.memoryLoad == 0 && status.totalPhysical == 0 && status.totalVirtual != 0 ? 1 : 0;
  };
  const TracedRun run = RunTraced(work, {0, 1, ENOSYS, {SYS_sysinfo}, ""});
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(SYS_sysinfo, run.refused);
  EXPECT_EQ(1, run.result);
}

TEST(PosixSystem, ADiskIsAskedForByAPath) {
  std::uint32_t sectors = 0, bytes = 0, free = 0, total = 0;
  ASSERT_TRUE(Native().GetDiskFreeSpaceA("/", &sectors, &bytes, &free, &total));
  EXPECT_EQ(512u, bytes);
  EXPECT_GT(total, 0u);
}

}  // namespace
}  // namespace os
