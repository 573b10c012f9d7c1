// kest bill: fetches the bill of a transaction and shows it.
#pragma once

#include <string>

#include "sale.h"

namespace kest_host {

struct BillOptions {
  SaleOptions sale;
  std::string transaction;
};

// Answers the exit code. Throws UsageError or std::runtime_error with a sentence for the user.
int RunBill(const BillOptions& options);

}  // namespace kest_host
