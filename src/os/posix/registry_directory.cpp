#include "os/posix/registry_directory.h"

#include <fcntl.h>
#include <pwd.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "os/os.h"
#include "os/posix/registry_name.h"
#include "os/posix/registry_record.h"
#include "os/posix/registry_temporary.h"

namespace os::posix {
namespace {

// A path in the making; what does not fit makes it useless, and it says so.
class Path {
 public:
  void Append(std::string_view more) {
    isWhole = isWhole && more.size() < sizeof text - length;
    if (isWhole) length += more.copy(text + length, more.size());
    text[length] = '\0';
  }
  bool IsWhole() const { return isWhole; }
  char* Text() { return text; }

 private:
  char text[PATH_MAX] = {};
  std::size_t length = 0;
  bool isWhole = true;
};

// An absolute path in the environment; empty when there is none.
std::string_view AbsoluteVariable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && value[0] == '/' ? value : std::string_view();
}

bool AppendHome(Path* path) {
  const std::string_view variable = AbsoluteVariable("HOME");
  path->Append(variable);
  if (!variable.empty()) return true;
  char strings[4096];
  passwd entry{};
  passwd* user = nullptr;
  if (getpwuid_r(getuid(), &entry, strings, sizeof strings, &user) != 0 || user == nullptr) return false;
  path->Append(user->pw_dir);
  return true;
}

bool FindStore(Path* path) {
  const char* store = std::getenv("KESTAPI_REGISTRY");
  if (store != nullptr && store[0] != '\0') {
    path->Append(store);
    return path->IsWhole();
  }
  const std::string_view data = AbsoluteVariable("XDG_DATA_HOME");
  path->Append(data);
  if (data.empty()) {
    if (!AppendHome(path)) return false;
    path->Append("/.local/share");
  }
  path->Append("/kestapi");
  return path->IsWhole();
}

Descriptor OpenDirectory(int parent, const char* name, int flags) {
  return Descriptor(openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
}

// What was made in `directory` is on the disk when this has answered 0. The descriptor may be one that only leads on.
int Flush(int directory) {
  const Descriptor flushed = OpenDirectory(directory, ".", 0);
  // What may be written and gone through but not read cannot be flushed, and need not.
  if (!flushed.IsOpen()) return errno == EACCES ? 0 : -1;
  return fsync(flushed.Number());
}

// A directory of which nothing but the way through is allowed can be gone through.
Descriptor OpenOrMake(int parent, const char* name) {
  Descriptor directory = OpenDirectory(parent, name, O_PATH);
  if (directory.IsOpen() || errno != ENOENT) return directory;
  if (mkdirat(parent, name, ownersDirectory) != 0 && errno != EEXIST) return directory;
  AllowOwner(parent, name);
  if (Flush(parent) != 0) return directory;
  return OpenDirectory(parent, name, O_PATH);
}

// Goes down `path`, which is cut at its separators, making what is missing.
Descriptor MakePath(char* path) {
  Descriptor directory = OpenDirectory(AT_FDCWD, path[0] == '/' ? "/" : ".", O_PATH);
  char* rest = nullptr;
  for (const char* name = strtok_r(path, "/", &rest); name != nullptr && directory.IsOpen();
       name = strtok_r(nullptr, "/", &rest)) {
    directory = OpenOrMake(directory.Number(), name);
  }
  return directory;
}

// Where a key lies, or is to lie.
struct Place {
  int parent;  // may only lead on
  FileName file;
  std::string_view name;  // what the key's directory has to tell; empty when its file name tells it
};

// Whether the directory of a cut file name is that of the key `name`.
std::int32_t CheckName(int directory, std::string_view name) {
  RecordFile told;
  const std::int32_t error = told.Read(directory, nameFile);
  if (error != errorSuccess) return error;
  return IsSameName(told.Contents().name, name) ? errorSuccess : errorFileNotFound;
}

std::int32_t OpenExisting(const Place& place, Descriptor* key) {
  Descriptor directory = OpenDirectory(place.parent, place.file.text, O_NOFOLLOW);
  if (!directory.IsOpen()) return ReadingError(errno);
  if (place.file.isCut) {
    const std::int32_t error = CheckName(directory.Number(), place.name);
    if (error != errorSuccess) return error;
  }
  *key = std::move(directory);
  return errorSuccess;
}

std::int32_t PutName(int key, std::string_view name) {
  return name.empty() ? errorSuccess : WriteRecord(key, nameFile, {0, name, {}});
}

// Makes the key's directory and puts its name into it. Whoever is killed in between leaves a key that shows a small
// name.
std::int32_t MakeInTwoSteps(const Place& place) {
  if (mkdirat(place.parent, place.file.text, ownersDirectory) != 0) {
    return errno == EEXIST ? errorSuccess : WritingError(errno);
  }
  AllowOwner(place.parent, place.file.text);
  const Descriptor key = OpenDirectory(place.parent, place.file.text, O_NOFOLLOW);
  return key.IsOpen() ? PutName(key.Number(), place.name) : WritingError(errno);
}

// Makes the key's directory, or finds that another has. It appears with its mode and its name, and never takes the
// place of a directory that appeared first.
std::int32_t MakeKey(const Place& place) {
  TemporaryName temporary;
  const Descriptor made = MakeTemporaryDirectory(place.parent, &temporary);
  if (!made.IsOpen()) return WritingError(errno);
  std::int32_t error = PutName(made.Number(), place.name);
  if (error == errorSuccess) {
    if (renameat2(place.parent, temporary.text, place.parent, place.file.text, RENAME_NOREPLACE) == 0) return error;
    // Not every file system can do that.
    const bool isUnable = errno == EINVAL || errno == ENOSYS;
    if (errno != EEXIST) error = isUnable ? MakeInTwoSteps(place) : WritingError(errno);
  }
  RemoveDirectory(place.parent, temporary.text, made.Number());
  return error;
}

std::int32_t OpenOrMakeKey(const Place& place, Descriptor* key) {
  Descriptor directory;
  std::int32_t error = OpenExisting(place, &directory);
  if (error == errorFileNotFound) {
    RemoveLeftovers(place.parent);
    // What is no directory is no key and gives way to one. A directory is not removed like this.
    unlinkat(place.parent, place.file.text, 0);
    error = MakeKey(place);
    if (error == errorSuccess) error = OpenExisting(place, &directory);
    // Something else lies in its place.
    if (error == errorFileNotFound) return errorAccessDenied;
  }
  // Whoever made the directory may not have flushed it yet.
  if (error == errorSuccess && Flush(place.parent) != 0) error = WritingError(errno);
  if (error == errorSuccess) *key = std::move(directory);
  return error;
}

std::int32_t OpenPlace(const Place& place, Missing missing, Descriptor* key) {
  return missing == Missing::isMade ? OpenOrMakeKey(place, key) : OpenExisting(place, key);
}

bool HasCapital(std::string_view name) {
  return std::any_of(name.begin(), name.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

}  // namespace

const char nameFile[] = ".name";

std::int32_t OpenCurrentUser(Missing missing, Descriptor* key) {
  Path path;
  const bool isMade = missing == Missing::isMade;
  if (!FindStore(&path)) return isMade ? errorAccessDenied : errorFileNotFound;
  Descriptor store = OpenDirectory(AT_FDCWD, path.Text(), O_PATH);
  if (!store.IsOpen() && isMade) store = MakePath(path.Text());
  if (!store.IsOpen()) return isMade ? WritingError(errno) : ReadingError(errno);
  return OpenPlace({store.Number(), {"HKEY_CURRENT_USER", false}, {}}, missing, key);
}

std::int32_t OpenSubkey(int parent, std::string_view name, Missing missing, Descriptor* key) {
  const FileName file = FileNameOfKey(name);
  const bool isTold = file.isCut || HasCapital(name);
  return OpenPlace({parent, file, isTold ? name : std::string_view()}, missing, key);
}

}  // namespace os::posix
