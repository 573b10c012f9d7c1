#include "os/posix/registry_name.h"

#include <algorithm>

namespace os::posix {
namespace {

constexpr std::ptrdiff_t longestWhole = 200;  // characters of a file name that stands whole
constexpr std::size_t longestCut = 180;       // characters in front of a hash
constexpr std::string_view hexDigits = "0123456789abcdef";

char Small(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
int Capital(char c) {
  return static_cast<std::uint8_t>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
}

bool StandsForItself(char c, bool isFirst) {
  if (c == ownMark) return !isFirst;
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == ' ';
}

char* Escape(char c, char* next) {
  const auto byte = static_cast<std::uint8_t>(c);
  *next++ = '%';
  *next++ = hexDigits[byte >> 4];
  *next++ = hexDigits[byte & 15];
  return next;
}

char* PutHash(std::uint64_t hash, char* next) {
  *next++ = '~';
  for (int shift = 60; shift >= 0; shift -= 4) *next++ = hexDigits[hash >> shift & 15];
  return next;
}

// The file name of `name` behind the marks that `mark` holds.
FileName FileNameOf(std::string_view mark, std::string_view name) {
  FileName file{};
  char* next = std::copy(mark.begin(), mark.end(), file.text);
  const char* const end = file.text + longestWhole;
  std::uint64_t hash = emptyHash;
  for (char c : name) {
    c = Small(c);
    hash = HashOf(static_cast<std::uint8_t>(c), hash);
    const bool isPlain = StandsForItself(c, next == file.text);
    file.isCut = file.isCut || end - next < (isPlain ? 1 : 3);
    if (file.isCut) continue;
    if (isPlain) {
      *next++ = c;
    } else {
      next = Escape(c, next);
    }
  }
  if (file.isCut) next = PutHash(hash, file.text + longestCut);
  *next = '\0';
  return file;
}

}  // namespace

FileName FileNameOfKey(std::string_view name) {
  return FileNameOf({}, name);
}
FileName FileNameOfValue(std::string_view name) {
  return FileNameOf({&valueMark, 1}, name);
}

std::string_view NameOfKeyFile(std::string_view file, char (&name)[256]) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < file.size() && length < sizeof name; ++i) {
    name[length] = file[i];
    if (file[i] == '%' && file.size() - i > 2) {
      // What is no digit gives some other byte, and so a name that does not lead back to this file.
      name[length] = static_cast<char>(hexDigits.find(file[i + 1]) << 4 | hexDigits.find(file[i + 2]));
      i += 2;
    }
    ++length;
  }
  const std::string_view found(name, length);
  return FileNameOfKey(found).text == file ? found : std::string_view();
}

bool IsKeyName(std::string_view name) {
  return !name.empty() && name.size() <= longestKeyName && name.find('\\') == name.npos && name.find('\0') == name.npos;
}

bool IsValueName(std::string_view name) {
  return name.size() <= longestValueName && name.find('\0') == name.npos;
}

bool IsSameName(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return Capital(a) == Capital(b); });
}

bool ComesBefore(std::string_view left, std::string_view right) {
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [](char a, char b) { return Capital(a) < Capital(b); });
}

std::uint64_t HashOf(std::string_view bytes, std::uint64_t hash) {
  for (const char c : bytes) hash = HashOf(static_cast<std::uint8_t>(c), hash);
  return hash;
}

}  // namespace os::posix
