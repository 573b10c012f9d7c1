#include "base64.h"

#include <cryptopp/base64.h>
#include <cryptopp/filters.h>

#include "wipe.h"

namespace sandbox {
namespace {

const unsigned char* Bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

std::string EncodeBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  const bool lineBreaks = false;
  CryptoPP::StringSource source(Bytes(bytes), bytes.size(), true,
                                new CryptoPP::Base64Encoder(new CryptoPP::StringSink(text), lineBreaks));
  return text;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  CryptoPP::StringSource source(Bytes(text), text.size(), true,
                                new CryptoPP::Base64Decoder(new CryptoPP::StringSink(bytes)));
  // The decoder skips what is not in its alphabet and forgives padding; encoding again shows whether it had to.
  std::string again = EncodeBase64(bytes);
  const WipedAtEnd againWiped(again);
  if (again == text) return bytes;
  Wipe(bytes);
  return std::nullopt;
}

}  // namespace sandbox
