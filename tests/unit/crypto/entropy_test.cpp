#include "crypto/entropy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/recorded_system.h"
#include "support/vector_file.h"

namespace kest {
namespace {

using testing::Bytes;
using ::testing::ElementsAre;
using testing::RecordedSystem;
using testing::SystemInForce;
using testing::ToHex;

class Capture : public ::testing::Test {
 protected:
  bool Run() {
    const SystemInForce inForce(system);
    return CaptureScreen(buffer.data());
  }
  RecordedSystem system;
  Bytes buffer = Bytes(captureLength);
};

TEST_F(Capture, TakesTheTopLeftOfTheScreenInOrder) {
  EXPECT_TRUE(Run());
  EXPECT_THAT(system.calls, ElementsAre("GetDesktopWindow", "GetDC desktop", "CreateCompatibleBitmap screen 320 240",
                                        "CreateCompatibleDC screen", "SelectObject memory bitmap",
                                        "BitBlt memory 0 0 320 240 screen 0 0 13369376", "SelectObject memory old",
                                        "GetDIBits memory bitmap 0 240 0", "DeleteDC memory", "DeleteObject bitmap",
                                        "ReleaseDC desktop screen"));
  EXPECT_EQ(buffer[0], RecordedSystem::ScreenByte(0));
  EXPECT_EQ(buffer[38399], RecordedSystem::ScreenByte(38399));
}

TEST_F(Capture, AsksForUncompressedLinesOf4BitsFromTheBottom) {
  EXPECT_TRUE(Run());
  EXPECT_EQ(system.bitmapInfo.size, 40U);
  EXPECT_EQ(system.bitmapInfo.width, 320);
  EXPECT_EQ(system.bitmapInfo.height, 240);
  EXPECT_EQ(system.bitmapInfo.planes, 1);
  EXPECT_EQ(system.bitmapInfo.bitCount, 4);
  EXPECT_EQ(system.bitmapInfo.compression, 0U);
}

TEST_F(Capture, WithoutScreenFailsAtOnce) {
  system.hasScreen = false;
  EXPECT_FALSE(Run());
  EXPECT_THAT(system.calls, ElementsAre("GetDesktopWindow", "GetDC desktop"));
}

TEST_F(Capture, WithoutBitmapCleansUpTheRest) {
  system.hasBitmap = false;
  EXPECT_FALSE(Run());
  EXPECT_THAT(system.calls, ElementsAre("GetDesktopWindow", "GetDC desktop", "CreateCompatibleBitmap screen 320 240",
                                        "CreateCompatibleDC screen", "DeleteDC memory", "ReleaseDC desktop screen"));
}

TEST_F(Capture, WithoutMemoryContextCleansUpTheRest) {
  system.hasMemoryContext = false;
  EXPECT_FALSE(Run());
  EXPECT_THAT(system.calls,
              ElementsAre("GetDesktopWindow", "GetDC desktop", "CreateCompatibleBitmap screen 320 240",
                          "CreateCompatibleDC screen", "DeleteObject bitmap", "ReleaseDC desktop screen"));
}

TEST_F(Capture, BitmapThatCannotBeSelectedFails) {
  system.canSelect = false;
  EXPECT_FALSE(Run());
  EXPECT_THAT(system.calls, ElementsAre("GetDesktopWindow", "GetDC desktop", "CreateCompatibleBitmap screen 320 240",
                                        "CreateCompatibleDC screen", "SelectObject memory bitmap", "DeleteDC memory",
                                        "DeleteObject bitmap", "ReleaseDC desktop screen"));
}

TEST_F(Capture, FewerLinesThan240Fail) {
  system.linesRead = 239;
  EXPECT_FALSE(Run());
  EXPECT_EQ(system.calls.back(), "ReleaseDC desktop screen");
}

// Answers more lines than were asked for, and writes those alone.
class GenerousSystem : public RecordedSystem {
 public:
  int GetDIBits(os::DeviceContext context, os::GraphicsObject object, std::uint32_t firstLine, std::uint32_t lines,
                void* bits, os::BitmapInfo* info, std::uint32_t colourUse) override {
    return RecordedSystem::GetDIBits(context, object, firstLine, lines, bits, info, colourUse) + 1;
  }
};

TEST(CaptureLines, MoreThan240Fail) {
  GenerousSystem system;
  const SystemInForce inForce(system);
  Bytes buffer(captureLength);
  EXPECT_FALSE(CaptureScreen(buffer.data()));
  EXPECT_EQ(system.calls.back(), "ReleaseDC desktop screen");
}

class State : public ::testing::Test {
 protected:
  std::string Run() {
    const SystemInForce inForce(system);
    Bytes record(stateRecordLength);
    const std::uint16_t length = CollectSystemState(record.data());
    EXPECT_EQ(length % 4, 0);
    EXPECT_LE(length, 64);
    return ToHex(record.data(), length);
  }
  RecordedSystem system;
  const std::string start = "0403020112112221";
  const std::string disk = "08000000000200003433323144434241";
  const std::string cursor = "feff4523";
  const std::string time = "5453525164636261";
  const std::string memory = "4d000000747372718483828194939291a4a3a2a1b4b3b2b1c4c3c2c1";
};

TEST_F(State, HoldsAllCountersInOrder) {
  EXPECT_EQ(Run(), start + disk + cursor + time + memory);
}

TEST_F(State, LeavesOutWhatTheSystemRefuses) {
  system.hasDisk = false;
  EXPECT_EQ(Run(), start + cursor + time + memory);
  system.hasCursor = false;
  EXPECT_EQ(Run(), start + time + memory);
  system.hasTime = false;
  EXPECT_EQ(Run(), start + memory);
  system.hasDisk = true;
  EXPECT_EQ(Run(), start + disk + memory);
}

// Every bit of the half that is taken is set.
class FullThreadSystem : public RecordedSystem {
 public:
  std::uint32_t GetCurrentThreadId() override { return 0x1234FFFF; }
};

TEST(StateOfAThread, HoldsTheLowHalfOfItsNumberWhole) {
  FullThreadSystem system;
  const SystemInForce inForce(system);
  Bytes record(stateRecordLength);
  CollectSystemState(record.data());
  EXPECT_EQ("ffff2221", ToHex(record.data() + 4, 4));
}

TEST_F(State, IsBetween36And64Bytes) {
  EXPECT_EQ(Run().size(), 128U);
  system.hasDisk = system.hasCursor = system.hasTime = false;
  EXPECT_EQ(Run().size(), 72U);
}

TEST(Entropy, TheMachinesOwnSystemGivesAState) {
  std::uint8_t record[stateRecordLength];
  EXPECT_GE(CollectSystemState(record), 36);
}

TEST(Entropy, AScreenThatIsThereIsCaptured) {
  os::System& native = os::Native();
  const os::WindowHandle desktop = native.GetDesktopWindow();
  const os::DeviceContext screen = native.GetDC(desktop);
  if (screen != nullptr) native.ReleaseDC(desktop, screen);
  constexpr std::size_t guardLength = 4096;  // bytes
  Bytes buffer(captureLength + guardLength, 0xEE);
  EXPECT_EQ(screen != nullptr, CaptureScreen(buffer.data()));
  EXPECT_EQ(Bytes(buffer.begin() + captureLength, buffer.end()), Bytes(guardLength, 0xEE));
}

}  // namespace
}  // namespace kest
