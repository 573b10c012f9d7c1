#include "api/bill_customer.h"

#include <utility>

#include "api/common_fields.h"
#include "api/library_state.h"
#include "api/post_process_reply.h"
#include "core/exception.h"
#include "store/receipts.h"

namespace kest {
namespace {

// Tells whether the charge was confirmed, and does not let a lack of memory hide it.
bool PostProcessPurchase(const CommerceCall& call, Checkout& checkout) {
  try {
    return PostProcessReply(call, checkout, true);
  } catch (const Qor::MemoryException&) {
    const std::int32_t error = ServerError(checkout.PurchaseOf());
    if (error != 0) checkout.SetErrorCode(error);
    return error == 0;
  }
}

void RecordReceipt(Checkout& checkout) {
  const Purchase& purchase = checkout.PurchaseOf();
  const ProductRecords confirmed = ProductsOf(purchase);
  const String answeredCard = purchase.Get("KEST-CCard-Number");
  const String card = answeredCard.IsEmpty() ? checkout.Get("KEST-CCard-Number") : answeredCard;
  StoreReceipt({State().applicationGuid, confirmed.Count() != 0 ? confirmed : checkout.Order(), purchase, card});
}

}  // namespace

bool BillCustomer(CommerceCall& call, Checkout& checkout) {
  FieldSet reply;
  AddCommonFields(call, checkout);
  if (!ServiceCall(call, "BillCustomer", checkout, reply)) {
    checkout.SetErrorCode(exchangeFailed);
    return false;
  }
  checkout.PurchaseOf().Load(std::move(reply));
  if (!PostProcessPurchase(call, checkout)) return false;
  if (!call.IsBookkeepingLocally()) return true;
  try {
    RecordReceipt(checkout);
  } catch (const Qor::MemoryException&) {
    // The sale stands without its receipt.
  }
  return true;
}

}  // namespace kest
