// SHA-1 and MD5 against Crypto++, in whatever pieces. The input's first two bytes say how it is cut.
#define CRYPTOPP_ENABLE_NAMESPACE_WEAK 1
#include <cryptopp/md5.h>
#include <cryptopp/sha.h>

#include "crypto/message_digest.h"
#include "fuzz/bytes.h"

namespace kest::testing {
namespace {

template <typename Hash>
Bytes TheirDigest(const Bytes& in) {
  Hash hash;
  Bytes digest(hash.DigestSize());
  hash.CalculateDigest(digest.data(), in.data(), in.size());
  return digest;
}

void HoldDigest(const AlgorithmDescriptor& descriptor, const Bytes& in, const Pieces& pieces, const Bytes& expected,
                const Bytes& expectedOfText) {
  Algorithm algorithm(descriptor);
  HOLD(algorithm.Initialise(Direction::digest) == resultSuccess);
  // The object is ready for the next message after each.
  for (const Pieces& cut : {pieces, Pieces{in}}) {
    Bytes out;
    HOLD(RunPieces(algorithm, Direction::digest, cut, &out, expected.size()) == resultSuccess);
    HOLD(out == expected);
  }
  const String text(reinterpret_cast<const char*>(in.data()), static_cast<std::uint32_t>(in.size()));
  HOLD(BytesIn(DigestText(text, descriptor)) == expectedOfText);
}

void Check(Input input) {
  const std::size_t step = input.Byte(), first = input.Byte();
  const Bytes in = TakeRest(input);
  Bytes text = in;
  text.push_back(0);  // a text's digest is that of its zero byte too
  const Pieces pieces = CutEvery(in, step, first);
  HoldDigest(sha1Descriptor, in, pieces, TheirDigest<CryptoPP::SHA1>(in), TheirDigest<CryptoPP::SHA1>(text));
  HoldDigest(md5Descriptor, in, pieces, TheirDigest<CryptoPP::Weak::MD5>(in), TheirDigest<CryptoPP::Weak::MD5>(text));
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
