#include "os/posix/registry_listing.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "os/os.h"
#include "os/posix/descriptor.h"
#include "os/posix/directory_stream.h"
#include "os/posix/registry_directory.h"
#include "os/posix/registry_name.h"
#include "os/posix/registry_record.h"

namespace os::posix {

// A name, its characters behind it.
struct Listing::Entry {
  Entry* next;
  std::size_t length;

  std::string_view Name() const { return {reinterpret_cast<const char*>(this + 1), length}; }
};

std::string_view Listing::Name(std::size_t index) const {
  return sorted[index]->Name();
}

std::int32_t Listing::TakeKeys(int directory) {
  return Take(directory, false);
}
std::int32_t Listing::TakeValues(int directory) {
  return Take(directory, true);
}

std::int32_t Listing::Take(int directory, bool ofValues) {
  Clear();
  DirectoryStream files(directory);
  if (!files.IsOpen()) return ReadingError(errno);
  while (const char* file = files.Next()) {
    if (file[0] == ownMark || (file[0] == valueMark) != ofValues) continue;
    const std::int32_t error = ofValues ? AddValue(directory, file) : AddKey(directory, file);
    // Every other failure means that this is no key or value.
    if (error == errorNotEnoughMemory) {
      Clear();
      return error;
    }
  }
  if (errno != 0) {
    const std::int32_t error = ReadingError(errno);
    Clear();
    return error;
  }
  return Sort();
}

std::int32_t Listing::AddKey(int directory, std::string_view file) {
  const Descriptor key(openat(directory, file.data(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!key.IsOpen()) return ReadingError(errno);
  RecordFile told;
  const std::int32_t error = told.Read(key.Number(), nameFile);
  if (error == errorNotEnoughMemory) return error;
  if (error == errorSuccess) {
    const std::string_view name = told.Contents().name;
    if (IsKeyName(name) && FileNameOfKey(name).text == file) return Add(name);
  }
  char buffer[256];
  const std::string_view name = NameOfKeyFile(file, buffer);
  return IsKeyName(name) ? Add(name) : errorFileNotFound;
}

std::int32_t Listing::AddValue(int directory, const char* file) {
  RecordFile value;
  const std::int32_t error = value.Read(directory, file);
  if (error != errorSuccess) return error;
  const std::string_view name = value.Contents().name;
  if (!IsValueName(name) || std::string_view(FileNameOfValue(name).text) != file) return errorFileNotFound;
  return Add(name);
}

std::int32_t Listing::Add(std::string_view name) {
  auto* entry = static_cast<Entry*>(std::malloc(sizeof(Entry) + name.size()));
  if (entry == nullptr) return errorNotEnoughMemory;
  *entry = {first, name.size()};
  name.copy(reinterpret_cast<char*>(entry + 1), name.size());
  first = entry;
  ++count;
  return errorSuccess;
}

std::int32_t Listing::Sort() {
  sorted = static_cast<Entry**>(std::malloc((count + 1) * sizeof(Entry*)));
  if (sorted == nullptr) return errorNotEnoughMemory;
  Entry** next = sorted;
  for (Entry* entry = first; entry != nullptr; entry = entry->next) *next++ = entry;
  std::sort(sorted, next, [](const Entry* a, const Entry* b) { return ComesBefore(a->Name(), b->Name()); });
  isTaken = true;
  return errorSuccess;
}

void Listing::Clear() {
  std::free(sorted);
  sorted = nullptr;
  while (first != nullptr) {
    Entry* next = first->next;
    std::free(first);
    first = next;
  }
  count = 0;
  isTaken = false;
}

}  // namespace os::posix
