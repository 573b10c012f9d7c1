#include "crypto/rsa_public_cipher.h"

#include <gtest/gtest.h>

#include <thread>

#include "support/allocation_system.h"
#include "support/public_key.h"
#include "support/recorded_system.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::Der;
using testing::DerNumber;
using testing::DerPublicKey;
using testing::PublicKey;
using testing::RecordedSystem;
using testing::SomeBytes;
using testing::SystemInForce;
using testing::operator+;

ByteBuffer BufferOf(const Bytes& bytes) {
  return ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

Bytes Modulus(std::size_t bytes, std::uint8_t first = 0x80) {
  Bytes modulus = SomeBytes(bytes);
  modulus.front() = first;
  modulus.back() |= 1;
  return modulus;
}

ByteBuffer KeyText(const Bytes& modulus) {
  return BufferOf(PublicKey(modulus, {1, 0, 1}));
}

TEST(RsaPublicCipher, BlockSizeIsTheModulusWithoutItsSignByte) {
  RsaPublicCipher cipher;
  EXPECT_EQ(cipher.BlockSize(), -1);
  ASSERT_TRUE(cipher.LoadPublicKey(KeyText(Modulus(128))));
  EXPECT_EQ(cipher.BlockSize(), 128);
  ASSERT_TRUE(cipher.LoadPublicKey(BufferOf(DerPublicKey(Der(2, Modulus(128)), DerNumber({3})))));
  EXPECT_EQ(cipher.BlockSize(), 128);
  ASSERT_TRUE(cipher.LoadPublicKey(KeyText(Modulus(129, 0x7F))));
  EXPECT_EQ(cipher.BlockSize(), 129);
}

TEST(RsaPublicCipher, RefusedKeyLeavesNone) {
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(KeyText(Modulus(128))));
  EXPECT_FALSE(cipher.LoadPublicKey(BufferOf({0x30, 0})));
  EXPECT_EQ(cipher.BlockSize(), -1);
  EXPECT_FALSE(cipher.LoadPublicKey(ByteBuffer()));
  EXPECT_FALSE(cipher.BeginEncipher());
}

TEST(RsaPublicCipher, WholeBlocksEncipherToAsMany) {
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(KeyText(Modulus(64))));
  EXPECT_EQ(cipher.Encipher(BufferOf(SomeBytes(128))).Length(), 128U);
  EXPECT_TRUE(cipher.Encipher(BufferOf(SomeBytes(129))).IsEmpty());
  EXPECT_TRUE(cipher.Encipher(BufferOf(SomeBytes(127))).IsEmpty());
  EXPECT_TRUE(cipher.Encipher(ByteBuffer()).IsEmpty());
}

TEST(RsaPublicCipher, BlockByBlockIsTheWholeMessage) {
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(KeyText(Modulus(64))));
  const Bytes in = SomeBytes(192);
  const ByteBuffer whole = cipher.Encipher(BufferOf(in));
  Bytes out(192);
  ASSERT_TRUE(cipher.BeginEncipher());
  for (std::size_t at = 0; at < 192; at += 64) EXPECT_EQ(cipher.EncipherUpdate(in.data() + at, 64, &out[at], 64), 64);
  EXPECT_EQ(cipher.EncipherFinal(nullptr, 0), 0);
  EXPECT_EQ(BufferOf(out), whole);
}

TEST(RsaPublicCipher, UnfinishedBlockFailsAtTheFinalCall) {
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(KeyText(Modulus(64))));
  const Bytes in = SomeBytes(65);
  Bytes out(128);
  ASSERT_TRUE(cipher.BeginEncipher());
  EXPECT_EQ(cipher.EncipherUpdate(in.data(), 65, out.data(), 128), 64);
  EXPECT_EQ(cipher.EncipherFinal(out.data(), 128), -1);
}

TEST(RsaPublicCipher, KeysThatCannotBeUsedLoad) {
  Bytes even = Modulus(64);
  even.back() &= 0xFE;
  for (const Bytes& modulus : {Modulus(257, 0x01), even}) {
    RsaPublicCipher cipher;
    EXPECT_TRUE(cipher.LoadPublicKey(KeyText(modulus)));
    EXPECT_EQ(cipher.BlockSize(), static_cast<int>(modulus.size()));
    EXPECT_FALSE(cipher.BeginEncipher());
    EXPECT_TRUE(cipher.Encipher(BufferOf(SomeBytes(modulus.size()))).IsEmpty());
  }
}

