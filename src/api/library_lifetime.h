// What happens when a process loads the library and when it lets it go. The system calls these through the library's
// entry, one thread at a time.
#pragma once

#include "os/os.h"

namespace kest {

// Keeps the module handle and starts the socket library. A library without sockets loads all the same: its calls fail.
void AttachProcess(os::ModuleHandle module);

// Gives back what AttachProcess started.
void DetachProcess();

}  // namespace kest
