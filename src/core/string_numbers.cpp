// String: numbers to text and back, letter case.
#include <cctype>
#include <clocale>
#include <cstdio>
#include <cstring>

#include "core/string.h"

namespace kest {
namespace {

// Appends `value` in `base`, at least `width` digits. Digits come out last first, so they are built from the end.
void AppendDigits(String& text, std::uint32_t value, std::uint32_t base, std::uint32_t width) {
  char digits[10];  // 2^32 - 1 in decimal
  std::uint32_t count = 0;
  do {
    digits[sizeof digits - ++count] = "0123456789abcdef"[value % base];
    value /= base;
  } while (value != 0);
  text.Reserve(std::uint64_t{text.Length()} + (width > count ? width : count));
  for (std::uint32_t i = count; i < width; ++i) text.Append('0');
  text.Append(digits + sizeof digits - count, count);
}

// `text` as a runtime whose decimal point is `point` must see it to read a number with ".": its own point, where it
// stands in the text, ends the number.
String WithDecimalPoint(const char* text, const char* point) {
  const char* end = std::strstr(text, point);
  const String number(text, static_cast<std::uint32_t>(end != nullptr ? end - text : std::strlen(text)));
  const std::int32_t dot = number.Find('.');
  if (dot < 0) return number;
  const auto whole = static_cast<std::uint32_t>(dot);
  String localized = number.Middle(0, whole);
  localized.Append(point);
  localized.Append(number.Middle(whole + 1, number.Length()));
  return localized;
}

}  // namespace

void String::AppendUnsigned(std::uint32_t value, std::uint32_t width) { AppendDigits(*this, value, 10, width); }

void String::AppendSigned(std::int32_t value, std::uint32_t width) {
  const auto bits = static_cast<std::uint32_t>(value);
  if (value >= 0) {
    AppendUnsigned(bits, width);
    return;
  }
  String number("-");
  number.AppendUnsigned(0u - bits, width);
  Append(number);
}

void String::AppendHex(std::uint32_t value, std::uint32_t width) { AppendDigits(*this, value, 16, width); }

std::uint32_t String::ToUnsigned() const {
  std::uint32_t value = 0;
  for (std::uint32_t i = 0; i < Length(); ++i) value = value * 10 + static_cast<unsigned char>(At(i)) - 48;
  return value;
}

std::uint32_t String::ToUnsignedHex() const {
  std::uint32_t value = 0;
  for (std::uint32_t i = 0; i < Length(); ++i) {
    const std::uint32_t code = static_cast<unsigned char>(At(i));
    const std::uint32_t digit = code < 58 ? code - 48 : code >= 65 && code <= 90 ? code - 55 : code - 87;
    // The same as weighing from the last character: what overflows is lost either way.
    value = value * 16 + digit;
  }
  return value;
}

float String::ToFloat() const {
  if (IsEmpty()) return 0;
  const char* point = std::localeconv()->decimal_point;
  const String text = std::strcmp(point, ".") == 0 ? *this : WithDecimalPoint(Characters(), point);
  float value = 0;
  if (std::sscanf(text.Text(), "%f", &value) != 1) return 0;
  return value;
}

void String::ToUpper() {
  if (IsEmpty()) return;
  storage.Unshare();
  char* characters = storage.Characters();
  for (std::uint32_t i = 0; i < Length(); ++i) {
    characters[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(characters[i])));
  }
}

}  // namespace kest
