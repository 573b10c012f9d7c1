// What memory holds when the library gives it back: no key, seed, plain text or part of one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "core/memory.h"
#include "crypto/big_number.h"
#include "crypto/message_digest.h"
#include "crypto/rsa_public_cipher.h"
#include "crypto/session_cipher.h"
#include "support/forwarding_system.h"
#include "support/public_key.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::ForwardingSystem;
using testing::SomeBytes;
using testing::SystemInForce;

constexpr std::size_t window = 16;  // bytes of a secret that must not be found

// Keeps what every block held when it was freed.
class FreedMemory : public ForwardingSystem {
 public:
  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    void* block = ForwardingSystem::GlobalAlloc(flags, bytes);
    // What the heap left there is nobody's secret here.
    std::memset(block, 0xCD, bytes);
    sizes[block] = bytes;
    return block;
  }
  void GlobalFree(void* block) override {
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    freed.insert(freed.end(), bytes, bytes + sizes[block]);
    sizes.erase(block);
    ForwardingSystem::GlobalFree(block);
  }
  // `length`: bytes of the secret in a row that count as a part of it.
  bool Holds(const Bytes& secret, std::size_t length = window) const {
    for (std::size_t at = 0; at + length <= secret.size(); ++at) {
      const auto first = secret.begin() + static_cast<std::ptrdiff_t>(at);
      const auto end = first + static_cast<std::ptrdiff_t>(length);
      if (std::search(freed.begin(), freed.end(), first, end) != freed.end()) return true;
    }
    return false;
  }

 private:
  std::map<void*, std::size_t> sizes;
  Bytes freed;
};

class Wiping : public ::testing::Test {
 protected:
  FreedMemory memory;
  SystemInForce inForce{memory};
};

Bytes BytesIn(const ByteBuffer& buffer) {
  return Bytes(buffer.Bytes(), buffer.Bytes() + buffer.Length());
}
ByteBuffer BufferOf(const Bytes& bytes) {
  return ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

TEST_F(Wiping, WhatIsNotWipedIsFound) {
  const Bytes secret = SomeBytes(40);
  void* block = Allocate(40);
  std::copy(secret.begin(), secret.end(), static_cast<std::uint8_t*>(block));
  Release(block);
  EXPECT_TRUE(memory.Holds(secret));
}

TEST_F(Wiping, KeysAndTextsAreGone) {
  const Bytes plain = SomeBytes(500);
  Bytes key;
  {
    SessionCipher cipher;
    ASSERT_TRUE(cipher.MakeKey(1024, nullptr, 0));
    key = BytesIn(cipher.ExportKey());
    const ByteBuffer enciphered = cipher.Encipher(BufferOf(plain));
    ASSERT_EQ(BytesIn(cipher.Decipher(enciphered)), plain);
    ASSERT_TRUE(cipher.Decipher(BufferOf(SomeBytes(64))).IsEmpty());
    ASSERT_TRUE(cipher.BeginEncipher());
    std::uint8_t area[40];
    ASSERT_EQ(cipher.EncipherUpdate(plain.data(), 39, area, 40), 32);
  }
  EXPECT_FALSE(memory.Holds(key));
  EXPECT_FALSE(memory.Holds(plain));
}

TEST_F(Wiping, SeedsAndGeneratedBytesAreGone) {
  Bytes seed = SomeBytes(48);
  const Bytes secret = seed;
  // A whole number of blocks: the generator's block then still holds the last 16 bytes drawn.
  Bytes drawn(192);
  {
    RandomGenerator generator;
    ASSERT_TRUE(generator.SeedFromBytes(seed.data(), 48));
    ASSERT_TRUE(generator.GenerateBytes(drawn.data(), 192));
  }
  EXPECT_FALSE(memory.Holds(secret));
  EXPECT_FALSE(memory.Holds(drawn));
}

TEST_F(Wiping, KeyTableIsGone) {
  const Bytes key = SomeBytes(128);
  std::uint8_t iv[8] = {};
  const Rc5ParameterBlock block = {16, 20, 32, iv};
  Bytes context;
  {
    const testing::Key keyObject(byteStringKeyDescriptor, key);
    testing::Algorithm algorithm(rc5CbcPadDescriptor, &block);
    ASSERT_EQ(algorithm.Initialise(Direction::encipher, keyObject), 0);
    // The table stands first in the context, behind the number of rounds.
    const auto* bytes = static_cast<const std::uint8_t*>(static_cast<AlgorithmObject*>(algorithm)->context);
    context.assign(bytes + 4, bytes + 4 + 168);
  }
  EXPECT_FALSE(memory.Holds(key));
  EXPECT_FALSE(memory.Holds(context));
}

TEST_F(Wiping, DigestedTextIsGone) {
  const Bytes text = testing::BytesOf("a text that nobody but the two ends may see");
  {
    const String copy("a text that nobody but the two ends may see");
    ASSERT_FALSE(DigestText(copy, sha1Descriptor).IsEmpty());
    ASSERT_FALSE(DigestText(copy, md5Descriptor).IsEmpty());
    String base64;
    ASSERT_TRUE(BufferOf(text).EncodeBase64(base64));
  }
  EXPECT_FALSE(memory.Holds(text));
}

TEST_F(Wiping, BlockUnderRsaIsGone) {
  Bytes modulus = SomeBytes(64, 3);
  modulus.front() |= 0x80;
  modulus.back() |= 1;
  const Bytes block = SomeBytes(64, 8);
  {
    RsaPublicCipher cipher;
    ASSERT_TRUE(cipher.LoadPublicKey(BufferOf(testing::PublicKey(modulus, {3}))));
    ASSERT_TRUE(cipher.BeginEncipher());
    std::uint8_t out[64];
    ASSERT_EQ(cipher.EncipherUpdate(block.data(), 30, out, 64), 0);
    ASSERT_EQ(cipher.EncipherUpdate(block.data() + 30, 34, out, 64), 64);
    ASSERT_EQ(cipher.EncipherUpdate(block.data(), 60, out, 64), 0);
  }
  Bytes reversed(block.rbegin(), block.rend());
  EXPECT_FALSE(memory.Holds(block));
  EXPECT_FALSE(memory.Holds(reversed)) << "as words";
}

TEST_F(Wiping, BigNumbersAreGone) {
  const Bytes first = SomeBytes(40, 5), second = SomeBytes(80, 6);
  {
    BigNumber number;
    ASSERT_EQ(number.SetBytes(first.data(), 40), 0);
    ASSERT_EQ(number.SetBytes(second.data(), 80), 0);
  }
  EXPECT_FALSE(memory.Holds(Bytes(first.rbegin(), first.rend()))) << "when it grows";
  EXPECT_FALSE(memory.Holds(Bytes(second.rbegin(), second.rend()))) << "when it goes";
}

TEST_F(Wiping, InitialisationVectorIsGoneWithTheCipher) {
  Bytes seed = {1, 2, 3, 4}, vector;
  auto* cipher = new SessionCipher;
  ASSERT_TRUE(cipher->MakeKey(256, seed.data(), 4));
  vector = BytesIn(cipher->ExportKey());
  vector.resize(8);
  delete cipher;
  EXPECT_FALSE(memory.Holds(vector, 8));
}

TEST_F(Wiping, ParametersAreGoneWithTheAlgorithm) {
  const Bytes vector = SomeBytes(8, 7);
  const Rc5ParameterBlock block = {16, 20, 32, vector.data()};
  { const testing::Algorithm algorithm(rc5CbcPadDescriptor, &block); }
  EXPECT_FALSE(memory.Holds(vector, 8));
}

}  // namespace
}  // namespace kest
