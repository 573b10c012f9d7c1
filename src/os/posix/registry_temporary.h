// What is being written, under a name that no reader looks at. Whoever writes holds a lock on it until it has its
// place; what nobody holds was left by a process that was killed, and is taken away by a later writer. Any thread may
// call.
#pragma once

#include <sys/types.h>

#include "os/posix/descriptor.h"

namespace os::posix {

// The modes of what is made.
constexpr mode_t ownersDirectory = 0700, ownersFile = 0600;

// A name that this process has not used before.
struct TemporaryName {
  TemporaryName();
  char text[48];
};

// Make a file for writing, or a directory, in `directory` and lock it; `name` receives its name. Nobody but the owner
// may read it. Not open on failure, which leaves nothing behind; `errno` tells which, and 0 that every name is taken.
Descriptor MakeTemporaryFile(int directory, TemporaryName* name);
Descriptor MakeTemporaryDirectory(int directory, TemporaryName* name);

// Gives the owner of `name` in `directory` what the mask took when that was made; as far as the file system has modes.
void AllowOwner(int directory, const char* name);

// Removes `directory`, which is open and lies in `parent` as `name`, with the files in it.
void RemoveDirectory(int parent, const char* name, int directory);

// Takes away what killed processes left in `directory`.
void RemoveLeftovers(int directory);

}  // namespace os::posix
