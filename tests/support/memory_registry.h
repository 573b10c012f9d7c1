// A system that keeps a registry in memory: it writes down every call, counts the handles that are open, and lets a
// test refuse single calls or change something right before one. Names are found without regard to the case of
// letters; items are enumerated in the order of their making.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/forwarding_system.h"

namespace kest::testing {

class MemoryRegistry : public ForwardingSystem {
 public:
  struct Value {
    std::string name;
    std::uint32_t type;
    std::string data;
  };

  using ForwardingSystem::ForwardingSystem;

  // The calls so far: "open read PATH", "create all PATH", "close PATH", "size PATH : NAME", "read PATH : NAME",
  // "set PATH : NAME", "key INDEX of PATH", "value INDEX of PATH". Paths begin with "HKCU" or "HKLM".
  std::vector<std::string> calls;
  // What calls, written like those, answer instead of being done.
  std::map<std::string, std::int32_t> refusals;
  // Runs right before a call is done.
  std::function<void(const std::string& call)> before;

  // Handles that were given out and not closed; handles that were used or closed without being open.
  std::size_t OpenHandles() const { return handles.size(); }
  int WrongHandles() const { return wrongHandles; }

  // Forgets every key and every call.
  void Clear();
  // Puts a key, and a value into it.
  void Put(const std::string& path);
  void Put(const std::string& path, const std::string& name, const std::string& data, std::uint32_t type = 1);
  bool Has(const std::string& path) { return Find(path) != nullptr; }
  // The value's data; fails the test when there is none.
  std::string Data(const std::string& path, const std::string& name);
  // All values of a key, in the order of their making; the names of its subkeys.
  std::vector<Value> Values(const std::string& path);
  std::vector<std::string> Subkeys(const std::string& path);

  std::int32_t RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                             os::RegistryHandle* key) override;
  std::int32_t RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                               std::uint32_t access, os::RegistryHandle* key) override;
  std::int32_t RegCloseKey(os::RegistryHandle key) override;
  std::int32_t RegQueryValueExA(os::RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                std::uint32_t* size) override;
  std::int32_t RegSetValueExA(os::RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                              std::uint32_t size) override;
  std::int32_t RegEnumKeyExA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override;
  std::int32_t RegEnumValueA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override;

 private:
  struct Key {
    std::string name;
    std::vector<std::unique_ptr<Key>> subkeys;
    std::vector<Value> values;
  };
  struct Handle {
    std::string path;
    std::uint32_t access;
  };

  // Writes a call down; what it is to answer instead of being done, or errorSuccess.
  std::int32_t Begin(const std::string& call);
  // Null, and counted, when no such key is open.
  const Handle* Opened(os::RegistryHandle key);
  std::string PathBelow(os::RegistryHandle parent, const char* path);
  Key* Find(const std::string& path, bool isMaking = false);
  std::int32_t GiveHandle(const std::string& path, std::uint32_t access, os::RegistryHandle* key);

  Key root;
  std::map<os::RegistryHandle, Handle> handles;
  std::uintptr_t nextHandle = 0x1000;
  int wrongHandles = 0;
};

}  // namespace kest::testing
