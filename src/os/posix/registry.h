// The registry calls of os.h on a store of files under the user's data directory. Keys are directories, values are
// files; every change is one rename, so that it happens whole or not at all and processes may write side by side. What
// lies there is not trusted: a foreign or damaged file is a missing value. Any thread may call; one handle belongs to
// one thread at a time.
#pragma once

#include <cstdint>

#include "os/os.h"

namespace os::posix {

std::int32_t OpenKey(RegistryHandle parent, const char* path, std::uint32_t access, RegistryHandle* key);
std::int32_t CreateKey(RegistryHandle parent, const char* path, std::uint32_t access, RegistryHandle* key);
std::int32_t CloseKey(RegistryHandle key);
std::int32_t QueryValue(RegistryHandle key, const char* name, std::uint32_t* type, void* data, std::uint32_t* size);
std::int32_t SetValue(RegistryHandle key, const char* name, std::uint32_t type, const void* data, std::uint32_t size);
std::int32_t EnumKey(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters);
std::int32_t EnumValue(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters);

}  // namespace os::posix
