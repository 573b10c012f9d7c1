// The exceptions of the library: raised on exhausted memory only, thrown by value, never across an exported function.
#pragma once

#include <cstdint>

#include "core/string.h"

namespace Qor {

class Exception {
 public:
  Exception(std::uint32_t exceptionCode, const kest::String& exceptionMessage)
      : code(exceptionCode), message(exceptionMessage) {}

  std::uint32_t Code() const { return code; }
  const kest::String& Message() const { return message; }

 private:
  std::uint32_t code;
  kest::String message;
};

// No memory. Code 0, an empty message.
class MemoryException : public Exception {
 public:
  MemoryException() : Exception(0, kest::String()) {}
};

}  // namespace Qor
