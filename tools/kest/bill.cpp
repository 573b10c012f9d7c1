#include "bill.h"

#include "card.h"
#include "exit_codes.h"
#include "failure.h"

namespace kest_host {
namespace {

void Collect(Library& library, KestBill* bill, SaleRecord& record) {
  record.fields = FieldsOf(library, KEST_FIELDS(bill));
  HideCard(record.fields, {});
  const std::int32_t count = library.KestGetBillProductCount(bill);
  for (std::int32_t i = 0; i < count; ++i) {
    record.products.push_back(FieldsOf(library, library.KestGetBillProduct(bill, static_cast<std::uint32_t>(i))));
    HideCard(record.products.back(), {});
  }
}

}  // namespace

int RunBill(const BillOptions& options) {
  Fields fields = ParseFields(options.sale.fields);
  if (!IsHeaderText(options.transaction)) throw UsageError("a transaction is a text without control characters");
  fields.emplace_back("KEST-TxN", options.transaction);
  Library library(options.sale.server.library);
  Configure(library, options.sale.server);
  const auto checkout = MakeCheckout(library, fields);

  SaleRecord record{"bill", {}, {}};
  int code = exitDone;
  if (KestBill* bill = library.KestGetBill(checkout.get())) {
    Collect(library, bill, record);
  } else {
    record.error = library.KestGetErrorCode(KEST_FIELDS(checkout.get()));
    code = ExplainFailure(record.error, options.sale.server);
  }
  PrintRecord(record, options.sale.json);
  return code;
}

}  // namespace kest_host
