// Amounts of money, in whole cents: how they are read, written, and taxed. No fraction of a cent ever exists. No state:
// any thread may call.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

using Cents = std::int64_t;

/// The largest amount there is, of a price as of a total: 999999999.99.
constexpr Cents mostCents = 99'999'999'999;

/// Writes an amount of 0 cents or more with a point and two decimals, such as "0.05".
std::string AmountText(Cents amount);

/// Reads an amount: one to nine digits, a point, two digits. Nothing when the text has another form.
std::optional<Cents> ReadAmount(std::string_view text);

/// Reads a percentage of 0 to 100 with at most two decimals, such as "8.25"; returns hundredths of a percent. Nothing
/// when the text has another form.
std::optional<int> ReadPercent(std::string_view text);

/// Returns the tax on an amount of 0 to mostCents, half a cent rounded up; the rate is in hundredths of a percent.
Cents TaxOn(Cents net, int rate);

}  // namespace sandbox
