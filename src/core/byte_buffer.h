// Binary counterpart of String on the same shared storage: digest input, cipher text, base64 text. It either owns a
// counted block or writes into memory that the caller lent it (external mode) and then never allocates; lent memory
// stays the caller's and outlives the buffer. One ByteBuffer belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/object.h"
#include "core/string.h"

namespace kest {

class ByteBuffer : public Object {
 public:
  ByteBuffer() = default;
  // `length` bytes, copied.
  ByteBuffer(const void* bytes, std::uint32_t length);
  // Shares the block, or copies the bytes of one that cannot be shared or lies in lent memory.
  ByteBuffer(const ByteBuffer& other);
  ByteBuffer(ByteBuffer&& other) noexcept;
  // In external mode the other's bytes are copied into the lent memory; its capacity is deliberately not looked at, the
  // caller guarantees room.
  ByteBuffer& operator=(const ByteBuffer& other);
  ~ByteBuffer() override = default;

  // A buffer in external mode: `capacity` bytes at `memory`, none of them in use.
  static ByteBuffer External(void* memory, std::uint32_t capacity);

  std::uint32_t Length() const { return IsExternal() ? externalLength : storage.Length(); }
  bool IsEmpty() const { return Length() == 0; }
  // The bytes; null while there is neither storage nor lent memory.
  const std::uint8_t* Bytes() const;
  std::uint8_t At(std::uint32_t index) const { return Bytes()[index]; }
  void SetAt(std::uint32_t index, std::uint8_t byte);

  // The operations below throw Qor::MemoryException when there is no room, own or lent, and then change nothing. Bytes
  // that a greater length adds are the caller's to fill.
  void SetLength(std::uint32_t length);
  void Reserve(std::uint64_t length);
  void Append(std::uint8_t byte);
  void Append(const void* bytes, std::uint32_t length);
  void AppendCopies(std::uint8_t byte, std::uint32_t count);

  // Takes the raw bytes for writing, `length` of them; until ReturnBuffer the block is not shared with copies. What was
  // there is kept up to `length`.
  std::uint8_t* TakeBuffer(std::uint32_t length);
  void ReturnBuffer();

  // Replaces the bytes with what base64 `text` stands for (RFC 4648 section 4). False, and empty, for text that is
  // none. Defined beside the codec.
  bool DecodeBase64(const String& text);
  // Replaces `text` with the base64 of the bytes; it reserves (length / 3) * 4 + 8 characters at once. Answers true.
  // Defined beside the codec.
  bool EncodeBase64(String& text) const;

 private:
  bool IsExternal() const { return external != nullptr; }
  // Where to write `added` more bytes, after the length has grown by them.
  std::uint8_t* Grow(std::uint32_t added);

  SharedStorage storage;
  std::uint8_t* external = nullptr;
  std::uint32_t externalCapacity = 0;
  std::uint32_t externalLength = 0;
};

bool operator==(const ByteBuffer& a, const ByteBuffer& b);
inline bool operator!=(const ByteBuffer& a, const ByteBuffer& b) { return !(a == b); }

}  // namespace kest
