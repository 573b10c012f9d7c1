// What every billing and bill request carries besides what the host put into its checkout.
#pragma once

#include "api/checkout.h"
#include "api/commerce_call.h"

namespace kest {

// Sets "KEST-Reseller-List" to the process's reseller list in the checkout's own fields; nothing when the call does no
// local bookkeeping. A customer's identifiers are kept nowhere but in those fields, so none is added. Throws
// Qor::MemoryException and changes nothing when there is no memory.
void AddCommonFields(const CommerceCall& call, Checkout& checkout);

}  // namespace kest
