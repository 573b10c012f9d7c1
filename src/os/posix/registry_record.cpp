#include "os/posix/registry_record.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "os/os.h"
#include "os/posix/registry_name.h"
#include "os/posix/registry_temporary.h"

namespace os::posix {
namespace {

constexpr std::string_view magic = "KESTREG1";
constexpr std::size_t headerSize = 8 + 4 + 4 + 4;
constexpr std::size_t checksumSize = 8;

char* PutNumber(std::uint64_t number, int bytes, char* next) {
  for (; bytes > 0; --bytes, number >>= 8) *next++ = static_cast<char>(number & 0xFF);
  return next;
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t position, int size) {
  std::uint64_t number = 0;
  while (size-- > 0) number = number << 8 | static_cast<std::uint8_t>(bytes[position + static_cast<std::size_t>(size)]);
  return number;
}

bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// The bytes read, which are fewer where the file ends; -1 on failure.
ssize_t ReadAll(int file, char* bytes, std::size_t count) {
  std::size_t length = 0;
  while (length < count) {
    const ssize_t got = read(file, bytes + length, count - length);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    length += static_cast<std::size_t>(got);
  }
  return static_cast<ssize_t>(length);
}

bool WriteRecordTo(int file, const Record& record) {
  char header[headerSize], checksum[checksumSize];
  char* next = header + magic.copy(header, magic.size());
  next = PutNumber(record.type, 4, next);
  next = PutNumber(record.name.size(), 4, next);
  PutNumber(record.data.size(), 4, next);
  const std::string_view head(header, sizeof header);
  PutNumber(HashOf(record.data, HashOf(record.name, HashOf(head))), checksumSize, checksum);
  return WriteAll(file, head) && WriteAll(file, record.name) && WriteAll(file, record.data) &&
         WriteAll(file, {checksum, sizeof checksum});
}

}  // namespace

std::int32_t ReadingError(int number) {
  if (number == ENOMEM || number == EMFILE || number == ENFILE) return errorNotEnoughMemory;
  return number == EACCES || number == EPERM ? errorAccessDenied : errorFileNotFound;
}

std::int32_t WritingError(int number) {
  if (number == EROFS) return errorAccessDenied;
  const std::int32_t error = ReadingError(number);
  return error == errorFileNotFound ? errorWriteFault : error;
}

RecordFile::~RecordFile() {
  std::free(block);
}

std::int32_t RecordFile::Read(int directory, const char* name) {
  // Without O_NONBLOCK the opening of a pipe would wait for its writer.
  const Descriptor file(openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!file.IsOpen() || fstat(file.Number(), &status) != 0) return ReadingError(errno);
  if (!S_ISREG(status.st_mode)) return errorFileNotFound;

  // The header says how long the file is. That must be true before a block of that size is made.
  char header[headerSize];
  ssize_t got = ReadAll(file.Number(), header, sizeof header);
  if (got < 0) return ReadingError(errno);
  if (got != static_cast<ssize_t>(sizeof header)) return errorFileNotFound;
  const std::string_view head(header, sizeof header);
  if (head.substr(0, magic.size()) != magic) return errorFileNotFound;
  const std::size_t nameSize = NumberAt(head, 12, 4), dataSize = NumberAt(head, 16, 4);
  if (nameSize > longestValueName || dataSize > largestValue) return errorFileNotFound;
  const std::size_t size = nameSize + dataSize + checksumSize;
  if (status.st_size != static_cast<off_t>(headerSize + size)) return errorFileNotFound;

  block = static_cast<char*>(std::malloc(size));
  if (block == nullptr) return errorNotEnoughMemory;
  got = ReadAll(file.Number(), block, size);
  if (got < 0) return ReadingError(errno);
  if (got != static_cast<ssize_t>(size)) return errorFileNotFound;
  record.type = static_cast<std::uint32_t>(NumberAt(head, 8, 4));
  record.name = {block, nameSize};
  record.data = {block + nameSize, dataSize};
  const std::uint64_t checksum = HashOf({block, nameSize + dataSize}, HashOf(head));
  return NumberAt({block, size}, nameSize + dataSize, checksumSize) == checksum ? errorSuccess : errorFileNotFound;
}

std::int32_t WriteRecord(int directory, const char* name, const Record& record) {
  TemporaryName temporary;
  const Descriptor file = MakeTemporaryFile(directory, &temporary);
  if (!file.IsOpen()) return WritingError(errno);
  // The bytes are on the disk before the name leads to them.
  if (!WriteRecordTo(file.Number(), record) || fsync(file.Number()) != 0 ||
      renameat(directory, temporary.text, directory, name) != 0) {
    const std::int32_t error = WritingError(errno);
    unlinkat(directory, temporary.text, 0);
    return error;
  }
  return fsync(directory) == 0 ? errorSuccess : WritingError(errno);
}

}  // namespace os::posix
