#include "transport/header_block.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "transport/line_reader.h"

namespace kest {
namespace {

// One field in the making: its first line, then the lines that continue it.
class HeaderField {
 public:
  // Reads the field's lines. After `malformed` the field is of no use.
  LineEnd Read(CharacterReader& reader) {
    text.Clear();
    LineEnd end = ReadLine(reader, text);
    isEmptyLine = text.Length() == 0;
    EndName();
    if (isEmptyLine) return end;
    while (end == LineEnd::lineFeed && IsFold(reader.Peek())) {
      while (IsFold(reader.Peek())) reader.Read();
      text.Append(' ');
      end = ReadLine(reader, text);
    }
    return end;
  }

  bool IsEmptyLine() const { return isEmptyLine; }

  NameValuePair Pair() const {
    return NameValuePair(TrimmedText(text.Characters(), nameLength),
                         TrimmedText(text.Characters() + valueBegin, text.Length() - valueBegin));
  }

 private:
  static bool IsFold(int character) { return character == ' ' || character == '\t'; }

  // The name is fixed by the first line: a colon in a line that continues it belongs to the value.
  void EndName() {
    nameLength = valueBegin = text.Length();
    if (isEmptyLine) return;
    const void* colon = std::memchr(text.Characters(), ':', text.Length());
    if (colon == nullptr) return;
    nameLength = static_cast<std::uint32_t>(static_cast<const char*>(colon) - text.Characters());
    valueBegin = nameLength + 1;
  }

  CharacterBuffer text;
  std::uint32_t nameLength = 0;
  std::uint32_t valueBegin = 0;
  bool isEmptyLine = false;
};

// Appends to a list for which room is made at once where the lines are known, else doubled: a list that grew in its own
// fixed steps would be copied ever so often.
class FieldCollector {
 public:
  FieldCollector(HttpHeaderList& target, std::uint32_t expected) : list(target), room(target.Count() + expected) {
    list.Reserve(room);
  }

  void Add(NameValuePair&& pair) {
    if (list.Count() >= room) {
      room = std::max(list.Count() + 1, 2 * list.Count());
      list.Reserve(room);
    }
    list.Add(std::move(pair));
  }

 private:
  HttpHeaderList& list;
  std::uint32_t room;
};

bool IsTokenEnd(char character) {
  return character == ' ' || character == '\t' || character == '\f';
}

// Takes the next token off the front of a line.
String TakeToken(const char*& next, const char* end) {
  next = std::find_if_not(next, end, IsTokenEnd);
  const char* begin = next;
  next = std::find_if(next, end, IsTokenEnd);
  return TrimmedText(begin, static_cast<std::uint32_t>(next - begin));
}

// What follows the first "/" of the protocol token.
String VersionOf(const String& protocol) {
  const std::int32_t slash = protocol.Find('/');
  if (slash < 0) return "1.0";
  return protocol.Middle(static_cast<std::uint32_t>(slash + 1), protocol.Length());
}

}  // namespace

bool ReadStatusLine(CharacterReader& reader, HttpReply& reply) {
  if (reader.Peek() < 1) return false;
  CharacterBuffer line;
  if (ReadLine(reader, line) == LineEnd::malformed) return false;
  const char* next = line.Characters();
  const char* end = next + line.Length();
  String version = VersionOf(TakeToken(next, end));
  const String status = TakeToken(next, end);
  String reason = TrimmedText(next, static_cast<std::uint32_t>(end - next));
  reply.version = std::move(version);
  reply.status = static_cast<std::uint16_t>(status.ToUnsigned());
  reply.reason = std::move(reason);
  return true;
}

bool ReadHeaderBlock(CharacterReader& reader, HttpHeaderList& headers) {
  if (reader.Peek() < 1) return false;
  FieldCollector fields(headers, reader.LinesInMemory());
  HeaderField field;
  for (;;) {
    const LineEnd end = field.Read(reader);
    if (end == LineEnd::malformed) return false;
    if (field.IsEmptyLine()) return true;
    fields.Add(field.Pair());
    if (end == LineEnd::streamEnd) return true;
  }
}

}  // namespace kest
