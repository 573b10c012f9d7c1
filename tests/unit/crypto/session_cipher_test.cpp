#include "crypto/session_cipher.h"

#include <gtest/gtest.h>

#include "support/allocation_system.h"
#include "support/recorded_system.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::ForEachSplit;
using testing::Pieces;
using testing::RecordedSystem;
using testing::SomeBytes;
using testing::SystemInForce;

ByteBuffer BufferOf(const Bytes& bytes) {
  return ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}
Bytes BytesIn(const ByteBuffer& buffer) {
  return Bytes(buffer.Bytes(), buffer.Bytes() + buffer.Length());
}

void MakeSeeded(SessionCipher& cipher, std::uint16_t bits = 1024, Bytes seed = {1, 2, 3, 4}) {
  ASSERT_TRUE(cipher.MakeKey(bits, seed.data(), static_cast<std::uint16_t>(seed.size())));
  EXPECT_EQ(seed, Bytes(seed.size(), 0));
}

// The blocks of a key object that holds a key, and of nothing else.
std::int64_t KeyBlocks() {
  testing::AllocationSystem system;
  const SystemInForce inForce(system);
  const testing::Key key(byteStringKeyDescriptor, SomeBytes(32));
  return system.Outstanding();
}

TEST(SessionCipher, KeyFromTheSameSeedIsTheSame) {
  SessionCipher first, second;
  MakeSeeded(first, 256);
  MakeSeeded(second, 256);
  EXPECT_EQ(first.ExportKey(), second.ExportKey());
  EXPECT_FALSE(first.ExportKey().IsEmpty());
}

TEST(SessionCipher, ExportedKeyIsTheVectorAndTheKey) {
  SessionCipher cipher;
  for (const std::uint16_t bits : {1, 8, 9, 256, 1024, 2040, 65528, 65535}) {
    MakeSeeded(cipher, bits);
    EXPECT_EQ(cipher.ExportKey().Length(), 8U + (bits + 7U) / 8U) << bits;
  }
}

TEST(SessionCipher, KeyIsDrawnFirstAndTheVectorBehindIt) {
  SessionCipher cipher;
  MakeSeeded(cipher, 256, {0x00, 0xFF});
  RandomGenerator generator;
  std::uint8_t seed[] = {0x00, 0xFF};
  std::uint8_t stream[40];
  ASSERT_TRUE(generator.SeedFromBytes(seed, 2));
  ASSERT_TRUE(generator.GenerateBytes(stream, 40));
  const Bytes exported = BytesIn(cipher.ExportKey());
  EXPECT_EQ(Bytes(exported.begin(), exported.begin() + 8), Bytes(stream + 32, stream + 40));
  EXPECT_EQ(Bytes(exported.begin() + 8, exported.end()), Bytes(stream, stream + 32));
}

TEST(SessionCipher, WithoutKeyNothingIsExportedOrEnciphered) {
  SessionCipher cipher;
  EXPECT_TRUE(cipher.ExportKey().IsEmpty());
  EXPECT_TRUE(cipher.Encipher(BufferOf({1})).IsEmpty());
  EXPECT_TRUE(cipher.Decipher(BufferOf(Bytes(8))).IsEmpty());
  EXPECT_FALSE(cipher.BeginEncipher());
  EXPECT_FALSE(cipher.BeginDecipher());
}

TEST(SessionCipher, ClearForgetsTheKey) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  cipher.Clear();
  EXPECT_TRUE(cipher.ExportKey().IsEmpty());
  EXPECT_TRUE(cipher.Encipher(BufferOf({1})).IsEmpty());
}

TEST(SessionCipher, GenericOperationsAreNotItsOwn) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  EXPECT_EQ(cipher.BlockSize(), -1);
  EXPECT_FALSE(cipher.LoadPublicKey(BufferOf({0x30, 0})));
  EXPECT_EQ(cipher.ExportKey().Length(), 136U) << "the key stays";
}

TEST(SessionCipher, MessagesComeBackExactly) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  for (const std::size_t length : {0, 1, 7, 8, 9, 1000, 4096}) {
    const Bytes plain = SomeBytes(length);
    const ByteBuffer enciphered = cipher.Encipher(BufferOf(plain));
    EXPECT_EQ(enciphered.Length(), length / 8 * 8 + 8);
    const ByteBuffer deciphered = cipher.Decipher(enciphered);
    EXPECT_EQ(deciphered.Length(), length);
    EXPECT_EQ(BytesIn(deciphered), plain);
  }
}

