#include "library_file.h"

#include <sys/stat.h>

#include <fstream>
#include <vector>

namespace kest_host {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes Read(std::ifstream& file, std::uint64_t offset, std::size_t count) {
  Bytes bytes(count);
  file.clear();
  file.seekg(static_cast<std::streamoff>(offset));
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

// An ELF file says it in its fifth byte.
int BitsOfElf(const Bytes& head) {
  return head[4] == 1 ? 32 : head[4] == 2 ? 64 : 0;
}

// A PE file says where its header begins, and that names the machine.
int BitsOfPe(std::ifstream& file, const Bytes& head) {
  const std::uint32_t offset =
      head[0x3C] | head[0x3D] << 8 | head[0x3E] << 16 | static_cast<std::uint32_t>(head[0x3F]) << 24;
  const Bytes header = Read(file, offset, 6);
  if (header.size() < 6 || header[0] != 'P' || header[1] != 'E' || header[2] != 0 || header[3] != 0) return 0;
  const int machine = header[4] | header[5] << 8;
  return machine == 0x014C ? 32 : machine == 0x8664 ? 64 : 0;
}

// A folder can be opened too and has a size of its own kind; a pipe would be waited for.
bool IsRegularFile(const std::string& path) {
  struct stat facts;
  return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
}

}  // namespace

LibraryFile InspectLibraryFile(const std::string& path) {
  LibraryFile facts;
  if (!IsRegularFile(path)) return facts;
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = file.tellg();
  if (!file || size < 0) return facts;
  facts.readable = true;
  facts.size = static_cast<std::uint64_t>(size);
  const Bytes head = Read(file, 0, 64);
  if (head.size() < 64) return facts;
  if (head[0] == 0x7F && head[1] == 'E' && head[2] == 'L' && head[3] == 'F') facts.bits = BitsOfElf(head);
  if (head[0] == 'M' && head[1] == 'Z') facts.bits = BitsOfPe(file, head);
  return facts;
}

}  // namespace kest_host
