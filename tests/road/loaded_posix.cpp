#include <dlfcn.h>

#include "road/loaded.h"

namespace kest_road {

bool IsLoaded(const std::string& path) {
  void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (module != nullptr) dlclose(module);
  return module != nullptr;
}

}  // namespace kest_road
