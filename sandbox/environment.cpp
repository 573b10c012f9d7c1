#include "environment.h"

#include <sys/random.h>

#include <cerrno>
#include <memory>
#include <random>
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

Environment Environment::Seeded(std::uint64_t seed) {
  // The language lays down what this generator gives; its distributions differ from one library to another.
  const auto generator = std::make_shared<std::mt19937_64>(seed);
  const auto randomBytes = [generator](std::size_t length) {
    std::string bytes(length, '\0');
    for (char& byte : bytes) byte = static_cast<char>((*generator)() >> 56);
    return bytes;
  };
  return {[] { return std::chrono::steady_clock::now(); }, randomBytes};
}

}  // namespace sandbox
