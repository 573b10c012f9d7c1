#include "money.h"

#include <algorithm>

#include "decimal.h"

namespace sandbox {
namespace {

constexpr int percentParts = 100;              // hundredths of a percent in one
constexpr int wholeRate = 100 * percentParts;  // the rate that taxes an amount with itself

}  // namespace

std::string AmountText(Cents amount) {
  const std::string cents = std::to_string(amount % 100);
  return std::to_string(amount / 100) + (cents.size() == 1 ? ".0" : ".") + cents;
}

std::optional<Cents> ReadAmount(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos || point > 9 || text.size() != point + 3) return std::nullopt;
  const std::optional<std::uint64_t> whole = ReadDecimal(text.substr(0, point));
  const std::optional<std::uint64_t> cents = ReadDecimal(text.substr(point + 1));
  if (!whole || !cents) return std::nullopt;
  return static_cast<Cents>(*whole * 100 + *cents);
}

std::optional<int> ReadPercent(std::string_view text) {
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view decimals = text.substr(std::min(point + 1, text.size()));
  const bool pointWithoutDecimals = point < text.size() && decimals.empty();
  if (point > 3 || decimals.size() > 2 || pointWithoutDecimals) return std::nullopt;
  const std::optional<std::uint64_t> whole = ReadDecimal(text.substr(0, point));
  const std::optional<std::uint64_t> parts = ReadDecimal((std::string(decimals) + "00").substr(0, 2));
  if (!whole || !parts) return std::nullopt;
  const std::uint64_t rate = *whole * percentParts + *parts;
  if (rate > wholeRate) return std::nullopt;
  return static_cast<int>(rate);
}

Cents TaxOn(Cents net, int rate) {
  return (net * rate + wholeRate / 2) / wholeRate;
}

}  // namespace sandbox
