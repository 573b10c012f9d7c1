// A look at the block behind a String, for tests of sharing.
#pragma once

#include <cstdint>
#include <string>

#include "core/string.h"

namespace kest::testing {

// The block's header; there is a block.
inline const StringData& BlockOf(const String& text) {
  return reinterpret_cast<const StringData*>(text.Characters())[-1];
}

inline std::uint32_t ReferencesOf(const String& text) { return BlockOf(text).references.load(); }

inline std::uint32_t CapacityOf(const String& text) { return text.Storage().Capacity(); }

// The characters, zero bytes included.
inline std::string Content(const String& text) {
  return text.IsEmpty() ? std::string() : std::string(text.Characters(), text.Length());
}

// A text of that many different-looking characters.
inline std::string Sample(std::uint32_t length) {
  std::string sample;
  for (std::uint32_t i = 0; i < length; ++i) sample += static_cast<char>('A' + i % 23);
  return sample;
}

}  // namespace kest::testing
