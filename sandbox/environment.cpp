#include "environment.h"

#include <sys/random.h>

#include <cerrno>
#include <stdexcept>

namespace sandbox {

Environment Environment::OfMachine() {
  const auto randomBytes = [](std::size_t length) {
    std::string bytes(length, '\0');
    // Without a file descriptor, of which a crowd of clients may leave none.
    for (std::size_t drawn = 0; drawn < length;) {
      const ssize_t count = ::getrandom(bytes.data() + drawn, length - drawn, 0);
      if (count < 0 && errno != EINTR) throw std::runtime_error("the system gives no random bytes");
      if (count > 0) drawn += static_cast<std::size_t>(count);
    }
    return bytes;
  };
  return {[] { return std::chrono::steady_clock::now(); }, randomBytes};
}

}  // namespace sandbox
