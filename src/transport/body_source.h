// What a request's body is read from, and how it goes to a connection. A source belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "transport/socket_connection.h"

namespace kest {

class BodySource {
 public:
  // Goes back to the beginning: every attempt of an exchange sends the whole body. False when that cannot be done.
  virtual bool Begin() = 0;
  // Copies the next bytes, at most `capacity`, into `bytes`: their count, 0 at the end, below 0 on an error.
  virtual std::int32_t Read(void* bytes, std::uint32_t capacity) = 0;

 protected:
  ~BodySource() = default;
};

// Reads from a text, which it shares.
class TextSource final : public BodySource {
 public:
  explicit TextSource(const String& source) : text(source) {}

  bool Begin() override;
  std::int32_t Read(void* bytes, std::uint32_t capacity) override;

 private:
  String text;
  std::uint32_t position = 0;
};

// Sends all that `source` has from its beginning, in pieces of up to 8,192 bytes. False when the source or the
// connection fails; what was sent before stays sent.
bool SendBody(BodySource& source, SocketConnection& connection);

}  // namespace kest
