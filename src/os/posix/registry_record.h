// The file of one value, or of a key's name: written whole or not at all, believed only when every byte of it is right.
// docs/registry.md describes the form. Any thread may call; a RecordFile belongs to one at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "os/posix/descriptor.h"

namespace os::posix {

constexpr std::size_t largestValue = 64u << 20;  // bytes of data

struct Record {
  std::uint32_t type;
  std::string_view name;  // as it was first written
  std::string_view data;
};

// What a failed call's `errno` means to the registry's caller. A file that is missing, or not what it should be, reads
// as not found.
std::int32_t ReadingError(int number);
std::int32_t WritingError(int number);

class RecordFile {
 public:
  RecordFile() = default;
  RecordFile(const RecordFile&) = delete;
  RecordFile& operator=(const RecordFile&) = delete;
  ~RecordFile();

  // Reads `file` of `directory`, once for each object. Answers errorSuccess, errorFileNotFound for whatever is no
  // record, or why it cannot be read.
  std::int32_t Read(int directory, const char* file);
  // What was read; it lives as long as this object.
  const Record& Contents() const { return record; }

 private:
  char* block = nullptr;
  Record record{};
};

// Puts the record in the place of whatever file has that name: it is written beside it and flushed, takes its place by
// being renamed, and the directory is flushed. After a failure the old file stands, unless it was the last step that
// failed: then the new one does, and only a crash of the machine can take it back.
std::int32_t WriteRecord(int directory, const char* file, const Record& record);

}  // namespace os::posix
