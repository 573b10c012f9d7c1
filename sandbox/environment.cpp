#include "environment.h"

#include <cryptopp/osrng.h>

namespace sandbox {

Environment Environment::OfMachine() {
  const auto randomBytes = [](std::size_t length) {
    std::string bytes(length, '\0');
    CryptoPP::OS_GenerateRandomBlock(false, reinterpret_cast<unsigned char*>(bytes.data()), length);
    return bytes;
  };
  return {[] { return std::chrono::steady_clock::now(); }, randomBytes};
}

}  // namespace sandbox
