#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "module.h"

namespace kest_host {
namespace {

constexpr char fileName[] = "KESTAPI.DLL";

}  // namespace

Module::Module(const std::string& path) {
  // The system looks beside the program first.
  const std::string wanted = path.empty() ? fileName : path;
  handle = LoadLibraryA(wanted.c_str());
  if (handle == nullptr) {
    throw std::runtime_error("the library " + wanted + " cannot be loaded (Windows error " +
                             std::to_string(GetLastError()) + "); put it beside the program or name it with --library");
  }
}

Module::~Module() {
  FreeLibrary(static_cast<HMODULE>(handle));
}

Module::Function Module::Find(const char*, int ordinal) const {
  const FARPROC address = GetProcAddress(static_cast<HMODULE>(handle), MAKEINTRESOURCEA(ordinal));
  Function function;
  static_assert(sizeof function == sizeof address, "both are code addresses");
  std::memcpy(&function, &address, sizeof function);
  return function;
}

std::string Module::Path() const {
  char path[MAX_PATH];
  const DWORD length = GetModuleFileNameA(static_cast<HMODULE>(handle), path, sizeof path);
  return std::string(path, length < sizeof path ? length : 0);
}

std::string Module::FileVersion() const {
  const std::string path = Path();
  DWORD ignored;
  std::vector<char> data(GetFileVersionInfoSizeA(path.c_str(), &ignored));
  if (data.empty() || !GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data())) return {};
  void* block;
  UINT size;
  if (!VerQueryValueA(data.data(), "\\", &block, &size) || size < sizeof(VS_FIXEDFILEINFO)) return {};
  const auto* info = static_cast<const VS_FIXEDFILEINFO*>(block);
  const auto word = [](DWORD both, int shift) { return std::to_string(both >> shift & 0xFFFF); };
  return word(info->dwFileVersionMS, 16) + "." + word(info->dwFileVersionMS, 0) + "." +
         word(info->dwFileVersionLS, 16) + "." + word(info->dwFileVersionLS, 0);
}

}  // namespace kest_host
