// What the algorithms make of secrets on their way, computed from their standards: the words that would be found if a
// block or an array were not wiped.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "secrets/secret_windows.h"

namespace kest::testing {

// The key of 128 bytes as the expansion leaves its words, and the table that it makes, for 20 rounds (RFC 2040).
void AddKeyWords(SecretWindows& secrets, const std::string& key);

// Every block's schedule of 80 words and the chaining values of SHA-1 (FIPS 180-1) over `text`, and its digest, in base64 too.
void AddSha1(SecretWindows& secrets, const std::string& text);

// The generator's states and blocks for `drawn` bytes, and the chaining values of MD5 on the way; answers the bytes.
std::string AddGenerator(SecretWindows& secrets, const std::string& seed, std::size_t drawn);

// The folded entropy block on its way to `seedLength` bytes of seed; answers the seed.
std::string AddEntropy(SecretWindows& secrets, const std::string& screen, const std::string& systemBytes,
                       std::uint16_t seedLength);

// What the modular exponentiation by 65537 makes of every block of 128 bytes under the modulus of ConfigureServer.
void AddRsaBlocks(SecretWindows& secrets, const std::string& blocks);

}  // namespace kest::testing
