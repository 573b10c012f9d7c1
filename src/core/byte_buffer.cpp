#include "core/byte_buffer.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

#include "core/exception.h"

namespace kest {

ByteBuffer::ByteBuffer(const void* bytes, std::uint32_t length) { Append(bytes, length); }

ByteBuffer::ByteBuffer(const ByteBuffer& other) : Object(other), storage(other.storage) {
  if (other.IsExternal()) Append(other.external, other.externalLength);
}

ByteBuffer::ByteBuffer(ByteBuffer&& other) noexcept
    : Object(other),
      storage(std::move(other.storage)),
      external(std::exchange(other.external, nullptr)),
      externalCapacity(std::exchange(other.externalCapacity, 0)),
      externalLength(std::exchange(other.externalLength, 0)) {}

ByteBuffer& ByteBuffer::operator=(const ByteBuffer& other) {
  if (this == &other) return *this;
  if (IsExternal()) {
    if (!other.IsEmpty()) std::memmove(external, other.Bytes(), other.Length());
    externalLength = other.Length();
    return *this;
  }
  if (!other.IsExternal()) {
    storage = other.storage;
    return *this;
  }
  const ByteBuffer copy(other);
  storage = copy.storage;
  return *this;
}

ByteBuffer ByteBuffer::External(void* memory, std::uint32_t capacity) {
  ByteBuffer buffer;
  buffer.external = static_cast<std::uint8_t*>(memory);
  buffer.externalCapacity = capacity;
  return buffer;
}

const std::uint8_t* ByteBuffer::Bytes() const {
  return IsExternal() ? external : reinterpret_cast<const std::uint8_t*>(storage.Characters());
}

void ByteBuffer::SetAt(std::uint32_t index, std::uint8_t byte) {
  if (IsExternal()) {
    external[index] = byte;
    return;
  }
  storage.Unshare();
  storage.Characters()[index] = static_cast<char>(byte);
}

void ByteBuffer::SetLength(std::uint32_t length) {
  if (IsExternal()) {
    if (length > externalCapacity) throw Qor::MemoryException();
    externalLength = length;
    return;
  }
  storage.EnsureLengthKeep(length);
  storage.Characters()[length] = '\0';
}

void ByteBuffer::Reserve(std::uint64_t length) {
  if (!IsExternal()) {
    storage.Reserve(length);
  } else if (length > externalCapacity) {
    throw Qor::MemoryException();
  }
}

std::uint8_t* ByteBuffer::Grow(std::uint32_t added) {
  const std::uint32_t old = Length();
  if (added > std::numeric_limits<std::uint32_t>::max() - old) throw Qor::MemoryException();
  SetLength(old + added);
  return const_cast<std::uint8_t*>(Bytes()) + old;
}

void ByteBuffer::Append(std::uint8_t byte) { *Grow(1) = byte; }

void ByteBuffer::Append(const void* bytes, std::uint32_t length) {
  if (length == 0) return;
  const auto* source = static_cast<const std::uint8_t*>(bytes);
  const std::uint8_t* own = Bytes();
  const std::less<const std::uint8_t*> isBefore;
  const bool isInside = own != nullptr && !isBefore(source, own) && isBefore(source, own + Length());
  const std::ptrdiff_t offset = isInside ? source - own : 0;
  std::uint8_t* end = Grow(length);
  // Growing keeps the old bytes, so what lies inside them is found again at the same offset.
  std::memmove(end, isInside ? Bytes() + offset : source, length);
}

void ByteBuffer::AppendCopies(std::uint8_t byte, std::uint32_t count) {
  if (count != 0) std::memset(Grow(count), byte, count);
}

std::uint8_t* ByteBuffer::TakeBuffer(std::uint32_t length) {
  SetLength(length);
  if (!IsExternal()) storage.SetExclusive(true);
  return const_cast<std::uint8_t*>(Bytes());
}

void ByteBuffer::ReturnBuffer() {
  if (!IsExternal() && storage.IsExclusive()) storage.SetExclusive(false);
}

bool operator==(const ByteBuffer& a, const ByteBuffer& b) {
  return a.Length() == b.Length() && (a.IsEmpty() || std::memcmp(a.Bytes(), b.Bytes(), a.Length()) == 0);
}

}  // namespace kest
