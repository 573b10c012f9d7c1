// String: searching.
#include <cstring>

#include "core/string.h"

namespace kest {
namespace {

// A zero byte is the end of the set, not one of it.
bool Contains(const char* set, char character) {
  return set != nullptr && character != '\0' && std::strchr(set, character) != nullptr;
}

}  // namespace

std::int32_t String::Find(char character, std::int32_t start) const {
  const auto length = static_cast<std::int32_t>(Length());
  if (start < 0) start = 0;
  if (start >= length) return -1;
  const char* characters = Characters();
  const void* found = std::memchr(characters + start, character, static_cast<std::size_t>(length - start));
  return found != nullptr ? static_cast<std::int32_t>(static_cast<const char*>(found) - characters) : -1;
}

std::int32_t String::FindFirstOf(const char* set, std::int32_t start) const {
  if (IsEmpty() || set == nullptr) return -1;
  const char* found = std::strpbrk(Characters() + start, set);
  return found != nullptr ? static_cast<std::int32_t>(found - Characters()) : -1;
}

std::int32_t String::ReverseFind(char character, std::int32_t start) const {
  if (start < 0) return start;
  if (storage.IsNull()) return -1;
  // The terminating NUL may be looked at, nothing behind it.
  const auto length = static_cast<std::int32_t>(Length());
  std::int32_t index = start < length ? start : length;
  while (index >= 0 && At(static_cast<std::uint32_t>(index)) != character) --index;
  return index;
}

std::int32_t String::FindLastOf(const char* set, std::int32_t start) const {
  const auto last = static_cast<std::int32_t>(Length()) - 1;
  if (start >= last) return last;
  std::int32_t index = last;
  while (index > start && index >= 0 && !Contains(set, At(static_cast<std::uint32_t>(index)))) --index;
  return index >= 0 ? index : start;
}

}  // namespace kest
