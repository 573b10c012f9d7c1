#include "os/posix/files.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "os/posix/descriptor.h"

namespace os::posix {
namespace {

// A path as the system takes it. One that is null or too long is empty, and so leads nowhere.
class NativePath {
 public:
  explicit NativePath(const char* path) {
    if (path == nullptr || std::strlen(path) >= sizeof text) return;
    std::replace_copy(path, path + std::strlen(path) + 1, text, '\\', '/');
  }
  const char* Text() const { return text; }

 private:
  char text[PATH_MAX] = {};
};

int NumberOf(FileHandle file) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(file));
}

bool CopyBytes(int from, int to) {
  char buffer[16384];
  for (;;) {
    const ssize_t got = read(from, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    for (ssize_t done = 0; done < got;) {
      const ssize_t written = write(to, buffer + done, static_cast<std::size_t>(got - done));
      if (written < 0 && errno != EINTR) return false;
      if (written > 0) done += written;
    }
  }
}

bool CopyToNew(int from, mode_t mode, const char* to) {
  const Descriptor copy(open(to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!copy.IsOpen()) return false;
  if (CopyBytes(from, copy.Number()) && fchmod(copy.Number(), mode) == 0) return true;
  unlink(to);
  return false;
}

bool CopyOver(int from, mode_t mode, const char* to) {
  // Beside the file that it replaces, as a rename does not leave its file system.
  char beside[PATH_MAX + 16];
  const char* slash = std::strrchr(to, '/');
  const auto directory = static_cast<std::size_t>(slash != nullptr ? slash + 1 - to : 0);
  std::memcpy(beside, to, directory);
  std::strcpy(beside + directory, ".kest-XXXXXX");  // mkostemp fills the X in
  const Descriptor copy(mkostemp(beside, O_CLOEXEC));
  if (!copy.IsOpen()) return false;
  if (CopyBytes(from, copy.Number()) && fchmod(copy.Number(), mode) == 0 && rename(beside, to) == 0) return true;
  unlink(beside);
  return false;
}

// Upper-case hexadecimal, four digits.
void PutNumber(std::uint32_t number, char* text) {
  for (int shift = 12; shift >= 0; shift -= 4) *text++ = "0123456789ABCDEF"[number >> shift & 15];
}

// A number to begin with: names taken shortly after another seldom meet.
std::uint32_t FirstNumber() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint32_t>(now.tv_nsec / 1000 + getpid());
}

}  // namespace

bool MakeDirectory(const char* path) {
  return mkdir(NativePath(path).Text(), 0777) == 0;
}

bool WriteDescriptor(FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written) {
  ssize_t done;
  do {
    done = write(NumberOf(file), bytes, count);
  } while (done < 0 && errno == EINTR);
  *written = done < 0 ? 0 : static_cast<std::uint32_t>(done);
  return done >= 0;
}

std::uint32_t SizeOf(FileHandle file, std::uint32_t* high) {
  struct stat status {};
  *high = 0;
  if (fstat(NumberOf(file), &status) != 0 || !S_ISREG(status.st_mode)) return 0xFFFFFFFF;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  *high = static_cast<std::uint32_t>(size >> 32);
  return static_cast<std::uint32_t>(size);
}

std::uint32_t AttributesOf(const char* path) {
  constexpr std::uint32_t readOnly = 0x01, directory = 0x10, normal = 0x80;
  struct stat status {};
  if (stat(NativePath(path).Text(), &status) != 0) return invalidFileAttributes;
  const std::uint32_t attributes =
      (S_ISDIR(status.st_mode) ? directory : 0) | ((status.st_mode & S_IWUSR) == 0 ? readOnly : 0);
  return attributes != 0 ? attributes : normal;
}

bool Copy(const char* from, const char* to, bool failIfExists) {
  // A pipe is opened without waiting for its writer, and then refused.
  const Descriptor source(open(NativePath(from).Text(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {
  }, old{};
  if (!source.IsOpen() || fstat(source.Number(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  const mode_t mode = status.st_mode & 0777;
  const NativePath destination(to);
  if (failIfExists) return CopyToNew(source.Number(), mode, destination.Text());
  if (stat(destination.Text(), &old) != 0) return CopyOver(source.Number(), mode, destination.Text());
  const bool isItself = old.st_dev == status.st_dev && old.st_ino == status.st_ino;
  if (isItself || !S_ISREG(old.st_mode) || (old.st_mode & S_IWUSR) == 0) return false;
  // A link stays one, what it leads to is replaced.
  char resolved[PATH_MAX];
  return realpath(destination.Text(), resolved) != nullptr && CopyOver(source.Number(), mode, resolved);
}

bool Remove(const char* path) {
  return unlink(NativePath(path).Text()) == 0;
}

int Access(const char* path, int mode) {
  return access(NativePath(path).Text(), mode & (R_OK | W_OK));
}

std::uint32_t TempDirectory(std::uint32_t capacity, char* buffer) {
  const char* variable = std::getenv("TMPDIR");
  const std::string_view directory = variable != nullptr && variable[0] != '\0' ? variable : "/tmp";
  const bool isEnded = directory.back() == '/';
  const std::size_t length = directory.size() + (isEnded ? 0 : 1);
  if (length >= capacity) return static_cast<std::uint32_t>(length + 1);
  buffer[directory.copy(buffer, directory.size())] = '/';
  buffer[length] = '\0';
  return static_cast<std::uint32_t>(length);
}

std::uint32_t MakeTempFile(const char* directory, const char* prefix, std::uint32_t unique, char* name) {
  constexpr std::string_view ending = ".tmp";
  const NativePath path(directory);
  const std::string_view folder = path.Text();
  const std::string_view begin = std::string_view(prefix != nullptr ? prefix : "").substr(0, 3);
  if (folder.empty() || begin.find_first_of("\\/") != begin.npos) return 0;
  const bool isEnded = folder.back() == '/';
  const std::size_t length = folder.size() + (isEnded ? 0 : 1) + begin.size() + 4 + ending.size();
  if (length >= longestPath) return 0;

  char made[longestPath];
  char* next = made + folder.copy(made, folder.size());
  if (!isEnded) *next++ = '/';
  next += begin.copy(next, begin.size());
  *std::copy(ending.begin(), ending.end(), next + 4) = '\0';
  PutNumber(unique, next);
  if (unique != 0) {
    std::strcpy(name, made);
    return unique;
  }

  const std::uint32_t first = FirstNumber();
  for (std::uint32_t step = 0; step <= 0xFFFF; ++step) {
    const std::uint32_t number = (first + step) & 0xFFFF;
    if (number == 0) continue;
    PutNumber(number, next);
    const Descriptor file(open(made, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.IsOpen() && errno != EEXIST) return 0;
    if (!file.IsOpen()) continue;
    std::strcpy(name, made);
    return number;
  }
  return 0;
}

}  // namespace os::posix
