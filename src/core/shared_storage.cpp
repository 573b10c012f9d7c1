#include "core/shared_storage.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "core/exception.h"
#include "core/memory.h"

namespace kest {
namespace {

constexpr std::uint64_t growthStep = 50;  // bytes

// Positions are signed 32-bit numbers and must reach every character.
constexpr std::uint64_t mostCapacity = std::numeric_limits<std::int32_t>::max();  // bytes

static_assert(sizeof(void*) != 4 || sizeof(StringData) == 36, "three words and the lock in front of the characters");
static_assert(sizeof(SharedStorage) == sizeof(void*), "one pointer");

// Holds a block's lock for one scope.
class LockHolder {
 public:
  explicit LockHolder(os::CriticalSection* held) : lock(held) { os::system->EnterCriticalSection(lock); }
  ~LockHolder() { os::system->LeaveCriticalSection(lock); }
  LockHolder(const LockHolder&) = delete;
  LockHolder& operator=(const LockHolder&) = delete;

 private:
  os::CriticalSection* lock;
};

}  // namespace

SharedStorage::SharedStorage(const SharedStorage& other) {
  if (other.data == nullptr) return;
  if (TryShare(other.data)) {
    data = other.data;
    return;
  }
  data = NewBlock(other.data->length);
  std::memcpy(data->Characters(), other.data->Characters(), std::size_t{data->length} + 1);
}

SharedStorage& SharedStorage::operator=(const SharedStorage& other) {
  if (other.Length() == 0) {
    Empty();
    return *this;
  }
  // Shared before the own block goes: assigning a text to itself is harmless.
  StringData* shared = other.data;
  if (TryShare(shared)) {
    Drop();
    data = shared;
    return *this;
  }
  if (other.data == data) return *this;
  EnsureLengthDiscard(other.data->length);
  std::memcpy(data->Characters(), other.data->Characters(), std::size_t{data->length} + 1);
  return *this;
}

SharedStorage& SharedStorage::operator=(SharedStorage&& other) noexcept {
  if (this == &other) return *this;
  if (other.Length() == 0) {
    Empty();
    return *this;
  }
  Drop();
  data = std::exchange(other.data, nullptr);
  return *this;
}

void SharedStorage::EnsureLength(std::uint64_t length, bool keep) {
  if (data != nullptr && !IsShared() && length < data->capacity) {
    const std::uint32_t before = std::exchange(data->length, static_cast<std::uint32_t>(length));
    // What falls off the end may be a secret's. The byte at `length` is the caller's, who writes the NUL there.
    if (data->length < before) Wipe(data->Characters() + data->length + 1, before - data->length - 1);
    return;
  }
  Replace(length, static_cast<std::uint32_t>(length), keep);
}

void SharedStorage::Reserve(std::uint64_t length) {
  const std::uint32_t now = Length();
  if (length < now) length = now;
  if (data != nullptr && !IsShared() && length < data->capacity) return;
  Replace(length, now, true);
}

void SharedStorage::Unshare() {
  if (IsShared()) Replace(data->length, data->length, true);
}

void SharedStorage::Replace(std::uint64_t capacityFor, std::uint32_t length, bool keep) {
  StringData* block = NewBlock(capacityFor);
  block->length = length;
  if (keep && data != nullptr) {
    const std::uint32_t kept = std::min(data->length, length);
    std::memcpy(block->Characters(), data->Characters(), kept);
    block->Characters()[length] = '\0';
  } else {
    block->Characters()[0] = '\0';
  }
  Drop();
  data = block;
}

void SharedStorage::Empty() {
  if (Length() == 0) return;
  if (IsShared()) {
    Drop();
    return;
  }
  Wipe(data->Characters(), data->length);
  data->length = 0;
}

void SharedStorage::SetExclusive(bool exclusive) {
  LockHolder held(&data->lock);
  data->references.store(exclusive ? 0 : 1, std::memory_order_release);
}

StringData* SharedStorage::NewBlock(std::uint64_t length) {
  // The first comparison keeps the second one's product from wrapping.
  if (length > mostCapacity) throw Qor::MemoryException();
  const std::uint64_t capacity = (length / growthStep + 1) * growthStep;
  if (capacity > mostCapacity) throw Qor::MemoryException();
  auto* block = static_cast<StringData*>(Allocate(sizeof(StringData) + capacity));
  new (&block->references) std::atomic<std::uint32_t>(1);
  block->length = static_cast<std::uint32_t>(length);
  block->capacity = static_cast<std::uint32_t>(capacity);
  os::system->InitializeCriticalSection(&block->lock);
  return block;
}

bool SharedStorage::TryShare(StringData* block) {
  LockHolder held(&block->lock);
  const std::uint32_t count = block->references.load(std::memory_order_relaxed);
  if (count == 0) return false;
  block->references.store(count + 1, std::memory_order_relaxed);
  return true;
}

void SharedStorage::DropBlock(StringData* block) {
  os::system->EnterCriticalSection(&block->lock);
  const std::uint32_t count = block->references.load(std::memory_order_relaxed);
  if (count >= 2) {
    block->references.store(count - 1, std::memory_order_release);
    os::system->LeaveCriticalSection(&block->lock);
    return;
  }
  os::system->LeaveCriticalSection(&block->lock);
  os::system->DeleteCriticalSection(&block->lock);
  // Any text may have been a secret's.
  Wipe(block->Characters(), block->capacity);
  Release(block);
}

void SharedStorage::Drop() {
  StringData* block = std::exchange(data, nullptr);
  if (block != nullptr) DropBlock(block);
}

}  // namespace kest
