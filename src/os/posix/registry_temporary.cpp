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

// How many names are tried. Others may be in the way of some; whatever is in the way of so many will not go.
constexpr int mostNames = 100;

// Whether `name` still leads to what is open. When it does not, `errno` is 0 if it leads to something else.
bool IsAt(int directory, const char* name, int open) {
  struct stat there {
  }, here{};
  if (fstatat(directory, name, &there, AT_SYMLINK_NOFOLLOW) != 0 || fstat(open, &here) != 0) return false;
  errno = 0;
  return there.st_ino == here.st_ino && there.st_dev == here.st_dev;
}

// Locks what was just made. False, with `errno` as IsAt leaves it, when another took it for a leftover before it was
// locked, or may have.
bool Claim(int directory, const char* name, int made) {
  // Whoever holds the lock is about to take this away, and may be stopped: nobody waits for him.
  if (flock(made, LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) return false;
  return IsAt(directory, name, made);
}

// Takes away what could not be claimed, unless the name leads to something else. `errno` stays.
void Abandon(int directory, const char* name, int flags) {
  const int error = errno;
  if (error != 0) unlinkat(directory, name, flags);
  errno = error;
}

Descriptor OpenLeftover(int directory, const char* name) {
  return Descriptor(openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

void RemoveLeftover(int directory, const char* name) {
  Descriptor left = OpenLeftover(directory, name);
  if (!left.IsOpen() && errno == EACCES) {
    // Its writer was killed before it could give itself what a mask had taken.
    AllowOwner(directory, name);
    left = OpenLeftover(directory, name);
  }
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
  for (int names = 0; names < mostNames; ++names, *name = TemporaryName()) {
    Descriptor file(openat(directory, name->text, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownersFile));
    // A process that had this one's number may have left a file of that name.
    if (!file.IsOpen() && errno == EEXIST) continue;
    if (!file.IsOpen()) return file;
    // The mask may have taken some of it. A file system without modes cannot give it, and need not.
    fchmod(file.Number(), ownersFile);
    if (Claim(directory, name->text, file.Number())) return file;
    Abandon(directory, name->text, 0);
  }
  return Descriptor();
}

Descriptor MakeTemporaryDirectory(int directory, TemporaryName* name) {
  for (int names = 0; names < mostNames; ++names, *name = TemporaryName()) {
    if (mkdirat(directory, name->text, ownersDirectory) != 0) {
      if (errno == EEXIST) continue;
      return Descriptor();
    }
    AllowOwner(directory, name->text);
    Descriptor made(openat(directory, name->text, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (made.IsOpen() && Claim(directory, name->text, made.Number())) return made;
    // Taken for a leftover, or not to be had: then the system is short of something.
    const bool isTaken = made.IsOpen() || errno == ENOENT;
    Abandon(directory, name->text, AT_REMOVEDIR);
    if (!isTaken) return made;
  }
  return Descriptor();
}

void AllowOwner(int directory, const char* name) {
  struct stat made {};
  if (fstatat(directory, name, &made, AT_SYMLINK_NOFOLLOW) != 0) return;
  const mode_t wanted = S_ISDIR(made.st_mode) ? ownersDirectory : ownersFile;
  if ((made.st_mode & wanted) != wanted) fchmodat(directory, name, wanted, AT_SYMLINK_NOFOLLOW);
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
