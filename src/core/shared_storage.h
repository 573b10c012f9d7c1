// The storage behind String and ByteBuffer: one counted block that copies share and that is copied before it is
// changed. Blocks may be shared between threads, a SharedStorage object may not.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "os/os.h"

namespace kest {

// One heap block: this header, then `capacity` bytes of characters with a NUL at index `length`.
struct StringData {
  // Number of owners; 0 = one owner that has taken the raw buffer for writing, so that nobody may share the block. It
  // changes under `lock` only; it is atomic so that an owner may look at it without.
  std::atomic<std::uint32_t> references;
  std::uint32_t length;    // characters, without the NUL
  std::uint32_t capacity;  // bytes: a multiple of 50 above `length`
  os::CriticalSection lock;

  char* Characters() { return reinterpret_cast<char*>(this + 1); }
};

class SharedStorage {
 public:
  SharedStorage() = default;
  // Shares the other's block, or copies it where its raw buffer is taken.
  SharedStorage(const SharedStorage& other);
  SharedStorage(SharedStorage&& other) noexcept : data(other.data) { other.data = nullptr; }
  // Takes over the other's text: see String's assignment.
  SharedStorage& operator=(const SharedStorage& other);
  SharedStorage& operator=(SharedStorage&& other) noexcept;
  ~SharedStorage() { Drop(); }

  std::uint32_t Length() const { return data != nullptr ? data->length : 0; }
  std::uint32_t Capacity() const { return data != nullptr ? data->capacity : 0; }
  bool IsNull() const { return data == nullptr; }
  // Null when there is no block.
  char* Characters() const { return data != nullptr ? data->Characters() : nullptr; }
  // More than one owner: the block is read-only.
  bool IsShared() const { return data != nullptr && data->references.load(std::memory_order_acquire) >= 2; }
  // The raw buffer is taken.
  bool IsExclusive() const { return data != nullptr && data->references.load(std::memory_order_acquire) == 0; }

  // Sets the length to `length` characters; a block that is shared or too small is replaced by one of
  // (length / 50 + 1) * 50 bytes. What falls off the end of a block that stays is wiped. Keep carries the old text over,
  // up to the new length; Discard does not. The caller writes the characters and the NUL. Throws Qor::MemoryException
  // and changes nothing when there is no memory, or for a length whose block would reach 2^31 bytes.
  void EnsureLengthKeep(std::uint64_t length) { EnsureLength(length, true); }
  void EnsureLengthDiscard(std::uint64_t length) { EnsureLength(length, false); }

  // Makes room for `length` characters without changing the text, so that growing up to there allocates no more.
  // Throws as EnsureLengthKeep does.
  void Reserve(std::uint64_t length);

  // Exchanges the blocks, whatever they hold.
  void Swap(SharedStorage& other) noexcept { std::swap(data, other.data); }

  // Copies the block when it is shared, so that it may be changed in place.
  void Unshare();

  // Empties the text: a sole owner wipes and keeps its block, a shared one is let go.
  void Empty();

  // Marks the block as taken for writing (reference count 0), or as given back (1). There is one, and it is not shared.
  void SetExclusive(bool exclusive);

 private:
  static StringData* NewBlock(std::uint64_t length);
  static bool TryShare(StringData* block);
  static void DropBlock(StringData* block);

  void EnsureLength(std::uint64_t length, bool keep);
  void Replace(std::uint64_t capacityFor, std::uint32_t length, bool keep);
  void Drop();

  StringData* data = nullptr;
};

}  // namespace kest
