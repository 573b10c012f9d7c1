// A system that puts everything the library keeps for the current user below a key of this process's own in the real
// registry, so that runs do not mix with each other or with the user's receipts. The key is gone with the system.
#pragma once

#include <string>

#include "support/forwarding_system.h"

namespace kest::testing {

class RedirectedRegistry : public ForwardingSystem {
 public:
  explicit RedirectedRegistry(os::System& target = os::Native());
  ~RedirectedRegistry() override;
  RedirectedRegistry(const RedirectedRegistry&) = delete;
  RedirectedRegistry& operator=(const RedirectedRegistry&) = delete;

  // Handles that were given out and not closed.
  int OpenHandles() const { return openHandles; }

  std::int32_t RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                             os::RegistryHandle* key) override;
  std::int32_t RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                               std::uint32_t access, os::RegistryHandle* key) override;
  std::int32_t RegCloseKey(os::RegistryHandle key) override;

 private:
  std::string PathBelow(os::RegistryHandle parent, const char* path) const;

  std::string top;
  std::string store;  // on systems without a registry: the folder of the files that it is kept in
  int openHandles = 0;
};

}  // namespace kest::testing
