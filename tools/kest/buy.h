// kest buy: charges a card for an order and shows the purchase.
#pragma once

#include <string>
#include <vector>

#include "sale.h"

namespace kest_host {

struct BuyOptions {
  SaleOptions sale;
  std::vector<std::string> order;  // SKU or SKU:QUANTITY
  std::string card;                // as ReadCard takes it
};

// Answers the exit code. Throws UsageError or std::runtime_error with a sentence for the user, both before anything is
// sent, unless memory runs out or the output cannot be written.
int RunBuy(const BuyOptions& options);

}  // namespace kest_host
