// The base64 operations of ByteBuffer: they belong to the class in core and need the codec.
#include "core/byte_buffer.h"
#include "core/memory.h"
#include "crypto/base64.h"

namespace kest {
namespace {

bool Decode(const String& text, std::uint8_t* out, std::uint32_t outMax, std::uint32_t* length) {
  Base64Context context{};
  std::uint32_t last = 0;
  ResultCode code = Base64DecodeUpdate(context, out, length, outMax, text.Text(), text.Length());
  if (code == resultSuccess) code = Base64DecodeFinal(context, out + *length, &last, outMax - *length);
  *length += last;
  Wipe(&context, sizeof context);
  return code == resultSuccess;
}

void Encode(const std::uint8_t* bytes, std::uint32_t length, char* out, std::uint32_t outMax) {
  Base64Context context{};
  std::uint32_t written, last;
  Base64EncodeUpdate(context, out, &written, outMax, bytes, length);
  Base64EncodeFinal(context, out + written, &last, outMax - written);
  Wipe(&context, sizeof context);
}

}  // namespace

bool ByteBuffer::DecodeBase64(const String& text) {
  std::uint32_t length = 0;
  if (IsExternal()) {
    const bool fits = Decode(text, external, externalCapacity, &length);
    externalLength = fits ? length : 0;
    return fits;
  }
  ByteBuffer decoded;
  const std::uint32_t bound = text.Length() / 4 * 3 + 3;  // bytes
  std::uint8_t* bytes = decoded.TakeBuffer(bound);
  const bool isText = Decode(text, bytes, bound, &length);
  decoded.ReturnBuffer();
  decoded.SetLength(isText ? length : 0);
  *this = decoded;
  return isText;
}

bool ByteBuffer::EncodeBase64(String& text) const {
  const std::uint64_t bound = std::uint64_t{Length() / 3} * 4 + 8;  // characters
  const std::uint64_t exact = (std::uint64_t{Length()} + 2) / 3 * 4;
  String encoded;
  encoded.Reserve(bound);
  Encode(Bytes(), Length(), encoded.TakeBuffer(static_cast<std::uint32_t>(exact)), static_cast<std::uint32_t>(exact));
  encoded.ReturnBuffer();
  text = encoded;
  return true;
}

}  // namespace kest
