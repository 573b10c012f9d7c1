#include "support/memory_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <sstream>

namespace kest::testing {
namespace {

bool IsSameName(const std::string& a, const std::string& b) {
  const auto isSame = [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
  };
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), isSame);
}

template <typename Items>
auto FindNamed(Items& items, const std::string& name) {
  return std::find_if(items.begin(), items.end(), [&](const auto& item) { return IsSameName(item.name, name); });
}

std::string TextOf(const char* text) { return text != nullptr ? text : ""; }

std::string AccessName(std::uint32_t access) {
  if (access == os::keyRead) return "read";
  return access == os::keyAllAccess ? "all" : std::to_string(access);
}

std::int32_t GiveName(const std::string& found, char* name, std::uint32_t* characters) {
  if (found.size() >= *characters) return os::errorMoreData;
  std::memcpy(name, found.c_str(), found.size() + 1);
  *characters = static_cast<std::uint32_t>(found.size());
  return os::errorSuccess;
}

}  // namespace

std::int32_t MemoryRegistry::Begin(const std::string& call) {
  calls.push_back(call);
  if (before) before(call);
  const auto refusal = refusals.find(call);
  return refusal == refusals.end() ? os::errorSuccess : refusal->second;
}

const MemoryRegistry::Handle* MemoryRegistry::Opened(os::RegistryHandle key) {
  const auto found = handles.find(key);
  if (found != handles.end()) return &found->second;
  ++wrongHandles;
  return nullptr;
}

std::string MemoryRegistry::PathBelow(os::RegistryHandle parent, const char* path) {
  std::string top;
  if (parent == os::CurrentUser()) top = "HKCU";
  if (parent == os::LocalMachine()) top = "HKLM";
  if (top.empty()) {
    const Handle* handle = Opened(parent);
    if (handle == nullptr) return "";
    top = handle->path;
  }
  return TextOf(path).empty() ? top : top + "\\" + path;
}

MemoryRegistry::Key* MemoryRegistry::Find(const std::string& path, bool isMaking) {
  Key* key = &root;
  std::istringstream names(path);
  for (std::string name; std::getline(names, name, '\\');) {
    auto found = std::find_if(key->subkeys.begin(), key->subkeys.end(),
                              [&](const auto& subkey) { return IsSameName(subkey->name, name); });
    if (found == key->subkeys.end()) {
      if (!isMaking) return nullptr;
      key->subkeys.push_back(std::make_unique<Key>());
      key->subkeys.back()->name = name;
      found = key->subkeys.end() - 1;
    }
    key = found->get();
  }
  return key;
}

std::int32_t MemoryRegistry::GiveHandle(const std::string& path, std::uint32_t access, os::RegistryHandle* key) {
  *key = reinterpret_cast<os::RegistryHandle>(nextHandle++);
  handles[*key] = {path, access};
  return os::errorSuccess;
}

void MemoryRegistry::Clear() {
  root = Key();
  calls.clear();
}

void MemoryRegistry::Put(const std::string& path) { Find(path, true); }

void MemoryRegistry::Put(const std::string& path, const std::string& name, const std::string& data,
                         std::uint32_t type) {
  std::vector<Value>& values = Find(path, true)->values;
  const auto found = FindNamed(values, name);
  if (found == values.end()) {
    values.push_back({name, type, data});
  } else {
    found->type = type;
    found->data = data;
  }
}

std::string MemoryRegistry::Data(const std::string& path, const std::string& name) {
  for (const Value& value : Values(path)) {
    if (IsSameName(value.name, name)) return value.data;
  }
  ADD_FAILURE() << "no value " << name << " in " << path;
  return "";
}

std::vector<MemoryRegistry::Value> MemoryRegistry::Values(const std::string& path) {
  const Key* key = Find(path);
  EXPECT_NE(nullptr, key) << path;
  return key != nullptr ? key->values : std::vector<Value>();
}

std::vector<std::string> MemoryRegistry::Subkeys(const std::string& path) {
  std::vector<std::string> names;
  const Key* key = Find(path);
  if (key == nullptr) return names;
  for (const auto& subkey : key->subkeys) names.push_back(subkey->name);
  return names;
}

