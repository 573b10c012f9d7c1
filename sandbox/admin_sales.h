// The sales and the declined cards as the admin port tells them. No state; one thread at a time may use a ledger.
#pragma once

#include <string>

#include "ledger.h"

namespace sandbox {

constexpr std::size_t mostSalesTold = 50;      // sales, and as many refusals
constexpr std::size_t mostSaleLinesTold = 20;  // of each sale

/// Writes the last sales and refusals of a ledger as JSON with a line end, the newest first, and of each sale its first
/// lines. Runs of digits that may be the number of a card are masked. Throws DatabaseError.
std::string SalesJson(Ledger& ledger);

}  // namespace sandbox
