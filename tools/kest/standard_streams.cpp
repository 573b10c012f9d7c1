#include "standard_streams.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#endif

namespace kest_host {

#ifdef _WIN32

void PrepareStandardStreams() {}

bool CanWriteOutput() {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  if (output == nullptr || output == INVALID_HANDLE_VALUE) return false;
  SetLastError(NO_ERROR);
  return GetFileType(output) != FILE_TYPE_UNKNOWN || GetLastError() == NO_ERROR;
}

#else

void PrepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    // Takes the lowest free number, which is this one. What reads only is no output, so a closed stdout stays none.
    if (open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY) != stream) return;
  }
}

bool CanWriteOutput() {
  const int flags = fcntl(STDOUT_FILENO, F_GETFL);
  if (flags == -1 || (flags & O_ACCMODE) == O_RDONLY) return false;
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, 0) < 0 || (output.revents & (POLLERR | POLLHUP | POLLNVAL)) == 0;
}

#endif

}  // namespace kest_host
