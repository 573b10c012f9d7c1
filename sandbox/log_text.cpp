#include "log_text.h"

#include <algorithm>

namespace sandbox {
namespace {

bool IsNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' || c == '_';
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

std::string Remark(const char* what, std::size_t length) {
  return std::string("(") + what + ", " + std::to_string(length) + " bytes)";
}

}  // namespace

std::string SafeName(std::string_view name) {
  const bool safe = !name.empty() && name.size() <= 40 && std::all_of(name.begin(), name.end(), IsNameCharacter);
  return safe ? std::string(name) : Remark("no plain name", name.size());
}

std::string SafeGuid(std::string_view guid) {
  constexpr std::string_view form = "hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh";
  std::string_view bare = guid;
  if (bare.size() == form.size() + 2 && bare.front() == '{' && bare.back() == '}') bare = bare.substr(1, form.size());
  const bool safe = std::equal(bare.begin(), bare.end(), form.begin(), form.end(),
                               [](char c, char wanted) { return wanted == 'h' ? IsHexDigit(c) : c == wanted; });
  return safe ? std::string(guid) : Remark("not in GUID form", guid.size());
}

}  // namespace sandbox
