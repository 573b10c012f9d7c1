// Are times written and read as ISO 8601 has them?
#include <gtest/gtest.h>

#include "wall_time.h"

namespace sandboxtest {
namespace {

using sandbox::ReadTime;

TEST(WallTime, IsReadAsItIsWritten) {
  for (const char* text :
       {"1970-01-01T00:00:00Z", "2000-02-29T00:00:00Z", "2026-01-05T10:11:12Z", "2199-12-31T23:59:59Z"}) {
    const auto time = ReadTime(text);
    ASSERT_TRUE(time.has_value()) << text;
    EXPECT_EQ(sandbox::TimeText(*time), text);
  }
}

TEST(WallTime, IsThatOfTheSameMoment) {
  EXPECT_EQ(std::chrono::system_clock::to_time_t(ReadTime("2000-02-29T00:00:00Z").value()), 951782400);
}

TEST(WallTime, TextOfAnotherFormIsNone) {
  for (const char* text :
       {"", "now", "2026-01-05", "2026-01-05T10:11:12", "2026-01-05 10:11:12Z", "2026-1-5T10:11:12Z",
        "2026-02-30T00:00:00Z",
        "2026-01-05T24:00:00Z", "2026-01-05T10:11:60Z", "2026-01-05T10:11:12Z ", " 2026-01-05T10:11:12Z",
        "2026-01-05T10:11:12+01:00", "1969-12-31T23:59:59Z", "2200-01-01T00:00:00Z", "9999-12-31T23:59:59Z",
        "10000-01-01T00:00:00Z"}) {
    EXPECT_FALSE(ReadTime(text).has_value()) << text;
  }
}

TEST(WallTime, MillisecondsHaveThreeDigits) {
  const auto time = ReadTime("2026-01-05T10:11:12Z").value();
  EXPECT_EQ(sandbox::PreciseTimeText(time), "2026-01-05T10:11:12.000Z");
  EXPECT_EQ(sandbox::PreciseTimeText(time + std::chrono::milliseconds(45)), "2026-01-05T10:11:12.045Z");
}

}  // namespace
}  // namespace sandboxtest
