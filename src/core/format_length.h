// The upper bound that String reserves before it formats. What the library's own formats need is always covered.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace kest {

// Answers the characters to reserve for `format` with `arguments`, of which it reads a copy:
//   ordinary character, "%%"             1
//   flag "#"                             2 more; flags "-", "+", "0", blank: none
//   width or precision "*"               taken from the arguments
//   "h", "l"                             narrow or wide text for %c and %s; "F", "L", "N" are passed over
//   %c %C                                2
//   %s %S                                the text's characters, at least 1, 6 for a null pointer; then raised to the
//                                        width; when a precision is given that is not above it, the precision instead
//   %d %i %u %o %x %X %p                 width + precision, at least 32
//   %e %f %g %G                          width + precision, at least 128
//   %n and every other letter            nothing
std::uint64_t FormatLength(const char* format, std::va_list arguments);

}  // namespace kest
