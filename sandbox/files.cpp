#include "files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace sandbox {
namespace {

[[noreturn]] void Fail(const std::string& what, const std::string& path, int reason) {
  throw std::runtime_error(what + " " + path + ": " + std::generic_category().message(reason));
}

bool WriteAll(int file, const std::string& text) {
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t count = ::write(file, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    written += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

std::string ReadFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file.is_open() || file.bad() || errno == EISDIR) Fail("cannot read", path, errno ? errno : EIO);
  return text;
}

void WriteNewFile(const std::string& path, const std::string& text, unsigned mode) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (file < 0) Fail("cannot make", path, errno);
  const bool written = WriteAll(file, text);
  const int reason = errno;
  const bool closed = ::close(file) == 0;
  if (written && closed) return;
  const int why = written ? errno : reason;
  ::unlink(path.c_str());
  Fail("cannot write", path, why);
}

}  // namespace sandbox
