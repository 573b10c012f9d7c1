// Files and directories by path, and what an open file's owner does with its handle. A path's separators are "\\" and
// "/". Paths that the system answers have 259 characters at the most; a longer one is a failure. Any thread may call
// these.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "os/os.h"

namespace kest {

// Writes all `count` bytes at the file's position, in as many steps as the system needs; no bytes succeed at once.
// False as soon as a step fails or writes nothing; what was written before stays.
bool WriteAll(os::FileHandle file, const void* bytes, std::uint32_t count);
// The size in bytes; 4294967295 when the system cannot tell.
std::uint64_t FileSize(os::FileHandle file);

// A directory counts as a file.
bool FileExists(const String& path);
// Copies `source`, replacing what is at `destination`. The destination deliberately comes first, as in an assignment
// and other than in the system's call.
bool CopyFile(const String& destination, const String& source);
bool DeleteFile(const String& path);

// Makes the directory `path` and those missing above it. Answers the number of separators in `path` when it exists
// afterwards, whether made here or not, else -1.
std::int32_t MakeDirectories(const String& path);

// The directory for temporary files, ended by a separator. These are empty on failure.
String TempPath();
// Makes an empty file of a new name in `directory`, that for temporary files when it is empty, and answers its path.
// The name begins with up to three characters of `prefix`.
String TempFileName(const String& directory, const String& prefix);
String WindowsDirectory();
String SystemDirectory();
String ProgramFilesDirectory();

}  // namespace kest