TEST(RsaPublicCipher, ModulusOfZeroHasBlocksOfNoBytes) {
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(BufferOf(DerPublicKey(Der(2, {0}), DerNumber({3})))));
  EXPECT_EQ(cipher.BlockSize(), 0);
  EXPECT_FALSE(cipher.BeginEncipher());
}

TEST(RsaPublicCipher, WholeMessageSeedsAndTheLowerLevelDoesNot) {
  RecordedSystem system;
  const SystemInForce inForce(system);
  RsaPublicCipher cipher;
  system.hasRandom = true;
  ASSERT_TRUE(cipher.LoadPublicKey(KeyText(Modulus(64))));
  ASSERT_TRUE(cipher.BeginEncipher());
  EXPECT_EQ(system.seedings, 0U);
  EXPECT_FALSE(cipher.Encipher(BufferOf(SomeBytes(64))).IsEmpty());
  EXPECT_EQ(system.randomLengths, (std::vector<std::uint32_t>{256}));
}

TEST(RsaPublicCipher, CopyHasTheKeyAndLeavesTheOther) {
  RsaPublicCipher original, copy;
  EXPECT_FALSE(copy.CopyKeyFrom(original));
  ASSERT_TRUE(original.LoadPublicKey(KeyText(Modulus(64))));
  ASSERT_TRUE(copy.CopyKeyFrom(original));
  const ByteBuffer enciphered = original.Encipher(BufferOf(SomeBytes(64)));
  original.Clear();
  EXPECT_EQ(copy.Encipher(BufferOf(SomeBytes(64))), enciphered);
  EXPECT_FALSE(copy.CopyKeyFrom(original));
  EXPECT_EQ(copy.BlockSize(), -1);
  EXPECT_FALSE(copy.CopyKeyFrom(copy));
}

TEST(RsaPublicCipher, SeveralThreadsCopyOneKey) {
  RsaPublicCipher original;
  ASSERT_TRUE(original.LoadPublicKey(KeyText(Modulus(64))));
  const ByteBuffer expected = original.Encipher(BufferOf(SomeBytes(64)));
  bool isSame[4] = {};
  std::thread threads[4];
  for (int i = 0; i < 4; ++i) {
    threads[i] = std::thread([&original, &expected, &same = isSame[i]] {
      same = true;
      for (int round = 0; round < 20; ++round) {
        RsaPublicCipher copy;
        same = same && copy.CopyKeyFrom(original) && copy.Encipher(BufferOf(SomeBytes(64))) == expected;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const bool same : isSame) EXPECT_TRUE(same);
}

TEST(RsaPublicCipher, LoadingClearsTheWholeObject) {
  RsaPublicCipher cipher, copy;
  std::uint8_t out[64];
  testing::AllocationSystem system;
  const SystemInForce inForce(system);
  const auto loaded = [&] {
    const ByteBuffer der = KeyText(Modulus(64));
    return cipher.LoadPublicKey(der);
  };
  ASSERT_TRUE(loaded());
  const std::int64_t keyBlocks = system.Outstanding();
  ASSERT_TRUE(cipher.SeedRandom(16));
  ASSERT_TRUE(cipher.BeginEncipher());
  EXPECT_GT(system.Outstanding(), keyBlocks + 1);
  ASSERT_TRUE(loaded());
  EXPECT_EQ(system.Outstanding(), keyBlocks) << "neither generator nor algorithm";
  EXPECT_EQ(cipher.EncipherUpdate(out, 0, out, 64), -1);
  EXPECT_FALSE(cipher.LoadPublicKey(ByteBuffer()));
  EXPECT_EQ(system.Outstanding(), 0) << "a refused key leaves no key object";
  EXPECT_EQ(cipher.BlockSize(), -1);
  EXPECT_FALSE(copy.CopyKeyFrom(cipher));
}

TEST(RsaPublicCipher, CopyReplacesTheKeyThatWasThere) {
  RsaPublicCipher original, copy;
  ASSERT_TRUE(original.LoadPublicKey(KeyText(Modulus(64))));
  ASSERT_TRUE(copy.LoadPublicKey(KeyText(Modulus(128))));
  testing::AllocationSystem system;
  const SystemInForce inForce(system);
  ASSERT_TRUE(copy.CopyKeyFrom(original));
  EXPECT_LE(system.Outstanding(), 0) << "the old key is given back";
  EXPECT_EQ(copy.BlockSize(), 64);
  EXPECT_EQ(copy.Encipher(BufferOf(SomeBytes(64))), original.Encipher(BufferOf(SomeBytes(64))));
}

}  // namespace
}  // namespace kest
