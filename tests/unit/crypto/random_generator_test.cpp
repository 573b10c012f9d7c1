#include "crypto/random_generator.h"

#include <gtest/gtest.h>

#include <cstring>

#include "crypto/entropy.h"
#include "crypto/md5_random.h"
#include "crypto/random_object.h"
#include "support/recorded_system.h"
#include "support/vector_file.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::ForEachVector;
using testing::FromHex;
using testing::RecordedSystem;
using testing::SystemInForce;
using testing::ToHex;
using testing::VectorRecord;

Bytes Draw(RandomGenerator& generator, std::uint32_t count) {
  Bytes bytes(count);
  EXPECT_TRUE(generator.GenerateBytes(bytes.data(), count));
  return bytes;
}

void Seed(RandomGenerator& generator, Bytes seed) {
  ASSERT_TRUE(generator.SeedFromBytes(seed.data(), static_cast<std::uint16_t>(seed.size())));
  EXPECT_EQ(seed, Bytes(seed.size(), 0)) << "a seed does not outlive the call";
}

// The state that follows `state` after one block, for a generator seeded once.
std::string StateAfter(const char* state) {
  Md5Random random;
  Md5RandomInit(random);
  Md5RandomSeed(random, nullptr, 0);
  std::uint8_t out[16];
  Md5RandomGenerate(random, out, 16);
  const Bytes bytes = FromHex(state);
  std::copy(bytes.begin(), bytes.end(), random.state);
  Md5RandomGenerate(random, out, 16);
  return ToHex(random.state, 16);
}

TEST(RandomGenerator, VectorsOfTheCarryThatIsMeant) {
  ForEachVector("md5_random.txt", [](VectorRecord& record) {
    RandomGenerator generator;
    Seed(generator, record.Hex("Seed"));
    const Bytes stream = record.Hex("Stream");
    EXPECT_EQ(Draw(generator, static_cast<std::uint32_t>(stream.size())), stream);
  });
}

TEST(RandomGenerator, OrdinaryByteCountsUpWithoutCarry) {
  EXPECT_EQ(StateAfter("00112233445566778899aabbccddee05"), "00112233445566778899aabbccddee06");
}

TEST(RandomGenerator, ZeroByteCarriesAlthoughItDoesNotOverflow) {
  EXPECT_EQ(StateAfter("00112233445566778899aabbccddee00"), "00112233445566778899aabbccddef01");
  EXPECT_EQ(StateAfter("00112233445566778899aabb05000000"), "00112233445566778899aabb06010101");
  EXPECT_EQ(StateAfter("00000000000000000000000000000000"), "01010101010101010101010101010101");
}

TEST(RandomGenerator, OverflowingByteDoesNotCarry) {
  EXPECT_EQ(StateAfter("00112233445566778899aabbccddeeff"), "00112233445566778899aabbccddee00");
}

TEST(RandomGenerator, SecondSeedUpdateAdvancesByTheIncrement) {
  Md5Random random;
  Md5RandomInit(random);
  Md5RandomSeed(random, nullptr, 0);
  // MD5 of nothing, its last byte made odd.
  EXPECT_EQ(ToHex(random.increment, 16), "d41d8cd98f00b204e9800998ecf8427f");
  EXPECT_EQ(random.seedPhase, 1U);
  Md5RandomSeed(random, nullptr, 0);
  EXPECT_EQ(random.seedPhase, 0U);
  std::uint8_t out[16];
  Md5RandomGenerate(random, out, 0);
  // MD5 of nothing plus the increment: d41d...427e + d41d...427f.
  EXPECT_EQ(ToHex(random.state, 16), "d41d8cd98f00b204e9800998ecf8427e");
  Md5RandomGenerate(random, out, 16);
  EXPECT_EQ(ToHex(random.state, 16), "a83b19b31e016409d3001331d9f084fd");
}

TEST(RandomGenerator, BeginsAnewWhateverLaysInItsPlace) {
  const auto drawn = [](int before) {
    alignas(Md5Random) std::uint8_t place[sizeof(Md5Random)];
    std::memset(place, before, sizeof place);
    auto& random = *reinterpret_cast<Md5Random*>(place);
    Md5RandomInit(random);
    Md5RandomSeed(random, reinterpret_cast<const std::uint8_t*>("a"), 1);
    Bytes bytes(40);
    Md5RandomGenerate(random, bytes.data(), 40);
    return ToHex(bytes);
  };
  EXPECT_EQ(drawn(0), drawn(0xFF));
}

