// RC5, SHA-1, MD5 and base64 against Crypto++ on random input, and the RFC's RC5 vectors against both.
#define CRYPTOPP_ENABLE_NAMESPACE_WEAK 1
#include <cryptopp/base64.h>
#include <cryptopp/filters.h>
#include <cryptopp/md5.h>
#include <cryptopp/modes.h>
#include <cryptopp/rc5.h>
#include <cryptopp/sha.h>
#include <gtest/gtest.h>

#include "core/byte_buffer.h"
#include "interop/random_input.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Algorithm;
using testing::Bytes;
using testing::ForEachVector;
using testing::Key;
using testing::Pieces;
using testing::RandomInput;
using testing::RunPieces;
using testing::VectorRecord;
using Padding = CryptoPP::BlockPaddingSchemeDef::BlockPaddingScheme;

// Crypto++ reads a key only where there is one, so keys have at least one byte.
template <typename Mode>
Bytes TheirRc5(const Bytes& key, const Bytes& iv, int rounds, const Bytes& in, Padding padding) {
  Mode mode;
  mode.SetKey(key.data(), key.size(),
              CryptoPP::MakeParameters(CryptoPP::Name::Rounds(), rounds)(
                  CryptoPP::Name::IV(), CryptoPP::ConstByteArrayParameter(iv.data(), iv.size())));
  std::string out;
  CryptoPP::StringSource(in.data(), in.size(), true,
                         new CryptoPP::StreamTransformationFilter(mode, new CryptoPP::StringSink(out), padding));
  return Bytes(out.begin(), out.end());
}

Bytes TheirEncipher(const Bytes& key, const Bytes& iv, int rounds, const Bytes& in,
                    Padding padding = CryptoPP::BlockPaddingSchemeDef::PKCS_PADDING) {
  return TheirRc5<CryptoPP::CBC_Mode<CryptoPP::RC5>::Encryption>(key, iv, rounds, in, padding);
}

Bytes TheirDecipher(const Bytes& key, const Bytes& iv, int rounds, const Bytes& in,
                    Padding padding = CryptoPP::BlockPaddingSchemeDef::PKCS_PADDING) {
  return TheirRc5<CryptoPP::CBC_Mode<CryptoPP::RC5>::Decryption>(key, iv, rounds, in, padding);
}

Bytes OurRc5(Direction direction, const Bytes& keyBytes, const Bytes& iv, std::uint32_t rounds, const Pieces& pieces) {
  const Rc5ParameterBlock block = {16, rounds, 32, iv.data()};
  const Key key(byteStringKeyDescriptor, keyBytes);
  Algorithm algorithm(rc5CbcPadDescriptor, &block);
  Bytes out;
  EXPECT_EQ(algorithm.Initialise(direction, key), 0);
  EXPECT_EQ(RunPieces(algorithm, direction, pieces, &out, 1 << 17), 0);
  return out;
}

// Cuts the input at random places.
Pieces Cut(const Bytes& in, RandomInput& random) {
  Pieces pieces;
  for (std::size_t at = 0; at < in.size();) {
    const std::size_t length = std::min<std::size_t>(in.size() - at, 1 + random.Below(random.Below(2) != 0 ? 9 : 300));
    pieces.emplace_back(in.begin() + static_cast<std::ptrdiff_t>(at),
                        in.begin() + static_cast<std::ptrdiff_t>(at + length));
    at += length;
  }
  return pieces;
}

template <typename Hash>
Bytes TheirDigest(const Bytes& in) {
  Hash hash;
  Bytes digest(hash.DigestSize());
  hash.CalculateDigest(digest.data(), in.data(), in.size());
  return digest;
}

Bytes OurDigest(const AlgorithmDescriptor& descriptor, const Pieces& pieces) {
  Algorithm algorithm(descriptor);
  Bytes out;
  EXPECT_EQ(algorithm.Initialise(Direction::digest), 0);
  EXPECT_EQ(RunPieces(algorithm, Direction::digest, pieces, &out, 20), 0);
  return out;
}

std::string TheirBase64(const Bytes& in) {
  std::string out;
  CryptoPP::StringSource(in.data(), in.size(), true, new CryptoPP::Base64Encoder(new CryptoPP::StringSink(out), false));
  return out;
}

