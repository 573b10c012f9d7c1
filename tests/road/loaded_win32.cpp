#include <windows.h>

#include "road/loaded.h"

namespace kest_road {

bool IsLoaded(const std::string& path) {
  return GetModuleHandleA(path.substr(path.find_last_of("/\\") + 1).c_str()) != nullptr;
}

}  // namespace kest_road
