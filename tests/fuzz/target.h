// What the fuzz targets share: how a target says that something does not hold, and how it takes its input apart. A
// target is one function, LLVMFuzzerTestOneInput; libFuzzer calls it with inputs of its own making, replay.cpp with
// those of the corpus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/name_value_list.h"
#include "core/string.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length);

namespace kest::testing {

// Says what is broken and where, and ends the process as a crash would: the input is then a finding.
[[noreturn]] void Broken(const char* file, int line, const char* condition);

#define HOLD(condition) ((condition) ? void() : ::kest::testing::Broken(__FILE__, __LINE__, #condition))

// An input that is taken apart from its front. What is asked for beyond the end is empty or zero.
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t length) : next(bytes), left(length) {}

  bool IsEmpty() const { return left == 0; }
  std::uint8_t Byte() { return left != 0 ? (--left, *next++) : std::uint8_t{0}; }
  std::string Bytes(std::size_t count) {
    if (count > left) count = left;
    const std::string taken(reinterpret_cast<const char*>(next), count);
    next += count;
    left -= count;
    return taken;
  }
  std::string Rest() { return Bytes(left); }
  // Up to the next line feed, which is taken away.
  std::string Line() {
    std::string line;
    while (left != 0) {
      const char character = static_cast<char>(Byte());
      if (character == '\n') break;
      line += character;
    }
    return line;
  }

 private:
  const std::uint8_t* next;
  std::size_t left;
};

inline std::string Plain(const String& text) {
  return std::string(text.Text(), text.Length());
}

inline String Kest(const std::string& text) {
  return String(text.data(), static_cast<std::uint32_t>(text.size()));
}

using Pairs = std::vector<std::pair<std::string, std::string>>;

inline Pairs PairsOf(const NameValueList& list) {
  Pairs pairs;
  for (std::uint32_t i = 0; i < list.Count(); ++i) {
    pairs.emplace_back(Plain(list.At(i).Name()), Plain(list.At(i).Value()));
  }
  return pairs;
}

}  // namespace kest::testing
