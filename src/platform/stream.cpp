#include "platform/stream.h"

#include <algorithm>

namespace kest {

std::uint32_t Stream::Skip(std::uint32_t count) {
  std::uint8_t forgotten[8192];
  std::uint32_t left = count;
  while (left != 0) {
    const std::uint32_t asked = std::min<std::uint32_t>(left, sizeof forgotten);
    const std::int32_t read = Read(forgotten, asked);
    if (read < 1) break;
    // Never more than asked: the count must not wrap whatever the stream claims.
    left -= std::min(static_cast<std::uint32_t>(read), asked);
  }
  return count - left;
}

bool Stream::WriteAll(const void* bytes, std::uint32_t count) {
  const auto* at = static_cast<const std::uint8_t*>(bytes);
  while (count != 0) {
    const std::int32_t written = Write(at, count);
    if (written < 1) return false;
    const std::uint32_t step = std::min(static_cast<std::uint32_t>(written), count);
    at += step;
    count -= step;
  }
  return true;
}

}  // namespace kest
