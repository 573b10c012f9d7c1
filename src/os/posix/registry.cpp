#include "os/posix/registry.h"

namespace os::posix {

std::int32_t OpenKey(RegistryHandle, const char*, RegistryHandle*) { return errorFileNotFound; }
std::int32_t CreateKey(RegistryHandle, const char*, RegistryHandle*) { return errorAccessDenied; }
std::int32_t CloseKey(RegistryHandle) { return errorInvalidHandle; }
std::int32_t QueryValue(RegistryHandle, const char*, std::uint32_t*, void*, std::uint32_t*) {
  return errorInvalidHandle;
}
std::int32_t SetValue(RegistryHandle, const char*, std::uint32_t, const void*, std::uint32_t) {
  return errorInvalidHandle;
}
std::int32_t EnumKey(RegistryHandle, std::uint32_t, char*, std::uint32_t*) { return errorInvalidHandle; }
std::int32_t EnumValue(RegistryHandle, std::uint32_t, char*, std::uint32_t*) { return errorInvalidHandle; }

}  // namespace os::posix
