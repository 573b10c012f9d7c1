#include "os/posix/calendar.h"

#include <time.h>

namespace os::posix {
namespace {

bool IsLeap(unsigned year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

unsigned DaysOfMonth(unsigned year, unsigned month) {
  constexpr unsigned char days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return days[month - 1] + (month == 2 && IsLeap(year) ? 1u : 0u);
}

std::uint64_t DaysSince1601(unsigned year, unsigned month, unsigned day) {
  const unsigned past = year - 1601;
  std::uint64_t days = std::uint64_t{past} * 365 + past / 4 - past / 100 + past / 400;
  for (unsigned m = 1; m < month; ++m) days += DaysOfMonth(year, m);
  return days + day - 1;
}

}  // namespace

void CurrentTime(SystemTime* time) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm parts{};
  gmtime_r(&now.tv_sec, &parts);
  time->year = static_cast<std::uint16_t>(parts.tm_year + 1900);
  time->month = static_cast<std::uint16_t>(parts.tm_mon + 1);
  time->dayOfWeek = static_cast<std::uint16_t>(parts.tm_wday);
  time->day = static_cast<std::uint16_t>(parts.tm_mday);
  time->hour = static_cast<std::uint16_t>(parts.tm_hour);
  time->minute = static_cast<std::uint16_t>(parts.tm_min);
  time->second = static_cast<std::uint16_t>(parts.tm_sec < 60 ? parts.tm_sec : 59);
  time->milliseconds = static_cast<std::uint16_t>(now.tv_nsec / 1000000);
}

bool ToFileTime(const SystemTime& time, FileTime* fileTime) {
  if (time.year < 1601 || time.year > 30827 || time.month < 1 || time.month > 12) return false;
  if (time.day < 1 || time.day > DaysOfMonth(time.year, time.month)) return false;
  if (time.hour > 23 || time.minute > 59 || time.second > 59 || time.milliseconds > 999) return false;
  std::uint64_t seconds = DaysSince1601(time.year, time.month, time.day) * 86400;
  seconds += time.hour * 3600u + time.minute * 60u + time.second;
  const std::uint64_t steps = seconds * 10000000 + time.milliseconds * 10000u;
  fileTime->low = static_cast<std::uint32_t>(steps);
  fileTime->high = static_cast<std::uint32_t>(steps >> 32);
  return true;
}

}  // namespace os::posix
