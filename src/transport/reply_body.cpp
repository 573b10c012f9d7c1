#include "transport/reply_body.h"

#include <algorithm>

#include "core/memory.h"

namespace kest {
namespace {

constexpr std::uint32_t pieceSize = 8192;  // bytes

// Fills `bytes` with `length` bytes.
bool ReadExactly(CharacterReader& reader, char* bytes, std::uint32_t length) {
  while (length > 0) {
    const std::int32_t got = reader.ReadBytes(bytes, length);
    if (got <= 0) return false;
    bytes += got;
    length -= static_cast<std::uint32_t>(got);
  }
  return true;
}

}  // namespace

std::int32_t ContentLength(const HttpHeaderList& headers) {
  const std::int32_t index = headers.Find(header::contentLength);
  if (index < 0) return -1;
  return static_cast<std::int32_t>(headers.At(static_cast<std::uint32_t>(index)).Value().ToUnsigned());
}

String ReadBody(CharacterReader& reader, const HttpReply& reply) {
  const std::int32_t claim = ContentLength(reply.headers);
  if (claim < 1) return String();
  const auto length = static_cast<std::uint32_t>(claim);
  String body;
  for (std::uint32_t read = 0; read < length;) {
    // Doubled, so that copying stays in proportion to what has arrived.
    const std::uint32_t wanted = std::min(length, std::max(pieceSize, 2 * read));
    char* bytes = body.TakeBuffer(wanted);
    if (!ReadExactly(reader, bytes + read, wanted - read)) return String();
    body.ReturnBuffer();
    read = wanted;
  }
  return body;
}

bool SkipBody(CharacterReader& reader, const HttpReply& reply) {
  if (reply.headers.Find(header::contentLength) < 0) return true;
  const std::int32_t claim = ContentLength(reply.headers);
  if (claim < 0) return false;
  char forgotten[pieceSize];
  const WipeAtEnd wipe(forgotten, sizeof forgotten);
  for (auto left = static_cast<std::uint32_t>(claim); left > 0;) {
    const std::uint32_t wanted = std::min(left, pieceSize);
    if (!ReadExactly(reader, forgotten, wanted)) return false;
    left -= wanted;
  }
  return true;
}

}  // namespace kest
