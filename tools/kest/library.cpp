#include "library.h"

#include <stdexcept>

namespace kest_host {

Library::Library(const std::string& path) : module(path) {
#define KEST_HOST_LOAD(name, ordinal)                                                                              \
  name = reinterpret_cast<decltype(name)>(module.Find(#name, ordinal));                                            \
  if (name == nullptr) {                                                                                           \
    throw std::runtime_error(module.Path() + " lacks the function " #name " (ordinal " + std::to_string(ordinal) + \
                             "); is it of this version? See kest doctor");                                         \
  }
  KEST_HOST_FUNCTIONS(KEST_HOST_LOAD)
#undef KEST_HOST_LOAD
}

}  // namespace kest_host
