#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <stdexcept>

#include "library.h"

namespace kest_host {
namespace {

constexpr char fileName[] = "libkestapi.so";

std::string BesideTheProgram() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) return {};
  const std::string program(path, static_cast<std::size_t>(length));
  const std::string candidate = program.substr(0, program.rfind('/') + 1) + fileName;
  return access(candidate.c_str(), R_OK) == 0 ? candidate : std::string();
}

}  // namespace

Library::Library(const std::string& path) {
  std::string wanted = path.empty() ? BesideTheProgram() : path;
  if (wanted.empty()) wanted = fileName;
  module = dlopen(wanted.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(std::string("the library cannot be loaded: ") + dlerror());
#define KEST_HOST_LOAD(name, ordinal)                                                        \
  name = reinterpret_cast<decltype(name)>(dlsym(module, #name));                             \
  if (name == nullptr) {                                                                     \
    dlclose(module);                                                                         \
    throw std::runtime_error(wanted + " lacks the function " #name "; is it of this version?"); \
  }
  KEST_HOST_FUNCTIONS(KEST_HOST_LOAD)
#undef KEST_HOST_LOAD
}

Library::~Library() { dlclose(module); }

}  // namespace kest_host
