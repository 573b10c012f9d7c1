// The kind of a payment card, which is all that a receipt keeps of the card.
#pragma once

#include <cstdint>

#include "core/string.h"

namespace kest {

// Answers the code for what the decimal digits of `cardNumber` begin with, every other character being passed over: 4
// for "4", 2 for "5", 1 for "6", 0 for "37", 3 for everything else and for no digits. Leaves no copy of the number.
std::uint32_t CardTypeOf(const String& cardNumber);

}  // namespace kest
