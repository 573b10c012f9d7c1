// What each operation does when memory runs out at each of its allocations, once and from then on: the stated failure,
// nothing leaked, and the same operation done again succeeds.
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "core/exception.h"
#include "crypto/message_digest.h"
#include "crypto/rsa_public_cipher.h"
#include "crypto/session_cipher.h"
#include "support/allocation_system.h"
#include "support/public_key.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::AllocationSystem;
using testing::Bytes;
using testing::ForwardingSystem;
using testing::SomeBytes;
using testing::SystemInForce;

ByteBuffer BufferOf(const Bytes& bytes) {
  return ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

Bytes Modulus() {
  Bytes modulus = SomeBytes(64);
  modulus.front() |= 0x80;
  modulus.back() |= 1;
  return modulus;
}

enum class Outcome { succeeded, failed, threw };

Outcome OutcomeOf(const std::function<bool()>& operation) {
  try {
    return operation() ? Outcome::succeeded : Outcome::failed;
  } catch (const Qor::MemoryException& exception) {
    EXPECT_EQ(exception.Code(), 0U);
    return Outcome::threw;
  }
}

// Runs `operation` with each allocation failing and expects `failure` to be called after each.
class Allocations : public ::testing::Test {
 protected:
  void FailEach(std::uint64_t leastPoints, const std::function<bool()>& operation) {
    const std::int64_t before = system.Outstanding();
    system.Restart();
    ASSERT_EQ(OutcomeOf(operation), Outcome::succeeded);
    const std::uint64_t points = system.Allocations();
    ASSERT_GE(points, leastPoints);
    const std::int64_t after = system.Outstanding();
    for (const auto how : {AllocationSystem::Failing::once, AllocationSystem::Failing::fromThenOn}) {
      for (std::uint64_t point = 1; point <= points; ++point) {
        system.FailAt(point, how);
        const Outcome outcome = OutcomeOf(operation);
        system.FailNever();
        EXPECT_NE(outcome, Outcome::succeeded) << point;
        threw += outcome == Outcome::threw ? 1 : 0;
        failed += outcome == Outcome::failed ? 1 : 0;
        EXPECT_LE(system.Outstanding(), after) << point;
        EXPECT_EQ(OutcomeOf(operation), Outcome::succeeded) << point;
        EXPECT_EQ(system.Outstanding(), after) << point;
      }
    }
    EXPECT_GE(after, before);
  }

  AllocationSystem system;
  SystemInForce inForce{system};
  int threw = 0, failed = 0;
};

TEST_F(Allocations, MakeKeyFailsWithoutKey) {
  const std::int64_t before = system.Outstanding();
  {
    SessionCipher cipher;
    FailEach(4, [&cipher] {
      const bool made = cipher.MakeKey(1024, nullptr, 0);
      if (!made) {
        EXPECT_FALSE(cipher.BeginEncipher());
      }
      return made;
    });
    EXPECT_EQ(threw, 0);
  }
  EXPECT_EQ(system.Outstanding(), before);
}

TEST_F(Allocations, SeedIsWipedWhereverMakeKeyFails) {
  SessionCipher cipher;
  FailEach(4, [&cipher] {
    std::uint8_t seed[4] = {1, 2, 3, 4};
    const bool made = cipher.MakeKey(256, seed, 4);
    EXPECT_EQ(Bytes(seed, seed + 4), Bytes(4, 0));
    return made;
  });
  EXPECT_EQ(threw, 0);
}

TEST_F(Allocations, EncipherGivesNothingOrThrowsForItsResult) {
  SessionCipher cipher;
  ASSERT_TRUE(cipher.MakeKey(1024, nullptr, 0));
  const ByteBuffer plain = BufferOf(SomeBytes(100));
  FailEach(4, [&] { return !cipher.Encipher(plain).IsEmpty(); });
  EXPECT_EQ(threw, 2) << "the result's own block, once and from then on";
  EXPECT_GT(failed, 0);
}

// Writes down the largest block that was asked for.
class LargestBlock : public ForwardingSystem {
 public:
  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    if (bytes > largest) largest = bytes;
    return ForwardingSystem::GlobalAlloc(flags, bytes);
  }
  std::size_t largest = 0;
};

// What enciphering `length` bytes asks for beyond what a text of `sameAs` characters takes.
std::size_t RoomBeyond(std::uint32_t length, std::uint32_t sameAs) {
  SessionCipher cipher;
  EXPECT_TRUE(cipher.MakeKey(1024, nullptr, 0));
  const ByteBuffer plain = BufferOf(SomeBytes(length));
  LargestBlock blocks;
  const SystemInForce inForce(blocks);
  EXPECT_FALSE(cipher.Encipher(plain).IsEmpty());
  const std::size_t taken = std::exchange(blocks.largest, 0);
  ByteBuffer same;
  same.Reserve(sameAs);
  return taken - blocks.largest;
}

// Blocks grow in steps of 50 bytes, so that two lengths hold the number to the byte.
TEST(EncipherRoom, IsThatOfTheTextAnd1024BytesMore) {
  EXPECT_EQ(RoomBeyond(200025, 201049), 0u);
  EXPECT_EQ(RoomBeyond(200026, 201050), 0u);
}

TEST_F(Allocations, DecipherGivesNothingOrThrowsForItsResult) {
  SessionCipher cipher;
  ASSERT_TRUE(cipher.MakeKey(1024, nullptr, 0));
  const ByteBuffer enciphered = cipher.Encipher(BufferOf(SomeBytes(100)));
  FailEach(3, [&] { return !cipher.Decipher(enciphered).IsEmpty(); });
  EXPECT_EQ(threw, 2);
  EXPECT_GT(failed, 0);
}

