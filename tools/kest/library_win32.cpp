#include <windows.h>

#include <cstring>
#include <stdexcept>

#include "library.h"

namespace kest_host {
namespace {

constexpr char fileName[] = "KESTAPI.DLL";

template <typename Function>
bool Load(HMODULE module, int ordinal, Function& function) {
  const FARPROC address = GetProcAddress(module, MAKEINTRESOURCEA(ordinal));
  static_assert(sizeof function == sizeof address, "both are code addresses");
  std::memcpy(&function, &address, sizeof function);
  return address != nullptr;
}

}  // namespace

Library::Library(const std::string& path) {
  // The system looks beside the program first.
  const std::string wanted = path.empty() ? fileName : path;
  HMODULE loaded = LoadLibraryA(wanted.c_str());
  if (loaded == nullptr) {
    throw std::runtime_error("the library " + wanted + " cannot be loaded (Windows error " +
                             std::to_string(GetLastError()) + "); put it beside the program or name it with --library");
  }
  module = loaded;
#define KEST_HOST_LOAD(name, ordinal)                                                                      \
  if (!Load(loaded, ordinal, name)) {                                                                      \
    FreeLibrary(loaded);                                                                                   \
    throw std::runtime_error(wanted + " lacks ordinal " + std::to_string(ordinal) + "; is it of this version?"); \
  }
  KEST_HOST_FUNCTIONS(KEST_HOST_LOAD)
#undef KEST_HOST_LOAD
}

Library::~Library() { FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace kest_host
