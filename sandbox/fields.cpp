#include "fields.h"

#include <algorithm>

#include "wipe.h"

namespace sandbox {
namespace {

char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::optional<Field> ParseLine(std::string_view line) {
  if (line.front() == ' ' || line.front() == '\t') return std::nullopt;
  if (line.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) return std::nullopt;
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos || line.substr(colon, 2) != ": ") return std::nullopt;
  return Field{std::string(line.substr(0, colon)), std::string(line.substr(colon + 2))};
}

}  // namespace

bool EqualIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

const std::string* FindField(const FieldList& fields, std::string_view name) {
  for (const Field& field : fields) {
    if (EqualIgnoringCase(field.name, name)) return &field.value;
  }
  return nullptr;
}

std::string_view FieldOrEmpty(const FieldList& fields, std::string_view name) {
  const std::string* value = FindField(fields, name);
  return value ? std::string_view(*value) : std::string_view();
}

std::string FormatHeaderBlock(const FieldList& fields) {
  std::size_t length = 2;
  for (const Field& field : fields) length += field.name.size() + field.value.size() + 4;
  std::string text;
  text.reserve(length);
  for (const Field& field : fields) text.append(field.name).append(": ").append(field.value).append("\r\n");
  text.append("\r\n");
  return text;
}

std::optional<FieldList> ParseHeaderBlock(std::string_view text) {
  FieldList fields;
  const WipedAtEnd whatIsLeftWiped(fields);
  for (;;) {
    const std::size_t end = text.find("\r\n");
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 2);
    if (line.empty()) break;
    std::optional<Field> field = ParseLine(line);
    if (!field) return std::nullopt;
    fields.push_back(std::move(*field));
  }
  if (!text.empty()) return std::nullopt;
  return fields;
}

}  // namespace sandbox
