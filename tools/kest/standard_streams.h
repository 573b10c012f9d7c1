// The process's own stdin, stdout and stderr, as they were given to it.
#pragma once

namespace kest_host {

// To be called once, before anything is opened. Lets a write to a closed pipe fail instead of ending the process, and
// keeps the places of closed streams taken, so that no file and no socket gets what is meant for stdout or stderr.
void PrepareStandardStreams();

// False when nothing that is written to stdout can arrive: it is closed, not open for writing, or a pipe that nobody
// reads any more. A full disk shows only when something is written.
bool CanWriteOutput();

}  // namespace kest_host
