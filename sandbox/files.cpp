#include "files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace sandbox {
namespace {

[[noreturn]] void Fail(const std::string& what, const std::string& path, int reason) {
  throw std::runtime_error(what + " " + path + ": " + std::generic_category().message(reason));
}

bool ReadAll(int file, std::string& text) {
  char piece[4096];
  for (;;) {
    const ssize_t count = ::read(file, piece, sizeof piece);
    if (count == 0) return true;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    text.append(piece, static_cast<std::size_t>(count));
  }
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
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) Fail("cannot read", path, errno);
  std::string text;
  const bool whole = ReadAll(file, text);
  const int reason = errno;
  ::close(file);
  if (!whole) Fail("cannot read", path, reason);
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
