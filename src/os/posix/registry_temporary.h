// What is being written, under a name that no reader looks at. Whoever writes holds a lock on it until it has its
// place; what nobody holds was left by a process that was killed, and is taken away by a later writer. Any thread may
// call.
#pragma once

#include "os/posix/descriptor.h"

namespace os::posix {

// A name that this process has not used before.
struct TemporaryName {
  TemporaryName();
  char text[48];
};

// Make a file for writing, or a directory, in `directory` and lock it; `name` receives its name. Nobody but the owner
// may read it. Not open on failure; `errno` tells which.
Descriptor MakeTemporaryFile(int directory, TemporaryName* name);
Descriptor MakeTemporaryDirectory(int directory, TemporaryName* name);

// Removes `directory`, which is open and lies in `parent` as `name`, with the files in it.
void RemoveDirectory(int parent, const char* name, int directory);

// Takes away what killed processes left in `directory`.
void RemoveLeftovers(int directory);

}  // namespace os::posix
