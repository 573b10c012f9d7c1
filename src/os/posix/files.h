// The file and directory calls of os.h: "\\" in a path means "/", a file handle is a descriptor. A path of PATH_MAX
// bytes or more leads nowhere. Any thread may call.
#pragma once

#include <cstdint>

#include "os/os.h"

namespace os::posix {

bool MakeDirectory(const char* path);
bool WriteDescriptor(FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written);
std::uint32_t SizeOf(FileHandle file, std::uint32_t* high);
// 0x10 for a directory, 0x80 for anything else; 0x01 alone, or with 0x10, where the owner may not write.
std::uint32_t AttributesOf(const char* path);
// Files alone are copied, with their permissions. What stood at `to` stands until the copy is whole; it is not replaced
// when its owner may not write to it, or when it is the file to be copied.
bool Copy(const char* from, const char* to, bool failIfExists);
bool Remove(const char* path);
int Access(const char* path, int mode);
std::uint32_t TempDirectory(std::uint32_t capacity, char* buffer);
// A `unique` other than 0 gives a name and makes no file.
std::uint32_t MakeTempFile(const char* directory, const char* prefix, std::uint32_t unique, char* name);

}  // namespace os::posix
