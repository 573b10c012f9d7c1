// The body of a reply, as long as its "Content-Length" says. Throughout, memory grows with the bytes that arrive, never
// with the length that is claimed, and Qor::MemoryException is thrown when there is none.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "transport/character_reader.h"
#include "transport/http_reply.h"

namespace kest {

// What "Content-Length" says, in bytes, converted as String::ToUnsigned does and taken as signed; -1 when it is
// missing.
std::int32_t ContentLength(const HttpHeaderList& headers);

// Reads exactly as many bytes as "Content-Length" says. Empty when it is missing or below 1, or when the bytes cannot
// all be read.
String ReadBody(CharacterReader& reader, const HttpReply& reply);

// Reads and forgets the body. True without one; false when the bytes cannot all be read or the length is below zero.
bool SkipBody(CharacterReader& reader, const HttpReply& reply);

}  // namespace kest
