// The file and directory calls of os.h: "\\" in a path means "/", a file handle is a descriptor. Any thread may call.
#pragma once

#include <cstdint>

#include "os/os.h"

namespace os::posix {

bool MakeDirectory(const char* path);
bool WriteDescriptor(FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written);
std::uint32_t SizeOf(FileHandle file, std::uint32_t* high);
std::uint32_t AttributesOf(const char* path);
bool Copy(const char* from, const char* to, bool failIfExists);
bool Remove(const char* path);
int Access(const char* path, int mode);
std::uint32_t TempDirectory(std::uint32_t capacity, char* buffer);
std::uint32_t MakeTempFile(const char* directory, const char* prefix, std::uint32_t unique, char* name);

}  // namespace os::posix
