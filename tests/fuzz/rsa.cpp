// Public keys and the raw RSA operation against OpenSSL: both read the same keys, and make the same of a block. The
// input is a byte that says how much of the rest is a block, the block, and the key in DER.
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <optional>

#include "crypto/der_public_key.h"
#include "crypto/rsa_public_cipher.h"
#include "fuzz/bytes.h"
#include "support/openssl_objects.h"
#include "support/public_key.h"

namespace kest::testing {
namespace {

struct Numbers {
  Bytes modulus, exponent;

  bool operator==(const Numbers& other) const { return modulus == other.modulus && exponent == other.exponent; }
};

std::optional<Numbers> OurNumbers(const Bytes& der) {
  RsaPublicKey key;
  if (ReadDerPublicKey({der.data(), static_cast<std::uint32_t>(der.size())}, &key) != resultSuccess) return {};
  const auto bytesIn = [](const ByteItem& item) { return Bytes(item.bytes, item.bytes + item.length); };
  return Numbers{bytesIn(key.modulus), bytesIn(key.publicExponent)};
}

Bytes Number(EVP_PKEY* key, const char* name) {
  BIGNUM* found = nullptr;
  HOLD(EVP_PKEY_get_bn_param(key, name, &found) == 1);
  const BigNum number(found);
  Bytes bytes(static_cast<std::size_t>(BN_num_bytes(found)));
  BN_bn2bin(found, bytes.data());
  return bytes;
}

// Nothing for what is no RSA key or is not the one way to write it.
std::optional<Numbers> TheirNumbers(const Bytes& der) {
  const unsigned char* at = der.data();
  const KeyObject key(d2i_PUBKEY(nullptr, &at, static_cast<long>(der.size())));
  ERR_clear_error();
  if (key == nullptr || EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA) return {};
  unsigned char* written = nullptr;
  const int length = i2d_PUBKEY(key.get(), &written);
  const Bytes again(written, written + std::max(length, 0));
  OPENSSL_free(written);
  if (again != der) return {};
  return Numbers{Number(key.get(), OSSL_PKEY_PARAM_RSA_N), Number(key.get(), OSSL_PKEY_PARAM_RSA_E)};
}

BigNum BigNumOf(const Bytes& bytes) {
  return BigNum(BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr));
}

Bytes TheirPower(const Bytes& base, const Numbers& key) {
  const BigNumContext context(BN_CTX_new());
  const BigNum b = BigNumOf(base), e = BigNumOf(key.exponent), n = BigNumOf(key.modulus), result(BN_new());
  HOLD(BN_mod_exp(result.get(), b.get(), e.get(), n.get(), context.get()) == 1);
  Bytes bytes(key.modulus.size());
  HOLD(BN_bn2binpad(result.get(), bytes.data(), static_cast<int>(bytes.size())) == static_cast<int>(bytes.size()));
  return bytes;
}

void HoldPower(const Bytes& der, const Numbers& key, Bytes block) {
  // Longer ones cost time in proportion and nothing else.
  if (key.exponent.size() > 32) return;
  RsaPublicCipher cipher;
  HOLD(cipher.LoadPublicKey(BufferOf(der)));
  block.resize(key.modulus.size());
  const Bytes ours = BytesIn(cipher.Encipher(BufferOf(block)));
  const bool isFit = !key.modulus.empty() && key.modulus.size() <= 256 && key.modulus.back() % 2 == 1;
  HOLD(ours == (isFit ? TheirPower(block, key) : Bytes()));
}

void Check(Input input) {
  const std::size_t blockLength = input.Byte();
  const Bytes block = Take(input, blockLength), der = TakeRest(input);
  const std::optional<Numbers> ours = OurNumbers(der), theirs = TheirNumbers(der);
  if (theirs) HOLD(ours == theirs);
  if (!ours) return;
  const bool isPositive = !ours->modulus.empty() && !ours->exponent.empty();
  if (isPositive) HOLD(TheirNumbers(PublicKey(ours->modulus, ours->exponent)) == ours);
  HoldPower(der, *ours, block);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
