// Test vectors from text files in tests/vectors. A file names its source in a first line "# Source: ..."; records are
// lines "field = value", parted by empty lines; further lines that begin with "#" are remarks. A field that a test does
// not read fails the test, and so do a missing field, a missing source and a file without records.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kest::testing {

using Bytes = std::vector<std::uint8_t>;

// The bytes of lower-case or upper-case hexadecimal digits; fails the test for anything else.
Bytes FromHex(const std::string& digits);
std::string ToHex(const void* bytes, std::size_t length);
inline std::string ToHex(const Bytes& bytes) {
  return ToHex(bytes.data(), bytes.size());
}

class VectorRecord {
 public:
  VectorRecord(std::string fileName, std::size_t firstLine) : file(std::move(fileName)), line(firstLine) {}

  void Add(std::string name, std::string value) { fields.push_back({std::move(name), std::move(value), false}); }
  bool Has(const std::string& name) const;
  // The value as it stands, without the quotes if it has some.
  std::string Text(const std::string& name);
  Bytes Hex(const std::string& name) { return FromHex(Text(name)); }
  std::uint32_t Number(const std::string& name);
  // File and line, for messages.
  std::string Place() const { return file + ":" + std::to_string(line); }
  // The names of fields that nobody read.
  std::string Unread() const;

 private:
  struct Field {
    std::string name, value;
    bool isRead;
  };
  std::string file;
  std::size_t line;
  std::vector<Field> fields;
};

// Runs `test` on every record of tests/vectors/`name`.
void ForEachVector(const std::string& name, const std::function<void(VectorRecord&)>& test);

}  // namespace kest::testing
