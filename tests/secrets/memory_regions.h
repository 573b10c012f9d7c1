// The memory of this process.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace kest::testing {

struct Region {
  const unsigned char* begin;
  std::size_t length;  // bytes
  std::string name;    // what lies there, as far as the system says
};

// Everything that can be read and written: heap, freed or not, static data, whole stacks.
std::vector<Region> WritableRegions();

}  // namespace kest::testing
