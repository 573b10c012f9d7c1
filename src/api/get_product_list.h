// GetProductList: which products the host may sell for one of its versions.
#pragma once

#include "api/commerce_call.h"
#include "api/product_list.h"

namespace kest {

// Asks the server for the products of the application GUID and `versionId` and loads the list from its reply. False
// when the exchange failed: the list's error code is then 102, its records and request fields stay. A "KEST-Error" in
// the reply is deliberately an ordinary field of the list, and success does not reset the error code. Throws
// Qor::MemoryException when there is no memory outside the exchange; behind the exchange the code is 102 then too.
bool GetProductList(CommerceCall& call, ProductList& list, const String& versionId);

}  // namespace kest
