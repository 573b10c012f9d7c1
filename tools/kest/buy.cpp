#include "buy.h"

#include <algorithm>
#include <iostream>

#include "card.h"
#include "exit_codes.h"
#include "failure.h"

namespace kest_host {
namespace {

struct OrderLine {
  std::uint32_t sku;
  std::uint16_t quantity;
};

// The argument itself is not repeated in words: it may be a card number in the wrong place.
OrderLine ParseOrderLine(const std::string& text, std::size_t position) {
  const std::size_t colon = text.find(':');
  std::uint64_t sku, quantity = 1;
  const bool isSku = ParseNumber(text.substr(0, colon), UINT32_MAX, sku);
  const bool isQuantity = colon == std::string::npos || ParseNumber(text.substr(colon + 1), UINT16_MAX, quantity);
  if (!isSku || !isQuantity || quantity == 0) {
    throw UsageError("an order is of SKU or SKU:QUANTITY with a quantity of 1 to 65535; argument " +
                     std::to_string(position) + " is neither");
  }
  return {static_cast<std::uint32_t>(sku), static_cast<std::uint16_t>(quantity)};
}

std::vector<OrderLine> ParseOrder(const std::vector<std::string>& texts) {
  std::vector<OrderLine> order;
  for (const std::string& text : texts) {
    const OrderLine line = ParseOrderLine(text, order.size() + 1);
    // The library would let the second line take the first one's place.
    const auto isSame = [&line](const OrderLine& other) { return other.sku == line.sku; };
    if (std::any_of(order.begin(), order.end(), isSame)) {
      throw UsageError("argument " + std::to_string(order.size() + 1) +
                       " orders a product that is in the order already");
    }
    order.push_back(line);
  }
  return order;
}

void WarnOfUnknownOutcome() {
  std::cerr << "kest: the outcome of the sale is unknown, and the card may have been charged. Do not just repeat the\n"
               "kest: sale: find out first whether the server has it.\n";
}

}  // namespace

int RunBuy(const BuyOptions& options) {
  const std::vector<OrderLine> order = ParseOrder(options.order);
  Fields fields = ParseFields(options.sale.fields);
  const std::string card = ReadCard(options.card);
  fields.emplace_back("KEST-CCard-Number", card);
  Library library(options.sale.server.library);
  Configure(library, options.sale.server);
  const auto checkout = MakeCheckout(library, fields);
  for (const OrderLine& line : order) library.KestAddOrderLine(checkout.get(), line.sku, line.quantity);

  SaleRecord record{"purchase", {}, {}};
  int code = exitDone;
  if (KestPurchase* purchase = library.KestBillCustomer(checkout.get())) {
    record.fields = FieldsOf(library, KEST_FIELDS(purchase));
    HideCard(record.fields, card);
    record.products = TakeProducts(record.fields);
  } else {
    record.error = library.KestGetErrorCode(KEST_FIELDS(checkout.get()));
    if (record.error == KEST_ERROR_EXCHANGE) WarnOfUnknownOutcome();
    code = ExplainFailure(record.error, options.sale.server);
  }
  PrintRecord(record, options.sale.json);
  return code;
}

}  // namespace kest_host