TEST(SessionCipher, DecipheringNothingOrPartOfABlockFails) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  const Bytes enciphered = BytesIn(cipher.Encipher(BufferOf(SomeBytes(20))));
  for (std::size_t length = 0; length < enciphered.size(); ++length) {
    if (length % 8 == 0 && length != 0) continue;
    const Bytes part(enciphered.begin(), enciphered.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_TRUE(cipher.Decipher(BufferOf(part)).IsEmpty()) << length;
    EXPECT_TRUE(cipher.DecipherWithPadding(BufferOf(part)).IsEmpty()) << length;
  }
}

TEST(SessionCipher, DecipheringWithPaddingLeavesItBehindTheText) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  Bytes expected = SomeBytes(20);
  const ByteBuffer enciphered = cipher.Encipher(BufferOf(expected));
  expected.insert(expected.end(), 4, 4);
  EXPECT_EQ(expected, BytesIn(cipher.DecipherWithPadding(enciphered)));
}

TEST(SessionCipher, EveryMessageBeginsAtTheVector) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  EXPECT_EQ(cipher.Encipher(BufferOf(SomeBytes(30))), cipher.Encipher(BufferOf(SomeBytes(30))));
}

TEST(SessionCipher, PiecesGiveWhatTheWholeMessageGives) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  const Bytes plain = SomeBytes(21);
  const Bytes whole = BytesIn(cipher.Encipher(BufferOf(plain)));
  ForEachSplit(plain, [&](const Pieces& pieces) {
    Bytes area(24);
    int used = 0;
    ASSERT_TRUE(cipher.BeginEncipher());
    for (const Bytes& piece : pieces) {
      const int count = cipher.EncipherUpdate(piece.data(), static_cast<std::uint32_t>(piece.size()),
                                              area.data() + used, static_cast<std::uint32_t>(24 - used));
      ASSERT_GE(count, 0);
      used += count;
    }
    const int last = cipher.EncipherFinal(area.data() + used, static_cast<std::uint32_t>(24 - used));
    ASSERT_EQ(used + last, 24);
    ASSERT_EQ(area, whole);
  });
  ForEachSplit(whole, [&](const Pieces& pieces) {
    Bytes area(24);
    int used = 0;
    ASSERT_TRUE(cipher.BeginDecipher());
    for (const Bytes& piece : pieces) {
      const int count = cipher.DecipherUpdate(piece.data(), static_cast<std::uint32_t>(piece.size()),
                                              area.data() + used, static_cast<std::uint32_t>(24 - used));
      ASSERT_GE(count, 0);
      used += count;
    }
    const int last = cipher.DecipherFinal(area.data() + used, static_cast<std::uint32_t>(24 - used));
    ASSERT_EQ(used + last, 21);
    ASSERT_EQ(Bytes(area.begin(), area.begin() + 21), plain);
  });
}

TEST(SessionCipher, FailedUpdateEndsTheMessage) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  std::uint8_t area[16];
  const Bytes plain = SomeBytes(16);
  ASSERT_TRUE(cipher.BeginEncipher());
  EXPECT_EQ(cipher.EncipherUpdate(plain.data(), 16, area, 15), -1);
  EXPECT_EQ(cipher.EncipherUpdate(plain.data(), 1, area, 16), -1);
  EXPECT_EQ(cipher.EncipherFinal(area, 16), -1);
  ASSERT_TRUE(cipher.BeginEncipher());
  EXPECT_EQ(cipher.DecipherUpdate(plain.data(), 16, area, 16), -1) << "the other direction";
  EXPECT_EQ(cipher.EncipherFinal(area, 16), -1);
}

TEST(SessionCipher, RoomBeyondWhatAnIntCountsIsTaken) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  std::uint8_t area[16];
  const Bytes plain = SomeBytes(16);
  ASSERT_TRUE(cipher.BeginEncipher());
  EXPECT_EQ(cipher.EncipherUpdate(plain.data(), 16, area, 0xFFFFFFFF), 16);
}

class RefusingCipher : public SessionCipher {
 public:
  bool SetAlgorithm(const AlgorithmDescriptor&, bool encipher) override {
    wasEncipher = encipher;
    return false;
  }
  bool wasEncipher = false;
};

TEST(SessionCipher, MessageCannotBeginWhenTheAlgorithmIsNotSet) {
  RefusingCipher cipher;
  MakeSeeded(cipher);
  EXPECT_FALSE(cipher.BeginEncipher());
  EXPECT_TRUE(cipher.wasEncipher);
  EXPECT_FALSE(cipher.BeginDecipher());
  EXPECT_FALSE(cipher.wasEncipher);
  EXPECT_TRUE(cipher.Encipher(BufferOf({1})).IsEmpty());
}

TEST(SessionCipher, LivesInABlockOfTheLibrary) {
  testing::AllocationSystem system;
  const SystemInForce inForce(system);
  Cipher* cipher = new SessionCipher;
  EXPECT_EQ(system.Outstanding(), 1);
  delete cipher;
  EXPECT_EQ(system.Outstanding(), 0);
}

