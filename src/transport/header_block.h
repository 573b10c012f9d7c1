// Reading the head of a message: the status line and the header block, by the same rules over every kind of reader.
// A line ends at a line feed; carriage returns before it are ignored, and one that stands before anything else is an
// error. The end of the stream ends a line too. Throughout, Qor::MemoryException is thrown when there is no memory.
#pragma once

#include "transport/character_reader.h"
#include "transport/http_header_list.h"
#include "transport/http_reply.h"

namespace kest {

// Reads a status line into version, status and reason. The version is "1.0" where the first token has no "/"; the
// status is the low 16 bits of what String::ToUnsigned makes of the second token, 0 where there is none. False, and
// `reply` is untouched, at the end of the stream, on an error or a malformed line end.
bool ReadStatusLine(CharacterReader& reader, HttpReply& reply);

// Reads header lines up to and with an empty one, or up to the end of the stream, and appends them to `headers`. The
// first ":" of a line ends the name; a line without one gives a field with an empty value. A line that begins with
// space or tab continues the value before it, joined with one space. Names and values are trimmed at both ends. The
// time is linear in the characters read, however they lie. False when there is nothing to read, on an error or a
// malformed line end; fields read until then stay in the list.
bool ReadHeaderBlock(CharacterReader& reader, HttpHeaderList& headers);

}  // namespace kest
