#include "api/get_bill.h"

#include "api/common_fields.h"
#include "api/post_process_reply.h"

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
  checkout.Set("KEST-TxN", bill.Get("KEST-TxN"));
  return PostProcessReply(call, checkout, false);
}

}  // namespace kest
