#include "platform/files.h"

#include <algorithm>

#include "platform/registry_key.h"

namespace kest {
namespace {

// The path that a call put into `buffer` of longestPath characters and whose length it answered as `length`.
String PathFrom(const char* buffer, std::uint32_t length) {
  // A length that is not below the room says what would have been needed.
  return length < os::longestPath ? String(buffer, length) : String();
}

}  // namespace

bool WriteAll(os::FileHandle file, const void* bytes, std::uint32_t count) {
  const auto* at = static_cast<const std::uint8_t*>(bytes);
  while (count != 0) {
    std::uint32_t written = 0;
    // A step that succeeds without writing would be repeated for ever.
    if (!os::system->WriteFile(file, at, count, &written) || written == 0) return false;
    if (written >= count) return true;
    at += written;
    count -= written;
  }
  return true;
}

std::uint64_t FileSize(os::FileHandle file) {
  std::uint32_t high = 0;
  const std::uint32_t low = os::system->GetFileSize(file, &high);
  return std::uint64_t{high} << 32 | low;
}

bool FileExists(const String& path) {
  return os::system->GetFileAttributesA(path.Text()) != os::invalidFileAttributes;
}

bool CopyFile(const String& destination, const String& source) {
  return os::system->CopyFileA(source.Text(), destination.Text(), false);
}

bool DeleteFile(const String& path) { return os::system->DeleteFileA(path.Text()); }

std::int32_t MakeDirectories(const String& path) {
  String prefix;
  prefix.Reserve(path.Length());
  std::int32_t count = 0, position = 0;
  for (;;) {
    const std::int32_t separator = path.FindFirstOf("\\/", position);
    if (separator < 0) break;
    prefix.Append(path.Characters() + position, static_cast<std::uint32_t>(separator - position));
    // Fails for one that is there, a bare drive and the root: whether it mattered shows in the end.
    os::system->CreateDirectoryA(prefix.Text());
    prefix.Append('\\');
    ++count;
    position = separator + 1;
  }
  os::system->CreateDirectoryA(path.Text());
  return os::system->_access(path.Text(), 0) == 0 ? count : -1;
}

String TempPath() {
  char buffer[os::longestPath];
  return PathFrom(buffer, os::system->GetTempPathA(sizeof buffer, buffer));
}

String TempFileName(const String& directory, const String& prefix) {
  const String place = directory.IsEmpty() ? TempPath() : directory;
  if (place.IsEmpty()) return String();
  char name[os::longestPath] = {};
  if (os::system->GetTempFileNameA(place.Text(), prefix.Text(), 0, name) == 0) return String();
  // What the call answers is the number in the name, not its length.
  return PathFrom(name, static_cast<std::uint32_t>(std::find(name, name + sizeof name, '\0') - name));
}

String WindowsDirectory() {
  char buffer[os::longestPath];
  return PathFrom(buffer, os::system->GetWindowsDirectoryA(buffer, sizeof buffer));
}

String SystemDirectory() {
  char buffer[os::longestPath];
  return PathFrom(buffer, os::system->GetSystemDirectoryA(buffer, sizeof buffer));
}

String ProgramFilesDirectory() {
  RegistryKey key;
  if (!key.Open(os::LocalMachine(), "Software\\Microsoft\\Windows\\CurrentVersion", os::keyRead)) return String();
  return key.QueryString("ProgramFilesDir");
}

}  // namespace kest
