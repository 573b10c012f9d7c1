#include "support/vector_file.h"

#include <gtest/gtest.h>

#include <fstream>

namespace kest::testing {
namespace {

int DigitOf(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  ADD_FAILURE() << "not a hexadecimal digit: " << digit;
  return 0;
}

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

void RunRecord(VectorRecord& record, const std::function<void(VectorRecord&)>& test) {
  SCOPED_TRACE(record.Place());
  test(record);
  EXPECT_EQ(record.Unread(), "") << "fields that the test does not read";
}

}  // namespace

Bytes FromHex(const std::string& digits) {
  EXPECT_EQ(digits.size() % 2, 0U) << digits;
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(DigitOf(digits[i]) * 16 + DigitOf(digits[i + 1])));
  }
  return bytes;
}

std::string ToHex(const void* bytes, std::size_t length) {
  const auto* at = static_cast<const std::uint8_t*>(bytes);
  std::string digits;
  for (std::size_t i = 0; i < length; ++i) {
    digits += "0123456789abcdef"[at[i] >> 4];
    digits += "0123456789abcdef"[at[i] & 15];
  }
  return digits;
}

bool VectorRecord::Has(const std::string& name) const {
  for (const Field& field : fields) {
    if (field.name == name) return true;
  }
  return false;
}

std::string VectorRecord::Text(const std::string& name) {
  for (Field& field : fields) {
    if (field.name != name) continue;
    field.isRead = true;
    const std::string& value = field.value;
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') return value.substr(1, value.size() - 2);
    return value;
  }
  ADD_FAILURE() << Place() << " has no field " << name;
  return "";
}

std::uint32_t VectorRecord::Number(const std::string& name) {
  return static_cast<std::uint32_t>(std::stoul(Text(name)));
}

std::string VectorRecord::Unread() const {
  std::string names;
  for (const Field& field : fields) {
    if (!field.isRead) names += (names.empty() ? "" : " ") + field.name;
  }
  return names;
}

void ForEachVector(const std::string& name, const std::function<void(VectorRecord&)>& test) {
  std::ifstream file(std::string(KEST_VECTORS) + "/" + name);
  ASSERT_TRUE(file.is_open()) << name;
  std::string line;
  ASSERT_TRUE(std::getline(file, line));
  ASSERT_EQ(line.rfind("# Source: ", 0), 0U) << name << " does not name its source";
  std::size_t number = 1, records = 0;
  VectorRecord record(name, 0);
  bool isOpen = false;
  const auto close = [&] {
    if (isOpen) RunRecord(record, test);
    isOpen = false;
  };
  while (std::getline(file, line)) {
    ++number;
    const std::string text = Trimmed(line);
    if (text.empty()) close();
    if (text.empty() || text[0] == '#') continue;
    if (!isOpen) {
      record = VectorRecord(name, number);
      isOpen = true;
      ++records;
    }
    const std::size_t equals = text.find('=');
    ASSERT_NE(equals, std::string::npos) << name << ":" << number;
    record.Add(Trimmed(text.substr(0, equals)), Trimmed(text.substr(equals + 1)));
  }
  close();
  EXPECT_NE(records, 0U) << name << " holds no vectors";
}

}  // namespace kest::testing
