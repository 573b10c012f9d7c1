// Where look-ups leave what they found: one entry a thread. The library may be unloaded while threads that looked names
// up live on, so nothing here is registered with a thread beyond a key that goes with the library. Any thread may call.
#pragma once

#include <cstddef>

#include "os/os.h"

namespace os::posix {

// Gives the calling thread an entry with room for `count` addresses in place of the one it had. It lives until the
// thread's next call or end. Null when there is no memory,
// or no key was left when the library was loaded; the thread then has none.
HostEntry* RenewHostEntry(std::size_t count);

}  // namespace os::posix
