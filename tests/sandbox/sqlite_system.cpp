#include "sandbox/sqlite_system.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>

namespace sandboxtest {
namespace {

SqliteSystem* current = nullptr;
int (*realSleep)(sqlite3_vfs*, int) = nullptr;

int Sleep(sqlite3_vfs*, int microseconds) {
  current->onSleep(microseconds);
  return microseconds;
}

int Open(const char* path, int flags, int mode) {
  if (!current->opensFail || (flags & O_ACCMODE) == O_RDONLY) return ::open(path, flags, mode);
  errno = EACCES;
  return -1;
}

bool HasSpace() {
  if (current->writesLeft < 0) return true;
  if (current->writesLeft > 0) return current->writesLeft-- > 0;
  errno = ENOSPC;
  return false;
}

ssize_t Write(int file, const void* bytes, std::size_t count) {
  return HasSpace() ? ::write(file, bytes, count) : -1;
}

ssize_t WriteAt(int file, const void* bytes, std::size_t count, off_t offset) {
  return HasSpace() ? ::pwrite(file, bytes, count, offset) : -1;
}

// SQLite keeps its calls as functions of no certain type.
template <typename Function>
void Set(const char* name, Function* function) {
  sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
  vfs->xSetSystemCall(vfs, name, reinterpret_cast<sqlite3_syscall_ptr>(function));
}

}  // namespace

SqliteSystem::SqliteSystem() {
  current = this;
  sqlite3_initialize();
  sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
  realSleep = vfs->xSleep;
  vfs->xSleep = Sleep;
  Set("open", Open);
  Set("write", Write);
  Set("pwrite", WriteAt);
  Set("pwrite64", WriteAt);
}

SqliteSystem::~SqliteSystem() {
  sqlite3_vfs* vfs = sqlite3_vfs_find(nullptr);
  vfs->xSleep = realSleep;
  vfs->xSetSystemCall(vfs, nullptr, nullptr);
  current = nullptr;
}

}  // namespace sandboxtest
