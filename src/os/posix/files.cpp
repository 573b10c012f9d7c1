#include "os/posix/files.h"

namespace os::posix {

bool MakeDirectory(const char*) { return false; }
bool WriteDescriptor(FileHandle, const void*, std::uint32_t, std::uint32_t*) { return false; }
std::uint32_t SizeOf(FileHandle, std::uint32_t* high) {
  *high = 0;
  return 0xFFFFFFFF;
}
std::uint32_t AttributesOf(const char*) { return invalidFileAttributes; }
bool Copy(const char*, const char*, bool) { return false; }
bool Remove(const char*) { return false; }
int Access(const char*, int) { return -1; }
std::uint32_t TempDirectory(std::uint32_t, char*) { return 0; }
std::uint32_t MakeTempFile(const char*, const char*, std::uint32_t, char*) { return 0; }

}  // namespace os::posix
