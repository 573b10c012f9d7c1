#include "transport/body_source.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/memory.h"

namespace kest {

bool TextSource::Begin() {
  position = 0;
  return true;
}

std::int32_t TextSource::Read(void* bytes, std::uint32_t capacity) {
  constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
  const std::uint32_t count = std::min({text.Length() - position, capacity, most});
  if (count != 0) std::memcpy(bytes, text.Characters() + position, count);
  position += count;
  return static_cast<std::int32_t>(count);
}

bool SendBody(BodySource& source, SocketConnection& connection) {
  char piece[8192];
  const WipeAtEnd wipe(piece, sizeof piece);
  if (!source.Begin()) return false;
  for (;;) {
    const std::int32_t count = source.Read(piece, sizeof piece);
    if (count <= 0) return count == 0;
    if (!connection.Send(piece, count)) return false;
  }
}

}  // namespace kest
