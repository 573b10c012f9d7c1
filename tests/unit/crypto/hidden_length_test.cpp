#include "crypto/hidden_length.h"

#include <gtest/gtest.h>

#include "crypto/sha1.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::SomeBytes;

TEST(HiddenLength, MasksAreAllBitsOrNone) {
  EXPECT_EQ(~0U, MaskIfEqual(0x80000000, 0x80000000));
  EXPECT_EQ(0U, MaskIfEqual(0, 0x80000000));
  EXPECT_EQ(0U, MaskIfEqual(1, 0));
  EXPECT_EQ(~0U, MaskIfBelow(27, 28));
  EXPECT_EQ(0U, MaskIfBelow(28, 28));
  EXPECT_EQ(0U, MaskIfBelow(0x7FFFFFFF, 0));
}

TEST(HiddenLength, PaddingIsItsOwnLengthThatManyTimes) {
  for (std::uint32_t last = 0; last < 256; ++last) {
    for (std::uint32_t repeated = 1; repeated <= 8; ++repeated) {
      Bytes block(8, 0x55);
      for (std::uint32_t i = 8 - repeated; i < 8; ++i) block[i] = static_cast<std::uint8_t>(last);
      const bool isPadding = last >= 1 && last <= 8 && last <= repeated;
      EXPECT_EQ(isPadding ? last : 0, PaddingOf(block.data())) << last << " " << repeated;
    }
  }
}

TEST(HiddenLength, ClearedPaddingIsZeroAndTheRestStays) {
  for (std::uint32_t padding = 0; padding <= 8; ++padding) {
    Bytes block = SomeBytes(8), expected = block;
    for (std::uint32_t i = 8 - padding; i < 8; ++i) expected[i] = 0;
    ClearPadding(block.data(), padding);
    EXPECT_EQ(expected, block) << padding;
  }
}

TEST(HiddenLength, EverythingBehindTheFirstZeroByteIsCleared) {
  // Bytes of one, which a borrow out of a zero byte below them makes look like zero.
  for (const std::uint8_t filler : {0x01, 0x80, 0xFF}) {
    for (std::uint32_t count : {0, 4, 8, 20}) {
      for (std::uint32_t first = 0; first <= count; ++first) {
        for (std::uint32_t second = first; second <= count; ++second) {
          Bytes bytes(count + 1, filler), expected(count + 1, filler);
          if (first < count) bytes[first] = 0;
          if (second < count) bytes[second] = 0;
          for (std::uint32_t i = first; i < count; ++i) expected[i] = 0;
          EXPECT_EQ(first, CutAtFirstZero(bytes.data(), count));
          EXPECT_EQ(expected, bytes) << count << " " << first << " " << second;
        }
      }
    }
  }
}

TEST(HiddenLength, DigestIsThatOfTheTextWhateverRoomThereIs) {
  const Bytes text = SomeBytes(200);
  for (std::uint32_t most = 0; most <= 200; ++most) {
    for (std::uint32_t length = 0; length <= most; ++length) {
      Bytes padded(text.begin(), text.begin() + length);
      padded.resize(most);
      Bytes expected(sha1Length), digest(sha1Length);
      Sha1Context context;
      Sha1Init(context);
      Sha1Update(context, text.data(), length);
      Sha1Final(context, expected.data());
      Sha1OfHiddenLength(padded.data(), length, most, digest.data());
      ASSERT_EQ(expected, digest) << length << " of " << most;
    }
  }
}

}  // namespace
}  // namespace kest
