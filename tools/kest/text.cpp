#include "text.h"

#include <cstdint>

namespace kest_host {
namespace {

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Reads one code point at `position` and moves behind it; false where the bytes are no UTF-8 (RFC 3629 section 4).
bool ReadCodePoint(const std::string& text, std::size_t& position, std::uint32_t& codePoint) {
  const auto first = static_cast<unsigned char>(text[position]);
  const int more = first < 0x80 ? 0 : (first & 0xE0) == 0xC0 ? 1 : (first & 0xF0) == 0xE0 ? 2 : (first & 0xF8) == 0xF0 ? 3 : -1;
  if (more < 0 || position + static_cast<std::size_t>(more) >= text.size()) return false;
  codePoint = more == 0 ? first : first & (0x3Fu >> more);
  for (int i = 1; i <= more; ++i) {
    const auto next = static_cast<unsigned char>(text[position + static_cast<std::size_t>(i)]);
    if (!IsContinuation(next)) return false;
    codePoint = codePoint << 6 | (next & 0x3Fu);
  }
  constexpr std::uint32_t least[] = {0, 0x80, 0x800, 0x10000};
  if (codePoint < least[more] || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) return false;
  position += static_cast<std::size_t>(more) + 1;
  return true;
}

bool IsUtf8(const std::string& text) {
  std::uint32_t codePoint;
  for (std::size_t position = 0; position < text.size();) {
    if (!ReadCodePoint(text, position, codePoint)) return false;
  }
  return true;
}

}  // namespace

std::string ToUtf8(const std::string& text) {
  if (IsUtf8(text)) return text;
  std::string utf8;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    if (code < 0x80) {
      utf8 += character;
    } else {
      utf8 += static_cast<char>(0xC0 | code >> 6);
      utf8 += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return utf8;
}

std::string ForTerminal(const std::string& text) {
  const std::string utf8 = ToUtf8(text);
  std::string clean;
  for (std::size_t position = 0; position < utf8.size();) {
    const std::size_t start = position;
    std::uint32_t codePoint = 0;
    ReadCodePoint(utf8, position, codePoint);
    const bool isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    clean += isControl ? "?" : utf8.substr(start, position - start);
  }
  return clean;
}

std::size_t Columns(const std::string& utf8) {
  std::size_t columns = 0;
  for (const char character : utf8) columns += IsContinuation(static_cast<unsigned char>(character)) ? 0 : 1;
  return columns;
}

}  // namespace kest_host
