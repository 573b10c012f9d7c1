#include "transport/line_reader.h"

#include <limits>

#include "core/exception.h"

namespace kest {
namespace {

constexpr std::uint32_t firstCapacity = 512;  // characters

LineEnd EndOf(int character) {
  return character == 0 ? LineEnd::streamEnd : LineEnd::malformed;
}

}  // namespace

void CharacterBuffer::Grow() {
  // Positions in a text have 31 bits; a line that goes beyond is one for which there is no memory.
  if (capacity > std::numeric_limits<std::int32_t>::max()) throw Qor::MemoryException();
  const std::uint32_t wanted = capacity == 0 ? firstCapacity : capacity * 2;
  characters = block.TakeBuffer(wanted);
  capacity = wanted;
}

LineEnd ReadLine(CharacterReader& reader, CharacterBuffer& line) {
  for (;;) {
    int character = reader.Read();
    if (character == '\r') {
      do {
        character = reader.Read();
      } while (character == '\r');
      if (character >= 1 && character != '\n') return LineEnd::malformed;
    }
    if (character < 1) return EndOf(character);
    if (character == '\n') return LineEnd::lineFeed;
    line.Append(static_cast<char>(character));
  }
}

String TrimmedText(const char* characters, std::uint32_t length) {
  while (length > 0 && String::IsSpace(characters[length - 1])) --length;
  while (length > 0 && String::IsSpace(*characters)) {
    ++characters;
    --length;
  }
  return length != 0 ? String(characters, length) : String();
}

}  // namespace kest