TEST_F(Allocations, ExportKeyThrowsForItsResult) {
  SessionCipher cipher;
  ASSERT_TRUE(cipher.MakeKey(1024, nullptr, 0));
  FailEach(1, [&] { return cipher.ExportKey().Length() == 136; });
  EXPECT_EQ(failed, 0);
}

TEST_F(Allocations, LoadPublicKeyFailsWithoutKey) {
  const std::int64_t before = system.Outstanding();
  {
    const ByteBuffer der = BufferOf(testing::PublicKey(Modulus(), {1, 0, 1}));
    RsaPublicCipher cipher;
    FailEach(2, [&] {
      const bool loaded = cipher.LoadPublicKey(der);
      EXPECT_EQ(cipher.BlockSize(), loaded ? 64 : -1);
      return loaded;
    });
    EXPECT_EQ(threw, 0);
  }
  EXPECT_EQ(system.Outstanding(), before);
}

TEST_F(Allocations, CopyKeyFailsWithoutKey) {
  RsaPublicCipher original, copy;
  ASSERT_TRUE(original.LoadPublicKey(BufferOf(testing::PublicKey(Modulus(), {1, 0, 1}))));
  FailEach(2, [&] {
    const bool copied = copy.CopyKeyFrom(original);
    EXPECT_EQ(copy.BlockSize(), copied ? 64 : -1);
    return copied;
  });
  EXPECT_EQ(threw, 0);
}

TEST_F(Allocations, RsaEncipherInPiecesFails) {
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(BufferOf(testing::PublicKey(Modulus(), {1, 0, 1}))));
  const Bytes in = SomeBytes(128);
  FailEach(4, [&] {
    std::uint8_t out[128];
    return cipher.BeginEncipher() && cipher.EncipherUpdate(in.data(), 128, out, 128) == 128 &&
           cipher.EncipherFinal(out, 0) == 0;
  });
  EXPECT_EQ(threw, 0);
}

TEST_F(Allocations, RsaEncipherGivesNothingOrThrowsForItsResult) {
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(BufferOf(testing::PublicKey(Modulus(), {1, 0, 1}))));
  const ByteBuffer in = BufferOf(SomeBytes(128));
  FailEach(6, [&] { return cipher.Encipher(in).Length() == 128; });
  EXPECT_EQ(threw, 2);
}

TEST_F(Allocations, DigestTextGivesNothingOrThrowsForItsResult) {
  const String text("text");
  for (const AlgorithmDescriptor* descriptor : {&md5Descriptor, &sha1Descriptor}) {
    threw = failed = 0;
    FailEach(3, [&] { return !DigestText(text, *descriptor).IsEmpty(); });
    EXPECT_EQ(threw, 2);
    EXPECT_EQ(failed, 4);
  }
}

TEST_F(Allocations, SeedingFailsWithoutGenerator) {
  RandomGenerator generator;
  FailEach(1, [&] {
    std::uint8_t byte, seed[2] = {1, 2};
    const bool seeded = generator.SeedFromBytes(seed, 2);
    EXPECT_EQ(seed[0] | seed[1], 0);
    EXPECT_EQ(generator.GenerateBytes(&byte, 1), seeded);
    return seeded;
  });
  FailEach(1, [&] { return generator.SeedFromEntropy(48); });
  EXPECT_EQ(threw, 0);
}

TEST_F(Allocations, GeneratorCostsOneBlock) {
  RandomGenerator generator;
  system.Restart();
  ASSERT_TRUE(generator.SeedFromEntropy(48));
  EXPECT_EQ(system.Allocations(), 1U);
}

TEST_F(Allocations, Base64ThrowsAndChangesNothing) {
  ByteBuffer buffer("abc", 3);
  String text;
  FailEach(1, [&] {
    String encoded;
    return buffer.EncodeBase64(encoded);
  });
  ASSERT_TRUE(buffer.EncodeBase64(text));
  EXPECT_EQ(failed, 0);
  ByteBuffer decoded("old", 3);
  system.FailAt(1, AllocationSystem::Failing::once);
  EXPECT_THROW(decoded.DecodeBase64(text), Qor::MemoryException);
  EXPECT_EQ(decoded, ByteBuffer("old", 3));
}

TEST_F(Allocations, ToolkitAnswers518) {
  AlgorithmObject* algorithm = nullptr;
  KeyObject* key = nullptr;
  system.FailAt(1, AllocationSystem::Failing::fromThenOn);
  EXPECT_EQ(CreateAlgorithm(&algorithm), 518);
  EXPECT_EQ(CreateKey(&key), 518);
  system.FailNever();
  ASSERT_EQ(CreateAlgorithm(&algorithm), 0);
  ASSERT_EQ(SetAlgorithmInfo(algorithm, sha1Descriptor, nullptr), 0);
  ASSERT_EQ(CreateKey(&key), 0);
  system.FailAt(1, AllocationSystem::Failing::fromThenOn);
  EXPECT_EQ(DigestInit(algorithm, libraryChooser), 518);
  EXPECT_EQ(DigestUpdate(algorithm, "a", 1), 514);
  EXPECT_EQ(SetKeyInfo(key, byteStringKeyDescriptor, ByteItem{nullptr, 0}), 518);
  DestroyAlgorithm(&algorithm);
  DestroyKey(&key);
}

}  // namespace
}  // namespace kest
