// Base64 of texts, by the library's own codec.
#pragma once

#include <cstdint>
#include <string>

#include "core/byte_buffer.h"

namespace kest::testing {

inline std::string ToBase64(const std::string& bytes) {
  String text;
  ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size())).EncodeBase64(text);
  return text.Text();
}

inline std::string FromBase64(const std::string& text) {
  ByteBuffer bytes;
  bytes.DecodeBase64(text.c_str());
  return std::string(reinterpret_cast<const char*>(bytes.Bytes()), bytes.Length());
}

}  // namespace kest::testing
