#include "store/card_type.h"

namespace kest {
namespace {

// The next digit at or after `position`, which moves behind it; a NUL when there is none.
char NextDigit(const String& text, std::uint32_t& position) {
  while (position < text.Length()) {
    const char character = text.At(position++);
    if (character >= '0' && character <= '9') return character;
  }
  return '\0';
}

}  // namespace

std::uint32_t CardTypeOf(const String& cardNumber) {
  std::uint32_t position = 0;
  const char first = NextDigit(cardNumber, position);
  if (first == '4') return 4;
  if (first == '5') return 2;
  if (first == '6') return 1;
  if (first == '3' && NextDigit(cardNumber, position) == '7') return 0;
  return 3;
}

}  // namespace kest