TEST(SessionCipher, FinalEndsTheMessage) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  std::uint8_t area[16];
  ASSERT_TRUE(cipher.BeginEncipher());
  EXPECT_EQ(cipher.EncipherFinal(area, 16), 8);
  EXPECT_EQ(cipher.EncipherFinal(area, 16), -1);
  ASSERT_TRUE(cipher.BeginDecipher());
  EXPECT_EQ(cipher.DecipherFinal(area, 16), -1) << "nothing was fed";
}

TEST(SessionCipher, KeyOf2040BitsWorksAndALongerOneOnlyExports) {
  SessionCipher cipher;
  MakeSeeded(cipher, 2040);
  EXPECT_FALSE(cipher.Encipher(BufferOf({1})).IsEmpty());
  MakeSeeded(cipher, 2041);
  EXPECT_EQ(cipher.ExportKey().Length(), 8U + 256U);
  EXPECT_TRUE(cipher.Encipher(BufferOf({1})).IsEmpty());
}

TEST(SessionCipher, KeyOfNoBitsIsAKey) {
  SessionCipher cipher;
  MakeSeeded(cipher, 0);
  EXPECT_EQ(cipher.ExportKey().Length(), 8U);
  const Bytes plain = SomeBytes(9);
  EXPECT_EQ(BytesIn(cipher.Decipher(cipher.Encipher(BufferOf(plain)))), plain);
}

TEST(SessionCipher, SeedsForItsKeyAndForEveryMessageItEnciphers) {
  RecordedSystem system;
  const SystemInForce inForce(system);
  SessionCipher cipher;
  system.hasRandom = true;
  ASSERT_TRUE(cipher.MakeKey(1024, nullptr, 0));
  EXPECT_EQ(system.randomLengths, (std::vector<std::uint32_t>{128}));
  const ByteBuffer enciphered = cipher.Encipher(BufferOf({1}));
  EXPECT_EQ(system.randomLengths, (std::vector<std::uint32_t>{128, 256}));
  EXPECT_FALSE(cipher.Decipher(enciphered).IsEmpty());
  EXPECT_TRUE(cipher.BeginEncipher());
  EXPECT_TRUE(cipher.BeginDecipher());
  EXPECT_EQ(system.seedings, 2U) << "deciphering and the lower level do not seed";
}

TEST(SessionCipher, SeededKeyTakesNothingFromTheSystem) {
  RecordedSystem system;
  const SystemInForce inForce(system);
  SessionCipher cipher;
  MakeSeeded(cipher);
  EXPECT_EQ(system.seedings, 0U);
  EXPECT_TRUE(system.calls.empty());
}

TEST(SessionCipher, KeysFromEntropyDiffer) {
  SessionCipher first, second;
  ASSERT_TRUE(first.MakeKey(1024, nullptr, 0));
  ASSERT_TRUE(second.MakeKey(1024, nullptr, 0));
  EXPECT_NE(first.ExportKey(), second.ExportKey());
  EXPECT_EQ(first.ExportKey().Length(), 136U);
}

TEST(SessionCipher, MissingSeedBytesMakeNoKey) {
  SessionCipher cipher;
  MakeSeeded(cipher);
  EXPECT_FALSE(cipher.MakeKey(64, nullptr, 4));
  EXPECT_TRUE(cipher.ExportKey().IsEmpty());
}

TEST(SessionCipher, GeneratorLivesFromSeedingToTheNextClear) {
  testing::AllocationSystem system;
  const SystemInForce inForce(system);
  SessionCipher cipher;
  ASSERT_TRUE(cipher.MakeKey(256, nullptr, 0));
  EXPECT_EQ(system.Outstanding(), KeyBlocks()) << "none is left of making a key";
  ASSERT_TRUE(cipher.SeedRandom(256));
  EXPECT_EQ(system.Outstanding(), KeyBlocks() + 1);
  { const ByteBuffer enciphered = cipher.Encipher(BufferOf({1})); }
  EXPECT_EQ(system.Outstanding(), KeyBlocks() + 1) << "the message's own takes its place";
  { const ByteBuffer enciphered = cipher.Encipher(BufferOf({1})); }
  EXPECT_EQ(system.Outstanding(), KeyBlocks() + 1);
  cipher.Clear();
  EXPECT_EQ(system.Outstanding(), 0);
}

TEST(SessionCipher, WithoutKeyNothingIsSeeded) {
  RecordedSystem system;
  const SystemInForce inForce(system);
  SessionCipher cipher;
  EXPECT_TRUE(cipher.Encipher(BufferOf({1})).IsEmpty());
  EXPECT_EQ(system.seedings, 0U);
}

}  // namespace
}  // namespace kest
