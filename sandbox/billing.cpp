// The two services that sell: their answers are made from the ledger's sales, and stand here side by side because a
// bill tells what the billing told.
#include "cards.h"
#include "decimal.h"
#include "operations.h"
#include "order.h"

namespace sandbox {
namespace {

std::string Record(const SoldProduct& one) {
  return "SKU:" + one.sku + "^Name:" + one.name + "^Price:" + one.price + "^Quantity:" + std::to_string(one.quantity);
}

OperationResult SaleResult(const Sale& sale, const std::string& summary) {
  OperationResult result = ResultOf(noError, summary);
  result.fields.reserve(6 + sale.products.size());
  result.fields.push_back({"KEST-TxN", std::to_string(sale.number)});
  result.fields.push_back({"KEST-TotalAmount", AmountText(sale.total)});
  result.fields.push_back({"KEST-TaxAmount", AmountText(sale.tax)});
  result.fields.push_back({"KEST-Merchant", sale.merchant});
  result.fields.push_back({"KEST-CCard-Number", sale.card});
  for (const SoldProduct& one : sale.products) result.fields.push_back({"KEST-Product", Record(one)});
  return result;
}

std::string About(const Sale& sale) {
  const std::size_t lines = sale.products.size();
  return std::to_string(lines) + (lines == 1 ? " line, " : " lines, ") + AmountText(sale.total);
}

// A number is taken as it was given: without sign and leading zeros.
std::int64_t ReadTransaction(std::string_view text) {
  const std::optional<std::uint64_t> number = text.substr(0, 1) == "0" ? std::nullopt : ReadDecimal(text);
  return static_cast<std::int64_t>(number.value_or(0));
}

}  // namespace

OperationResult Operations::BillCustomer(const FieldList& request) const {
  Sale sale;
  const ErrorCode orderError = PriceOrder(request, catalogue, sale);
  if (orderError.code != noError.code) return ResultOf(orderError, "BillCustomer");

  const CardVerdict verdict = JudgeCard(FieldOrEmpty(request, "KEST-CCard-Number"));
  sale.card = verdict.masked;
  if (verdict.error.code != noError.code) {
    ledger.RecordRefusal(verdict.error.code, sale.card, sale.total);
    return ResultOf(verdict.error, "BillCustomer of " + About(sale));
  }
  sale.number = ledger.RecordSale(sale);
  return SaleResult(sale, "BillCustomer of " + About(sale) + ": transaction " + std::to_string(sale.number));
}

OperationResult Operations::GetBill(const FieldList& request) const {
  const std::string_view asked = FieldOrEmpty(request, "KEST-TxN");
  if (asked.empty()) return ResultOf(noTransaction, "GetBill");
  const std::optional<Sale> sale = ledger.ReadBill(ReadTransaction(asked));
  if (!sale) return ResultOf(unknownTransaction, "GetBill");
  return SaleResult(*sale, "GetBill of transaction " + std::to_string(sale->number) + ": " + About(*sale));
}

}  // namespace sandbox
