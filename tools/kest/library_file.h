// Facts about the file of a library that stand in it, so that one that cannot be loaded has them too.
#pragma once

#include <cstdint>
#include <string>

namespace kest_host {

struct LibraryFile {
  bool readable = false;
  std::uint64_t size = 0;  // bytes
  int bits = 0;            // 32 or 64; 0 when the file is no program that is known here
};

LibraryFile InspectLibraryFile(const std::string& path);

}  // namespace kest_host
