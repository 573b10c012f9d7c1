// What one sale is: the order as it was priced, and who paid with what. Plain values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "money.h"

namespace sandbox {

struct SoldProduct {
  std::string sku;  // this and the next two as the catalogue had them
  std::string name;
  std::string price;  // of one, without tax
  std::int64_t quantity = 0;
};

struct Sale {
  std::int64_t number = 0;  // of the transaction; 0 until the ledger has given one
  std::string merchant;
  std::string card;  // masked
  Cents total = 0;   // with tax
  Cents tax = 0;
  std::vector<SoldProduct> products;  // one for each line of the order, in its sequence
};

}  // namespace sandbox
