#include "api/get_bill.h"

#include "api/common_fields.h"
#include "api/post_process_reply.h"
#include "core/exception.h"

namespace kest {

bool GetBill(CommerceCall& call, Checkout& checkout) {
  FieldSet reply;
  AddCommonFields(call, checkout);
  if (!ServiceCall(call, "GetBill", checkout, reply)) {
    checkout.SetErrorCode(exchangeFailed);
    return false;
  }
  Bill& bill = checkout.BillOf();
  bill.Load(reply);
  try {
    checkout.Set("KEST-TxN", bill.Get("KEST-TxN"));
    return PostProcessReply(call, checkout, false);
  } catch (const Qor::MemoryException&) {
    // A lack of memory does not hide what the server said.
    if (ServerError(bill) != 0) checkout.SetErrorCode(ServerError(bill));
    throw;
  }
}

}  // namespace kest
