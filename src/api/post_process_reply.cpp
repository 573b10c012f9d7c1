#include "api/post_process_reply.h"

#include "store/change_markers.h"

namespace kest {
namespace {

// Later requests made with the checkout carry the field; an empty or absent one changes nothing.
void Keep(const FieldSet& reply, const char* name, Checkout& checkout) {
  const String value = reply.Get(name);
  if (!value.IsEmpty()) checkout.Set(name, value);
}

}  // namespace

std::int32_t ServerError(const FieldSet& reply) { return static_cast<std::int32_t>(reply.Get("KEST-Error").ToUnsigned()); }

bool PostProcessReply(const CommerceCall& call, Checkout& checkout, bool purchaseReply) {
  const FieldSet& reply = purchaseReply ? static_cast<const FieldSet&>(checkout.PurchaseOf()) : checkout.BillOf();
  Keep(reply, "KEST-User-IDEx", checkout);
  const std::int32_t error = ServerError(reply);
  if (error != 0) {
    checkout.SetErrorCode(error);
    return false;
  }
  Keep(reply, "KEST-Host", checkout);
  if (call.IsBookkeepingLocally()) MarkProductsUpdated();
  return true;
}

}  // namespace kest