std::int32_t MemoryRegistry::RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                                           std::uint32_t access, os::RegistryHandle* key) {
  EXPECT_EQ(0u, options);
  const std::string full = PathBelow(parent, path);
  if (full.empty()) return os::errorInvalidHandle;
  const std::int32_t refusal = Begin("open " + AccessName(access) + " " + full);
  if (refusal != os::errorSuccess) return refusal;
  return Find(full) != nullptr ? GiveHandle(full, access, key) : os::errorFileNotFound;
}

std::int32_t MemoryRegistry::RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                                             std::uint32_t access, os::RegistryHandle* key) {
  EXPECT_EQ(0u, options);
  const std::string full = PathBelow(parent, path);
  if (full.empty()) return os::errorInvalidHandle;
  const std::int32_t refusal = Begin("create " + AccessName(access) + " " + full);
  if (refusal != os::errorSuccess) return refusal;
  Find(full, true);
  return GiveHandle(full, access, key);
}

std::int32_t MemoryRegistry::RegCloseKey(os::RegistryHandle key) {
  const Handle* handle = Opened(key);
  if (handle == nullptr) return os::errorInvalidHandle;
  const std::int32_t refusal = Begin("close " + handle->path);
  handles.erase(key);
  return refusal;
}

std::int32_t MemoryRegistry::RegQueryValueExA(os::RegistryHandle key, const char* name, std::uint32_t* type,
                                              void* data, std::uint32_t* size) {
  const Handle* handle = Opened(key);
  if (handle == nullptr) return os::errorInvalidHandle;
  const std::int32_t refusal = Begin((data == nullptr ? "size " : "read ") + handle->path + " : " + TextOf(name));
  if (refusal != os::errorSuccess) return refusal;
  Key* found = Find(handle->path);
  const auto value = FindNamed(found->values, TextOf(name));
  if (value == found->values.end()) return os::errorFileNotFound;
  if (type != nullptr) *type = value->type;
  const std::uint32_t room = *size;
  *size = static_cast<std::uint32_t>(value->data.size());
  if (data == nullptr) return os::errorSuccess;
  if (room < value->data.size()) return os::errorMoreData;
  std::memcpy(data, value->data.data(), value->data.size());
  return os::errorSuccess;
}

std::int32_t MemoryRegistry::RegSetValueExA(os::RegistryHandle key, const char* name, std::uint32_t type,
                                            const void* data, std::uint32_t size) {
  const Handle* handle = Opened(key);
  if (handle == nullptr) return os::errorInvalidHandle;
  const std::int32_t refusal = Begin("set " + handle->path + " : " + TextOf(name));
  if (refusal != os::errorSuccess) return refusal;
  if (handle->access != os::keyAllAccess) return os::errorAccessDenied;
  Put(handle->path, TextOf(name), size != 0 ? std::string(static_cast<const char*>(data), size) : "", type);
  return os::errorSuccess;
}

std::int32_t MemoryRegistry::RegEnumKeyExA(os::RegistryHandle key, std::uint32_t index, char* name,
                                           std::uint32_t* characters) {
  const Handle* handle = Opened(key);
  if (handle == nullptr) return os::errorInvalidHandle;
  const std::int32_t refusal = Begin("key " + std::to_string(index) + " of " + handle->path);
  if (refusal != os::errorSuccess) return refusal;
  const Key* found = Find(handle->path);
  if (index >= found->subkeys.size()) return os::errorNoMoreItems;
  return GiveName(found->subkeys[index]->name, name, characters);
}

std::int32_t MemoryRegistry::RegEnumValueA(os::RegistryHandle key, std::uint32_t index, char* name,
                                           std::uint32_t* characters) {
  const Handle* handle = Opened(key);
  if (handle == nullptr) return os::errorInvalidHandle;
  const std::int32_t refusal = Begin("value " + std::to_string(index) + " of " + handle->path);
  if (refusal != os::errorSuccess) return refusal;
  const Key* found = Find(handle->path);
  if (index >= found->values.size()) return os::errorNoMoreItems;
  return GiveName(found->values[index].name, name, characters);
}

}  // namespace kest::testing
