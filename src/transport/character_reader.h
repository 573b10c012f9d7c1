// Reading a message character by character: over a connection, through a buffer of 8,192 bytes, or over a text in
// memory. What is read does not depend on the pieces in which it arrived. A reader belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/memory.h"
#include "core/string.h"
#include "transport/socket_connection.h"

namespace kest {

class CharacterReader {
 public:
  CharacterReader() = default;
  CharacterReader(const CharacterReader&) = delete;
  CharacterReader& operator=(const CharacterReader&) = delete;

  // The next character, 1 to 255; 0 at the end of the stream, and for a zero byte, which ends a text; -1 on an error.
  int Read() {
    const int character = Peek();
    if (next != limit) ++next;
    return character;
  }
  // The same, leaving it to be read.
  int Peek() { return next != limit || FillOnce() ? *next : ending; }
  // Copies up to `capacity` bytes, zero bytes included: their count, 0 at the end of the stream, -1 on an error.
  std::int32_t ReadBytes(void* bytes, std::uint32_t capacity);

  // The lines that end in what is already in memory, up to an empty one: all those of a header block in a text, so that
  // room can be made for them at once.
  std::uint32_t LinesInMemory() const;

 protected:
  ~CharacterReader() = default;

  // Points `next` and `limit` at further bytes: their count, 0 at the end of the stream, below 0 on an error.
  virtual std::int32_t Fill() = 0;

  const std::uint8_t* next = nullptr;
  const std::uint8_t* limit = nullptr;
  // How the stream ended: 0 or -1 as above, 1 while it has not. An end stays one, whatever the source says later.
  std::int32_t ending = 1;

 private:
  bool FillOnce();
};

// Reads from a text, which it shares.
class TextReader final : public CharacterReader {
 public:
  explicit TextReader(const String& source);

 protected:
  std::int32_t Fill() override { return 0; }

 private:
  String text;
};

// Reads from a connection, which outlives it. It takes what the connection has, so bytes behind a head may be in its
// buffer already: a body is read through the reader too.
class ConnectionReader final : public CharacterReader {
 public:
  explicit ConnectionReader(SocketConnection& source) : connection(source) {}
  ~ConnectionReader() { Wipe(buffer, sizeof buffer); }

  // Forgets what is in the buffer: for a new connection.
  void Reset() {
    next = limit = nullptr;
    ending = 1;
  }

 protected:
  std::int32_t Fill() override;

 private:
  SocketConnection& connection;
  std::uint8_t buffer[8192];
};

}  // namespace kest
