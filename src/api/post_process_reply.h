// What every reply to a billing or bill request leaves in the checkout that asked.
#pragma once

#include <cstdint>

#include "api/checkout.h"
#include "api/commerce_call.h"

namespace kest {

// The server's error code in a reply: "KEST-Error" read as an unsigned decimal, deliberately without validation; 0 when
// it is absent.
std::int32_t ServerError(const FieldSet& reply);

// Looks through the checkout's purchase, or its bill when `purchaseReply` is false: keeps "KEST-User-IDEx" and, when the
// server reports no error, "KEST-Host" for later requests, and, when the call keeps local records, marks the stored
// products as updated. False when the server reports an error, which is then the checkout's error code. Throws
// Qor::MemoryException when there is no memory; what was kept until then stays.
bool PostProcessReply(const CommerceCall& call, Checkout& checkout, bool purchaseReply);

}  // namespace kest
