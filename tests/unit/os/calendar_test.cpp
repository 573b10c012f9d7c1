#include "os/posix/calendar.h"

#include <gtest/gtest.h>

namespace os::posix {
namespace {

TEST(Calendar, DaysBeyondTheirMonthAreRefusedAndLeaveTheResultAlone) {
  const SystemTime dates[] = {
      {2001, 2, 0, 29, 0, 0, 0, 0}, {1900, 2, 0, 29, 0, 0, 0, 0}, {2000, 2, 0, 30, 0, 0, 0, 0},
      {2001, 4, 0, 31, 0, 0, 0, 0}, {2001, 12, 0, 32, 0, 0, 0, 0},
      {2100, 2, 0, 29, 0, 0, 0, 0},
  };
  for (const SystemTime& date : dates) {
    FileTime steps{1, 2};
    EXPECT_FALSE(ToFileTime(date, &steps)) << date.year << "-" << date.month << "-" << date.day;
    EXPECT_EQ(1u, steps.low);
    EXPECT_EQ(2u, steps.high);
  }
}

TEST(Calendar, EveryMonthEndsWithItsLastDay) {
  const std::uint16_t lastDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (std::uint16_t month = 1; month <= 12; ++month) {
    const std::uint16_t last = lastDays[month - 1];
    FileTime steps{};
    EXPECT_TRUE(ToFileTime({2001, month, 0, last, 0, 0, 0, 0}, &steps)) << month;
    EXPECT_FALSE(ToFileTime({2001, month, 0, static_cast<std::uint16_t>(last + 1), 0, 0, 0, 0}, &steps)) << month;
  }
}

TEST(Calendar, EveryFourthYearAndEveryFourthCenturyHaveALeapDay) {
  constexpr std::uint64_t stepsOfADay = 864000000000;
  const auto stepsOf = [](std::uint16_t year, std::uint16_t month, std::uint16_t day) {
    const SystemTime date{year, month, 0, day, 0, 0, 0, 0};
    FileTime steps{};
    EXPECT_TRUE(ToFileTime(date, &steps));
    return static_cast<std::uint64_t>(steps.high) << 32 | steps.low;
  };
  for (const std::uint16_t year : {1604, 2000, 2004, 2400}) {
    EXPECT_EQ(stepsOf(year, 2, 28) + stepsOfADay, stepsOf(year, 2, 29)) << year;
    EXPECT_EQ(stepsOf(year, 2, 29) + stepsOfADay, stepsOf(year, 3, 1)) << year;
  }
}

TEST(Calendar, TheLastDayThatSystemTimeHoldsIsTaken) {
  const SystemTime date{30827, 12, 0, 31, 23, 59, 59, 999};
  FileTime steps{};
  EXPECT_TRUE(ToFileTime(date, &steps));
  const SystemTime beyond{30828, 1, 0, 1, 0, 0, 0, 0};
  EXPECT_FALSE(ToFileTime(beyond, &steps));
}

}  // namespace
}  // namespace os::posix
