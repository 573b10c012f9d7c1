#include "crypto/constant_time.h"

#include <gtest/gtest.h>

#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::SomeBytes;

TEST(EqualBytes, NothingEqualsNothing) {
  EXPECT_TRUE(EqualBytes(nullptr, nullptr, 0));
}

TEST(EqualBytes, OneBitAnywhereMakesADifference) {
  const Bytes a = SomeBytes(28);
  EXPECT_TRUE(EqualBytes(a.data(), Bytes(a).data(), a.size()));
  for (std::size_t at = 0; at < a.size(); ++at) {
    for (int bit = 0; bit < 8; ++bit) {
      Bytes b = a;
      b[at] = static_cast<std::uint8_t>(b[at] ^ 1 << bit);
      EXPECT_FALSE(EqualBytes(a.data(), b.data(), a.size())) << at << " " << bit;
      EXPECT_TRUE(EqualBytes(a.data(), b.data(), at)) << "bytes behind the length do not count";
    }
  }
}

}  // namespace
}  // namespace kest
