// MD5 and SHA-1 at the toolkit's level and of whole texts.
#include <gtest/gtest.h>

#include "crypto/md5.h"
#include "crypto/message_digest.h"
#include "crypto/sha1.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Algorithm;
using testing::Bytes;
using testing::BytesOf;
using testing::ForEachSplit;
using testing::ForEachVector;
using testing::Pieces;
using testing::RunPieces;
using testing::SomeBytes;
using testing::ToHex;
using testing::VectorRecord;

std::string Digest(const AlgorithmDescriptor& descriptor, const Pieces& pieces) {
  Algorithm algorithm(descriptor);
  Bytes digest;
  EXPECT_EQ(DigestInit(algorithm, libraryChooser), 0);
  EXPECT_EQ(RunPieces(algorithm, Direction::digest, pieces, &digest, 20), 0);
  return ToHex(digest);
}

std::string Hex(const ByteBuffer& bytes) {
  return ToHex(bytes.Bytes(), bytes.Length());
}

TEST(Md5, VectorsInEverySplit) {
  ForEachVector("md5.txt", [](VectorRecord& record) {
    const std::string digest = record.Text("Digest");
    ForEachSplit(BytesOf(record.Text("Text")),
                 [&](const Pieces& pieces) { EXPECT_EQ(Digest(md5Descriptor, pieces), digest); });
  });
}

TEST(Sha1, VectorsInEverySplit) {
  ForEachVector("sha1.txt", [](VectorRecord& record) {
    const std::string digest = record.Text("Digest"), text = record.Text("Text");
    const std::uint32_t repeat = record.Number("Repeat");
    if (repeat == 1) {
      ForEachSplit(BytesOf(text), [&](const Pieces& pieces) { EXPECT_EQ(Digest(sha1Descriptor, pieces), digest); });
      return;
    }
    std::string whole;
    for (std::uint32_t i = 0; i < repeat; ++i) whole += text;
    EXPECT_EQ(Digest(sha1Descriptor, {BytesOf(whole)}), digest);
    Pieces uneven;
    for (std::size_t at = 0, step = 1; at < whole.size(); at += step, step = step % 131 + 1) {
      uneven.push_back(BytesOf(whole.substr(at, step)));
    }
    EXPECT_EQ(Digest(sha1Descriptor, uneven), digest);
    Pieces single;
    for (const char character : whole) single.push_back({static_cast<std::uint8_t>(character)});
    EXPECT_EQ(Digest(sha1Descriptor, single), digest);
  });
}

TEST(Digests, EveryLengthAroundTheBlocksIsTheSameInEverySplit) {
  for (std::size_t length = 0; length <= 130; ++length) {
    const Bytes in = SomeBytes(length);
    for (const AlgorithmDescriptor* descriptor : {&md5Descriptor, &sha1Descriptor}) {
      const std::string whole = Digest(*descriptor, {in});
      ForEachSplit(in, [&](const Pieces& pieces) { ASSERT_EQ(Digest(*descriptor, pieces), whole) << length; });
    }
  }
}

TEST(Digests, FinalBeginsTheNextDigest) {
  for (const AlgorithmDescriptor* descriptor : {&md5Descriptor, &sha1Descriptor}) {
    Algorithm algorithm(*descriptor);
    ASSERT_EQ(DigestInit(algorithm, libraryChooser), 0);
    Bytes first, second;
    ASSERT_EQ(RunPieces(algorithm, Direction::digest, {BytesOf("one")}, &first), 0);
    ASSERT_EQ(RunPieces(algorithm, Direction::digest, {BytesOf("one")}, &second), 0);
    EXPECT_EQ(first, second);
  }
}

TEST(Digests, BitCountCarriesIntoItsSecondWord) {
  // 512 MiB are 2^32 bits: the count is set as if they had been fed, for want of time to feed them.
  Md5Context md5;
  Sha1Context sha1;
  Md5Init(md5);
  Sha1Init(sha1);
  md5.buffer.bitsLow = sha1.buffer.bitsLow = 0xFFFFFE00;
  const Bytes block(64, 0);
  Md5Update(md5, block.data(), 64);
  Sha1Update(sha1, block.data(), 64);
  EXPECT_EQ(md5.buffer.bitsLow, 0U);
  EXPECT_EQ(md5.buffer.bitsHigh, 1U);
  EXPECT_EQ(sha1.buffer.bitsLow, 0U);
  EXPECT_EQ(sha1.buffer.bitsHigh, 1U);
}

