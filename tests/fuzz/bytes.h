// Byte strings of the cryptographic targets, and one message through an algorithm object in the pieces that the input
// asks for.
#pragma once

#include <algorithm>
#include <string>

#include "core/byte_buffer.h"
#include "fuzz/target.h"
#include "support/toolkit.h"

namespace kest::testing {

// Not called BytesOf: that is the toolkit's, for texts too.
inline Bytes Take(Input& input, std::size_t count) {
  return BytesOf(input.Bytes(count));
}
inline Bytes TakeRest(Input& input) {
  return BytesOf(input.Rest());
}

inline ByteBuffer BufferOf(const Bytes& bytes) {
  return ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}
inline Bytes BytesIn(const ByteBuffer& buffer) {
  return Bytes(buffer.Bytes(), buffer.Bytes() + buffer.Length());
}

// Cuts `in` into pieces of `step` bytes, the first `first` bytes long; a step of 0 leaves it whole.
inline Pieces CutEvery(const Bytes& in, std::size_t step, std::size_t first) {
  if (step == 0) return {in};
  Pieces pieces;
  for (std::size_t at = 0, length = first; at < in.size(); at += length, length = step) {
    length = std::min(std::max<std::size_t>(length, 1), in.size() - at);
    pieces.emplace_back(in.begin() + static_cast<std::ptrdiff_t>(at),
                        in.begin() + static_cast<std::ptrdiff_t>(at + length));
  }
  return pieces;
}

}  // namespace kest::testing
