#include "os/posix/registry_temporary.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string_view>

#include "os/posix/directory_stream.h"
#include "os/posix/registry_directory.h"
#include "os/posix/registry_name.h"

namespace os::posix {
namespace {

constexpr char beginning[] = {ownMark, 'n', 'e', 'w', '-', '\0'};

// Whether `name` still leads to what is open.
bool IsAt(int directory, const char* name, int open) {
  struct stat there {
  }, here{};
  return fstatat(directory, name, &there, AT_SYMLINK_NOFOLLOW) == 0 && fstat(open, &here) == 0 &&
         there.st_ino == here.st_ino && there.st_dev == here.st_dev;
}

// Locks what was just made. False when another took it for a leftover before it was locked.
bool Claim(int directory, const char* name, int made) {
  while (flock(made, LOCK_EX) != 0 && errno == EINTR) {
  }
  return IsAt(directory, name, made);
}

void RemoveLeftover(int directory, const char* name) {
  const Descriptor left(openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  // A lock that is granted shows that the writer is gone, or done: then the name leads elsewhere or nowhere.
  if (!left.IsOpen() || flock(left.Number(), LOCK_EX | LOCK_NB) != 0) return;
  if (IsAt(directory, name, left.Number()) && unlinkat(directory, name, 0) != 0) {
    RemoveDirectory(directory, name, left.Number());
  }
}

}  // namespace

TemporaryName::TemporaryName() {
  static std::atomic<unsigned> count{0};
  std::snprintf(text, sizeof text, "%s%ld-%u", beginning, static_cast<long>(getpid()), ++count);
}

Descriptor MakeTemporaryFile(int directory, TemporaryName* name) {
  for (;; *name = TemporaryName()) {
    Descriptor file(openat(directory, name->text, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    // A process that had this one's number may have left a file of that name.
    if (!file.IsOpen() && errno == EEXIST) continue;
    if (!file.IsOpen() || Claim(directory, name->text, file.Number())) return file;
  }
}

Descriptor MakeTemporaryDirectory(int directory, TemporaryName* name) {
  for (;; *name = TemporaryName()) {
    if (mkdirat(directory, name->text, 0700) != 0) {
      if (errno == EEXIST) continue;
      return Descriptor();
    }
    Descriptor made(openat(directory, name->text, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (made.IsOpen() && Claim(directory, name->text, made.Number())) return made;
    // Taken for a leftover, or not to be had: then the system is short of something.
    if (made.IsOpen() || errno == ENOENT) continue;
    const int error = errno;
    unlinkat(directory, name->text, AT_REMOVEDIR);
    errno = error;
    return made;
  }
}

void RemoveDirectory(int parent, const char* name, int directory) {
  DirectoryStream files(directory);
  while (const char* file = files.IsOpen() ? files.Next() : nullptr) unlinkat(directory, file, 0);
  unlinkat(parent, name, AT_REMOVEDIR);
}

void RemoveLeftovers(int directory) {
  DirectoryStream files(directory);
  while (const char* file = files.IsOpen() ? files.Next() : nullptr) {
    if (std::string_view(file).substr(0, sizeof beginning - 1) == beginning) RemoveLeftover(directory, file);
  }
}

}  // namespace os::posix