TEST(Digests, BitsOfOneLongUpdateAreCountedInBothWords) {
  DigestBuffer buffer{};
  buffer.Count(0xFFFFFFFF);
  EXPECT_EQ(buffer.bitsLow, 0xFFFFFFF8);
  EXPECT_EQ(buffer.bitsHigh, 7U);
  buffer.Count(1);
  EXPECT_EQ(buffer.bitsLow, 0U);
  EXPECT_EQ(buffer.bitsHigh, 8U);
}

TEST(Digests, OutputBelowTheDigestGives536AndTheDigestIsKept) {
  const struct {
    const AlgorithmDescriptor& descriptor;
    std::uint32_t length;
  } cases[] = {{md5Descriptor, 16}, {sha1Descriptor, 20}};
  for (const auto& each : cases) {
    Algorithm algorithm(each.descriptor);
    std::uint8_t out[20] = {};
    std::uint32_t length = 99;
    ASSERT_EQ(DigestInit(algorithm, libraryChooser), 0);
    ASSERT_EQ(DigestUpdate(algorithm, "abc", 3), 0);
    EXPECT_EQ(DigestFinal(algorithm, out, &length, each.length - 1), 536);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(DigestFinal(algorithm, out, &length, each.length), 0);
    EXPECT_EQ(length, each.length);
    EXPECT_EQ(ToHex(out, length), Digest(each.descriptor, {BytesOf("abc")}));
  }
}

TEST(DigestText, EmptyTextIsTheDigestOfOneZeroByte) {
  // With storage and without.
  for (const String& text : {String(), String("")}) {
    EXPECT_EQ(Hex(DigestText(text, md5Descriptor)), Digest(md5Descriptor, {{0}}));
    EXPECT_EQ(Hex(DigestText(text, sha1Descriptor)), "5ba93c9db0cff93f52b521d7420e43f6eda2784f");
  }
}

TEST(DigestText, TerminatingZeroByteIsDigested) {
  EXPECT_EQ(Hex(DigestText("abc", sha1Descriptor)), Digest(sha1Descriptor, {{'a', 'b', 'c', 0}}));
  EXPECT_EQ(Hex(DigestText("abc", md5Descriptor)), Digest(md5Descriptor, {{'a', 'b', 'c', 0}}));
  EXPECT_NE(Hex(DigestText("abc", sha1Descriptor)), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST(DigestText, ZeroBytesInsideTheTextAreDigested) {
  EXPECT_EQ(Hex(DigestText(String("a\0b", 3), sha1Descriptor)), Digest(sha1Descriptor, {{'a', 0, 'b', 0}}));
}

TEST(DigestText, LengthsAreThoseOfTheDigests) {
  EXPECT_EQ(DigestText("text", md5Descriptor).Length(), 16U);
  EXPECT_EQ(DigestText("text", sha1Descriptor).Length(), 20U);
  String base64;
  ASSERT_TRUE(DigestText("text", sha1Descriptor).EncodeBase64(base64));
  EXPECT_EQ(base64.Length(), 28U);
}

TEST(DigestText, OtherDescriptorsGiveNothing) {
  EXPECT_TRUE(DigestText("text", rc5CbcPadDescriptor).IsEmpty());
  EXPECT_TRUE(DigestText("text", md5RandomDescriptor).IsEmpty());
  EXPECT_TRUE(DigestText("text", base64Descriptor).IsEmpty());
  EXPECT_TRUE(DigestText("text", AlgorithmDescriptor{static_cast<AlgorithmType>(99), 16, nullptr}).IsEmpty());
}

ResultCode RefuseParameters(AlgorithmParameters&, const void*) {
  return resultBadParameters;
}

TEST(DigestText, RefusedDescriptorGivesNothing) {
  EXPECT_TRUE(DigestText("text", AlgorithmDescriptor{AlgorithmType::md5, 16, RefuseParameters}).IsEmpty());
}

TEST(DigestLength, IsZeroForWhatIsNoDigest) {
  EXPECT_EQ(DigestLength(md5Descriptor), 16U);
  EXPECT_EQ(DigestLength(sha1Descriptor), 20U);
  for (const AlgorithmDescriptor* other :
       {&md5RandomDescriptor, &rc5CbcPadDescriptor, &base64Descriptor, &rsaPublicDescriptor}) {
    EXPECT_EQ(DigestLength(*other), 0U);
  }
}

}  // namespace
}  // namespace kest
