// Base64, decoded and encoded: as a plain reading of the rules has it, in whatever pieces, into exactly the room that
// the outcome needs. The input is the text to decode, and the bytes to encode.
#include "crypto/base64.h"

#include "fuzz/bytes.h"

namespace kest::testing {
namespace {

struct Outcome {
  ResultCode code = resultSuccess;
  Bytes bytes;

  bool operator==(const Outcome& other) const { return code == other.code && bytes == other.bytes; }
};

Outcome Decode(const Pieces& pieces, std::size_t room) {
  Algorithm algorithm(base64Descriptor);
  HOLD(algorithm.Initialise(Direction::decipher) == resultSuccess);
  Outcome outcome;
  outcome.code = RunPieces(algorithm, Direction::decipher, pieces, &outcome.bytes, room);
  return outcome;
}

Bytes Encode(const Bytes& in, const Pieces& pieces) {
  Algorithm algorithm(base64Descriptor);
  HOLD(algorithm.Initialise(Direction::encipher) == resultSuccess);
  Bytes out;
  HOLD(RunPieces(algorithm, Direction::encipher, pieces, &out, (in.size() + 2) / 3 * 4) == resultSuccess);
  return out;
}

// RFC 4648 section 4. White space is passed over; pads are judged in the last group alone.
Outcome Expected(const Bytes& text) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
  const std::size_t pad = 64;
  std::vector<std::size_t> values;
  for (const std::uint8_t byte : text) {
    if (byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n') continue;
    values.push_back(alphabet.find(static_cast<char>(byte)));
    if (values.back() == std::string::npos) return {resultBadData, {}};
  }
  const std::size_t lastGroup = values.empty() ? 0 : (values.size() - 1) / 4 * 4;
  if (std::count(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(lastGroup), pad) != 0) {
    return {resultBadData, {}};
  }
  if (values.size() % 4 != 0) return {resultBadLength, {}};
  Outcome outcome;
  for (std::size_t at = 0; at < values.size(); at += 4) {
    const std::size_t* group = &values[at];
    if (group[0] == pad || group[1] == pad) return {resultBadData, {}};
    const std::size_t length = group[2] == pad ? 1 : group[3] == pad ? 2 : 3;
    const std::size_t bits = group[0] << 18 | group[1] << 12 | (group[2] % pad) << 6 | group[3] % pad;
    for (std::size_t i = 0; i < length; ++i) outcome.bytes.push_back(static_cast<std::uint8_t>(bits >> (16 - 8 * i)));
  }
  return outcome;
}

void HoldDecoded(const Bytes& text) {
  const Outcome expected = Expected(text);
  for (const std::size_t step : {0, 1, 3, 4, 7}) {
    HOLD(Decode(CutEvery(text, step, 2), text.size()) == expected);
    if (expected.code != resultSuccess) continue;
    HOLD(Decode(CutEvery(text, step, 1), expected.bytes.size()) == expected);
    if (!expected.bytes.empty()) {
      HOLD(Decode(CutEvery(text, step, 1), expected.bytes.size() - 1).code == resultOutputTooSmall);
    }
  }
  ByteBuffer buffer("left over", 9);
  HOLD(buffer.DecodeBase64(String(reinterpret_cast<const char*>(text.data()),
                                  static_cast<std::uint32_t>(text.size()))) == (expected.code == resultSuccess));
  HOLD(BytesIn(buffer) == expected.bytes);
}

void HoldEncoded(const Bytes& bytes) {
  const Bytes whole = Encode(bytes, {bytes});
  HOLD(whole.size() == (bytes.size() + 2) / 3 * 4);
  for (const std::size_t step : {1, 2, 5}) HOLD(Encode(bytes, CutEvery(bytes, step, 4)) == whole);
  HOLD((Expected(whole) == Outcome{resultSuccess, bytes}));
  String text("left over");
  HOLD(BufferOf(bytes).EncodeBase64(text));
  HOLD(BytesOf(Plain(text)) == whole);
}

void Check(Input input) {
  const Bytes bytes = TakeRest(input);
  HoldDecoded(bytes);
  HoldEncoded(bytes);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
