// Owners of the toolkit's objects for tests, and one message through an algorithm object in pieces.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "crypto/algorithm_object.h"
#include "crypto/key_object.h"
#include "support/vector_file.h"

namespace kest::testing {

using Pieces = std::vector<Bytes>;

// Runs `test` on the input whole, byte by byte, and cut in two at every place.
inline void ForEachSplit(const Bytes& in, const std::function<void(const Pieces&)>& test) {
  test({in});
  Pieces single;
  for (const std::uint8_t byte : in) single.push_back({byte});
  test(single);
  for (std::size_t cut = 0; cut <= in.size(); ++cut) {
    const auto at = in.begin() + static_cast<std::ptrdiff_t>(cut);
    test({Bytes(in.begin(), at), Bytes(at, in.end())});
  }
}

inline Bytes BytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

// `count` bytes that look like nothing in particular and are always the same for one `seed`.
inline Bytes SomeBytes(std::size_t count, std::uint32_t seed = 1) {
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes) {
    seed = seed * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(seed >> 24);
  }
  return bytes;
}

class Key {
 public:
  Key() { EXPECT_EQ(CreateKey(&object), resultSuccess); }
  Key(const KeyDescriptor& descriptor, const Bytes& data) : Key() { EXPECT_EQ(Set(descriptor, data), resultSuccess); }
  ~Key() { DestroyKey(&object); }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  ResultCode Set(const KeyDescriptor& descriptor, const Bytes& data) {
    return SetKeyInfo(object, descriptor, ByteItem{data.data(), static_cast<std::uint32_t>(data.size())});
  }
  operator KeyObject*() const { return object; }

 private:
  KeyObject* object = nullptr;
};

class Algorithm {
 public:
  Algorithm() { EXPECT_EQ(CreateAlgorithm(&object), resultSuccess); }
  explicit Algorithm(const AlgorithmDescriptor& descriptor, const void* parameters = nullptr) : Algorithm() {
    EXPECT_EQ(SetAlgorithmInfo(object, descriptor, parameters), resultSuccess);
  }
  ~Algorithm() { DestroyAlgorithm(&object); }
  Algorithm(const Algorithm&) = delete;
  Algorithm& operator=(const Algorithm&) = delete;

  ResultCode Initialise(Direction direction, const KeyObject* key = nullptr) {
    return InitialiseAlgorithm(object, direction, key, libraryChooser);
  }
  operator AlgorithmObject*() const { return object; }

 private:
  AlgorithmObject* object = nullptr;
};

// Puts the pieces through updates and a final, each with an output area of exactly what is left of `outMax`, and
// appends what comes out to `out`.
inline ResultCode RunPieces(AlgorithmObject* object, Direction direction, const Pieces& pieces, Bytes* out,
                            std::size_t outMax = 1 << 20) {
  Bytes area(outMax);
  std::uint32_t used = 0, written = 0;
  const auto left = [&] { return static_cast<std::uint32_t>(outMax - used); };
  for (const Bytes& piece : pieces) {
    const ResultCode code = UpdateAlgorithm(object, direction, piece.data(), static_cast<std::uint32_t>(piece.size()),
                                            area.data() + used, left(), &written);
    if (code != resultSuccess) return code;
    used += written;
  }
  const ResultCode code = FinishAlgorithm(object, direction, area.data() + used, left(), &written);
  if (code != resultSuccess) return code;
  used += written;
  out->insert(out->end(), area.begin(), area.begin() + used);
  return resultSuccess;
}

}  // namespace kest::testing
