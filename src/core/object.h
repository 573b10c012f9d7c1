// The small base class of the library's polymorphic classes: a virtual destructor and two 32-bit fields. Objects that
// are made with `new` live in GlobalAlloc blocks whose address is the object's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "core/memory.h"

namespace kest {

class Object {
 public:
  Object() = default;
  Object(const Object&) = default;
  Object& operator=(const Object&) = default;
  virtual ~Object() = default;

  // Throws Qor::MemoryException when there is no memory.
  static void* operator new(std::size_t bytes) { return Allocate(bytes); }
  static void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return AllocateOrNull(bytes); }
  static void operator delete(void* block) noexcept { Release(block); }
  static void operator delete(void* block, const std::nothrow_t&) noexcept { Release(block); }

 private:
  // Zero, and read by nobody here; they keep the distance to the fields behind them, which hosts may rely on.
  [[maybe_unused]] std::uint32_t reserved[2] = {0, 0};
};

}  // namespace kest
