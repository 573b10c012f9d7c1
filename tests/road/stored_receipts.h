// What lies in the current user's registry, read beside the library: the system's own calls, Windows' registry under
// Wine and the files of the store elsewhere.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kest_road {

struct StoredValue {
  std::string name;
  std::uint32_t type;
  std::string data;  // its exact bytes

  bool operator==(const StoredValue& other) const {
    return name == other.name && type == other.type && data == other.data;
  }
};

struct StoredReceipt {
  std::string date, sequence;  // the names of its keys
  std::vector<StoredValue> values, products;
};

// A value of REG_SZ: the text and its NUL. Of REG_DWORD: four bytes, low byte first.
StoredValue TextValue(const std::string& name, const std::string& text);
StoredValue NumberValue(const std::string& name, std::uint32_t number);

// The values of a key under HKEY_CURRENT_USER, by name; none when there is no such key.
std::vector<StoredValue> ValuesOf(const std::string& path);

// Every receipt with this application GUID.
std::vector<StoredReceipt> ReceiptsOf(const std::string& guid);

// Whether `text` stands in a key's name, a value's name or its data anywhere under "Software\Veltrix".
bool RegistryHolds(const std::string& text);

// A GUID that no other run uses.
std::string FreshGuid();

}  // namespace kest_road
