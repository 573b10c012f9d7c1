#include "admin_sales.h"

#include <algorithm>
#include <iterator>

#include "error_codes.h"
#include "json_text.h"
#include "masking.h"

namespace sandbox {
namespace {

using Json = nlohmann::ordered_json;

const char* MeaningOf(std::int64_t code) {
  const auto row = std::find_if(std::begin(errorCodes), std::end(errorCodes),
                                [&](const ErrorCode& one) { return one.code == code; });
  return row == std::end(errorCodes) ? "" : row->meaning;
}

Json SaleJson(const RecordedSale& recorded) {
  const Sale& sale = recorded.sale;
  Json json;
  json["number"] = sale.number;
  json["time"] = recorded.time;
  json["merchant"] = ShownText(sale.merchant);
  json["card"] = ShownText(sale.card);
  json["total"] = AmountText(sale.total);
  json["tax"] = AmountText(sale.tax);
  json["lines"] = recorded.lines;
  json["products"] = Json::array();
  for (const SoldProduct& one : sale.products) {
    json["products"].push_back(
        {{"sku", one.sku}, {"name", ShownText(one.name)}, {"price", one.price}, {"quantity", one.quantity}});
  }
  return json;
}

Json RefusalJson(const RecordedRefusal& refusal) {
  Json json;
  json["time"] = refusal.time;
  json["card"] = ShownText(refusal.card);
  json["amount"] = AmountText(refusal.amount);
  json["code"] = refusal.code;
  json["meaning"] = MeaningOf(refusal.code);
  return json;
}

}  // namespace

std::string SalesJson(Ledger& ledger) {
  Json json;
  json["sales"] = Json::array();
  for (const RecordedSale& one : ledger.LastSales(mostSalesTold, mostSaleLinesTold)) {
    json["sales"].push_back(SaleJson(one));
  }
  json["refusals"] = Json::array();
  for (const RecordedRefusal& one : ledger.LastRefusals(mostSalesTold)) json["refusals"].push_back(RefusalJson(one));
  return JsonText(json);
}

}  // namespace sandbox
