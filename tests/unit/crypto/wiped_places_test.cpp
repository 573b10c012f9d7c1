// Which places each primitive overwrites when it is done with them: all that held a key, a text or a number under way.
#include <gtest/gtest.h>

#include <string>

#include "core/byte_buffer.h"
#include "crypto/big_number.h"
#include "crypto/md5.h"
#include "crypto/message_digest.h"
#include "crypto/montgomery.h"
#include "crypto/random_object.h"
#include "crypto/rc5.h"
#include "crypto/sha1.h"
#include "support/toolkit.h"
#include "support/wipe_recorder.h"

namespace kest {
namespace {

using testing::SomeBytes;

class WipedPlaces : public ::testing::Test {
 protected:
  testing::WipeRecorder wiped;
};

TEST_F(WipedPlaces, OfDigestsAreWordsVariablesAndTheBlock) {
  const auto text = SomeBytes(200);
  std::uint8_t digest[20];
  Md5Context md5;
  Md5Init(md5);
  Md5Update(md5, text.data(), 200);
  EXPECT_EQ("64 16", wiped.Lengths()) << "three blocks in one run";
  Md5Final(md5, digest);
  EXPECT_EQ("64 16 64", wiped.Lengths());
  Sha1Context sha1;
  Sha1Init(sha1);
  Sha1Update(sha1, text.data(), 200);
  EXPECT_EQ("64 20", wiped.Lengths());
  Sha1Final(sha1, digest);
  EXPECT_EQ("64 20 64", wiped.Lengths());
}

TEST_F(WipedPlaces, OfADigestedTextIsTheDigestToo) {
  const String text("abc");
  wiped.Lengths();
  const ByteBuffer digest = DigestText(text, sha1Descriptor);
  EXPECT_EQ(20u, digest.Length());
  const std::string object = std::to_string(sizeof(AlgorithmObject)), context = std::to_string(sizeof(Sha1Context));
  // The context is cleared, two pieces are digested and ended, context and object go; the digest at last.
  EXPECT_EQ(context + " 64 20 64 " + context + " " + object + " 20", wiped.Lengths());
}

TEST_F(WipedPlaces, OfADigestOfHiddenLengthAreTheContextAndAllResults) {
  const auto text = SomeBytes(100);
  std::uint8_t digest[20];
  Sha1OfHiddenLength(text.data(), 20, 100, digest);
  // Two blocks, whose words and variables go each; then the context and the five words.
  EXPECT_EQ("64 20 64 20 " + std::to_string(sizeof(Sha1Context)) + " 20", wiped.Lengths());
}

TEST_F(WipedPlaces, OfAnExponentiationAreAllNumbersUnderWay) {
  const auto bytes = SomeBytes(12, 3);
  BigNumber modulus, exponent;
  auto odd = bytes;
  odd.front() |= 0x80;
  odd.back() |= 1;
  ASSERT_EQ(modulus.SetBytes(odd.data(), 12), 0);
  const std::uint8_t five = 5;
  ASSERT_EQ(exponent.SetBytes(&five, 1), 0);
  wiped.Lengths();
  Montgomery montgomery;
  montgomery.SetModulus(modulus);
  // From bit 95 to bit 99 four doublings, each with the difference of 12 bytes; five squarings with their products.
  EXPECT_EQ("12*5 24 12 24 12 24 12 24 12 24", wiped.Lengths());
  std::uint32_t number[3] = {1, 2, 3};
  montgomery.Exponentiate(number, number, exponent);
  // Into the form, two squarings, one multiplication; then the three numbers.
  EXPECT_EQ("12 24 12 24 12 24 12 24 256*3", wiped.Lengths());
}

TEST_F(WipedPlaces, OfAKeyTableAreTheKeysWords) {
  const auto bytes = SomeBytes(16);
  Rc5Key key;
  Rc5ExpandKey(key, 20, bytes.data(), 16);
  EXPECT_EQ("256", wiped.Lengths());
}

TEST_F(WipedPlaces, OfAnObjectAreWhatItOwnsAndItself) {
  {
    const testing::Key key(byteStringKeyDescriptor, SomeBytes(20));
    wiped.Lengths();
  }
  EXPECT_EQ("20 " + std::to_string(sizeof(KeyObject)), wiped.Lengths());
  {
    testing::Algorithm algorithm(base64Descriptor);
    ASSERT_EQ(algorithm.Initialise(Direction::encipher), 0);
    // The context is cleared before it is used.
    EXPECT_EQ("12", wiped.Lengths());
  }
  EXPECT_EQ("12 " + std::to_string(sizeof(AlgorithmObject)), wiped.Lengths());
  RandomObject* random = nullptr;
  ASSERT_EQ(CreateRandom(&random), 0);
  wiped.Lengths();
  DestroyRandom(&random);
  EXPECT_EQ(std::to_string(sizeof(RandomObject)), wiped.Lengths());
}

TEST_F(WipedPlaces, OfBase64AreTheBytesThatWaited) {
  String text;
  ByteBuffer bytes("abcd", 4);
  wiped.Lengths();
  ASSERT_TRUE(bytes.EncodeBase64(text));
  EXPECT_EQ("12", wiped.Lengths());
}

}  // namespace
}  // namespace kest
