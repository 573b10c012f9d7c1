#include "core/string.h"

#include <cstring>
#include <functional>
#include <limits>

#include "core/exception.h"

namespace kest {
namespace {

// A text longer than 32 bits count cannot be held.
std::uint32_t Narrow(std::uint64_t length) {
  if (length > std::numeric_limits<std::uint32_t>::max()) throw Qor::MemoryException();
  return static_cast<std::uint32_t>(length);
}

char FoldCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool IsSeparator(char character) { return character == '/' || character == '\\'; }

}  // namespace

String::String(const char* text) {
  if (text == nullptr) return;
  const std::uint64_t length = std::strlen(text);
  storage.EnsureLengthDiscard(length);
  std::memcpy(storage.Characters(), text, static_cast<std::size_t>(length) + 1);
}

String::String(const char* bytes, std::uint32_t length) {
  storage.EnsureLengthDiscard(length);
  if (length != 0) std::memcpy(storage.Characters(), bytes, length);
  storage.Characters()[length] = '\0';
}

String& String::operator=(const char* text) {
  if (text == nullptr) {
    Empty();
    return *this;
  }
  if (IsInside(text)) {
    const String copy(text);
    return *this = copy.Characters();
  }
  const std::uint64_t length = std::strlen(text);
  storage.EnsureLengthDiscard(length);
  std::memcpy(storage.Characters(), text, static_cast<std::size_t>(length) + 1);
  return *this;
}

void String::SetAt(std::uint32_t index, char character) {
  storage.Unshare();
  storage.Characters()[index] = character;
  if (character == '\0') storage.EnsureLengthKeep(index);
}

void String::Append(const String& text) {
  if (text.IsEmpty()) return;
  Append(text.Characters(), text.Length());
}

void String::Append(const char* text) {
  if (text != nullptr) Append(text, Narrow(std::strlen(text)));
}

void String::Append(const char* bytes, std::uint32_t length) {
  const std::uint32_t old = Length();
  // Growing keeps the old text, so what lies inside it is found again at the same offset.
  const bool isInside = IsInside(bytes);
  const std::size_t offset = isInside ? static_cast<std::size_t>(bytes - storage.Characters()) : 0;
  storage.EnsureLengthKeep(std::uint64_t{old} + length);
  char* characters = storage.Characters();
  if (length != 0) std::memmove(characters + old, isInside ? characters + offset : bytes, length);
  characters[old + length] = '\0';
}

void String::Append(char character) {
  const std::uint32_t old = Length();
  storage.EnsureLengthKeep(std::uint64_t{old} + 1);
  char* characters = storage.Characters();
  characters[old + 1] = '\0';
  characters[old] = character;
}

void String::Insert(const char* bytes, std::uint32_t position, std::uint32_t count) {
  if (IsInside(bytes)) {
    const String copy(bytes, count);
    Insert(copy.Characters(), position, count);
    return;
  }
  const std::uint32_t old = Length();
  storage.EnsureLengthKeep(std::uint64_t{old} + count);
  char* characters = storage.Characters();
  std::memmove(characters + position + count, characters + position, old - position);
  characters[old + count] = '\0';
  if (count != 0) std::memcpy(characters + position, bytes, count);
}

void String::JoinPath(const String& part) {
  if (IsEmpty()) {
    *this = part;
    return;
  }
  if (part.IsEmpty()) return;
  if (IsInside(part.Characters())) {
    const String copy(part.Characters(), part.Length());
    JoinPath(copy);
    return;
  }
  // Room for all of it first: a separator alone must not stay behind when memory runs out.
  const bool isApart = !IsSeparator(At(Length() - 1)) && !IsSeparator(part.At(0));
  storage.Reserve(std::uint64_t{Length()} + (isApart ? 1 : 0) + part.Length());
  if (isApart) Append('\\');
  Append(part);
}

void String::JoinPath(const char* part) {
  if (IsEmpty()) {
    *this = part;
    return;
  }
  if (part == nullptr) return;
  if (IsInside(part)) {
    const String copy(part);
    JoinPath(copy.Characters());
    return;
  }
  const bool isApart = !IsSeparator(At(Length() - 1));
  storage.Reserve(std::uint64_t{Length()} + (isApart ? 1 : 0) + std::strlen(part));
  if (isApart) Append('\\');
  Append(part);
}

int String::Compare(const char* text) const {
  if (text == nullptr) return IsEmpty() ? 0 : 1;
  if (IsEmpty()) return 1;
  return std::strcmp(Characters(), text);
}

bool String::Equals(const String& other) const {
  const std::uint32_t length = Length();
  if (length != other.Length()) return false;
  return length == 0 || std::memcmp(Characters(), other.Characters(), length) == 0;
}

bool String::EqualsIgnoringCase(const char* text) const {
  if (text == nullptr || *text == '\0') return IsEmpty();
  if (IsEmpty()) return false;
  const char* own = Characters();
  while (*own != '\0' && FoldCase(*own) == FoldCase(*text)) {
    ++own;
    ++text;
  }
  return *own == *text;
}

String String::Middle(std::uint32_t start, std::uint32_t count) const {
  const std::uint32_t length = Length();
  if (start >= length || count == 0) return String();
  return String(Characters() + start, count < length - start ? count : length - start);
}

void String::TrimLeft() {
  const std::uint32_t length = Length();
  std::uint32_t spaces = 0;
  while (spaces < length && IsSpace(At(spaces))) ++spaces;
  if (spaces == 0) return;
  if (storage.IsShared()) {
    String rest(Characters() + spaces, length - spaces);
    storage.Swap(rest.storage);
    return;
  }
  char* characters = storage.Characters();
  std::memmove(characters, characters + spaces, length - spaces);
  storage.EnsureLengthKeep(length - spaces);
  characters[length - spaces] = '\0';
}

void String::TrimRight() {
  const std::uint32_t length = Length();
  std::uint32_t end = length;
  while (end > 0 && IsSpace(At(end - 1))) --end;
  if (end == length) return;
  storage.Unshare();
  storage.EnsureLengthKeep(end);
  storage.Characters()[end] = '\0';
}

void String::Trim() {
  TrimRight();
  TrimLeft();
}

bool String::IsSpace(char character) {
  return character == ' ' || character == '\t' || character == '\r' || character == '\n' || character == '\f';
}

void String::LoadResource(os::ModuleHandle module, std::uint32_t id) {
  constexpr std::uint32_t step = 256;  // bytes
  for (std::uint32_t capacity = step;; capacity += step) {
    String area;
    char* characters = area.TakeBuffer(capacity - 1);
    const int count = os::system->LoadStringA(module, id, characters, static_cast<int>(capacity));
    if (count <= 0) {
      Empty();
      return;
    }
    // A full area may have cut the text.
    if (static_cast<std::uint32_t>(count) > capacity - 2) continue;
    *this = String(characters, static_cast<std::uint32_t>(count));
    return;
  }
}

char* String::TakeBuffer(std::uint32_t length) {
  storage.EnsureLengthKeep(length);
  storage.Characters()[length] = '\0';
  storage.SetExclusive(true);
  return storage.Characters();
}

void String::ReturnBuffer() {
  if (storage.IsExclusive()) storage.SetExclusive(false);
}

bool String::IsInside(const char* bytes) const {
  const char* characters = storage.Characters();
  // std::less orders all pointers, also those that have nothing to do with each other.
  const std::less<const char*> isBefore;
  return characters != nullptr && !isBefore(bytes, characters) && isBefore(bytes, characters + storage.Capacity());
}

}  // namespace kest
