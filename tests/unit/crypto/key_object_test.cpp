#include "crypto/key_object.h"

#include <gtest/gtest.h>

#include "crypto/der_public_key.h"
#include "support/public_key.h"
#include "support/toolkit.h"

namespace kest {
namespace {

using testing::Bytes;
using testing::Der;
using testing::derNull;
using testing::DerNumber;
using testing::DerPublicKey;
using testing::FromHex;
using testing::Key;
using testing::PublicKey;
using testing::rsaEncryption;
using testing::SomeBytes;
using testing::operator+;

const Bytes exponent = {1, 0, 1};

Bytes Modulus(std::size_t bytes) {
  Bytes modulus = SomeBytes(bytes);
  modulus.front() |= 0x80;
  modulus.back() |= 1;
  return modulus;
}

Bytes BytesOf(const ByteItem& item) {
  return Bytes(item.bytes, item.bytes + item.length);
}

// Reads from a block of exactly the input's size, so that a step past its end is seen.
ResultCode Read(const Bytes& der, RsaPublicKey* key) {
  return ReadDerPublicKey(ByteItem{der.data(), static_cast<std::uint32_t>(der.size())}, key);
}

ResultCode Read(const Bytes& der) {
  RsaPublicKey key;
  return Read(der, &key);
}

TEST(KeyObject, KeepsACopyOfTheBytes) {
  Bytes data = {1, 2, 3};
  const Key key(byteStringKeyDescriptor, data);
  data[0] = 9;
  ByteItem item;
  ASSERT_EQ(GetByteStringKey(key, &item), 0);
  EXPECT_EQ(BytesOf(item), (Bytes{1, 2, 3}));
}

TEST(KeyObject, EmptyKeyIsAKey) {
  const Key key(byteStringKeyDescriptor, {});
  ByteItem item;
  ASSERT_EQ(GetByteStringKey(key, &item), 0);
  EXPECT_EQ(item.length, 0U);
}

TEST(KeyObject, MoreThan32767BytesGive537) {
  Key key;
  EXPECT_EQ(key.Set(byteStringKeyDescriptor, Bytes(32768)), 537);
  EXPECT_EQ(key.Set(byteStringKeyDescriptor, Bytes(32767)), 0);
}

TEST(KeyObject, SecondKeyGives517AndTheFirstStays) {
  Key key(byteStringKeyDescriptor, {1, 2, 3});
  EXPECT_EQ(key.Set(byteStringKeyDescriptor, {4}), 517);
  ByteItem item;
  ASSERT_EQ(GetByteStringKey(key, &item), 0);
  EXPECT_EQ(BytesOf(item), (Bytes{1, 2, 3}));
}

TEST(KeyObject, BytesThatAreNotThereGive531) {
  const Key key;
  EXPECT_EQ(SetKeyInfo(key, byteStringKeyDescriptor, ByteItem{nullptr, 1}), 531);
}

TEST(KeyObject, OtherKindOrNoneGives535) {
  const Key none, bytes(byteStringKeyDescriptor, {1}), rsa(rsaPublicKeyDerDescriptor, PublicKey(Modulus(64), exponent));
  ByteItem item;
  RsaPublicKey publicKey;
  KeyObject* copy;
  EXPECT_EQ(GetByteStringKey(none, &item), 535);
  EXPECT_EQ(GetRsaPublicKey(none, &publicKey), 535);
  EXPECT_EQ(GetByteStringKey(rsa, &item), 535);
  EXPECT_EQ(GetRsaPublicKey(bytes, &publicKey), 535);
  EXPECT_EQ(CopyKey(none, &copy), 535);
  EXPECT_EQ(copy, nullptr);
}

TEST(KeyObject, FailedSelfCheckGives530) {
  const Key key(byteStringKeyDescriptor, {1});
  KeyObject forged = *static_cast<KeyObject*>(key);
  ByteItem item;
  RsaPublicKey publicKey;
  for (KeyObject* object : {&forged, static_cast<KeyObject*>(nullptr)}) {
    KeyObject* copy = &forged;
    EXPECT_EQ(SetKeyInfo(object, byteStringKeyDescriptor, ByteItem{nullptr, 0}), 530);
    EXPECT_EQ(GetByteStringKey(object, &item), 530);
    EXPECT_EQ(GetRsaPublicKey(object, &publicKey), 530);
    EXPECT_EQ(CopyKey(object, &copy), 530);
    EXPECT_EQ(copy, nullptr);
  }
  KeyObject* dropped = &forged;
  DestroyKey(&dropped);
  EXPECT_EQ(dropped, nullptr);
}

TEST(KeyObject, WrongTagGives530) {
  const Key key(byteStringKeyDescriptor, {1});
  KeyObject* object = key;
  ByteItem item;
  object->tag ^= 1;
  EXPECT_EQ(GetByteStringKey(key, &item), 530);
  object->tag ^= 1;
  EXPECT_EQ(GetByteStringKey(key, &item), 0);
}

TEST(KeyObject, CopyIsIndependent) {
  KeyObject* copy = nullptr;
  const Bytes modulus = Modulus(64);
  {
    const Key key(rsaPublicKeyDerDescriptor, PublicKey(modulus, exponent));
    ASSERT_EQ(CopyKey(key, &copy), 0);
  }
  RsaPublicKey publicKey;
  ASSERT_EQ(GetRsaPublicKey(copy, &publicKey), 0);
  EXPECT_EQ(BytesOf(publicKey.modulus), modulus);
  EXPECT_EQ(BytesOf(publicKey.publicExponent), exponent);
  DestroyKey(&copy);
}

TEST(DerPublicKey, GivesModulusAndExponentWithoutSignByte) {
  const Bytes modulus = Modulus(128);
  RsaPublicKey key;
  const Bytes der = PublicKey(modulus, exponent);
  ASSERT_EQ(Read(der, &key), 0);
  EXPECT_EQ(BytesOf(key.modulus), modulus);
  EXPECT_EQ(BytesOf(key.publicExponent), exponent);
}

TEST(DerPublicKey, LeadingZeroBytesAreStripped) {
  const Bytes modulus = Modulus(128);
  RsaPublicKey key;
  const Bytes der = DerPublicKey(Der(2, Bytes{0, 0, 0} + modulus), Der(2, Bytes{0, 0, 3}));
  ASSERT_EQ(Read(der, &key), 0);
  EXPECT_EQ(BytesOf(key.modulus), modulus);
  EXPECT_EQ(BytesOf(key.publicExponent), (Bytes{3}));
}

TEST(DerPublicKey, NumberWithoutItsSignByteIsTakenAsItIsMeant) {
  const Bytes modulus = Modulus(128);
  RsaPublicKey key;
  const Bytes der = DerPublicKey(Der(2, modulus), Der(2, exponent));
  ASSERT_EQ(Read(der, &key), 0);
  EXPECT_EQ(BytesOf(key.modulus), modulus);
}

TEST(DerPublicKey, X500IdentifierAndAbsentParametersAreAccepted) {
  const Bytes modulus = DerNumber(Modulus(64)), number = DerNumber(exponent);
  EXPECT_EQ(Read(DerPublicKey(modulus, number, testing::x500Rsa)), 0);
  EXPECT_EQ(Read(DerPublicKey(modulus, number, testing::x500Rsa, {})), 0);
  EXPECT_EQ(Read(DerPublicKey(modulus, number, rsaEncryption, {})), 0);
}

TEST(DerPublicKey, OtherIdentifiersGive542) {
  const Bytes modulus = DerNumber(Modulus(64)), number = DerNumber(exponent);
  for (const char* identifier : {"2a864886f70d010102", "2a864886f70d0101", "2a864886f70d01010100", "55080102", "550801",
                                 "5508010100", "", "2a8648ce3d0201"}) {
    EXPECT_EQ(Read(DerPublicKey(modulus, number, FromHex(identifier))), 542) << identifier;
  }
}

TEST(DerPublicKey, OtherStructuresGive542) {
  const Bytes modulus = DerNumber(Modulus(64)), number = DerNumber(exponent);
  const Bytes numbers = Der(0x30, modulus + number);
  const Bytes algorithm = Der(0x30, Der(6, rsaEncryption) + derNull);
  const Bytes bits = Der(3, Bytes{0} + numbers);
  ASSERT_EQ(Read(Der(0x30, algorithm + bits)), 0);
  const struct {
    const char* what;
    Bytes der;
  } cases[] = {
      {"bytes behind the key", Der(0x30, algorithm + bits) + Bytes{0}},
      {"an element behind the bit string", Der(0x30, algorithm + bits + derNull)},
      {"a third number", Der(0x30, algorithm + Der(3, Bytes{0} + Der(0x30, modulus + number + number)))},
      {"one number", Der(0x30, algorithm + Der(3, Bytes{0} + Der(0x30, modulus)))},
      {"bytes behind the numbers", Der(0x30, algorithm + Der(3, Bytes{0} + numbers + Bytes{0}))},
      {"unused bits", Der(0x30, algorithm + Der(3, Bytes{1} + numbers))},
      {"a bit string without content", Der(0x30, algorithm + Der(3, {}))},
      {"a bit string of nothing", Der(0x30, algorithm + Der(3, {0}))},
      {"an octet string", Der(0x30, algorithm + Der(4, Bytes{0} + numbers))},
      {"a number without content", DerPublicKey(Der(2, {}), number)},
      {"parameters that are not null", DerPublicKey(modulus, number, rsaEncryption, Der(2, {1}))},
      {"a null with content", DerPublicKey(modulus, number, rsaEncryption, Der(5, {0}))},
      {"two nulls", DerPublicKey(modulus, number, rsaEncryption, derNull + derNull)},
      {"an algorithm without identifier", Der(0x30, Der(0x30, derNull) + bits)},
      {"an empty algorithm", Der(0x30, Der(0x30, {}) + bits)},
      {"no algorithm", Der(0x30, bits)},
      {"a set", Der(0x31, algorithm + bits)},
      {"the numbers alone", numbers},
      {"nothing", {}},
      {"an indefinite length", Bytes{0x30, 0x80} + algorithm + bits + Bytes{0, 0}},
      {"a long length for a short content", Bytes{0x30, 0x81, 0x03, 0x02, 0x01, 0x03}},
      {"a length of five octets", Bytes{0x30, 0x85, 0, 0, 0, 0, 1, 0}},
      {"a length beyond all bytes", Bytes{0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0}},
  };
  for (const auto& each : cases) EXPECT_EQ(Read(each.der), 542) << each.what;
}

TEST(DerPublicKey, LengthWithALeadingZeroOctetGives542) {
  const Bytes good = PublicKey(Modulus(128), exponent);
  ASSERT_EQ(good[1], 0x81) << "the key is meant to be between 128 and 255 bytes";
  const Bytes bad = Bytes{0x30, 0x82, 0x00} + Bytes(good.begin() + 2, good.end());
  EXPECT_EQ(Read(good), 0);
  EXPECT_EQ(Read(bad), 542);
}

TEST(DerPublicKey, LongFormOfAShortLengthGives542) {
  const Bytes good = PublicKey(Modulus(16), exponent);
  ASSERT_LT(good[1], 0x80);
  ASSERT_EQ(Read(good), 0);
  EXPECT_EQ(Read(Bytes{0x30, 0x81} + Bytes(good.begin() + 1, good.end())), 542);
}

TEST(DerPublicKey, LongFormOfTheLongestShortLengthGives542) {
  Bytes good;
  for (std::size_t size = 64; good.size() != 2 + 127; ++size) {
    ASSERT_LT(size, 128U);
    good = PublicKey(Modulus(size), exponent);
  }
  ASSERT_EQ(Read(good), 0);
  EXPECT_EQ(Read(Bytes{0x30, 0x81} + Bytes(good.begin() + 1, good.end())), 542);
}

TEST(DerPublicKey, LengthBeyond32BitsIsNotCutToThem) {
  const Bytes good = PublicKey(Modulus(128), exponent);
  ASSERT_EQ(good[1], 0x81);
  ASSERT_EQ(Read(good), 0);
  EXPECT_EQ(Read(Bytes{0x30, 0x85, 1, 0, 0, 0} + Bytes(good.begin() + 2, good.end())), 542);
}

TEST(DerPublicKey, IndefiniteLengthIsNotALengthOf128) {
  Bytes der;
  for (std::size_t size = 64; der.size() != 3 + 128; ++size) {
    ASSERT_LT(size, 128U);
    der = PublicKey(Modulus(size), exponent);
  }
  ASSERT_EQ(Read(der), 0);
  ASSERT_EQ(der[2], 0x80);
  der.erase(der.begin() + 1);
  EXPECT_EQ(Read(der), 542);
}

TEST(DerPublicKey, LengthBeyondTheLastByteGives542AndNothingBehindItIsRead) {
  // An exponent of zero bytes only: whoever trusted its length would strip zeros past the end.
  Bytes der = DerPublicKey(DerNumber(Modulus(16)), Der(2, {0, 0, 0}));
  ASSERT_EQ(Read(der), 0);
  ASSERT_EQ(der[der.size() - 4], 3);
  der[der.size() - 4] = 4;
  EXPECT_EQ(Read(der), 542);
}

TEST(DerPublicKey, EveryTruncationGives542) {
  for (const std::size_t size : {16, 64, 256}) {
    const Bytes der = PublicKey(Modulus(size), exponent);
    for (std::size_t length = 0; length < der.size(); ++length) {
      EXPECT_EQ(Read(Bytes(der.begin(), der.begin() + static_cast<std::ptrdiff_t>(length))), 542) << length;
    }
  }
}

TEST(DerPublicKey, EveryChangedByteIsRefusedOrGivesNumbersInsideTheInput) {
  const Bytes good = PublicKey(Modulus(64), exponent);
  const std::size_t headers = good.size() - 64 - exponent.size() - 2;
  int accepted = 0;
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (int value = 0; value < 256; ++value) {
      Bytes der = good;
      der[at] = static_cast<std::uint8_t>(value);
      RsaPublicKey key{};
      if (Read(der, &key) != 0) continue;
      ++accepted;
      ASSERT_GE(key.modulus.bytes, der.data());
      ASSERT_LE(key.modulus.bytes + key.modulus.length, der.data() + der.size());
      ASSERT_LE(key.publicExponent.bytes + key.publicExponent.length, der.data() + der.size());
      // But for the sign byte of the modulus, no byte in front of it may change.
      if (der[at] != good[at]) {
        EXPECT_TRUE(at + 1 >= headers) << at << " " << value;
      }
    }
  }
  EXPECT_GT(accepted, 64 * 255);
}

}  // namespace
}  // namespace kest
