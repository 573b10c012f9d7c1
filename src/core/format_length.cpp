#include "core/format_length.h"

#include <cstddef>
#include <cstring>
#include <cwchar>

namespace kest {
namespace {

// What stands between "%" and the conversion letter.
struct Element {
  std::uint64_t width = 0;
  std::uint64_t precision = 0;
  bool hasPrecision = false;
  bool isNarrow = false;
  unsigned longs = 0;  // how many "l"
  std::uint64_t extra = 0;
};

// A copy of the argument list that functions can pass on by reference on every system.
struct Arguments {
  std::va_list list;
};

std::uint64_t Magnitude(int value) {
  return value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
}

std::uint64_t Number(const char*& next) {
  std::uint64_t value = 0;
  for (; *next >= '0' && *next <= '9'; ++next) {
    if (value < 0xFFFFFFFFu) value = value * 10 + static_cast<std::uint64_t>(*next - '0');
  }
  return value;
}

void ReadFlags(const char*& next, Element& element) {
  for (; *next != '\0' && std::strchr("#-+0 ", *next) != nullptr; ++next) {
    if (*next == '#') element.extra += 2;
  }
}

void ReadWidthAndPrecision(const char*& next, Element& element, Arguments& arguments) {
  if (*next == '*') {
    ++next;
    element.width = Magnitude(va_arg(arguments.list, int));
  } else {
    element.width = Number(next);
  }
  if (*next != '.') return;
  ++next;
  element.hasPrecision = true;
  if (*next != '*') {
    element.precision = Number(next);
    return;
  }
  ++next;
  const int precision = va_arg(arguments.list, int);
  // A negative precision is none.
  element.hasPrecision = precision >= 0;
  element.precision = element.hasPrecision ? static_cast<std::uint64_t>(precision) : 0;
}

void ReadSize(const char*& next, Element& element) {
  for (; *next != '\0' && std::strchr("hlFLN", *next) != nullptr; ++next) {
    if (*next == 'h') element.isNarrow = true;
    if (*next == 'l') ++element.longs;
  }
}

// The characters of a text argument, looking at no more of them than a precision allows.
template <typename Character>
std::uint64_t TextLength(const Character* text, const Element& element) {
  std::uint64_t length = 0;
  while ((!element.hasPrecision || length < element.precision) && text[length] != 0) ++length;
  return length;
}

std::uint64_t TextElement(const Element& element, bool isWide, Arguments& arguments) {
  const void* text = va_arg(arguments.list, const void*);
  std::uint64_t length = 6;
  if (text != nullptr) {
    length = isWide ? TextLength(static_cast<const wchar_t*>(text), element)
                    : TextLength(static_cast<const char*>(text), element);
    if (length == 0) length = 1;
  }
  if (length < element.width) length = element.width;
  if (element.hasPrecision && length >= element.precision) length = element.precision;
  return length;
}

void SkipInteger(const Element& element, Arguments& arguments) {
  if (element.longs >= 2) {
    (void)va_arg(arguments.list, long long);
  } else if (element.longs == 1) {
    (void)va_arg(arguments.list, long);
  } else {
    (void)va_arg(arguments.list, int);
  }
}

std::uint64_t AtLeast(std::uint64_t least, const Element& element) {
  const std::uint64_t wanted = element.width + element.precision;
  return wanted < least ? least : wanted;
}

std::uint64_t Convert(char letter, const Element& element, Arguments& arguments) {
  switch (letter) {
    case 'c':
    case 'C':
      (void)va_arg(arguments.list, int);
      return 2;
    case 's':
      return TextElement(element, element.longs != 0, arguments);
    case 'S':
      return TextElement(element, !element.isNarrow, arguments);
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
      SkipInteger(element, arguments);
      return AtLeast(32, element);
    case 'p':
      (void)va_arg(arguments.list, void*);
      return AtLeast(32, element);
    case 'e':
    case 'f':
    case 'g':
    case 'G':
      (void)va_arg(arguments.list, double);
      return AtLeast(128, element);
    case 'n':
      (void)va_arg(arguments.list, void*);
      return 0;
    case 'E':
    case 'a':
    case 'A':
      // Nothing is reserved for these, but their argument must not be taken for the next one's.
      (void)va_arg(arguments.list, double);
      return 0;
    default:
      return 0;
  }
}

}  // namespace

std::uint64_t FormatLength(const char* format, std::va_list arguments) {
  Arguments copy;
  va_copy(copy.list, arguments);
  std::uint64_t length = 0;
  for (const char* next = format; *next != '\0';) {
    if (*next != '%' || next[1] == '%') {
      next += *next == '%' ? 2 : 1;
      ++length;
      continue;
    }
    ++next;
    Element element;
    ReadFlags(next, element);
    ReadWidthAndPrecision(next, element, copy);
    ReadSize(next, element);
    if (*next == '\0') break;
    length += element.extra + Convert(*next, element, copy);
    ++next;
  }
  va_end(copy.list);
  return length;
}

}  // namespace kest
