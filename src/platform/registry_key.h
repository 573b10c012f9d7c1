// One open key of the registry. The object owns its handle and closes it when it is destroyed; it is not copied. Names
// and paths are NUL-terminated texts, null being the empty one. One RegistryKey belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/byte_buffer.h"
#include "core/string.h"
#include "os/os.h"

namespace kest {

// What QueryNumber answers on failure.
constexpr std::uint32_t noNumber = 0xFFFFFFFF;

class RegistryKey {
 public:
  RegistryKey() = default;
  ~RegistryKey() { Close(); }
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;

  // Opens the key `path` below `parent`, a root or an open key's handle, with the access mask `access`. A key that this
  // object had open is closed first. False when there is no such key or it may not be opened; nothing is open then.
  bool Open(os::RegistryHandle parent, const char* path, std::uint32_t access);
  // The same, making the key and whatever is missing above it.
  bool Create(os::RegistryHandle parent, const char* path, std::uint32_t access);
  // Does nothing when no key is open.
  void Close();

  bool IsOpen() const { return handle != nullptr; }
  // Null when no key is open. It stays this object's.
  os::RegistryHandle Handle() const { return handle; }

  // The value's bytes up to their first NUL, whatever its type. Empty for an empty value, and on failure: a value that
  // is missing cannot be told from one that cannot be read.
  String QueryString(const char* name) const;
  // The value's first four bytes, low byte first, whatever its type; bytes that it does not have are zero. noNumber on
  // failure, which a value of more than four bytes is too.
  std::uint32_t QueryNumber(const char* name) const;

  // Each writes one value, of type REG_SZ, REG_DWORD or REG_BINARY, and answers whether it was written. A text is
  // written with the NUL behind it: an empty one has one byte.
  bool SetString(const char* name, const String& text);
  bool SetNumber(const char* name, std::uint32_t value);
  bool SetBytes(const char* name, const ByteBuffer& bytes);

 private:
  os::RegistryHandle handle = nullptr;
};

}  // namespace kest
