#include "unit/os/meddled_calls.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>

namespace os {

thread_local std::size_t mostReadAtOnce = 0;
std::optional<std::string> homeOfUsers;

}  // namespace os

extern "C" {

ssize_t __real_read(int file, void* bytes, std::size_t count);
int __real_getpwuid_r(uid_t user, passwd* entry, char* strings, std::size_t size, passwd** found);

ssize_t __wrap_read(int file, void* bytes, std::size_t count) {
  return __real_read(file, bytes, os::mostReadAtOnce != 0 ? std::min(count, os::mostReadAtOnce) : count);
}
int __wrap_getpwuid_r(uid_t user, passwd* entry, char* strings, std::size_t size, passwd** found) {
  const int error = __real_getpwuid_r(user, entry, strings, size, found);
  if (error == 0 && *found != nullptr && os::homeOfUsers) (*found)->pw_dir = os::homeOfUsers->data();
  return error;
}
}
