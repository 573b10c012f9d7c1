// The time of day that sales and requests are dated with, and its text: UTC as ISO 8601 writes it. No state: any thread
// may call.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

using WallTime = std::chrono::system_clock::time_point;
using WallClock = std::function<WallTime()>;

/// Writes a time to the second, such as "2026-01-05T10:11:12Z".
std::string TimeText(WallTime time);

/// Writes a time to the millisecond, such as "2026-01-05T10:11:12.345Z".
std::string PreciseTimeText(WallTime time);

/// Reads a time of the years 1970 to 2199 as TimeText writes it; nothing when the text has another form or there is no
/// such day.
std::optional<WallTime> ReadTime(std::string_view text);

}  // namespace sandbox
