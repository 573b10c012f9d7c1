// How kest ends: what scripts may rely on.
#pragma once

#include <stdexcept>

namespace kest_host {

enum ExitCode {
  exitDone = 0,
  exitFailed = 1,          // the machine's fault: a file that cannot be read, a library that cannot be loaded
  exitUsage = 2,           // the command line is not understood
  exitExchangeFailed = 3,  // no valid answer from the server (error code 102)
  exitRefused = 4,         // the server answered with an error code of its own
  exitNotFound = 5,        // no such receipt is stored, no such error code is in the table
};

// Ends kest with exitUsage and a sentence for the user.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace kest_host
