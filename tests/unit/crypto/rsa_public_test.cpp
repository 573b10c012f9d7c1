// The raw RSA operation at the toolkit's level.
#include <gtest/gtest.h>

#include "support/public_key.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Algorithm;
using testing::Bytes;
using testing::Der;
using testing::DerNumber;
using testing::DerPublicKey;
using testing::ForEachSplit;
using testing::ForEachVector;
using testing::Key;
using testing::Pieces;
using testing::PublicKey;
using testing::RunPieces;
using testing::SomeBytes;
using testing::ToHex;
using testing::VectorRecord;
using testing::operator+;

const Bytes exponent = {1, 0, 1};

Bytes Modulus(std::size_t bytes, std::uint8_t first = 0x80) {
  Bytes modulus = SomeBytes(bytes);
  modulus.front() = first;
  modulus.back() |= 1;
  return modulus;
}

// Also expects that a refused key leaves the object uninitialised.
ResultCode Initialise(const Bytes& modulusElement, const Bytes& exponentElement = DerNumber(exponent)) {
  const Key key(rsaPublicKeyDerDescriptor, DerPublicKey(modulusElement, exponentElement));
  Algorithm algorithm(rsaPublicDescriptor);
  const ResultCode code = algorithm.Initialise(Direction::encipher, key);
  if (code == resultSuccess) return code;
  std::uint8_t out[64];
  std::uint32_t length;
  EXPECT_EQ(UpdateAlgorithm(algorithm, Direction::encipher, exponent.data(), 1, out, sizeof out, &length), 514);
  EXPECT_EQ(FinishAlgorithm(algorithm, Direction::encipher, out, sizeof out, &length), 514);
  return code;
}

ResultCode Encipher(const Bytes& modulus, const Bytes& e, const Pieces& pieces, Bytes* out,
                    std::size_t outMax = 1 << 12) {
  const Key key(rsaPublicKeyDerDescriptor, DerPublicKey(Der(2, Bytes{0} + modulus), Der(2, Bytes{0} + e)));
  Algorithm algorithm(rsaPublicDescriptor);
  const ResultCode code = algorithm.Initialise(Direction::encipher, key);
  if (code != resultSuccess) return code;
  return RunPieces(algorithm, Direction::encipher, pieces, out, outMax);
}

TEST(RsaPublic, Vectors) {
  ForEachVector("rsa_public.txt", [](VectorRecord& record) {
    const Bytes modulus = record.Hex("Modulus"), e = record.Hex("Exponent"), block = record.Hex("Block");
    const std::string cipher = record.Text("Cipher");
    const auto middle = block.begin() + static_cast<std::ptrdiff_t>(block.size() / 2);
    Pieces single;
    for (const std::uint8_t byte : block) single.push_back({byte});
    for (const Pieces& pieces :
         {Pieces{block}, single, Pieces{Bytes(block.begin(), middle), Bytes(middle, block.end())}}) {
      Bytes out;
      ASSERT_EQ(Encipher(modulus, e, pieces, &out), 0);
      EXPECT_EQ(ToHex(out), cipher);
    }
  });
}

TEST(RsaPublic, ThreeBlocksAreTheSameInEverySplit) {
  const Bytes modulus = Modulus(16), in = SomeBytes(48, 4);
  Bytes whole;
  ASSERT_EQ(Encipher(modulus, exponent, {in}, &whole), 0);
  ASSERT_EQ(whole.size(), 48U);
  for (int block = 0; block < 3; ++block) {
    Bytes out;
    const Bytes one(in.begin() + 16 * block, in.begin() + 16 * block + 16);
    ASSERT_EQ(Encipher(modulus, exponent, {one}, &out), 0);
    EXPECT_EQ(out, Bytes(whole.begin() + 16 * block, whole.begin() + 16 * block + 16));
  }
  ForEachSplit(in, [&](const Pieces& pieces) {
    Bytes out;
    ASSERT_EQ(Encipher(modulus, exponent, pieces, &out), 0);
    ASSERT_EQ(out, whole);
  });
}

TEST(RsaPublic, ExponentZeroGivesOne) {
  for (const std::size_t bytes : {1u, 16u, 255u, 256u}) {
    Bytes out, one(bytes);
    one.back() = 1;
    EXPECT_EQ(Encipher(Modulus(bytes), {0}, {SomeBytes(bytes, 4)}, &out), 0) << bytes;
    EXPECT_EQ(out, one) << bytes;
  }
}

TEST(RsaPublic, UnfinishedBlockGives525AtTheEnd) {
  const Bytes modulus = Modulus(16);
  for (std::size_t length = 0; length <= 33; ++length) {
    Bytes out;
    const ResultCode code = Encipher(modulus, exponent, {SomeBytes(length)}, &out);
    EXPECT_EQ(code, length % 16 == 0 ? 0 : 525) << length;
  }
}

TEST(RsaPublic, OutputBelowOneBlockGives536) {
  const Bytes modulus = Modulus(16);
  Bytes out;
  EXPECT_EQ(Encipher(modulus, exponent, {SomeBytes(16)}, &out, 15), 536);
  EXPECT_EQ(Encipher(modulus, exponent, {SomeBytes(32)}, &out, 31), 536);
  EXPECT_EQ(Encipher(modulus, exponent, {SomeBytes(16)}, &out, 16), 0);
}

TEST(RsaPublic, ModulusOf2049BitsGives533AndOneOf2048IsTaken) {
  EXPECT_EQ(Initialise(DerNumber(Modulus(256))), 0);
  EXPECT_EQ(Initialise(DerNumber(Modulus(257, 0x01))), 533);
  EXPECT_EQ(Initialise(DerNumber(Modulus(4000))), 533);
}

TEST(RsaPublic, EvenModulusIsRefused) {
  Bytes modulus = Modulus(64);
  modulus.back() &= 0xFE;
  EXPECT_EQ(Initialise(DerNumber(modulus)), 524);
  EXPECT_EQ(Initialise(Der(2, {0})), 524);
}

TEST(RsaPublic, BlockNotBelowTheModulusIsReduced) {
  // 254 is 3 modulo 251.
  Bytes below, above;
  ASSERT_EQ(Encipher({251}, {3}, {{3}}, &below), 0);
  ASSERT_EQ(Encipher({251}, {3}, {{254}}, &above), 0);
  EXPECT_EQ(below, (Bytes{27}));
  EXPECT_EQ(above, below);
}

}  // namespace
}  // namespace kest
