#include "platform/registry_key.h"

#include <algorithm>
#include <cstring>

namespace kest {
namespace {

// Cuts `text`, of which `length` characters are known, before its first NUL.
void CutAtNul(String& text, std::uint32_t length) {
  const void* end = std::memchr(text.Characters(), '\0', length);
  if (end != nullptr) length = static_cast<std::uint32_t>(static_cast<const char*>(end) - text.Characters());
  text.SetAt(length, '\0');
}

}  // namespace

bool RegistryKey::Open(os::RegistryHandle parent, const char* path, std::uint32_t access) {
  Close();
  os::RegistryHandle opened = nullptr;
  if (os::system->RegOpenKeyExA(parent, path, 0, access, &opened) != os::errorSuccess) return false;
  handle = opened;
  return true;
}

bool RegistryKey::Create(os::RegistryHandle parent, const char* path, std::uint32_t access) {
  Close();
  os::RegistryHandle created = nullptr;
  if (os::system->RegCreateKeyExA(parent, path, 0, access, &created) != os::errorSuccess) return false;
  handle = created;
  return true;
}

void RegistryKey::Close() {
  if (handle != nullptr) os::system->RegCloseKey(handle);
  handle = nullptr;
}

String RegistryKey::QueryString(const char* name) const {
  // Another writer may make the value longer between the two calls, so the size is learned anew for every read.
  for (;;) {
    std::uint32_t size = 0;
    if (os::system->RegQueryValueExA(handle, name, nullptr, nullptr, &size) != os::errorSuccess) return String();
    if (size == 0) return String();
    String text;
    const std::uint32_t room = size;
    char* bytes = text.TakeBuffer(room);
    const std::int32_t result = os::system->RegQueryValueExA(handle, name, nullptr, bytes, &size);
    text.ReturnBuffer();
    if (result == os::errorMoreData) continue;
    if (result != os::errorSuccess) return String();
    CutAtNul(text, std::min(size, room));
    return text;
  }
}

std::uint32_t RegistryKey::QueryNumber(const char* name) const {
  std::uint8_t bytes[4] = {0, 0, 0, 0};
  std::uint32_t size = sizeof bytes;
  if (os::system->RegQueryValueExA(handle, name, nullptr, bytes, &size) != os::errorSuccess) return noNumber;
  return bytes[0] | bytes[1] << 8 | bytes[2] << 16 | std::uint32_t{bytes[3]} << 24;
}

bool RegistryKey::SetString(const char* name, const String& text) {
  return os::system->RegSetValueExA(handle, name, os::typeString, text.Text(), text.Length() + 1) == os::errorSuccess;
}

bool RegistryKey::SetNumber(const char* name, std::uint32_t value) {
  const std::uint8_t bytes[4] = {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                                 static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
  return os::system->RegSetValueExA(handle, name, os::typeNumber, bytes, sizeof bytes) == os::errorSuccess;
}

bool RegistryKey::SetBytes(const char* name, const ByteBuffer& bytes) {
  return os::system->RegSetValueExA(handle, name, os::typeBinary, bytes.Bytes(), bytes.Length()) == os::errorSuccess;
}

}  // namespace kest
