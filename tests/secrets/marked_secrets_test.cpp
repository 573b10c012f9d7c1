// Does a branch or an address of an algorithm depend on a secret?
#include <cstring>

#include "core/memory.h"
#include "crypto/constant_time.h"
#include "crypto/hidden_length.h"
#include "crypto/md5.h"
#include "crypto/md5_random.h"
#include "crypto/montgomery.h"
#include "crypto/random_generator.h"
#include "crypto/rc5.h"
#include "crypto/session_cipher.h"
#include "crypto/sha1.h"
#include "secrets/marked.h"
#include "support/toolkit.h"

namespace kest::testing {
namespace {

using MarkedSecrets = MarkedTest;

// A branch that the compiler cannot turn into anything else.
[[gnu::noinline]] int BranchOn(const volatile std::uint8_t* byte) {
  if (*byte == 7) {
    __asm__ __volatile__("nop");
    return 1;
  }
  __asm__ __volatile__("" ::: "memory");
  return 0;
}

TEST_F(MarkedSecrets, ABranchOnAMarkedByteIsFound) {
  std::uint8_t byte = 3;
  Mark(&byte, 1);
  int branched = BranchOn(&byte);
  Publish(&branched, sizeof branched);
  EXPECT_EQ(0, branched);
  EXPECT_GT(Errors(), before);
}

TEST_F(MarkedSecrets, MarksAreCounted) {
  Bytes bytes = SomeBytes(10);
  EXPECT_EQ(0u, MarkedBytes(bytes.data(), 10));
  Mark(bytes.data() + 3, 4);
  EXPECT_EQ(4u, MarkedBytes(bytes.data(), 10));
}

TEST_F(MarkedSecrets, MemoryThatIsNotMarkedIsNone) {
  const std::uint8_t byte = 7;
  EXPECT_EQ(1, BranchOn(&byte));
  EXPECT_EQ(before, Errors());
}

TEST_F(MarkedSecrets, Rc5DoesNotBranchOnKeyOrText) {
  for (const std::uint32_t rounds : {20u, 12u}) {
    Bytes key = SomeBytes(128), iv = SomeBytes(8), text = SomeBytes(8 * 11);
    const Bytes plain = text;
    Mark(key.data(), key.size());
    Mark(iv.data(), iv.size());
    Mark(text.data(), text.size());
    Rc5Key table;
    Rc5Chain chain;
    Rc5ExpandKey(table, rounds, key.data(), 128);
    Rc5BeginChain(chain, iv.data());
    Rc5EncipherBlocks(table, chain, text.data(), text.data(), 11);
    EXPECT_EQ(88u, MarkedBytes(text.data(), text.size()));
    Rc5BeginChain(chain, iv.data());
    Rc5DecipherBlocks(table, chain, text.data(), text.data(), 11);
    EXPECT_EQ(before, Errors()) << rounds;
    Publish(text.data(), text.size());
    EXPECT_EQ(plain, text);
  }
}

TEST_F(MarkedSecrets, GeneratorAndItsKeysDoNotBranchOnTheSeed) {
  Bytes seed = SomeBytes(128);
  Mark(seed.data(), seed.size());
  SessionCipher cipher;
  ASSERT_TRUE(cipher.MakeKey(1024, seed.data(), 128));
  ByteBuffer exported = cipher.ExportKey();
  Bytes text = SomeBytes(100);
  Mark(text.data(), text.size());
  const ByteBuffer sealed = cipher.Encipher(ByteBuffer(text.data(), 100));
  const ByteBuffer opened = cipher.DecipherWithPadding(sealed);
  EXPECT_EQ(before, Errors());
  EXPECT_EQ(136u, exported.Length());
  EXPECT_EQ(136u, MarkedBytes(exported.Bytes(), 136));
  ASSERT_EQ(104u, opened.Length());
  Publish(opened.Bytes(), 104);
  Publish(text.data(), text.size());
  EXPECT_EQ(0, std::memcmp(opened.Bytes(), text.data(), 100));
}

TEST_F(MarkedSecrets, SecondSeedingDoesNotBranchOnTheState) {
  Md5Random random;
  Bytes seed = SomeBytes(40);
  std::uint8_t drawn[50];
  Md5RandomInit(random);
  Mark(seed.data(), seed.size());
  for (int seeding = 0; seeding < 2; ++seeding) {
    Md5RandomSeed(random, seed.data(), 40);
    Md5RandomGenerate(random, drawn, sizeof drawn);
    EXPECT_EQ(sizeof drawn, MarkedBytes(drawn, sizeof drawn));
  }
  EXPECT_EQ(before, Errors());
}

// The modulus and the exponent are public. Every block is followed by many final subtractions.
TEST_F(MarkedSecrets, RsaDoesNotBranchOnTheBlock) {
  Bytes modulus = SomeBytes(128, 3);
  modulus.front() |= 0x80;
  modulus.back() |= 1;
  BigNumber number, exponent;
  ASSERT_EQ(0, number.SetBytes(modulus.data(), 128));
  for (const Bytes& power : {Bytes{3}, Bytes{1, 0, 1}, Bytes{1}, Bytes{4}}) {
    ASSERT_EQ(0, exponent.SetBytes(power.data(), static_cast<std::uint32_t>(power.size())));
    Montgomery montgomery;
    montgomery.SetModulus(number);
    for (std::uint32_t block = 1; block < 9; ++block) {
      std::uint32_t words[32];
      const Bytes bytes = SomeBytes(128, block);
      std::memcpy(words, bytes.data(), sizeof words);
      Mark(words, sizeof words);
      montgomery.Exponentiate(words, words, exponent);
      EXPECT_EQ(sizeof words, MarkedBytes(words, sizeof words));
    }
  }
  EXPECT_EQ(before, Errors());
}

TEST_F(MarkedSecrets, DigestsDoNotBranchOnTheText) {
  Bytes text = SomeBytes(300);
  std::uint8_t digest[sha1Length];
  Mark(text.data(), text.size());
  Sha1Context sha1;
  Sha1Init(sha1);
  Sha1Update(sha1, text.data(), 300);
  Sha1Final(sha1, digest);
  EXPECT_EQ(sha1Length, MarkedBytes(digest, sha1Length));
  Md5Context md5;
  Md5Init(md5);
  Publish(digest, sizeof digest);
  Md5Update(md5, text.data(), 300);
  Md5Final(md5, digest);
  EXPECT_EQ(md5Length, MarkedBytes(digest, md5Length));
  EXPECT_EQ(before, Errors());
}

TEST_F(MarkedSecrets, PaddingIsJudgedWithoutABranch) {
  for (std::uint32_t last = 0; last < 12; ++last) {
    Bytes block(8, static_cast<std::uint8_t>(last));
    Mark(block.data(), block.size());
    std::uint32_t padding = PaddingOf(block.data());
    ClearPadding(block.data(), padding);
    EXPECT_EQ(before, Errors());
    Publish(&padding, sizeof padding);
    EXPECT_EQ(last <= 8 ? last : 0, padding);
  }
}

TEST_F(MarkedSecrets, EndOfATextDoesNotShow) {
  Bytes text = SomeBytes(160);
  text[100] = 0;
  Mark(text.data(), text.size());
  const std::uint32_t length = CutAtFirstZero(text.data(), 160);
  std::uint8_t digest[sha1Length];
  Sha1OfHiddenLength(text.data(), length, 160, digest);
  EXPECT_EQ(sha1Length, MarkedBytes(digest, sha1Length));
  EXPECT_EQ(before, Errors());
}

TEST_F(MarkedSecrets, ComparisonDoesNotBranchOnWhereBytesDiffer) {
  Bytes a = SomeBytes(64), b = a;
  b[10] ^= 1;
  Mark(a.data(), a.size());
  bool isEqual = EqualBytes(a.data(), b.data(), 64);
  EXPECT_EQ(1u, MarkedBytes(&isEqual, sizeof isEqual));
  EXPECT_EQ(before, Errors());
  // The outcome is public.
  Publish(&isEqual, sizeof isEqual);
  EXPECT_FALSE(isEqual);
}

TEST_F(MarkedSecrets, WipingDoesNotLookAtWhatItWipes) {
  Bytes secret = SomeBytes(100);
  Mark(secret.data(), secret.size());
  Wipe(secret.data(), secret.size());
  EXPECT_EQ(Bytes(100), secret);
  EXPECT_EQ(before, Errors());
}

}  // namespace
}  // namespace kest::testing
