// Windows' date forms from POSIX clocks. Any thread may call it.
#pragma once

#include "os/os.h"

namespace os::posix {

// Sets `time` to the current date and time of day in UTC.
void CurrentTime(SystemTime* time);

// Converts a UTC date to 100-nanosecond steps since 1601-01-01. False, with `fileTime` untouched, for a date or time of
// day that does not exist or a year outside 1601 to 30827. The day of the week is not looked at.
bool ToFileTime(const SystemTime& time, FileTime* fileTime);

}  // namespace os::posix
