#include "transport/character_reader.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kest {

std::int32_t CharacterReader::ReadBytes(void* bytes, std::uint32_t capacity) {
  if (next == limit && !FillOnce()) return ending;
  constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
  const std::size_t count = std::min({static_cast<std::size_t>(limit - next), std::size_t{capacity}, most});
  std::memcpy(bytes, next, count);
  next += count;
  return static_cast<std::int32_t>(count);
}

bool CharacterReader::FillOnce() {
  if (ending != 1) return false;
  const std::int32_t got = Fill();
  if (got > 0) return true;
  ending = got < 0 ? -1 : 0;
  return false;
}

std::uint32_t CharacterReader::LinesInMemory() const {
  std::uint32_t lines = 0;
  const std::uint8_t* line = next;
  while (line != limit) {
    const auto* end = static_cast<const std::uint8_t*>(std::memchr(line, '\n', static_cast<std::size_t>(limit - line)));
    if (end == nullptr || end == line || (end == line + 1 && *line == '\r')) break;
    ++lines;
    line = end + 1;
  }
  return lines;
}

TextReader::TextReader(const String& source) : text(source) {
  next = reinterpret_cast<const std::uint8_t*>(text.Characters());
  limit = next + text.Length();
}

std::int32_t ConnectionReader::Fill() {
  const std::int32_t got = connection.Receive(buffer, sizeof buffer);
  next = buffer;
  limit = buffer + std::max(got, std::int32_t{0});
  return got;
}

}  // namespace kest
