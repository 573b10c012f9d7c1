// The names in an open directory, from its first: "." and ".." among them. One thread at a time.
#pragma once

#include <dirent.h>
#include <fcntl.h>

#include <cerrno>

#include "os/posix/descriptor.h"

namespace os::posix {

class DirectoryStream {
 public:
  // Reads through a descriptor of its own: how far the reading has come belongs to what was opened. `errno` tells of a
  // failure.
  explicit DirectoryStream(int directory) {
    Descriptor opened(openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) stream = fdopendir(opened.Number());
    if (stream != nullptr) opened.Release();
  }
  DirectoryStream(const DirectoryStream&) = delete;
  DirectoryStream& operator=(const DirectoryStream&) = delete;
  ~DirectoryStream() {
    if (stream != nullptr) closedir(stream);
  }

  bool IsOpen() const { return stream != nullptr; }
  // Null at the end, with `errno` 0, and on failure. The name lives until the next call.
  const char* Next() {
    errno = 0;
    const dirent* entry = readdir(stream);
    return entry != nullptr ? entry->d_name : nullptr;
  }

 private:
  DIR* stream = nullptr;
};

}  // namespace os::posix
