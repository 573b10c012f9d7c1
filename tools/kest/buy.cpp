#include "buy.h"

#include <algorithm>

#include "card.h"
#include "exit_codes.h"
#include "failure.h"
#include "standard_streams.h"
#include "words.h"

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
  Say("the outcome of the sale is unknown, and the card may have been charged. Do not just repeat the\n"
      "sale: find out first whether the server has it.\n");
}

std::string ValueOf(Library& library, KestPurchase* purchase, const char* name, const std::string& card) {
  const char* value = library.KestGetField(KEST_FIELDS(purchase), name);
  return value == nullptr ? "unknown" : HideNumber(value, card);
}

// Whatever goes wrong from here on must not look like a sale that can be tried again.
void ShowPurchase(Library& library, KestPurchase* purchase, const std::string& card, bool json) {
  try {
    SaleRecord record{"purchase", FieldsOf(library, KEST_FIELDS(purchase)), {}};
    record.products = TakeProducts(record.fields);
    HideCard(record.fields, card);
    for (Fields& product : record.products) HideCard(product, card);
    PrintRecord(record, json);
  } catch (const std::exception&) {
    SayWithNumbers("the sale WAS made: transaction " + ValueOf(library, purchase, "KEST-TxN", card) + ", total " +
                   ValueOf(library, purchase, "KEST-TotalAmount", card) + ". Do not repeat it.");
    throw;
  }
}

// An output that cannot be written changes nothing of what became of the sale.
int ShowFailure(std::int32_t error, const SaleOptions& options) {
  if (error == KEST_ERROR_EXCHANGE) WarnOfUnknownOutcome();
  const int code = ExplainFailure(error, options.server);
  try {
    PrintRecord({"purchase", {}, {}, error}, options.json);
  } catch (const std::exception& failure) {
    Say(failure.what());
  }
  return code;
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

  // The card may have been waited for.
  if (!CanWriteOutput()) throw std::runtime_error("stdout cannot be written; nothing was sold");
  KestPurchase* purchase = library.KestBillCustomer(checkout.get());
  if (purchase == nullptr) return ShowFailure(library.KestGetErrorCode(KEST_FIELDS(checkout.get())), options.sale);
  ShowPurchase(library, purchase, card, options.sale.json);
  return exitDone;
}

}  // namespace kest_host
