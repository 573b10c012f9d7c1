// Whole messages under a session key as a server sees it: `exportedKey` is iv (8 bytes) and key bytes. RC5-CBC-Pad with
// 20 rounds, from the library's own toolkit.
#pragma once

#include <string>

namespace kest::testing {

std::string EncipherRc5(const std::string& exportedKey, const std::string& plain);
// Empty when the padding is bad.
std::string DecipherRc5(const std::string& exportedKey, const std::string& cipher);

}  // namespace kest::testing