TEST(RandomGenerator, SeedAfterGenerationGoesOnFromTheState) {
  Md5Random random;
  std::uint8_t out[16];
  Md5RandomInit(random);
  Md5RandomSeed(random, reinterpret_cast<const std::uint8_t*>("a"), 1);
  Md5RandomGenerate(random, out, 16);
  Bytes fed(random.state, random.state + 16);
  fed.push_back('b');
  Md5RandomSeed(random, reinterpret_cast<const std::uint8_t*>("b"), 1);
  Md5RandomGenerate(random, out, 0);
  Md5Context context;
  std::uint8_t expected[16];
  Md5Init(context);
  Md5Update(context, fed.data(), 17);
  Md5Final(context, expected);
  EXPECT_EQ(ToHex(random.state, 16), ToHex(expected, 16));
}

TEST(RandomGenerator, ThirdSeedUpdateKeepsThePhaseAtZero) {
  Md5Random random;
  Md5RandomInit(random);
  for (int i = 0; i < 3; ++i) Md5RandomSeed(random, nullptr, 0);
  EXPECT_EQ(random.seedPhase, 0U);
  std::uint8_t out[16];
  Md5RandomGenerate(random, out, 16);
  EXPECT_EQ(ToHex(random.state, 16), "a83b19b31e016409d3001331d9f084fd");
}

TEST(RandomGenerator, NewSeedDropsWhatWasLeftOfTheOutput) {
  Md5Random random;
  std::uint8_t out[16];
  Md5RandomInit(random);
  Md5RandomSeed(random, nullptr, 0);
  Md5RandomGenerate(random, out, 3);
  EXPECT_EQ(random.available, 13U);
  Md5RandomSeed(random, nullptr, 0);
  Md5RandomGenerate(random, out, 0);
  EXPECT_EQ(random.available, 0U);
}

TEST(RandomGenerator, SameSeedGivesTheSameStream) {
  RandomGenerator first, second;
  Seed(first, {1, 2, 3, 4});
  Seed(second, {1, 2, 3, 4});
  EXPECT_EQ(Draw(first, 1000), Draw(second, 1000));
  Seed(second, {1, 2, 3, 5});
  EXPECT_NE(Draw(first, 32), Draw(second, 32));
}

TEST(RandomGenerator, TwentyBytesAreSixteenAndThenFour) {
  RandomGenerator whole, pieces;
  Seed(whole, {7});
  Seed(pieces, {7});
  Bytes together = Draw(pieces, 16);
  const Bytes rest = Draw(pieces, 4);
  together.insert(together.end(), rest.begin(), rest.end());
  EXPECT_EQ(Draw(whole, 20), together);
}

TEST(RandomGenerator, StreamDoesNotDependOnHowItIsDrawn) {
  RandomGenerator whole;
  Seed(whole, {7, 8});
  const Bytes expected = Draw(whole, 200);
  for (std::uint32_t step = 1; step <= 50; ++step) {
    RandomGenerator generator;
    Seed(generator, {7, 8});
    Bytes drawn;
    while (drawn.size() < 200) {
      const Bytes piece =
          Draw(generator, std::min<std::uint32_t>(step, 200 - static_cast<std::uint32_t>(drawn.size())));
      drawn.insert(drawn.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(drawn, expected) << step;
  }
}

TEST(RandomGenerator, OnlyTheLow16BitsOfTheLengthCount) {
  RandomGenerator generator, twin;
  Seed(generator, {7});
  Seed(twin, {7});
  Bytes bytes(6, 0xEE);
  ASSERT_TRUE(generator.GenerateBytes(bytes.data(), 0x10005));
  EXPECT_EQ(bytes[5], 0xEE);
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 5), Draw(twin, 5));
  Bytes untouched(1, 0xEE);
  ASSERT_TRUE(generator.GenerateBytes(untouched.data(), 0x10000));
  EXPECT_EQ(untouched[0], 0xEE);
}

TEST(RandomGenerator, GeneratingWithoutSeedFails) {
  RandomGenerator generator;
  std::uint8_t byte;
  EXPECT_FALSE(generator.GenerateBytes(&byte, 1));
  Seed(generator, {1});
  EXPECT_TRUE(generator.GenerateBytes(&byte, 1));
  generator.Destroy();
  EXPECT_FALSE(generator.GenerateBytes(&byte, 1));
  generator.Destroy();
}