TEST(CryptoppRc5, AgreesWithTheVectorsOfTheRfc) {
  int withoutRounds = 0;
  const auto check = [&withoutRounds](VectorRecord& record, Padding padding) {
    const Bytes key = record.Hex("Key"), iv = record.Hex("IV"), plain = record.Hex("Plain");
    const Bytes cipher = record.Hex("Cipher");
    const int rounds = static_cast<int>(record.Number("Rounds"));
    // Crypto++ has no RC5 of 0 rounds; the unit tests run those vectors.
    if (rounds == 0) {
      ++withoutRounds;
      return;
    }
    EXPECT_EQ(TheirEncipher(key, iv, rounds, plain, padding), cipher);
  };
  ForEachVector("rc5_cbc.txt",
                [&](VectorRecord& record) { check(record, CryptoPP::BlockPaddingSchemeDef::NO_PADDING); });
  ForEachVector("rc5_cbc_pad.txt",
                [&](VectorRecord& record) { check(record, CryptoPP::BlockPaddingSchemeDef::PKCS_PADDING); });
  EXPECT_EQ(withoutRounds, 5);
}

TEST(CryptoppRc5, EveryKeyLengthWith20Rounds) {
  RandomInput random;
  SCOPED_TRACE(random.Seed());
  for (std::size_t length = 1; length <= 255; ++length) {
    for (int round = 0; round < 4; ++round) {
      const Bytes key = random.OfLength(length), iv = random.OfLength(8), plain = random.OfLength(random.Below(400));
      const Bytes theirs = TheirEncipher(key, iv, 20, plain);
      ASSERT_EQ(OurRc5(Direction::encipher, key, iv, 20, Cut(plain, random)), theirs) << length;
      ASSERT_EQ(OurRc5(Direction::decipher, key, iv, 20, Cut(theirs, random)), plain) << length;
    }
  }
}

TEST(CryptoppRc5, EveryNumberOfRoundsFrom1To255) {
  RandomInput random;
  SCOPED_TRACE(random.Seed());
  for (int rounds = 1; rounds <= 255; ++rounds) {
    const Bytes key = random.OfLength(1 + random.Below(255)), iv = random.OfLength(8);
    const Bytes plain = random.OfLength(random.Below(200));
    const Bytes theirs = TheirEncipher(key, iv, rounds, plain);
    ASSERT_EQ(OurRc5(Direction::encipher, key, iv, static_cast<std::uint32_t>(rounds), {plain}), theirs) << rounds;
    ASSERT_EQ(OurRc5(Direction::decipher, key, iv, static_cast<std::uint32_t>(rounds), {theirs}), plain) << rounds;
  }
}

TEST(CryptoppRc5, LongMessages) {
  RandomInput random;
  SCOPED_TRACE(random.Seed());
  for (int round = 0; round < 20; ++round) {
    const Bytes key = random.OfLength(128), iv = random.OfLength(8), plain = random.OfLength(random.Below(100000));
    const Bytes ours = OurRc5(Direction::encipher, key, iv, 20, Cut(plain, random));
    ASSERT_EQ(ours, TheirEncipher(key, iv, 20, plain));
    ASSERT_EQ(TheirDecipher(key, iv, 20, ours), plain);
    ASSERT_EQ(OurRc5(Direction::decipher, key, iv, 20, Cut(ours, random)), plain);
  }
}

TEST(CryptoppDigests, AgreeOnEveryLengthAndInPieces) {
  RandomInput random;
  SCOPED_TRACE(random.Seed());
  for (std::size_t length = 0; length <= 600; ++length) {
    const Bytes in = random.OfLength(length);
    ASSERT_EQ(OurDigest(sha1Descriptor, Cut(in, random)), TheirDigest<CryptoPP::SHA1>(in)) << length;
    ASSERT_EQ(OurDigest(md5Descriptor, Cut(in, random)), TheirDigest<CryptoPP::Weak::MD5>(in)) << length;
  }
  for (int round = 0; round < 20; ++round) {
    const Bytes in = random.OfLength(random.Below(200000));
    ASSERT_EQ(OurDigest(sha1Descriptor, Cut(in, random)), TheirDigest<CryptoPP::SHA1>(in));
    ASSERT_EQ(OurDigest(md5Descriptor, Cut(in, random)), TheirDigest<CryptoPP::Weak::MD5>(in));
  }
}

TEST(CryptoppBase64, AgreesOnEveryLength) {
  RandomInput random;
  SCOPED_TRACE(random.Seed());
  for (std::uint32_t length = 0; length <= 1000; ++length) {
    const Bytes in = random.OfLength(length);
    const ByteBuffer buffer(in.data(), length);
    const std::string theirs = TheirBase64(in);
    String text;
    ASSERT_TRUE(buffer.EncodeBase64(text));
    ASSERT_EQ(std::string(text.Text()), theirs) << length;
    ByteBuffer decoded;
    ASSERT_TRUE(decoded.DecodeBase64(theirs.c_str()));
    ASSERT_EQ(decoded, buffer) << length;
  }
}

}  // namespace
}  // namespace kest
