// A place of a test's own in the registry, empty at first and gone afterwards, and the calls in few words.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <filesystem>
#endif

#include "os/os.h"

namespace os {

// A handle that is closed at the end of its scope.
class OpenedKey {
 public:
  OpenedKey() = default;
  OpenedKey(const OpenedKey&) = delete;
  OpenedKey& operator=(const OpenedKey&) = delete;
  ~OpenedKey() {
    if (handle == nullptr) return;
    EXPECT_EQ(errorSuccess, Native().RegCloseKey(handle));
  }
  std::int32_t Open(RegistryHandle parent, const char* path) {
    return Native().RegOpenKeyExA(parent, path, 0, keyRead, &handle);
  }
  std::int32_t Create(RegistryHandle parent, const char* path) {
    return Native().RegCreateKeyExA(parent, path, 0, keyAllAccess, &handle);
  }
  operator RegistryHandle() const { return handle; }

 private:
  RegistryHandle handle = nullptr;
};

struct StoredValue {
  std::int32_t error;
  std::uint32_t type;
  std::string data;
  bool operator==(const StoredValue& other) const {
    return error == other.error && type == other.type && data == other.data;
  }
};

inline std::int32_t Set(RegistryHandle key, const char* name, std::uint32_t type, const std::string& data) {
  return Native().RegSetValueExA(key, name, type, data.data(), static_cast<std::uint32_t>(data.size()));
}

// What a value holds; type 0 and no data when there is an error.
inline StoredValue Get(RegistryHandle key, const char* name) {
  std::uint32_t type = 0, size = 0;
  std::int32_t error = Native().RegQueryValueExA(key, name, nullptr, nullptr, &size);
  if (error != errorSuccess) return {error, 0, ""};
  std::string data(size + 1, '?');
  error = Native().RegQueryValueExA(key, name, &type, &data[0], &size);
  if (error != errorSuccess) return {error, 0, ""};
  data.resize(size);
  return {error, type, data};
}

using EnumerateNames = std::int32_t (System::*)(RegistryHandle, std::uint32_t, char*, std::uint32_t*);

inline std::vector<std::string> Names(RegistryHandle key, EnumerateNames enumerate) {
  std::vector<std::string> names;
  std::vector<char> name(65535);
  for (std::uint32_t index = 0;; ++index) {
    auto characters = static_cast<std::uint32_t>(name.size());
    const std::int32_t error = (Native().*enumerate)(key, index, name.data(), &characters);
    if (error != errorSuccess) {
      EXPECT_EQ(errorNoMoreItems, error);
      return names;
    }
    EXPECT_EQ('\0', name[characters]);
    names.emplace_back(name.data(), characters);
  }
}
inline std::vector<std::string> KeyNames(RegistryHandle key) {
  return Names(key, &System::RegEnumKeyExA);
}
inline std::vector<std::string> ValueNames(RegistryHandle key) {
  return Names(key, &System::RegEnumValueA);
}

// The place: `path` under CurrentUser(), opened as `key`.
class RegistryPlace : public ::testing::Test {
 protected:
  RegistryPlace() : path("Software\\Veltrix\\KEST Test " + std::to_string(Native().GetCurrentProcessId())) {
#ifndef _WIN32
    char made[] = "/tmp/kest-registry-XXXXXX";  // mkdtemp fills the X in
    EXPECT_NE(nullptr, mkdtemp(made));
    store = made;
    setenv("KESTAPI_REGISTRY", store.c_str(), 1);
#endif
    EXPECT_EQ(errorSuccess, key.Create(CurrentUser(), path.c_str()));
  }
  ~RegistryPlace() override {
#ifdef _WIN32
    RegDeleteTreeA(HKEY_CURRENT_USER, path.c_str());
#else
    std::filesystem::remove_all(store);
    unsetenv("KESTAPI_REGISTRY");
#endif
  }

  const std::string path;
  std::string store;  // the folder where the registry is kept in files
  OpenedKey key;
};

}  // namespace os
