#include <windows.h>

#include "secrets/memory_regions.h"

namespace kest::testing {
namespace {

bool IsWritable(const MEMORY_BASIC_INFORMATION& block) {
  constexpr DWORD writable =
      PAGE_READWRITE | PAGE_WRITECOPY | PAGE_EXECUTE_READWRITE | PAGE_EXECUTE_WRITECOPY;
  return block.State == MEM_COMMIT && (block.Protect & writable) != 0 && (block.Protect & PAGE_GUARD) == 0;
}

}  // namespace

std::vector<Region> WritableRegions() {
  std::vector<Region> regions;
  MEMORY_BASIC_INFORMATION block;
  const char* at = nullptr;
  while (VirtualQuery(at, &block, sizeof block) != 0) {
    const auto* begin = static_cast<const unsigned char*>(block.BaseAddress);
    if (IsWritable(block)) {
      regions.push_back({begin, block.RegionSize, block.Type == MEM_IMAGE ? "static data" : "memory"});
    }
    at = static_cast<const char*>(block.BaseAddress) + block.RegionSize;
    if (at < static_cast<const char*>(block.BaseAddress)) break;
  }
  return regions;
}

}  // namespace kest::testing
