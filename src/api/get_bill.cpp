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
  std::int32_t error = 0;
  try {
    bill.Load(reply);
    error = ServerError(bill);
    checkout.Set("KEST-TxN", bill.Get("KEST-TxN"));
    return PostProcessReply(call, checkout, false);
  } catch (const Qor::MemoryException&) {
    // A reply for which there is no memory is no reply, but a refusal that was loaded is not hidden.
    checkout.SetErrorCode(error != 0 ? error : exchangeFailed);
    throw;
  }
}

}  // namespace kest
