// The line ends of a message's head, and the buffer in which a line is collected. Any thread, each with its own.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "transport/character_reader.h"

namespace kest {

// Characters in one block that doubles when it is full, so that collecting n of them costs time in n. Throws
// Qor::MemoryException when there is no memory.
class CharacterBuffer {
 public:
  void Append(char character) {
    if (length == capacity) Grow();
    characters[length++] = character;
  }
  // Forgets the characters and keeps the block.
  void Clear() { length = 0; }
  std::uint32_t Length() const { return length; }
  // Null while the block was never needed.
  const char* Characters() const { return characters; }

 private:
  void Grow();

  String block;
  char* characters = nullptr;
  std::uint32_t length = 0;
  std::uint32_t capacity = 0;
};

enum class LineEnd {
  lineFeed,
  streamEnd,
  malformed,  // a carriage return before something else than a line end, or an error of the reader
};

// Appends the characters up to the next line end to `line` and takes the line end away.
LineEnd ReadLine(CharacterReader& reader, CharacterBuffer& line);

// Cuts `length` characters out, without the white space at both ends.
String TrimmedText(const char* characters, std::uint32_t length);

}  // namespace kest
