#include "secrets/derived_secrets.h"

#include <algorithm>
#include <cstring>

#include "core/byte_buffer.h"
#include "crypto/byte_order.h"
#include "crypto/entropy.h"
#include "crypto/md5_random.h"
#include "crypto/montgomery.h"
#include "crypto/sha1.h"

namespace kest::testing {
namespace {

const std::uint8_t* Bytes(const std::string& text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

// As they lie in memory.
template <typename Words>
std::string Raw(const Words& words) {
  return std::string(reinterpret_cast<const char*>(words.data()), words.size() * sizeof words[0]);
}

constexpr std::uint32_t modulusWords = 32;
using Number = std::vector<std::uint32_t>;

Number NumberOf(const std::string& bigEndian) {
  Number number(modulusWords);
  for (std::uint32_t i = 0; i < modulusWords; ++i) number[i] = LoadBig32(Bytes(bigEndian) + 4 * (modulusWords - 1 - i));
  return number;
}

Number Modulus() {
  std::string bytes(128, '\x5A');
  bytes.front() = '\xC1';
  bytes.back() = '\x0F';
  return NumberOf(bytes);
}

// a - b without the bits above; the last borrow is in `isBelow`.
Number Minus(const Number& a, const Number& b, bool* isBelow) {
  Number difference(modulusWords);
  std::uint64_t borrow = 0;
  for (std::uint32_t i = 0; i < modulusWords; ++i) {
    borrow = std::uint64_t{a[i]} - b[i] - borrow;
    difference[i] = static_cast<std::uint32_t>(borrow);
    borrow >>= 63;
  }
  *isBelow = borrow != 0;
  return difference;
}

// number * 2^1024 modulo the modulus, by doubling.
Number MontgomeryForm(Number number) {
  const Number modulus = Modulus();
  for (std::uint32_t step = 0; step < 32 * modulusWords; ++step) {
    const bool carry = number.back() >> 31 != 0;
    for (std::uint32_t i = modulusWords; i-- != 0;) number[i] = number[i] << 1 | (i != 0 ? number[i - 1] >> 31 : 0);
    bool isBelow = false;
    const Number less = Minus(number, modulus, &isBelow);
    if (carry || !isBelow) number = less;
  }
  return number;
}

Number Power(const Number& number, std::uint32_t exponent) {
  BigNumber modulus, power;
  modulus.SetWords(Modulus().data(), modulusWords);
  power.SetWords(&exponent, 1);
  Montgomery montgomery;
  montgomery.SetModulus(modulus);
  Number result(modulusWords);
  montgomery.Exponentiate(result.data(), number.data(), power);
  return result;
}

// A number below the modulus, the one that lies the modulus above it, and the one below.
void AddNumber(SecretWindows& secrets, const std::string& name, const Number& number) {
  bool isBelow = false;
  Number zero(modulusWords);
  secrets.Add(name, Raw(number));
  secrets.Add(name + " less the modulus", Raw(Minus(number, Modulus(), &isBelow)));
  secrets.Add(name + " and the modulus", Raw(Minus(number, Minus(zero, Modulus(), &isBelow), &isBelow)));
}

void FoldInto(std::string& block, std::size_t width) {
  for (std::size_t at = width; at + width < block.size(); at += width) {
    for (std::size_t i = 0; i < width; ++i) block[i] = static_cast<char>(block[i] ^ block[at + i]);
  }
}

}  // namespace

void AddKeyWords(SecretWindows& secrets, const std::string& key) {
  std::vector<std::uint32_t> words(32), table(42);
  for (std::uint32_t i = 0; i < 32; ++i) words[i] = LoadLittle32(Bytes(key) + 4 * i);
  table[0] = 0xB7E15163;
  for (std::uint32_t i = 1; i < 42; ++i) table[i] = table[i - 1] + 0x9E3779B9;
  std::uint32_t a = 0, b = 0;
  for (std::uint32_t step = 0; step < 3 * 42; ++step) {
    a = table[step % 42] = RotateLeft(table[step % 42] + a + b, 3);
    b = words[step % 32] = RotateLeft(words[step % 32] + a + b, a + b);
  }
  secrets.Add("key words", Raw(words));
  secrets.Add("key table", Raw(table));
}

void AddSha1(SecretWindows& secrets, const std::string& text) {
  Sha1Context context;
  Sha1Init(context);
  // The blocks as the padding ends them.
  std::string padded = text + '\x80';
  padded.resize((padded.size() + 8 + 63) / 64 * 64);
  std::uint8_t bits[4];
  StoreBig32(bits, static_cast<std::uint32_t>(text.size() * 8));
  padded.replace(padded.size() - 4, 4, reinterpret_cast<const char*>(bits), 4);
  for (std::size_t at = 0; at < padded.size(); at += 64) {
    std::vector<std::uint32_t> words(80);
    for (unsigned i = 0; i < 16; ++i) words[i] = LoadBig32(Bytes(padded) + at + 4 * i);
    for (unsigned i = 16; i < 80; ++i) {
      words[i] = RotateLeft(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
    }
    secrets.Add("schedule of SHA-1", Raw(words));
    // Kept in a ring of 16 words: as it turns, old words stand behind new ones.
    for (unsigned step = 16; step < 80; ++step) {
      std::vector<std::uint32_t> ring(16);
      for (unsigned i = step - 16; i < step; ++i) ring[i % 16] = words[i];
      secrets.Add("schedule of SHA-1", Raw(ring));
    }
    Sha1Update(context, padded.data() + at, 64);
    secrets.Add("chaining value of SHA-1", context.state, sizeof context.state);
  }
  std::uint8_t digest[sha1Length];
  for (unsigned i = 0; i < 5; ++i) StoreBig32(digest + 4 * i, context.state[i]);
  secrets.Add("digest", digest, sizeof digest);
  String base64;
  ByteBuffer(digest, sizeof digest).EncodeBase64(base64);
  secrets.Add("digest in base64", base64.Text(), base64.Length());
}

std::string AddGenerator(SecretWindows& secrets, const std::string& seed, std::size_t drawn) {
  Md5Random random;
  Md5RandomInit(random);
  Md5Context context;
  Md5Init(context);
  for (std::size_t at = 0; at + 64 <= seed.size(); at += 64) {
    Md5Update(context, seed.data() + at, 64);
    secrets.Add("chaining value of MD5", context.state, sizeof context.state);
  }
  Md5RandomSeed(random, Bytes(seed), static_cast<std::uint32_t>(seed.size()));
  secrets.Add("seed", seed);
  std::string bytes((drawn + 15) / 16 * 16, '\0');
  for (std::size_t at = 0; at < bytes.size(); at += 16) {
    Md5RandomGenerate(random, reinterpret_cast<std::uint8_t*>(&bytes[at]), 16);
    secrets.Add("state of the generator", random.state, sizeof random.state);
  }
  secrets.Add("generated bytes", bytes);
  return bytes.substr(0, drawn);
}

std::string AddEntropy(SecretWindows& secrets, const std::string& screen, const std::string& systemBytes,
                       std::uint16_t seedLength) {
  std::uint8_t record[stateRecordLength];
  const std::uint32_t recordLength = CollectSystemState(record);
  const std::size_t width = std::size_t{8} * seedLength;
  std::string block = screen;
  secrets.Add("screen", screen);
  secrets.Add("bytes of the system's generator", systemBytes);
  FoldInto(block, width);
  secrets.Add("folded screen", block.substr(0, width));
  for (std::size_t i = 0; i < width; ++i) block[i] = static_cast<char>(block[i] ^ record[i % recordLength]);
  secrets.Add("entropy block", block.substr(0, width));
  std::string seed = block.substr(0, seedLength);
  for (std::size_t i = 0; i < seedLength; ++i) seed[i] = static_cast<char>(seed[i] ^ systemBytes[i]);
  return seed;
}

void AddRsaBlocks(SecretWindows& secrets, const std::string& blocks) {
  for (std::size_t at = 0; at + 128 <= blocks.size(); at += 128) {
    const Number number = NumberOf(blocks.substr(at, 128));
    AddNumber(secrets, "block as a number", number);
    AddNumber(secrets, "block in Montgomery form", MontgomeryForm(number));
    for (unsigned squared = 1; squared <= 16; ++squared) {
      AddNumber(secrets, "power of a block", MontgomeryForm(Power(number, 1u << squared)));
    }
    AddNumber(secrets, "sealed block", Power(number, 65537));
  }
}

}  // namespace kest::testing
