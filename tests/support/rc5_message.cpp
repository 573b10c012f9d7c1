#include "support/rc5_message.h"

#include <vector>

#include "crypto/algorithm_object.h"
#include "crypto/key_object.h"

namespace kest::testing {
namespace {

constexpr std::size_t ivLength = 8;

const std::uint8_t* Bytes(const std::string& text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

std::string Run(Direction direction, const std::string& exportedKey, const std::string& in) {
  if (exportedKey.size() <= ivLength) return {};
  KeyObject* key = nullptr;
  AlgorithmObject* algorithm = nullptr;
  CreateKey(&key);
  CreateAlgorithm(&algorithm);
  const ByteItem item = {Bytes(exportedKey) + ivLength, static_cast<std::uint32_t>(exportedKey.size() - ivLength)};
  const Rc5ParameterBlock parameters = {16, 20, 32, Bytes(exportedKey)};
  std::vector<std::uint8_t> out(in.size() + 16);
  std::uint32_t updated = 0, finished = 0;
  const bool isDone =
      SetKeyInfo(key, byteStringKeyDescriptor, item) == resultSuccess &&
      SetAlgorithmInfo(algorithm, rc5CbcPadDescriptor, &parameters) == resultSuccess &&
      InitialiseAlgorithm(algorithm, direction, key, libraryChooser) == resultSuccess &&
      UpdateAlgorithm(algorithm, direction, Bytes(in), static_cast<std::uint32_t>(in.size()), out.data(),
                      static_cast<std::uint32_t>(out.size()), &updated) == resultSuccess &&
      FinishAlgorithm(algorithm, direction, out.data() + updated, static_cast<std::uint32_t>(out.size()) - updated,
                      &finished) == resultSuccess;
  DestroyAlgorithm(&algorithm);
  DestroyKey(&key);
  return isDone ? std::string(out.begin(), out.begin() + updated + finished) : std::string();
}

}  // namespace

std::string EncipherRc5(const std::string& exportedKey, const std::string& plain) {
  return Run(Direction::encipher, exportedKey, plain);
}

std::string DecipherRc5(const std::string& exportedKey, const std::string& cipher) {
  return Run(Direction::decipher, exportedKey, cipher);
}

}  // namespace kest::testing
