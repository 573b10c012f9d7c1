// Growable array of elements with virtual destructors, in one block. Growth is linear: whole steps, never doubling.
// Indices are not checked. The array owns its elements; one array belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "core/exception.h"
#include "core/memory.h"

namespace kest {

constexpr std::uint32_t arrayGrowthStep = 32;  // elements

template <typename Element>
class ObjectArray {
  static_assert(std::has_virtual_destructor<Element>::value, "elements are destroyed through their virtual destructor");

 public:
  explicit ObjectArray(std::uint32_t step = arrayGrowthStep) : growthStep(step) {}
  ObjectArray(const ObjectArray& other) : growthStep(other.growthStep) { CopyFrom(other); }
  ObjectArray(ObjectArray&& other) noexcept : growthStep(other.growthStep) { Swap(other); }
  // Throws Qor::MemoryException and changes nothing when there is no memory.
  ObjectArray& operator=(const ObjectArray& other) {
    ObjectArray copy(other);
    Swap(copy);
    return *this;
  }
  ObjectArray& operator=(ObjectArray&& other) noexcept {
    Swap(other);
    return *this;
  }
  ~ObjectArray() {
    Clear();
    Release(elements);
  }

  std::uint32_t Count() const { return count; }
  std::uint32_t Capacity() const { return capacity; }
  Element& At(std::uint32_t index) { return elements[index]; }
  const Element& At(std::uint32_t index) const { return elements[index]; }

  // Copies `element` behind the last one; it may be one of this array's own. Answers true. Throws Qor::MemoryException
  // and changes nothing when there is no memory.
  bool Append(const Element& element) {
    if (count < capacity) {
      ::new (static_cast<void*>(elements + count)) Element(element);
    } else {
      Element held(element);
      GrowTo(NextCapacity(count));
      ::new (static_cast<void*>(elements + count)) Element(std::move(held));
    }
    ++count;
    return true;
  }
  // Makes a default element behind the last one.
  Element& AppendNew() {
    if (count == capacity) GrowTo(NextCapacity(count));
    ::new (static_cast<void*>(elements + count)) Element();
    return elements[count++];
  }

  // Makes room for `wanted` elements at once, in whole steps.
  void Reserve(std::uint32_t wanted) {
    if (wanted > capacity) GrowTo(NextCapacity(wanted - 1));
  }

  // Destroys the elements, last first, and keeps the room. The count is 0 before the first destructor runs.
  void Clear() {
    for (std::uint32_t left = std::exchange(count, 0); left > 0; --left) elements[left - 1].~Element();
  }

 private:
  std::uint64_t NextCapacity(std::uint32_t used) const { return (std::uint64_t{used} / growthStep + 1) * growthStep; }

  void GrowTo(std::uint64_t newCapacity) {
    if (newCapacity > std::numeric_limits<std::uint32_t>::max()) throw Qor::MemoryException();
    auto* block = static_cast<Element*>(Allocate(newCapacity * sizeof(Element)));
    if (elements != nullptr) {
      MoveInto(block, std::is_nothrow_move_constructible<Element>());
      Release(elements);
    }
    capacity = static_cast<std::uint32_t>(newCapacity);
    elements = block;
  }

  void MoveInto(Element* block, std::true_type) {
    for (std::uint32_t i = 0; i < count; ++i) {
      ::new (static_cast<void*>(block + i)) Element(std::move(elements[i]));
      elements[i].~Element();
    }
  }

  // Copying may run out of memory in the middle: the old elements go only when all copies stand.
  void MoveInto(Element* block, std::false_type) {
    std::uint32_t made = 0;
    try {
      for (; made < count; ++made) ::new (static_cast<void*>(block + made)) Element(elements[made]);
    } catch (...) {
      while (made > 0) block[--made].~Element();
      Release(block);
      throw;
    }
    for (std::uint32_t i = 0; i < count; ++i) elements[i].~Element();
  }

  void CopyFrom(const ObjectArray& other) {
    if (other.count == 0) return;
    Reserve(other.count);
    try {
      for (; count < other.count; ++count) ::new (static_cast<void*>(elements + count)) Element(other.elements[count]);
    } catch (...) {
      Clear();
      Release(elements);
      throw;
    }
  }

  void Swap(ObjectArray& other) noexcept {
    std::swap(count, other.count);
    std::swap(growthStep, other.growthStep);
    std::swap(capacity, other.capacity);
    std::swap(elements, other.elements);
  }

  std::uint32_t count = 0;
  std::uint32_t growthStep;
  std::uint32_t capacity = 0;
  Element* elements = nullptr;
};

}  // namespace kest
