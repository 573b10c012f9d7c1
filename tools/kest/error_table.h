// The error codes that kest can put into words: the library's own, and those of the server for development. Another
// server has its own table. Constant data: any thread may read it.
#pragma once

#include <cstdint>
#include <vector>

namespace kest_host {

struct KnownError {
  const char* name;
  std::int32_t code;
  const char* meaning;
  const char* advice;
  const char* source;  // "library" or "sandbox"
};

// By ascending code.
const std::vector<KnownError>& KnownErrors();

// Null for a code that is not in the table.
const KnownError* FindError(std::int32_t code);

}  // namespace kest_host