TEST(RandomGenerator, SeedOfNoBytesIsASeed) {
  RandomGenerator generator;
  ASSERT_TRUE(generator.SeedFromBytes(nullptr, 0));
  // MD5 of the MD5 of nothing.
  EXPECT_EQ(ToHex(Draw(generator, 16)), "59adb24ef3cdbe0297f05b395827453f");
}

TEST(SeedFromEntropy, MakesTheStreamThatTheRulesSay) {
  int seen = 0;
  ForEachVector("entropy_seeds.txt", [&seen](VectorRecord& record) {
    RecordedSystem system;
    const SystemInForce inForce(system);
    system.hasScreen = system.hasCursor = record.Number("Screen") != 0;
    std::uint8_t state[stateRecordLength];
    const std::uint16_t stateLength = CollectSystemState(state);
    EXPECT_EQ(ToHex(state, stateLength), record.Text("Record"));
    RandomGenerator generator;
    ASSERT_TRUE(generator.SeedFromEntropy(static_cast<std::uint16_t>(record.Number("Count"))));
    const Bytes stream = record.Hex("Stream");
    EXPECT_EQ(ToHex(Draw(generator, static_cast<std::uint32_t>(stream.size()))), ToHex(stream));
    ++seen;
  });
  EXPECT_GE(seen, 30);
}

// The seed's digest is the first state, so the stream tells seeds apart.
Bytes StreamFor(RecordedSystem& system, std::uint16_t count) {
  const SystemInForce inForce(system);
  RandomGenerator generator;
  EXPECT_TRUE(generator.SeedFromEntropy(count));
  return Draw(generator, 32);
}

TEST(SeedFromEntropy, FailedCaptureIsNoFailure) {
  RecordedSystem system, screenless;
  screenless.hasScreen = false;
  system.linesRead = 0;
  // No line came: the block is as clear as without a screen.
  EXPECT_EQ(StreamFor(system, 128), StreamFor(screenless, 128));
}

TEST(SeedFromEntropy, LinesOfAFailedCaptureStayButAreNotFolded) {
  RecordedSystem partial, screenless;
  partial.linesRead = 239;
  screenless.hasScreen = false;
  EXPECT_NE(StreamFor(partial, 128), StreamFor(screenless, 128));
  // The first line alone covers the 128 bytes of the seed: more lines change nothing when nothing is folded.
  RecordedSystem oneLine;
  oneLine.linesRead = 1;
  EXPECT_EQ(StreamFor(partial, 128), StreamFor(oneLine, 128));
}

TEST(SeedFromEntropy, SystemBytesAreLaidOverTheSeed) {
  RecordedSystem system;
  system.hasScreen = system.hasCursor = system.hasDisk = system.hasTime = false;
  system.hasRandom = true;
  // Without a screen the block is the 36-byte record again and again; 16 bytes of it are the seed.
  Bytes seed = FromHex("04030201121122214d00000074737271");
  for (std::uint32_t i = 0; i < 16; ++i) seed[i] ^= RecordedSystem::RandomByte(i);
  RandomGenerator expected;
  Seed(expected, seed);
  EXPECT_EQ(StreamFor(system, 16), Draw(expected, 32));
  EXPECT_EQ(system.randomLengths, (std::vector<std::uint32_t>{16}));
}

TEST(SeedFromEntropy, SystemBytesStopWithTheSeed) {
  RecordedSystem system;
  system.hasRandom = true;
  StreamFor(system, 65535);
  std::uint32_t total = 0;
  for (const std::uint32_t length : system.randomLengths) total += length;
  EXPECT_EQ(total, 38400U);
}

TEST(SeedFromEntropy, NoMoreSystemBytesAreAskedForThanAreUsed) {
  RecordedSystem system;
  system.hasRandom = true;
  StreamFor(system, 600);
  EXPECT_EQ(system.randomLengths, (std::vector<std::uint32_t>{256, 256, 88}));
}

TEST(SeedFromEntropy, SecondSeedDestroysTheFirstGenerator) {
  RecordedSystem system;
  const SystemInForce inForce(system);
  RandomGenerator generator, twin;
  Seed(generator, {1});
  ASSERT_TRUE(generator.SeedFromEntropy(48));
  ASSERT_TRUE(twin.SeedFromEntropy(48));
  EXPECT_EQ(Draw(generator, 48), Draw(twin, 48));
}

}  // namespace
}  // namespace kest
