#include <cstdint>
#include <fstream>
#include <sstream>

#include "secrets/memory_regions.h"

namespace kest::testing {

std::vector<Region> WritableRegions() {
  std::vector<Region> regions;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::istringstream words(line);
    std::uintptr_t begin = 0, end = 0;
    char dash = 0;
    std::string access, offset, device, inode, name;
    words >> std::hex >> begin >> dash >> end >> access >> offset >> device >> inode >> name;
    if (access.compare(0, 2, "rw") != 0) continue;
    regions.push_back({reinterpret_cast<const unsigned char*>(begin), end - begin, name.empty() ? "memory" : name});
  }
  return regions;
}

}  // namespace kest::testing
