// The 8-bit text of the whole library (ANSI code page on Windows). Copies share one block and are copied on write; a
// String without a block is the empty text that never had storage. Distinct String objects that share a block may be
// used by several threads; one String may not.
// Lengths and positions are in characters (bytes). Positions are not checked unless an operation says so. Arguments
// may lie in the String's own text. Null texts are empty texts. Growth throws Qor::MemoryException and then changes
// nothing.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "core/shared_storage.h"

namespace kest {

class ByteBuffer;

class String {
 public:
  String() = default;
  // A null `text` gives a String without storage, an empty one a block of length 0.
  String(const char* text);  // NOLINT: texts are Strings
  // `length` bytes as they are, zero bytes included.
  String(const char* bytes, std::uint32_t length);
  String(const String&) = default;
  String(String&&) noexcept = default;

  String& operator=(const String& other) = default;
  String& operator=(String&& other) noexcept = default;
  // Null empties.
  String& operator=(const char* text);
  // A sole owner keeps its block, a shared block is let go.
  void Empty() { storage.Empty(); }

  std::uint32_t Length() const { return storage.Length(); }
  bool IsEmpty() const { return Length() == 0; }
  // The NUL-terminated characters; null while there is no storage.
  const char* Characters() const { return storage.Characters(); }
  // The same, never null: for calls that want a text.
  const char* Text() const { return storage.IsNull() ? "" : storage.Characters(); }
  char At(std::uint32_t index) const { return storage.Characters()[index]; }
  // Writing a NUL also cuts the text there.
  void SetAt(std::uint32_t index, char character);

  void Append(const String& text);
  void Append(const char* text);
  void Append(const char* bytes, std::uint32_t length);
  void Append(char character);
  void Insert(const char* bytes, std::uint32_t position, std::uint32_t count);
  // Makes room for `length` characters at once; the text stays.
  void Reserve(std::uint64_t length) { storage.Reserve(length); }

  // Joins a path with "\\" between where neither side has a separator at the joint; separators on both sides both stay.
  // An empty path becomes `part`; an empty `part` changes nothing.
  void JoinPath(const String& part);
  // Deliberately looks at this text's last character only, so that a separator that `part` begins with is doubled, and
  // an empty `part` that is not null adds one. Null changes nothing, but empties an empty path.
  void JoinPath(const char* part);

  // 0 for equal, byte by byte. Deliberately uneven: null equals the empty String and nothing else, and a non-null text,
  // even an empty one, never equals an empty String.
  int Compare(const char* text) const;
  // Byte by byte over both whole lengths; empty is empty, with storage or without.
  bool Equals(const String& other) const;
  // Ignoring the case of A to Z, up to the first NUL; empty is empty, with storage or without; null is empty.
  bool EqualsIgnoringCase(const char* text) const;

  // The index found, or -1.
  std::int32_t Find(char character, std::int32_t start = 0) const;
  // `set` is a NUL-terminated list of characters; `start` is not checked against the length.
  std::int32_t FindFirstOf(const char* set, std::int32_t start = 0) const;
  // Scans down from `start`, the length at the most, to 0; a negative `start` is returned as it is.
  std::int32_t ReverseFind(char character, std::int32_t start) const;
  // Scans down from the last character while above `start`; `start` itself is not looked at and is the answer when
  // nothing above it matched. A `start` at or beyond the last index gives length - 1 at once.
  std::int32_t FindLastOf(const char* set, std::int32_t start) const;
  // `count` characters from `start`, both cut to the text.
  String Middle(std::uint32_t start, std::uint32_t count) const;

  // White space is exactly space, tab, carriage return, line feed and form feed; a vertical tab deliberately is not.
  static bool IsSpace(char character);
  void TrimLeft();
  void TrimRight();
  void Trim();

  // Each appends. `width` is the least number of digits, filled up with "0"; a sign is not counted.
  void AppendUnsigned(std::uint32_t value, std::uint32_t width = 0);
  void AppendSigned(std::int32_t value, std::uint32_t width = 0);
  void AppendHex(std::uint32_t value, std::uint32_t width = 0);

  // Deliberately without validation: every character c makes value * 10 + (c - 48), wrapping at 2^32.
  std::uint32_t ToUnsigned() const;
  // Deliberately without validation: codes below 58 count c - 48, 65 to 90 c - 55, all others c - 87.
  std::uint32_t ToUnsignedHex() const;
  // Single precision by design; as sscanf with "%f", but that the decimal point is "." in every locale of the host. 0
  // when there is no number.
  float ToFloat() const;
  // One byte at a time, by the runtime library's locale.
  void ToUpper();

  // Replaces the text with what vsprintf makes of `format`; empty when that fails. See format_length.h for what is
  // reserved beforehand.
  void Format(const char* format, ...);
  void FormatList(String format, std::va_list arguments);

  // Replaces the text with string `id` of the module's string table; a missing one empties it.
  void LoadResource(os::ModuleHandle module, std::uint32_t id);

  // Takes the raw characters for writing, `length` of them and a NUL: until ReturnBuffer, copies of this String are
  // copies of the block. The old text is kept up to `length`.
  char* TakeBuffer(std::uint32_t length);
  void ReturnBuffer();

  const SharedStorage& Storage() const { return storage; }

 private:
  bool IsInside(const char* bytes) const;

  SharedStorage storage;
};

inline bool operator==(const String& a, const String& b) { return a.Equals(b); }
inline bool operator!=(const String& a, const String& b) { return !a.Equals(b); }

}  // namespace kest
