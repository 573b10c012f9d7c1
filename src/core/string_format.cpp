// String: formatting.
#include <cstdio>

#include "core/format_length.h"
#include "core/string.h"

namespace kest {
namespace {

// Formats into `text`, whose capacity is `capacity` bytes, and answers the characters that the whole result has.
int FormatInto(char* text, std::uint32_t capacity, const char* format, std::va_list arguments) {
  std::va_list copy;
  va_copy(copy, arguments);
  const int count = std::vsnprintf(text, capacity, format, copy);
  va_end(copy);
  return count < 0 ? 0 : count;
}

}  // namespace

void String::Format(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  try {
    FormatList(format, arguments);
  } catch (...) {
    va_end(arguments);
    throw;
  }
  va_end(arguments);
}

void String::FormatList(String format, std::va_list arguments) {
  if (format.IsEmpty()) {
    Empty();
    return;
  }
  // Into storage of its own: an argument may lie in this text.
  SharedStorage result;
  result.EnsureLengthKeep(FormatLength(format.Characters(), arguments));
  int count = FormatInto(result.Characters(), result.Capacity(), format.Characters(), arguments);
  if (static_cast<std::uint32_t>(count) >= result.Capacity()) {
    // Longer than the bound, as a %f of a huge number or a conversion that the bound does not know.
    result.EnsureLengthDiscard(static_cast<std::uint32_t>(count));
    count = FormatInto(result.Characters(), result.Capacity(), format.Characters(), arguments);
  }
  result.EnsureLengthKeep(static_cast<std::uint32_t>(count));
  result.Characters()[count] = '\0';
  storage.Swap(result);
}

}  // namespace kest
