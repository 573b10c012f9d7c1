// RC5-CBC-Pad against Crypto++: what one enciphers the other deciphers, and both refuse the same messages. The input is
// the number of rounds, the key's length, the pieces' length, the key, the initialisation vector (8 bytes), the
// message.
#include <cryptopp/filters.h>
#include <cryptopp/modes.h>
#include <cryptopp/rc5.h>

#include <optional>

#include "fuzz/bytes.h"

namespace kest::testing {
namespace {

struct Setting {
  std::uint32_t rounds;
  std::size_t step;
  Bytes key, iv;
};

template <typename Mode>
std::optional<Bytes> Theirs(const Setting& setting, const Bytes& in) {
  Mode mode;
  mode.SetKey(setting.key.data(), setting.key.size(),
              CryptoPP::MakeParameters(CryptoPP::Name::Rounds(), static_cast<int>(setting.rounds))(
                  CryptoPP::Name::IV(), CryptoPP::ConstByteArrayParameter(setting.iv.data(), setting.iv.size())));
  std::string out;
  try {
    CryptoPP::StringSource(in.data(), in.size(), true,
                           new CryptoPP::StreamTransformationFilter(mode, new CryptoPP::StringSink(out),
                                                                    CryptoPP::BlockPaddingSchemeDef::PKCS_PADDING));
  } catch (const CryptoPP::InvalidCiphertext&) {
    return std::nullopt;
  }
  return BytesOf(out);
}

std::optional<Bytes> Ours(const Setting& setting, Direction direction, const Bytes& in, std::size_t step) {
  const Rc5ParameterBlock block = {16, setting.rounds, 32, setting.iv.data()};
  const Key key(byteStringKeyDescriptor, setting.key);
  Algorithm algorithm(rc5CbcPadDescriptor, &block);
  HOLD(algorithm.Initialise(direction, key) == resultSuccess);
  Bytes out;
  const ResultCode code = RunPieces(algorithm, direction, CutEvery(in, step, 5), &out, in.size() + 8);
  if (code != resultSuccess)
    HOLD(direction == Direction::decipher && (code == resultBadData || code == resultBadLength));
  return code == resultSuccess ? std::optional<Bytes>(out) : std::nullopt;
}

void Check(Input input) {
  // Crypto++ has neither 0 rounds nor empty keys.
  Setting setting;
  setting.rounds = std::max<std::uint32_t>(1, input.Byte());
  const std::size_t keyLength = std::max<std::size_t>(1, input.Byte());
  setting.step = input.Byte();
  setting.key = Take(input, keyLength);
  setting.key.resize(keyLength);
  setting.iv = Take(input, 8);
  setting.iv.resize(8);
  const Bytes message = TakeRest(input);

  using Mode = CryptoPP::CBC_Mode<CryptoPP::RC5>;
  const std::optional<Bytes> sealed = Ours(setting, Direction::encipher, message, setting.step);
  HOLD(sealed == Theirs<Mode::Encryption>(setting, message));
  HOLD(sealed->size() == message.size() / 8 * 8 + 8);
  HOLD(Ours(setting, Direction::decipher, *sealed, setting.step) == message);

  const std::optional<Bytes> opened = Ours(setting, Direction::decipher, message, setting.step);
  HOLD(opened == Theirs<Mode::Decryption>(setting, message));
  HOLD(opened == Ours(setting, Direction::decipher, message, 0));
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
