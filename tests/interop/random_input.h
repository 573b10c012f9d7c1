// Inputs drawn anew in each run. The seed is printed when a test fails, and KEST_RANDOM_SEED sets it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "support/vector_file.h"

namespace kest::testing {

class RandomInput {
 public:
  RandomInput() : seed(ChooseSeed()), engine(seed) {}

  std::uint32_t Below(std::uint32_t limit) {
    return std::uniform_int_distribution<std::uint32_t>(0, limit - 1)(engine);
  }
  Bytes OfLength(std::size_t length) {
    Bytes bytes(length);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(engine());
    return bytes;
  }
  std::string Seed() const { return "KEST_RANDOM_SEED=" + std::to_string(seed); }

 private:
  static std::uint32_t ChooseSeed() {
    const char* given = std::getenv("KEST_RANDOM_SEED");
    return given != nullptr ? static_cast<std::uint32_t>(std::stoul(given)) : std::random_device()();
  }
  std::uint32_t seed;
  std::mt19937 engine;
};

}  // namespace kest::testing
