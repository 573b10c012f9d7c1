#include "support/redirected_registry.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdlib>
#include <filesystem>
#endif

namespace kest::testing {

RedirectedRegistry::RedirectedRegistry(os::System& target)
    : ForwardingSystem(target), top("Software\\Veltrix Test\\" + std::to_string(target.GetCurrentProcessId())) {
#ifndef _WIN32
  store = (std::filesystem::temp_directory_path() / "kest-store-XXXXXX").string();  // for mkdtemp
  EXPECT_NE(nullptr, mkdtemp(store.data()));
  setenv("KESTAPI_REGISTRY", store.c_str(), 1);
#endif
}

RedirectedRegistry::~RedirectedRegistry() {
#ifdef _WIN32
  RegDeleteTreeA(HKEY_CURRENT_USER, top.c_str());
  // Stays while another run has its key below.
  RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Veltrix Test");
#else
  std::filesystem::remove_all(store);
  unsetenv("KESTAPI_REGISTRY");
#endif
}

std::int32_t RedirectedRegistry::RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                                               std::uint32_t access, os::RegistryHandle* key) {
  const std::int32_t result =
      ForwardingSystem::RegOpenKeyExA(parent, PathBelow(parent, path).c_str(), options, access, key);
  openHandles += result == os::errorSuccess ? 1 : 0;
  return result;
}

std::int32_t RedirectedRegistry::RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options,
                                                 std::uint32_t access, os::RegistryHandle* key) {
  const std::int32_t result =
      ForwardingSystem::RegCreateKeyExA(parent, PathBelow(parent, path).c_str(), options, access, key);
  openHandles += result == os::errorSuccess ? 1 : 0;
  return result;
}

std::int32_t RedirectedRegistry::RegCloseKey(os::RegistryHandle key) {
  const std::int32_t result = ForwardingSystem::RegCloseKey(key);
  openHandles -= result == os::errorSuccess ? 1 : 0;
  return result;
}

std::string RedirectedRegistry::PathBelow(os::RegistryHandle parent, const char* path) const {
  const std::string part = path != nullptr ? path : "";
  if (parent != os::CurrentUser()) return part;
  return part.empty() ? top : top + "\\" + part;
}

}  // namespace kest::testing
