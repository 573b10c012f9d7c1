// BillCustomer: charges the customer's card for the order of a checkout.
#pragma once

#include "api/checkout.h"
#include "api/commerce_call.h"

namespace kest {

// Sends the checkout, its order included, and loads its purchase from the reply; a sale that went through leaves a
// receipt when the call keeps local records. False when the exchange failed (error code 102: whether the card was
// charged is then unknown, and the purchase is as it was) or the server refused (its own code, the purchase is loaded);
// neither leaves a receipt. Once the server has confirmed the charge the answer is true, also when there is no memory
// for what remains to be done: a failure would invite a second charge. Throws Qor::MemoryException when there is no
// memory for the request.
bool BillCustomer(CommerceCall& call, Checkout& checkout);

}  // namespace kest
