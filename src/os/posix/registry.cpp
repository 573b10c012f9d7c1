#include "os/posix/registry.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "os/posix/descriptor.h"
#include "os/posix/registry_directory.h"
#include "os/posix/registry_listing.h"
#include "os/posix/registry_name.h"
#include "os/posix/registry_record.h"
#include "os/posix/registry_temporary.h"

namespace os::posix {
namespace {

// What a handle points at.
struct Key {
  Descriptor directory;
  Listing keys, values;
  bool maySet = true;  // values; a root may
};

// The handles that Windows predefines: the 256 lowest numbers of 32 bits, which no address is.
bool IsRoot(RegistryHandle handle) {
  return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(handle)) < -0x7FFFFF00ll;
}

std::string_view TextOf(const char* text) {
  return text != nullptr ? text : std::string_view();
}

// Cuts the first key name off `path`; empty at its end. Several separators are one.
std::string_view NextName(std::string_view* path) {
  path->remove_prefix(std::min(path->find_first_not_of('\\'), path->size()));
  const std::string_view name = path->substr(0, path->find('\\'));
  path->remove_prefix(name.size());
  return name;
}

bool IsPath(std::string_view path) {
  for (std::string_view name = NextName(&path); !name.empty(); name = NextName(&path)) {
    if (!IsKeyName(name)) return false;
  }
  return true;
}

std::int32_t OpenRoot(RegistryHandle root, Missing missing, Descriptor* directory) {
  if (root == CurrentUser()) return OpenCurrentUser(missing, directory);
  return missing == Missing::isMade ? errorAccessDenied : errorFileNotFound;
}

// The key that a call works on: the handle's own, or a root's, which is opened for the one call.
class Target {
 public:
  std::int32_t Open(RegistryHandle handle, Missing missing) {
    if (handle == nullptr) return errorInvalidHandle;
    if (IsRoot(handle)) return OpenRoot(handle, missing, &root.directory);
    key = static_cast<Key*>(handle);
    return errorSuccess;
  }
  Key& operator*() { return *key; }
  int Directory() const { return key->directory.Number(); }

 private:
  Key root;
  Key* key = &root;
};

std::int32_t OpenPath(RegistryHandle parent, const char* text, Missing missing, std::uint32_t access,
                      RegistryHandle* handle) {
  std::string_view path = TextOf(text);
  if (!IsPath(path)) return errorInvalidParameter;
  Target from;
  std::int32_t error = from.Open(parent, missing);
  if (error != errorSuccess) return error;
  Descriptor directory(openat(from.Directory(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.IsOpen()) return ReadingError(errno);
  for (std::string_view name = NextName(&path); !name.empty(); name = NextName(&path)) {
    error = OpenSubkey(directory.Number(), name, missing, &directory);
    if (error != errorSuccess) return error;
  }
  if (missing == Missing::isMade) RemoveLeftovers(directory.Number());
  void* block = std::malloc(sizeof(Key));
  if (block == nullptr) return errorNotEnoughMemory;
  auto* key = new (block) Key;
  key->directory = std::move(directory);
  key->maySet = (access & keySetValue) != 0;
  *handle = key;
  return errorSuccess;
}

using TakeNames = std::int32_t (Listing::*)(int directory);

std::int32_t NameAt(RegistryHandle handle, Listing Key::*listing, TakeNames take, std::uint32_t index, char* name,
                    std::uint32_t* characters) {
  Target key;
  std::int32_t error = key.Open(handle, Missing::isAnError);
  // A root without a directory has nothing in it.
  if (error == errorFileNotFound) return errorNoMoreItems;
  if (error != errorSuccess) return error;
  Listing& names = (*key).*listing;
  if (index == 0 || !names.IsTaken()) error = (names.*take)(key.Directory());
  if (error != errorSuccess) return error;
  if (index >= names.Count()) return errorNoMoreItems;
  const std::string_view found = names.Name(index);
  if (found.size() >= *characters) return errorMoreData;
  name[found.copy(name, found.size())] = '\0';
  *characters = static_cast<std::uint32_t>(found.size());
  return errorSuccess;
}

}  // namespace

std::int32_t OpenKey(RegistryHandle parent, const char* path, std::uint32_t access, RegistryHandle* key) {
  return OpenPath(parent, path, Missing::isAnError, access, key);
}

std::int32_t CreateKey(RegistryHandle parent, const char* path, std::uint32_t access, RegistryHandle* key) {
  return OpenPath(parent, path, Missing::isMade, access, key);
}

std::int32_t CloseKey(RegistryHandle handle) {
  if (handle == nullptr) return errorInvalidHandle;
  if (IsRoot(handle)) return errorSuccess;
  auto* key = static_cast<Key*>(handle);
  key->~Key();
  std::free(key);
  return errorSuccess;
}

std::int32_t QueryValue(RegistryHandle handle, const char* name, std::uint32_t* type, void* data, std::uint32_t* size) {
  const std::string_view wanted = TextOf(name);
  if (!IsValueName(wanted)) return errorInvalidParameter;
  Target key;
  std::int32_t error = key.Open(handle, Missing::isAnError);
  if (error != errorSuccess) return error;
  RecordFile file;
  error = file.Read(key.Directory(), FileNameOfValue(wanted).text);
  if (error != errorSuccess) return error;
  const Record& value = file.Contents();
  if (!IsSameName(value.name, wanted)) return errorFileNotFound;
  if (type != nullptr) *type = value.type;
  const std::uint32_t room = *size;
  *size = static_cast<std::uint32_t>(value.data.size());
  if (data == nullptr) return errorSuccess;
  if (room < *size) return errorMoreData;
  value.data.copy(static_cast<char*>(data), value.data.size());
  return errorSuccess;
}

std::int32_t SetValue(RegistryHandle handle, const char* name, std::uint32_t type, const void* data,
                      std::uint32_t size) {
  const std::string_view wanted = TextOf(name);
  if (!IsValueName(wanted) || size > largestValue || (data == nullptr && size != 0)) return errorInvalidParameter;
  Target key;
  std::int32_t error = key.Open(handle, Missing::isMade);
  if (error != errorSuccess) return error;
  if (!(*key).maySet) return errorAccessDenied;
  const FileName file = FileNameOfValue(wanted);
  Record value{type, wanted, {static_cast<const char*>(data), size}};
  RecordFile old;
  error = old.Read(key.Directory(), file.text);
  if (error == errorNotEnoughMemory) return error;
  if (error == errorSuccess) {
    // This value keeps its name as it was first written. Another one can lie there only where names are cut.
    const bool isOwn = IsSameName(old.Contents().name, wanted);
    if (!isOwn && file.isCut) return errorWriteFault;
    if (isOwn) value.name = old.Contents().name;
  }
  return WriteRecord(key.Directory(), file.text, value);
}

std::int32_t EnumKey(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters) {
  return NameAt(key, &Key::keys, &Listing::TakeKeys, index, name, characters);
}

std::int32_t EnumValue(RegistryHandle key, std::uint32_t index, char* name, std::uint32_t* characters) {
  return NameAt(key, &Key::values, &Listing::TakeValues, index, name, characters);
}

}  // namespace os::posix
