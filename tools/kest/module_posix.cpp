#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <stdexcept>

#include "module.h"

namespace kest_host {
namespace {

constexpr char fileName[] = "libkestapi.so";
// Where nobody compiles against the library, the system has it under the name that hosts are bound to alone.
constexpr char installedName[] = "libkestapi.so.0";

std::string BesideTheProgram() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) return {};
  const std::string program(path, static_cast<std::size_t>(length));
  const std::string candidate = program.substr(0, program.rfind('/') + 1) + fileName;
  return access(candidate.c_str(), R_OK) == 0 ? candidate : std::string();
}

}  // namespace

Module::Module(const std::string& path) {
  std::string wanted = path.empty() ? BesideTheProgram() : path;
  if (wanted.empty()) wanted = installedName;
  handle = dlopen(wanted.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) throw std::runtime_error(std::string("the library cannot be loaded: ") + dlerror());
}

Module::~Module() {
  dlclose(handle);
}

Module::Function Module::Find(const char* name, int) const {
  return reinterpret_cast<Function>(dlsym(handle, name));
}

std::string Module::Path() const {
  const link_map* map = nullptr;
  return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 ? map->l_name : std::string();
}

std::string Module::FileVersion() const {
  return {};
}

}  // namespace kest_host
