#include "decimal.h"

#include <algorithm>

namespace sandbox {

std::optional<std::uint64_t> ReadDecimal(std::string_view text) {
  constexpr std::size_t mostDigits = 18;
  if (text.empty() || text.size() > mostDigits || !std::all_of(text.begin(), text.end(), IsDigit)) return std::nullopt;
  std::uint64_t number = 0;
  for (char c : text) number = number * 10 + static_cast<std::uint64_t>(c - '0');
  return number;
}

}  // namespace sandbox
