// Base64 against Crypto++, in both directions. The input is the bytes to encode, and the text to decode.
#include <cryptopp/base64.h>
#include <cryptopp/filters.h>

#include "fuzz/bytes.h"

namespace kest::testing {
namespace {

std::string TheirEncoding(const std::string& in) {
  std::string out;
  CryptoPP::StringSource(in, true, new CryptoPP::Base64Encoder(new CryptoPP::StringSink(out), false));
  return out;
}

std::string TheirDecoding(const std::string& in) {
  std::string out;
  CryptoPP::StringSource(in, true, new CryptoPP::Base64Decoder(new CryptoPP::StringSink(out)));
  return out;
}

std::string Plain(const ByteBuffer& bytes) {
  return std::string(reinterpret_cast<const char*>(bytes.Bytes()), bytes.Length());
}

void Check(const std::string& in) {
  String text;
  HOLD(ByteBuffer(in.data(), static_cast<std::uint32_t>(in.size())).EncodeBase64(text));
  HOLD(testing::Plain(text) == TheirEncoding(in));
  HOLD(TheirDecoding(testing::Plain(text)) == in);

  // What follows a pad is passed over by the one and judged by the other.
  const std::size_t pad = in.find('=');
  if (pad != std::string::npos && in.find_first_not_of("=", pad) != std::string::npos) return;
  ByteBuffer decoded;
  if (decoded.DecodeBase64(Kest(in))) HOLD(Plain(decoded) == TheirDecoding(in));
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length).Rest());
  return 0;
}
