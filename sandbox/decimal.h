// Reads numbers as the protocol and the catalogue write them: decimal digits and nothing else. No state: any thread may
// call.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace sandbox {

/// Tells whether the character is one of 0 to 9, whatever the locale says.
constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Reads one to 18 decimal digits; leading zeros count as digits. Nothing when the text has another form.
std::optional<std::uint64_t> ReadDecimal(std::string_view text);

}  // namespace sandbox
