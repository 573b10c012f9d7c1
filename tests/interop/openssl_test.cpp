// Raw RSA under public keys that OpenSSL made and wrote, and with moduli of every odd kind against its BN_mod_exp.
#include <gtest/gtest.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>

#include "crypto/rsa_public_cipher.h"
#include "interop/random_input.h"
#include "support/openssl_objects.h"
#include "support/public_key.h"

namespace kest {
namespace {

using testing::BigNum;
using testing::BigNumContext;
using testing::Bytes;
using testing::Freer;
using testing::KeyObject;
using testing::PublicKey;
using testing::RandomInput;

using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Freer<EVP_PKEY_CTX_free>>;

ByteBuffer BufferOf(const Bytes& bytes) {
  return ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}
Bytes BytesIn(const ByteBuffer& buffer) {
  return Bytes(buffer.Bytes(), buffer.Bytes() + buffer.Length());
}

KeyObject MakeKeyPair(int bits, unsigned long exponent) {
  KeyContext context(EVP_PKEY_CTX_new_id(EVP_PKEY_RSA, nullptr));
  BigNum e(BN_new());
  EVP_PKEY* pair = nullptr;
  if (BN_set_word(e.get(), exponent) != 1 || EVP_PKEY_keygen_init(context.get()) != 1 ||
      EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), bits) != 1 ||
      EVP_PKEY_CTX_set1_rsa_keygen_pubexp(context.get(), e.get()) != 1 || EVP_PKEY_keygen(context.get(), &pair) != 1) {
    return nullptr;
  }
  return KeyObject(pair);
}

Bytes DerOf(EVP_PKEY* pair) {
  unsigned char* der = nullptr;
  const int length = i2d_PUBKEY(pair, &der);
  const Bytes bytes(der, der + (length > 0 ? length : 0));
  OPENSSL_free(der);
  return bytes;
}

Bytes Decipher(EVP_PKEY* pair, const Bytes& cipher) {
  KeyContext context(EVP_PKEY_CTX_new(pair, nullptr));
  Bytes out(cipher.size());
  std::size_t length = out.size();
  EXPECT_EQ(EVP_PKEY_decrypt_init(context.get()), 1);
  EXPECT_EQ(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_NO_PADDING), 1);
  EXPECT_EQ(EVP_PKEY_decrypt(context.get(), out.data(), &length, cipher.data(), cipher.size()), 1);
  out.resize(length);
  return out;
}

TEST(OpensslRsa, ItsPrivateKeyOpensWhatWeEncipher) {
  RandomInput random;
  SCOPED_TRACE(random.Seed());
  for (const int bits : {512, 777, 1024, 1031, 2041, 2048}) {
    for (const unsigned long exponent : {3UL, 17UL, 65537UL}) {
      const KeyObject pair = MakeKeyPair(bits, exponent);
      ASSERT_NE(pair, nullptr) << bits << " " << exponent;
      RsaPublicCipher cipher;
      ASSERT_TRUE(cipher.LoadPublicKey(BufferOf(DerOf(pair.get()))));
      const std::size_t block = (static_cast<std::size_t>(bits) + 7) / 8;
      ASSERT_EQ(cipher.BlockSize(), static_cast<int>(block));
      Bytes plain = random.OfLength(block);
      plain[0] = 0;
      const ByteBuffer enciphered = cipher.Encipher(BufferOf(plain));
      ASSERT_EQ(enciphered.Length(), block);
      EXPECT_EQ(Decipher(pair.get(), BytesIn(enciphered)), plain) << bits << " " << exponent;
    }
  }
}

Bytes TheirPower(const Bytes& base, const Bytes& exponent, const Bytes& modulus) {
  const BigNumContext context(BN_CTX_new());
  const BigNum b(BN_bin2bn(base.data(), static_cast<int>(base.size()), nullptr));
  const BigNum e(BN_bin2bn(exponent.data(), static_cast<int>(exponent.size()), nullptr));
  const BigNum n(BN_bin2bn(modulus.data(), static_cast<int>(modulus.size()), nullptr));
  const BigNum result(BN_new());
  EXPECT_EQ(BN_mod_exp(result.get(), b.get(), e.get(), n.get(), context.get()), 1);
  Bytes bytes(modulus.size());
  EXPECT_EQ(BN_bn2binpad(result.get(), bytes.data(), static_cast<int>(bytes.size())), static_cast<int>(bytes.size()));
  return bytes;
}

TEST(OpensslRsa, PowersAgreeForModuliOfEveryLengthAndBlocksAboveThem) {
  RandomInput random;
  SCOPED_TRACE(random.Seed());
  for (std::uint32_t bits = 2; bits <= 2048; bits += bits < 140 ? 1 : 1 + random.Below(40)) {
    const std::size_t block = (bits + 7) / 8;
    Bytes modulus = random.OfLength(block);
    const std::uint32_t topBits = (bits - 1) % 8;
    modulus[0] = static_cast<std::uint8_t>((modulus[0] & ((1U << topBits) - 1)) | 1U << topBits);
    modulus.back() |= 1;
    // Words of all ones bring the rare carries.
    if (random.Below(3) == 0) std::fill(modulus.begin() + 1, modulus.end(), std::uint8_t{0xFF});
    for (const Bytes& exponent : {Bytes{3}, Bytes{17}, Bytes{1, 0, 1}, random.OfLength(5)}) {
      Bytes in = random.OfLength(block);
      if (random.Below(3) == 0) in.assign(block, 0xFF);
      RsaPublicCipher cipher;
      ASSERT_TRUE(cipher.LoadPublicKey(BufferOf(PublicKey(modulus, exponent))));
      ASSERT_EQ(BytesIn(cipher.Encipher(BufferOf(in))), TheirPower(in, exponent, modulus)) << bits;
    }
  }
}

}  // namespace
}  // namespace kest
