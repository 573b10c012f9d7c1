#include "road/stored_receipts.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "os/os.h"

namespace kest_road {
namespace {

constexpr char receiptsPath[] = "Software\\Veltrix\\KEST\\Receipts";

// An open key; without one every list is empty.
class Key {
 public:
  explicit Key(const std::string& path) {
    isOpen = os::Native().RegOpenKeyExA(os::CurrentUser(), path.c_str(), 0, os::keyRead, &handle) == os::errorSuccess;
  }
  ~Key() {
    if (isOpen) os::Native().RegCloseKey(handle);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  std::vector<std::string> Subkeys() const {
    std::vector<std::string> names;
    std::vector<char> name(1024);
    while (isOpen) {
      auto characters = static_cast<std::uint32_t>(name.size());
      const auto index = static_cast<std::uint32_t>(names.size());
      if (os::Native().RegEnumKeyExA(handle, index, name.data(), &characters) != os::errorSuccess) break;
      names.emplace_back(name.data(), characters);
    }
    return names;
  }

  std::vector<StoredValue> Values() const {
    std::vector<StoredValue> values;
    std::vector<char> name(65536);
    while (isOpen) {
      auto characters = static_cast<std::uint32_t>(name.size());
      const auto index = static_cast<std::uint32_t>(values.size());
      if (os::Native().RegEnumValueA(handle, index, name.data(), &characters) != os::errorSuccess) break;
      values.push_back(Value({name.data(), characters}));
    }
    std::sort(values.begin(), values.end(),
              [](const StoredValue& left, const StoredValue& right) { return left.name < right.name; });
    return values;
  }

 private:
  StoredValue Value(const std::string& name) const {
    StoredValue value{name, 0, ""};
    std::uint32_t size = 0;
    os::Native().RegQueryValueExA(handle, name.c_str(), nullptr, nullptr, &size);
    value.data.resize(size);
    const std::int32_t result = os::Native().RegQueryValueExA(handle, name.c_str(), &value.type, &value.data[0], &size);
    value.data.resize(result == os::errorSuccess ? size : 0);
    return value;
  }

  os::RegistryHandle handle = nullptr;
  bool isOpen;
};

bool Holds(const std::string& path, const std::string& text) {
  const auto has = [&text](const std::string& where) { return where.find(text) != std::string::npos; };
  const Key key(path);
  for (const StoredValue& value : key.Values()) {
    if (has(value.name) || has(value.data)) return true;
  }
  for (const std::string& name : key.Subkeys()) {
    if (has(name) || Holds(path + "\\" + name, text)) return true;
  }
  return false;
}

}  // namespace

StoredValue TextValue(const std::string& name, const std::string& text) {
  return {name, os::typeString, text + '\0'};
}

StoredValue NumberValue(const std::string& name, std::uint32_t number) {
  std::string data;
  for (int shift = 0; shift < 32; shift += 8) data += static_cast<char>(number >> shift & 0xFF);
  return {name, os::typeNumber, data};
}

std::vector<StoredValue> ValuesOf(const std::string& path) { return Key(path).Values(); }

std::vector<StoredReceipt> ReceiptsOf(const std::string& guid) {
  std::vector<StoredReceipt> receipts;
  for (const std::string& date : Key(receiptsPath).Subkeys()) {
    const std::string datePath = std::string(receiptsPath) + "\\" + date;
    for (const std::string& sequence : Key(datePath).Subkeys()) {
      const std::string path = datePath + "\\" + sequence;
      StoredReceipt receipt{date, sequence, ValuesOf(path), ValuesOf(path + "\\Products")};
      const auto& values = receipt.values;
      if (std::find(values.begin(), values.end(), TextValue("Guid", guid)) != values.end()) receipts.push_back(receipt);
    }
  }
  return receipts;
}

bool RegistryHolds(const std::string& text) { return Holds("Software\\Veltrix", text); }

std::string FreshGuid() {
  static unsigned count = 0;
  const auto now = std::chrono::system_clock::now().time_since_epoch().count();
  char text[64];
  std::snprintf(text, sizeof text, "{%016llX-%08X-%04X}", static_cast<unsigned long long>(now),
                os::Native().GetCurrentProcessId(), ++count & 0xFFFF);
  return text;
}

}  // namespace kest_road
