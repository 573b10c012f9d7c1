// GetBill: fetches the bill of a past transaction again.
#pragma once

#include "api/checkout.h"
#include "api/commerce_call.h"

namespace kest {

// Asks the server for the bill of the transaction in the checkout's own field "KEST-TxN", loads the checkout's bill from
// the reply and copies the bill's "KEST-TxN" back into the checkout, empty when the bill has none, also when the
// server then reports an error. False when the exchange failed (error code 102; the bill is as it was) or the server
// reported an error (its own code). Throws Qor::MemoryException when there is no memory outside the exchange; behind
// the exchange the code is the server's own or 102 then too.
bool GetBill(CommerceCall& call, Checkout& checkout);

}  // namespace kest
