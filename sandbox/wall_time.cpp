#include "wall_time.h"

#include <cstdio>
#include <ctime>

namespace sandbox {
namespace {

std::string Written(WallTime time, const char* form) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char text[40];
  return std::string(text, std::strftime(text, sizeof text, form, &utc));
}

}  // namespace

std::string TimeText(WallTime time) {
  return Written(time, "%Y-%m-%dT%H:%M:%SZ");
}

std::string PreciseTimeText(WallTime time) {
  const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
  char rest[16];
  std::snprintf(rest, sizeof rest, ".%03dZ", static_cast<int>(since.count() % 1000));
  return Written(time, "%Y-%m-%dT%H:%M:%S") + rest;
}

std::optional<WallTime> ReadTime(std::string_view text) {
  std::tm utc{};
  const std::string copy(text);
  const char* end = strptime(copy.c_str(), "%Y-%m-%dT%H:%M:%SZ", &utc);
  if (!end) return std::nullopt;
  const std::time_t seconds = timegm(&utc);
  constexpr std::time_t year2200 = 7258118400;  // the clock counts nanoseconds, which end in 2262
  if (seconds < 0 || seconds >= year2200) return std::nullopt;
  // Whatever was read too kindly, such as a day that there is not or a digit too few, comes out in another form.
  const WallTime time = std::chrono::system_clock::from_time_t(seconds);
  if (TimeText(time) != text) return std::nullopt;
  return time;
}

}  // namespace sandbox
