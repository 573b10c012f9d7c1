// What reads and writes bytes, and two helpers on top of that for every class which does. A stream belongs to one
// thread at a time.
#pragma once

#include <cstdint>

namespace kest {

class Stream {
 public:
  virtual ~Stream() = default;

  // Reads up to `count` bytes; answers how many, less than 1 at the end and on failure.
  virtual std::int32_t Read(void* bytes, std::uint32_t count) = 0;
  // Writes up to `count` bytes; answers how many, less than 1 on failure.
  virtual std::int32_t Write(const void* bytes, std::uint32_t count) = 0;

  // Reads `count` bytes, or those up to the end or a failure, and forgets them. Answers how many.
  std::uint32_t Skip(std::uint32_t count);
  // Writes all `count` bytes, in as many steps as it takes; no bytes succeed at once. False as soon as a step fails;
  // what was written before stays.
  bool WriteAll(const void* bytes, std::uint32_t count);

 protected:
  Stream() = default;
  Stream(const Stream&) = default;
  Stream& operator=(const Stream&) = default;
};

}  // namespace kest
